// Rows are added up byte by byte first, which the compiler vectorises; weights and division come
// once a reduced pixel.
#include "scanlib/page/ops/reduced.h"

#include "scanlib/base/units.h"
#include "scanlib/page/ops/color_conversion.h"
#include "scanlib/page/ops/histogram.h"
#include "scanlib/page/ops/row_loops.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace orva {

namespace {

// Sums of this many bytes fit into 16 bits.
constexpr int kMostRows = 256;

int factorFor(double pageDpi, double dpi, int size)
{
    const double known = pageDpi > 0 ? pageDpi : units::kAssumedDpi;
    return std::clamp(static_cast<int>(std::lround(known / dpi)), 1, std::min(size, kMostRows));
}

/// Means of `count` samples for each of `width` pixels; `sums` holds channels x count a pixel.
template <int Channels>
void meansOf(const std::uint16_t* sums, int count, std::uint32_t area, std::uint8_t* out, int width)
{
    constexpr std::uint32_t kWeights[] = { kRedWeight, kGreenWeight, kBlueWeight };
    for (int x = 0; x < width; ++x) {
        std::uint32_t total[3] = { 0, 0, 0 };
        for (int i = 0; i < count; ++i, sums += Channels) {
            for (int c = 0; c < Channels; ++c) {
                total[c] += sums[c];
            }
        }
        if (Channels == 1) {
            out[x] = static_cast<std::uint8_t>((total[0] + area / 2) / area);
        } else {
            std::uint64_t luma = 128U * area;
            for (int c = 0; c < 3; ++c) {
                luma += static_cast<std::uint64_t>(kWeights[c]) * total[c];
            }
            out[x] = static_cast<std::uint8_t>(luma / (256U * area));
        }
    }
}

} // namespace

ReducedPage reducedGray(const Page& page, double dpi)
{
    ReducedPage result;
    const int fx = result.factorX = factorFor(page.dpiX, dpi, page.width);
    const int fy = result.factorY = factorFor(page.dpiY, dpi, page.height);
    Page& out = result.gray;
    out.dpiX = (page.dpiX > 0 ? page.dpiX : units::kAssumedDpi) / fx;
    out.dpiY = (page.dpiY > 0 ? page.dpiY : units::kAssumedDpi) / fy;
    out.allocate(page.width / fx, page.height / fy, PixelFormat::kGray);
    const bool color = page.format == PixelFormat::kRgb;
    const bool bits = page.format == PixelFormat::kBlackWhite;
    const std::size_t samples = static_cast<std::size_t>(page.width) * (color ? 3U : 1U);
    std::vector<std::uint8_t> row(bits ? samples : 0);
    std::vector<std::uint16_t> sums(samples);
    const auto area = static_cast<std::uint32_t>(fx) * static_cast<std::uint32_t>(fy);
    for (int y = 0; y < out.height; ++y) {
        std::fill(sums.begin(), sums.end(), std::uint16_t { 0 });
        for (int k = 0; k < fy; ++k) {
            if (bits) {
                grayRow(page, y * fy + k, row.data());
            }
            const std::uint8_t* const in = bits ? row.data() : page.row(y * fy + k);
            rowLoops().add(sums.data(), in, samples);
        }
        if (color) {
            meansOf<3>(sums.data(), fx, area, out.row(y), out.width);
        } else {
            meansOf<1>(sums.data(), fx, area, out.row(y), out.width);
        }
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
