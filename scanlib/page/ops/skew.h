// The angle at which print runs across a page.
#pragma once

#include "scanlib/base/page.h"

namespace orva {

/// The largest tilt that is looked for.
inline constexpr double kMostSkewDegrees = 15.5;

/// How far the lines of print run downhill, degrees, -15.5..15.5; 0 where there are too few marks
/// of the size of letters or where they form no lines. `gray` is a reduced page of about 100 dpi.
/// The feet of the marks are projected along every angle; lines of print make the sharpest profile
/// (Baird, The skew angle of printed documents, 1987). Exact to about 0.05 degree on a full page.
double textSkewDegrees(const Page& gray);

} // namespace orva
