#include "scanlib/page/ops/color_conversion.h"

#include <cstring>

namespace orva {

namespace {

static_assert(kRedWeight + kGreenWeight + kBlueWeight == 256, "grey must stay grey");
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

} // namespace orva
