// Takes single wrong pixels away and keeps edges.
#pragma once

#include "scanlib/base/page.h"
#include "sdk/codes.h"

namespace orva {

/// Grey and colour: the median of 3 x 3 pixels in each channel, twice when strong. Black-and-white:
/// black areas of at most 2 pixels (strong: 6) become white.
void denoise(Page& page, Denoise strength);

} // namespace orva
