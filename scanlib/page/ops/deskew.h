// Automatic crop and deskew.
#pragma once

#include "scanlib/base/page.h"

namespace orva {

/// Cuts the sheet out of what the scanner saw around it and turns it upright: tilts up to 15
/// degrees either way, on dark, white or noisy backing (see sheet.h for how it is found). Where no
/// sheet is told from the backing nothing is cut, and the lines of print tell the angle (see
/// skew.h); then the page keeps its size and its corners become white. Angles below 0.1 degree are
/// left alone: such a page is only cut, pixel for pixel. Pages with two different resolutions are
/// left as they came.
void cropAndDeskew(Page& page);

} // namespace orva
