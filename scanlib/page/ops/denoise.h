// Takes single wrong pixels away and keeps edges.
#pragma once

#include "scanlib/base/page.h"
#include "sdk/codes.h"

namespace orva {

/// Grey and colour: the median of 3 x 3 pixels in each channel; strong also covers dark specks up
/// to 0.35 mm across that have no print within 1 mm, so that no full stop and no dot of an i is
/// lost. Black-and-white: black areas of at most 2 pixels (strong: 6) become white.
void denoise(Page& page, Denoise strength);

} // namespace orva
