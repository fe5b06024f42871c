#include "scanlib/page/ops/levels.h"

#include "scanlib/page/ops/histogram.h"
#include "scanlib/page/ops/tone.h"

#include <algorithm>
#include <cmath>

namespace orva {

namespace {

constexpr double kDarkShare = 0.005;
constexpr double kLightShare = 0.05;
constexpr int kLeastSpan = 48; // grey levels

} // namespace

void autoLevels(Page& page)
{
    if (page.format == PixelFormat::kBlackWhite) {
        return;
    }
    const Histogram histogram = lumaHistogram(page);
    const int dark = levelAtShare(histogram, kDarkShare);
    const int light = levelAtShare(histogram, 1.0 - kLightShare);
    if (light - dark < kLeastSpan) {
        return;
    }
    ToneTable table {};
    for (int level = 0; level < 256; ++level) {
        const double stretched = 255.0 * (level - dark) / (light - dark);
        table[static_cast<std::size_t>(level)] =
            static_cast<std::uint8_t>(std::lround(std::clamp(stretched, 0.0, 255.0)));
    }
    applyTone(page, table);
}

} // namespace orva
