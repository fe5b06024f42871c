#include "scanlib/page/ops/dropout.h"

#include <algorithm>

namespace orva {

namespace {

constexpr int kDominance = 40; // grey levels
constexpr int kReinforcedDominance = 20;

/// Channel: 0 red, 1 green, 2 blue.
template <int Channel>
void dropChannel(Page& page, bool reinforced, bool keepColor)
{
    const int limit = reinforced ? kReinforcedDominance : kDominance;
    const std::size_t count =
        static_cast<std::size_t>(page.width) * static_cast<std::size_t>(page.height);
    std::uint8_t* const pixels = page.pixels.data();
    for (std::size_t i = 0; i < count; ++i) {
        std::uint8_t* const pixel = pixels + 3 * i;
        const int own = pixel[Channel];
        const int other = std::max<int>(pixel[(Channel + 1) % 3], pixel[(Channel + 2) % 3]);
        const bool dominant = own - other > limit;
        const auto level = static_cast<std::uint8_t>(dominant && reinforced ? 255 : own);
        if (!keepColor) {
            pixels[i] = level; // never behind the pixel that was read
        } else if (dominant) {
            pixel[0] = pixel[1] = pixel[2] = level;
        }
    }
}

} // namespace

void dropColor(Page& page, ColorDropout color, bool reinforced, bool keepColor)
{
    if (page.format != PixelFormat::kRgb) {
        return;
    }
    switch (color) {
    case ColorDropout::kNone:
        return;
    case ColorDropout::kRed:
        dropChannel<0>(page, reinforced, keepColor);
        break;
    case ColorDropout::kGreen:
        dropChannel<1>(page, reinforced, keepColor);
        break;
    case ColorDropout::kBlue:
        dropChannel<2>(page, reinforced, keepColor);
        break;
    }
    if (!keepColor) {
        page.allocate(page.width, page.height, PixelFormat::kGray);
    }
}

} // namespace orva
