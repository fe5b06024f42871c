// Automatic levels: the darkest ink becomes black, the paper white.
#pragma once

#include "scanlib/page/ops/histogram.h"

#include <optional>

namespace orva {

/// What becomes black and what becomes white, 0..255; in between it is linear.
struct LevelStretch
{
    int dark = 0;
    int light = 255;
};

/// All channels are stretched alike (colours keep their hue), so that the luminance that 0.5
/// percent of the pixels lie below becomes 0 and the one that 5 percent lie above becomes 255:
/// single bright or dark specks decide nothing. Nothing where the ends are closer than 48 levels:
/// such a page is nearly empty, and its noise would be all there is to stretch.
std::optional<LevelStretch> levelStretch(const Histogram& luminance);

} // namespace orva
