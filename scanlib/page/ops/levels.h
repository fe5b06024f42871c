// Automatic levels: the darkest ink becomes black, the paper white.
#pragma once

#include "scanlib/base/page.h"

namespace orva {

/// Stretches all channels alike (colours keep their hue) so that the luminance that 0.5 percent of
/// the pixels lie below becomes 0 and the one that 5 percent lie above becomes 255: single bright
/// or dark specks decide nothing. A page whose two ends are closer than 48 levels is nearly empty
/// and left alone, as its noise would be all there is to stretch. Black-and-white is left alone.
void autoLevels(Page& page);

} // namespace orva
