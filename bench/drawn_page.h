// One page as a scanner sees it: print, a picture, paper that is not quite white, noise.
#pragma once

#include "scanlib/base/page.h"

namespace bench {

/// A4 at 300 dpi, 2480 x 3508; grey or colour. The same seed gives the same page.
orva::Page drawnPage(orva::PixelFormat format, unsigned seed);

} // namespace bench
