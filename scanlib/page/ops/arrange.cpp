#include "scanlib/page/ops/arrange.h"

#include "scanlib/page/ops/color_conversion.h"
#include "scanlib/page/ops/page_like.h"

#include <algorithm>
#include <cstring>

namespace orva {

namespace {

// Whole output bytes are put together from two input bytes; the ends keep their other bits.
void copyBits(const std::uint8_t* from, int fromX, std::uint8_t* to, int toX, int count)
{
    while (count > 0) {
        const int toBit = toX & 7;
        const int fromBit = fromX & 7;
        const int step = std::min(count, 8 - toBit);
        unsigned bits = static_cast<unsigned>(from[fromX >> 3]) << 8;
        if (fromBit + step > 8) {
            bits |= from[(fromX >> 3) + 1];
        }
        const unsigned wanted =
            (bits >> (8 - fromBit)) & 0xFFU; // its first bits are the ones to copy
        const unsigned mask = (0xFF00U >> step) & 0xFFU;
        std::uint8_t& out = to[toX >> 3];
        out = static_cast<std::uint8_t>((out & ~(mask >> toBit)) | ((wanted & mask) >> toBit));
        fromX += step;
        toX += step;
        count -= step;
    }
}

void fillWhite(Page& page)
{
    std::fill(page.pixels.begin(), page.pixels.end(),
        static_cast<std::uint8_t>(page.format == PixelFormat::kBlackWhite ? 0 : 255));
}

/// Size and format are new, everything else stays.
Page emptyLike(const Page& page, int width, int height)
{
    Page result = withoutPixels(page);
    result.allocate(width, height, page.format);
    return result;
}

void toFormat(Page& page, PixelFormat format)
{
    if (page.format == format) {
        return;
    }
    toGray(page);
    if (format == PixelFormat::kRgb) {
        toRgb(page);
    }
}

} // namespace

void copyArea(
    const Page& from, int fromX, int fromY, Page& to, int toX, int toY, int width, int height)
{
    const std::ptrdiff_t bytes = bitsPerPixel(from.format) / 8;
    for (int y = 0; y < height; ++y) {
        const std::uint8_t* const in = from.row(fromY + y);
        std::uint8_t* const out = to.row(toY + y);
        if (from.format == PixelFormat::kBlackWhite) {
            copyBits(in, fromX, out, toX, width);
        } else {
            std::memcpy(
                out + toX * bytes, in + fromX * bytes, static_cast<std::size_t>(width * bytes));
        }
    }
}

Page merged(Page first, Page second, Direction direction)
{
    const PixelFormat richer = std::max(first.format, second.format);
    toFormat(first, richer);
    toFormat(second, richer);
    const bool below = direction == Direction::kTopBottom;
    Page result =
        emptyLike(first, below ? std::max(first.width, second.width) : first.width + second.width,
            below ? first.height + second.height : std::max(first.height, second.height));
    fillWhite(result);
    copyArea(first, 0, 0, result, 0, 0, first.width, first.height);
    copyArea(second, 0, 0, result, below ? 0 : first.width, below ? first.height : 0, second.width,
        second.height);
    return result;
}

std::pair<Page, Page> halves(const Page& page, Direction direction)
{
    const bool rows = direction == Direction::kTopBottom;
    const int middle = (rows ? page.height : page.width) / 2;
    Page first = rows ? emptyLike(page, page.width, middle) : emptyLike(page, middle, page.height);
    Page second = rows ? emptyLike(page, page.width, page.height - middle)
                       : emptyLike(page, page.width - middle, page.height);
    copyArea(page, 0, 0, first, 0, 0, first.width, first.height);
    copyArea(page, rows ? 0 : middle, rows ? middle : 0, second, 0, 0, second.width, second.height);
    return { std::move(first), std::move(second) };
}

} // namespace orva
