#include "scanlib/page/ops/threshold.h"

#include "scanlib/page/ops/color_conversion.h"
#include "scanlib/page/ops/paper_map.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace orva {

namespace {

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "packFlags gathers from the low byte up");

// First a comparison a byte, which the compiler vectorises, then eight bytes of 0 or 1 into one:
// the multiplication brings byte i (from the low end) to bit 63 - i without any carry.
void packFlags(const std::uint8_t* flags, std::size_t bytes, std::uint8_t* out)
{
    for (std::size_t i = 0; i < bytes; ++i) {
        std::uint64_t eight = 0;
        std::memcpy(&eight, flags + i * 8, sizeof eight);
        out[i] = static_cast<std::uint8_t>((eight * 0x8040201008040201ULL) >> 56);
    }
}

/// `limits(y)` gives a limit for every pixel of the row; what lies below it is black.
template <typename Limits>
void pack(Page& page, Limits limits)
{
    const auto width = static_cast<std::size_t>(page.width);
    const std::size_t outStride = bytesPerLine(page.width, PixelFormat::kBlackWhite);
    std::vector<std::uint8_t> gray(width);
    std::vector<std::uint8_t> flags(outStride * 8);
    std::vector<std::uint8_t> bits(outStride * static_cast<std::size_t>(page.height));
    for (int y = 0; y < page.height; ++y) {
        const std::uint8_t* row = page.row(y);
        if (page.format == PixelFormat::kRgb) {
            grayRow(page, y, gray.data());
            row = gray.data();
        }
        const std::uint16_t* const limit = limits(y);
        for (std::size_t x = 0; x < width; ++x) {
            flags[x] = row[x] < limit[x] ? 1 : 0;
        }
        packFlags(flags.data(), outStride, bits.data() + outStride * static_cast<std::size_t>(y));
    }
    page.pixels = std::move(bits);
    page.format = PixelFormat::kBlackWhite;
}

} // namespace

void toBlackWhite(Page& page, int threshold)
{
    if (page.format == PixelFormat::kBlackWhite) {
        return;
    }
    const std::vector<std::uint16_t> limits(
        static_cast<std::size_t>(page.width), static_cast<std::uint16_t>(threshold));
    pack(page, [&limits](int) { return limits.data(); });
}

void toBlackWhiteByPaper(Page& page, int threshold)
{
    const PaperMap map = paperMapOf(page);
    if (!map.found()) {
        toBlackWhite(page, threshold);
        return;
    }
    std::vector<std::uint16_t> values;
    std::transform(map.levels.begin(), map.levels.end(), std::back_inserter(values),
        [threshold](const std::array<float, 4>& level) {
            return static_cast<std::uint16_t>(
                std::lround(level[3] * 16 * static_cast<float>(threshold) / 255));
        });
    std::vector<std::uint16_t> limits(static_cast<std::size_t>(page.width));
    int block = -1;
    pack(page, [&](int y) {
        if (y / kRowsAlike != block) {
            block = y / kRowsAlike;
            spreadOver(
                map, values, 1, block * kRowsAlike + kRowsAlike / 2, page.width, limits.data());
            std::transform(limits.begin(), limits.end(), limits.begin(),
                [](std::uint16_t limit) { return static_cast<std::uint16_t>((limit + 8) / 16); });
        }
        return limits.data();
    });
}

} // namespace orva
