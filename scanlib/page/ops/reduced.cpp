#include "scanlib/page/ops/reduced.h"

#include "scanlib/page/ops/color_conversion.h"
#include "scanlib/page/ops/histogram.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace orva {

namespace {

constexpr double kAssumedDpi = 200;

int factorFor(double pageDpi, double dpi, int size)
{
    const double known = pageDpi > 0 ? pageDpi : kAssumedDpi;
    return std::clamp(static_cast<int>(std::lround(known / dpi)), 1, size);
}

} // namespace

ReducedPage reducedGray(const Page& page, double dpi)
{
    ReducedPage result;
    const int fx = result.factorX = factorFor(page.dpiX, dpi, page.width);
    const int fy = result.factorY = factorFor(page.dpiY, dpi, page.height);
    Page& out = result.gray;
    out.dpiX = (page.dpiX > 0 ? page.dpiX : kAssumedDpi) / fx;
    out.dpiY = (page.dpiY > 0 ? page.dpiY : kAssumedDpi) / fy;
    out.allocate(page.width / fx, page.height / fy, PixelFormat::kGray);
    std::vector<std::uint8_t> row(static_cast<std::size_t>(page.width));
    std::vector<std::uint32_t> sums(static_cast<std::size_t>(out.width));
    const auto area = static_cast<std::uint32_t>(fx) * static_cast<std::uint32_t>(fy);
    for (int y = 0; y < out.height; ++y) {
        std::fill(sums.begin(), sums.end(), 0U);
        for (int k = 0; k < fy; ++k) {
            grayRow(page, y * fy + k, row.data());
            const std::uint8_t* in = row.data();
            for (std::uint32_t& sum : sums) {
                for (int i = 0; i < fx; ++i) {
                    sum += *in++;
                }
            }
        }
        std::transform(sums.begin(), sums.end(), out.row(y), [area](std::uint32_t sum) {
            return static_cast<std::uint8_t>((sum + area / 2) / area);
        });
    }
    return result;
}

int paperLevel(const Page& gray)
{
    return mostFrequentLevel(lumaHistogram(gray), 0);
}

Page marksAgainst(const Page& gray, int paper, int contrast)
{
    Page bits;
    bits.dpiX = gray.dpiX;
    bits.dpiY = gray.dpiY;
    bits.allocate(gray.width, gray.height, PixelFormat::kBlackWhite);
    for (int y = 0; y < gray.height; ++y) {
        const std::uint8_t* const in = gray.row(y);
        std::uint8_t* const out = bits.row(y);
        for (int x = 0; x < gray.width; ++x) {
            if (std::abs(in[x] - paper) > contrast) {
                out[x >> 3] = static_cast<std::uint8_t>(out[x >> 3] | (0x80 >> (x & 7)));
            }
        }
    }
    return bits;
}

} // namespace orva
