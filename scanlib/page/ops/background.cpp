#include "scanlib/page/ops/background.h"

#include "scanlib/page/ops/color_conversion.h"
#include "scanlib/page/ops/histogram.h"
#include "scanlib/page/ops/tone.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace orva {

namespace {

constexpr int kDarkestBackground = 96; // grey level
constexpr int kPaperSpread = 10; // grey levels to either side of the peak
constexpr double kLeastPaperShare = 0.15;
constexpr double kMargin = 0.08;

struct PaperColor
{
    std::array<double, 3> mean {};
    double share = 0; ///< of all pixels
};

PaperColor paperColor(const Page& page)
{
    const Histogram histogram = lumaHistogram(page);
    const int peak = mostFrequentLevel(histogram, kDarkestBackground);
    std::array<std::uint64_t, 3> sums {};
    std::uint64_t count = 0;
    std::vector<std::uint8_t> gray(static_cast<std::size_t>(page.width));
    const int channels = page.format == PixelFormat::kRgb ? 3 : 1;
    for (int y = 0; y < page.height; ++y) {
        grayRow(page, y, gray.data());
        const std::uint8_t* const row = page.row(y);
        for (int x = 0; x < page.width; ++x) {
            if (std::abs(gray[static_cast<std::size_t>(x)] - peak) <= kPaperSpread) {
                ++count;
                for (int c = 0; c < channels; ++c) {
                    sums[static_cast<std::size_t>(c)] += row[x * channels + c];
                }
            }
        }
    }
    PaperColor paper;
    paper.share = static_cast<double>(count) / static_cast<double>(pixelCount(histogram));
    for (std::size_t c = 0; c < 3 && count > 0; ++c) {
        paper.mean[c] = static_cast<double>(sums[c]) / static_cast<double>(count);
    }
    return paper;
}

} // namespace

void removeBackground(Page& page)
{
    if (page.format == PixelFormat::kBlackWhite) {
        return;
    }
    const PaperColor paper = paperColor(page);
    if (paper.share < kLeastPaperShare) {
        return;
    }
    std::array<ToneTable, 3> tables {};
    for (std::size_t c = 0; c < 3; ++c) {
        const double white = std::max(1.0, paper.mean[c] * (1.0 - kMargin));
        for (int level = 0; level < 256; ++level) {
            tables[c][static_cast<std::size_t>(level)] =
                static_cast<std::uint8_t>(std::lround(std::min(255.0, 255.0 * level / white)));
        }
    }
    applyTone(page, tables);
}

} // namespace orva
