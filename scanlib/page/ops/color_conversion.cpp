#include "scanlib/page/ops/color_conversion.h"

#include <cstring>

namespace orva {

namespace {

static_assert(kRedWeight + kGreenWeight + kBlueWeight == 256, "grey must stay grey");
static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "packBits gathers from the low byte up");

// First a comparison a byte, which the compiler vectorises, then eight bytes of 0 or 1 into one:
// the multiplication brings byte i (from the low end) to bit 63 - i without any carry.
void packBits(
    const std::uint8_t* gray, int width, int threshold, std::uint8_t* flags, std::uint8_t* out)
{
    for (int x = 0; x < width; ++x) {
        flags[x] = gray[x] < threshold ? 1 : 0;
    }
    const int bytes = (width + 7) / 8;
    for (int x = width; x < bytes * 8; ++x) {
        flags[x] = 0;
    }
    for (int i = 0; i < bytes; ++i) {
        std::uint64_t eight = 0;
        std::memcpy(&eight, flags + i * 8, sizeof eight);
        out[i] = static_cast<std::uint8_t>((eight * 0x8040201008040201ULL) >> 56);
    }
}

} // namespace

void grayRow(const Page& page, int y, std::uint8_t* out)
{
    const std::uint8_t* in = page.row(y);
    switch (page.format) {
    case PixelFormat::kGray:
        std::memcpy(out, in, static_cast<std::size_t>(page.width));
        return;
    case PixelFormat::kRgb:
        for (int x = 0; x < page.width; ++x) {
            out[x] = luma(in[3 * x], in[3 * x + 1], in[3 * x + 2]);
        }
        return;
    case PixelFormat::kBlackWhite:
        for (int x = 0; x < page.width; ++x) {
            out[x] = ((in[x >> 3] >> (7 - (x & 7))) & 1) != 0 ? 0 : 255;
        }
        return;
    }
}

void toGray(Page& page)
{
    if (page.format == PixelFormat::kGray) {
        return;
    }
    if (page.format == PixelFormat::kRgb) {
        // In place: the grey byte never lies behind the pixel that it is made from.
        for (int y = 0; y < page.height; ++y) {
            const std::uint8_t* const in = page.row(y);
            std::uint8_t* const out = page.pixels.data()
                + static_cast<std::size_t>(y) * static_cast<std::size_t>(page.width);
            for (int x = 0; x < page.width; ++x) {
                out[x] = luma(in[3 * x], in[3 * x + 1], in[3 * x + 2]);
            }
        }
        page.allocate(page.width, page.height, PixelFormat::kGray);
        return;
    }
    std::vector<std::uint8_t> gray(
        static_cast<std::size_t>(page.width) * static_cast<std::size_t>(page.height));
    for (int y = 0; y < page.height; ++y) {
        grayRow(page, y,
            gray.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(page.width));
    }
    page.pixels = std::move(gray);
    page.format = PixelFormat::kGray;
}

void toRgb(Page& page)
{
    if (page.format == PixelFormat::kRgb) {
        return;
    }
    toGray(page);
    std::vector<std::uint8_t> colors(page.pixels.size() * 3);
    for (std::size_t i = 0; i < page.pixels.size(); ++i) {
        colors[3 * i] = colors[3 * i + 1] = colors[3 * i + 2] = page.pixels[i];
    }
    page.pixels = std::move(colors);
    page.format = PixelFormat::kRgb;
}

void toBlackWhite(Page& page, int threshold)
{
    if (page.format == PixelFormat::kBlackWhite) {
        return;
    }
    const std::size_t padded = bytesPerLine(page.width, PixelFormat::kBlackWhite) * 8;
    std::vector<std::uint8_t> gray(padded);
    std::vector<std::uint8_t> flags(padded);
    const std::size_t outStride = padded / 8;
    std::vector<std::uint8_t> bits(outStride * static_cast<std::size_t>(page.height));
    for (int y = 0; y < page.height; ++y) {
        const std::uint8_t* row = page.row(y);
        if (page.format == PixelFormat::kRgb) {
            grayRow(page, y, gray.data());
            row = gray.data();
        }
        packBits(row, page.width, threshold, flags.data(),
            bits.data() + outStride * static_cast<std::size_t>(y));
    }
    page.pixels = std::move(bits);
    page.format = PixelFormat::kBlackWhite;
}

} // namespace orva
