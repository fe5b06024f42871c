// Background removal: tinted or yellowed paper, and what shows through it, become white.
#pragma once

#include "scanlib/base/page.h"

namespace orva {

/// The paper is the most frequent light tone; its mean colour, less 8 percent for grain and
/// show-through, becomes white in every channel, darker values are stretched with it and black
/// stays. A page on which no light tone covers 15 percent is a picture and left alone, as is
/// black-and-white.
void removeBackground(Page& page);

} // namespace orva
