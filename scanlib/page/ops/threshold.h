// From grey to black-and-white.
#pragma once

#include "scanlib/base/page.h"

namespace orva {

/// 1 bit a pixel; grey values below the threshold (0..255) become black. A black-and-white page is
/// left alone.
void toBlackWhite(Page& page, int threshold);

/// The same against the paper of each place (paper_map.h), as though the page were lit evenly and
/// its paper white: black is what lies below threshold / 255 of it. For print; pictures have no
/// paper to go by, and a page on which none is found gets the threshold as it is.
void toBlackWhiteByPaper(Page& page, int threshold);

} // namespace orva
