// Turns a page upright and cuts it out of its dark backing.
#pragma once

#include "scanlib/base/page.h"

namespace orva {

/// Degrees that the lines of print run downhill, -8..8, in steps of 0.05; 0 when the page shows no
/// clear lines. Found where the profile of ink a row is sharpest.
double textSkewDegrees(const Page& page);

/// Where the backing is dark, the sheet's own edges tell angle and size: the page becomes the
/// sheet. Else the lines of print tell the angle and nothing is cut, since white paper on white
/// backing has no edges. Angles below 0.1 degree are left alone; new corners are white. Up to 8
/// degrees.
void cropAndDeskew(Page& page);

} // namespace orva
