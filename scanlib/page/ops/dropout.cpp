#include "scanlib/page/ops/dropout.h"

#include "scanlib/page/ops/page_sample.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace orva {

namespace {

constexpr int kDarkestDropoutPaper = 128; // below it the page is taken to have white paper
constexpr int kPaperNear = 6; // levels around the paper's luminance

struct DropoutStrength
{
    int from; ///< levels of excess
    int full;
    int lift; ///< levels a level of excess
};
constexpr DropoutStrength kNormalStrength { 12, 36, 1 };
constexpr DropoutStrength kReinforcedStrength { 6, 18, 5 };

/// Mean colour of the page's most frequent light tone.
std::array<int, 3> paperColorOf(const Page& page)
{
    const PageSample sample = sampleOf(page);
    const int peak = mostFrequentLevel(sample.histogram(), kDarkestDropoutPaper);
    std::array<long, 3> sums { 255, 255, 255 };
    long count = 1;
    for (std::size_t i = 0; i < sample.lumas.size(); ++i) {
        if (std::abs(sample.lumas[i] - peak) <= kPaperNear) {
            ++count;
            for (std::size_t c = 0; c < 3; ++c) {
                sums[c] += sample.pixels[3 * i + c];
            }
        }
    }
    return { static_cast<int>(sums[0] / count), static_cast<int>(sums[1] / count),
        static_cast<int>(sums[2] / count) };
}

/// Levels as they would be on white paper, 0..255.
std::array<std::uint8_t, 256> onWhitePaper(int paper)
{
    std::array<std::uint8_t, 256> table {};
    for (int level = 0; level < 256; ++level) {
        table[static_cast<std::size_t>(level)] =
            static_cast<std::uint8_t>(std::min(255, level * 255 / std::max(1, paper)));
    }
    return table;
}

/// Channel: 0 red, 1 green, 2 blue.
template <int Channel>
void dropChannel(Page& page, DropoutStrength strength, bool keepColor)
{
    const std::array<int, 3> paper = paperColorOf(page);
    const std::array<std::array<std::uint8_t, 256>, 3> white { onWhitePaper(paper[0]),
        onWhitePaper(paper[1]), onWhitePaper(paper[2]) };
    constexpr std::size_t kFirst = (Channel + 1) % 3;
    constexpr std::size_t kSecond = (Channel + 2) % 3;
    const std::size_t count =
        static_cast<std::size_t>(page.width) * static_cast<std::size_t>(page.height);
    const int range = strength.full - strength.from;
    std::uint8_t* const pixels = page.pixels.data();
    for (std::size_t i = 0; i < count; ++i) {
        std::uint8_t* const pixel = pixels + 3 * i;
        const int own = white[Channel][pixel[Channel]];
        const int other = std::max(white[kFirst][pixel[kFirst]], white[kSecond][pixel[kSecond]]);
        const int excess = own - other;
        if (excess > strength.from) {
            const int level = std::min(255, own + strength.lift * excess); // of the paper's
            const int part = std::min(range, excess - strength.from);
            for (std::size_t c = 0; c < 3; ++c) {
                const int target = level * paper[c] / 255;
                pixel[c] = static_cast<std::uint8_t>(pixel[c] + (target - pixel[c]) * part / range);
            }
        }
        if (!keepColor) {
            pixels[i] = pixel[Channel]; // never behind the pixel that was read
        }
    }
}

} // namespace

void dropColor(Page& page, ColorDropout color, bool reinforced, bool keepColor)
{
    if (page.format != PixelFormat::kRgb) {
        return;
    }
    const DropoutStrength strength = reinforced ? kReinforcedStrength : kNormalStrength;
    switch (color) {
    case ColorDropout::kNone:
        return;
    case ColorDropout::kRed:
        dropChannel<0>(page, strength, keepColor);
        break;
    case ColorDropout::kGreen:
        dropChannel<1>(page, strength, keepColor);
        break;
    case ColorDropout::kBlue:
        dropChannel<2>(page, strength, keepColor);
        break;
    }
    if (!keepColor) {
        page.allocate(page.width, page.height, PixelFormat::kGray);
    }
}

} // namespace orva
