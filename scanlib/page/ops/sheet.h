// Where the sheet of paper lies on what the scanner saw.
#pragma once

#include "scanlib/page/ops/resample.h"

#include <optional>

namespace orva {

/// `gray` is a reduced page of about 100 dpi, the result is in its pixels, just inside the sheet's
/// edges; tilts up to kMostSkewDegrees. Where an edge is not seen (the sheet goes on beyond the
/// scanned area, or no backing shows) the rim of the area stands for it. Nothing when
///   no backing is told from the paper (white: both differ by 3 levels, or a shadow fades away), or
///   anything but backing would be cut off: a dark picture at the edge is no backing.
/// Every row and column is walked from the rim inwards until the backing ends. Dark and noisy
/// backing ends half way to the level of the paper; white backing ends at the darkest place of the
/// shadow that the sheet throws. The four edges are then found together, as the tilt at which most
/// of these places lie on four lines (Hough 1962).
std::optional<TiltedRect> findSheet(const Page& gray);

} // namespace orva
