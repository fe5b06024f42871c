#include "scanlib/page/ops/rotate.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

namespace orva {

namespace {

// A tile of 32 x 32 colour pixels is read and written within 6 KiB, inside the first-level cache.
constexpr int kTile = 32;

template <int Bytes>
void turnPixels(const Page& from, Page& to, bool right)
{
    const auto inStride = static_cast<std::ptrdiff_t>(from.stride());
    const std::ptrdiff_t outStep = right ? -Bytes : Bytes;
    for (int tileY = 0; tileY < from.height; tileY += kTile) {
        const int endY = std::min(tileY + kTile, from.height);
        for (int tileX = 0; tileX < from.width; tileX += kTile) {
            const int endX = std::min(tileX + kTile, from.width);
            for (int x = tileX; x < endX; ++x) {
                const std::uint8_t* in = from.row(tileY) + static_cast<std::ptrdiff_t>(x) * Bytes;
                const int column = right ? from.height - 1 - tileY : tileY;
                std::uint8_t* out = to.row(right ? x : from.width - 1 - x)
                    + static_cast<std::ptrdiff_t>(column) * Bytes;
                for (int y = tileY; y < endY; ++y) {
                    std::memcpy(out, in, Bytes);
                    in += inStride;
                    out += outStep;
                }
            }
        }
    }
}

/// Eight rows of eight bits, first row in the highest byte, become eight columns. Three swaps of
/// ever larger blocks across the diagonal.
std::uint64_t transpose8x8(std::uint64_t bits)
{
    std::uint64_t swap = (bits ^ (bits >> 7)) & 0x00AA00AA00AA00AAULL;
    bits ^= swap ^ (swap << 7);
    swap = (bits ^ (bits >> 14)) & 0x0000CCCC0000CCCCULL;
    bits ^= swap ^ (swap << 14);
    swap = (bits ^ (bits >> 28)) & 0x00000000F0F0F0F0ULL;
    return bits ^ swap ^ (swap << 28);
}

void turnBits(const Page& from, Page& to, bool right)
{
    const int inBytes = static_cast<int>(from.stride());
    const int outBytes = static_cast<int>(to.stride());
    for (int outByte = 0; outByte < outBytes; ++outByte) {
        // The eight input rows of this output column; rows outside the page count as white.
        std::array<const std::uint8_t*, 8> rows {};
        for (int k = 0; k < 8; ++k) {
            const int y = right ? from.height - 1 - outByte * 8 - k : outByte * 8 + k;
            rows[static_cast<std::size_t>(k)] = y >= 0 && y < from.height ? from.row(y) : nullptr;
        }
        for (int inByte = 0; inByte < inBytes; ++inByte) {
            std::uint64_t block = 0;
            for (const std::uint8_t* row : rows) {
                block = (block << 8) | (row != nullptr ? row[inByte] : 0U);
            }
            block = transpose8x8(block);
            const int columns = std::min(8, from.width - inByte * 8);
            for (int j = 0; j < columns; ++j) {
                const int x = inByte * 8 + j;
                to.row(right ? x : from.width - 1 - x)[outByte] =
                    static_cast<std::uint8_t>(block >> (56 - 8 * j));
            }
        }
    }
}

constexpr std::array<std::uint8_t, 256> reversedBytes()
{
    std::array<std::uint8_t, 256> table {};
    for (unsigned value = 0; value < 256; ++value) {
        unsigned mirrored = 0;
        for (unsigned bit = 0; bit < 8; ++bit) {
            mirrored |= ((value >> bit) & 1U) << (7 - bit);
        }
        table[value] = static_cast<std::uint8_t>(mirrored);
    }
    return table;
}

constexpr auto kReversed = reversedBytes();

void reverseBitRow(const std::uint8_t* in, std::uint8_t* out, int width, std::size_t stride)
{
    const int shift = static_cast<int>(stride) * 8 - width;
    for (std::size_t i = 0; i < stride; ++i) {
        const unsigned high = kReversed[in[stride - 1 - i]];
        const unsigned low = i + 1 < stride ? kReversed[in[stride - 2 - i]] : 0U;
        out[i] = static_cast<std::uint8_t>((high << shift) | (low >> (8 - shift)));
    }
    out[stride - 1] = static_cast<std::uint8_t>(out[stride - 1] & (0xFFU << shift));
}

void turnOver(Page& page)
{
    if (page.format == PixelFormat::kGray) {
        std::reverse(page.pixels.begin(), page.pixels.end());
        return;
    }
    if (page.format == PixelFormat::kRgb) {
        std::size_t first = 0;
        std::size_t last = page.pixels.size() - 3;
        for (; first < last; first += 3, last -= 3) {
            std::swap_ranges(page.pixels.begin() + static_cast<std::ptrdiff_t>(first),
                page.pixels.begin() + static_cast<std::ptrdiff_t>(first + 3),
                page.pixels.begin() + static_cast<std::ptrdiff_t>(last));
        }
        return;
    }
    std::vector<std::uint8_t> turned(page.pixels.size());
    const std::size_t stride = page.stride();
    for (int y = 0; y < page.height; ++y) {
        reverseBitRow(page.row(y),
            turned.data() + stride * static_cast<std::size_t>(page.height - 1 - y), page.width,
            stride);
    }
    page.pixels = std::move(turned);
}

} // namespace

void rotate(Page& page, RotateAngle angle)
{
    if (angle == RotateAngle::kNone) {
        return;
    }
    if (angle == RotateAngle::k180) {
        turnOver(page);
        return;
    }
    const bool right = angle == RotateAngle::kRight90;
    Page turned;
    turned.allocate(page.height, page.width, page.format);
    switch (page.format) {
    case PixelFormat::kBlackWhite:
        turnBits(page, turned, right);
        break;
    case PixelFormat::kGray:
        turnPixels<1>(page, turned, right);
        break;
    case PixelFormat::kRgb:
        turnPixels<3>(page, turned, right);
        break;
    }
    page.pixels = std::move(turned.pixels);
    std::swap(page.width, page.height);
    std::swap(page.dpiX, page.dpiY);
}

} // namespace orva
