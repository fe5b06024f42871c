// Positions are kept in 1/65536 pixel and move on by constant steps: no multiplication a pixel but
// those of the interpolation.
#include "scanlib/page/ops/resample.h"

#include <algorithm>
#include <cmath>

namespace orva {

namespace {

constexpr int kShift = 16;
constexpr double kOne = 65536.0;

template <int Channels>
void copyRow(const Page& page, std::int64_t x, std::int64_t y, std::int64_t stepX,
    std::int64_t stepY, std::uint8_t* out, int count)
{
    const std::ptrdiff_t stride = static_cast<std::ptrdiff_t>(page.stride());
    for (int i = 0; i < count; ++i, x += stepX, y += stepY, out += Channels) {
        const auto column = static_cast<std::ptrdiff_t>(x >> kShift);
        const auto line = static_cast<std::ptrdiff_t>(y >> kShift);
        if (column < 0 || line < 0 || column >= page.width || line >= page.height) {
            std::fill(out, out + Channels, std::uint8_t { 255 });
            continue;
        }
        const int partX = static_cast<int>(x >> (kShift - 8)) & 0xFF;
        const int partY = static_cast<int>(y >> (kShift - 8)) & 0xFF;
        const std::ptrdiff_t right = column + 1 < page.width ? Channels : 0;
        const std::ptrdiff_t below = line + 1 < page.height ? stride : 0;
        const std::uint8_t* const at = page.pixels.data() + line * stride + column * Channels;
        for (int c = 0; c < Channels; ++c) {
            const int top = at[c] * (256 - partX) + at[c + right] * partX;
            const int bottom = at[c + below] * (256 - partX) + at[c + below + right] * partX;
            out[c] =
                static_cast<std::uint8_t>((top * (256 - partY) + bottom * partY + 32768) >> 16);
        }
    }
}

void copyBitRow(const Page& page, std::int64_t x, std::int64_t y, std::int64_t stepX,
    std::int64_t stepY, std::uint8_t* out, int count)
{
    for (int i = 0; i < count; ++i, x += stepX, y += stepY) {
        const auto column = static_cast<int>((x + (1 << (kShift - 1))) >> kShift);
        const auto line = static_cast<int>((y + (1 << (kShift - 1))) >> kShift);
        if (column >= 0 && line >= 0 && column < page.width && line < page.height
            && ((page.row(line)[column >> 3] >> (7 - (column & 7))) & 1) != 0) {
            out[i >> 3] = static_cast<std::uint8_t>(out[i >> 3] | (0x80 >> (i & 7)));
        }
    }
}

} // namespace

Page extracted(const Page& page, const TiltedRect& rect)
{
    Page result;
    result.dpiX = page.dpiX;
    result.dpiY = page.dpiY;
    result.sheet = page.sheet;
    result.side = page.side;
    result.number = page.number;
    result.stream = page.stream;
    result.allocate(std::max(1, static_cast<int>(std::lround(rect.width))),
        std::max(1, static_cast<int>(std::lround(rect.height))), page.format);
    const double radians = rect.degrees * 3.14159265358979323846 / 180.0;
    const double cosine = std::cos(radians);
    const double sine = std::sin(radians);
    const auto stepX = static_cast<std::int64_t>(std::llround(cosine * kOne));
    const auto stepY = static_cast<std::int64_t>(std::llround(sine * kOne));
    for (int y = 0; y < result.height; ++y) {
        const auto startX = static_cast<std::int64_t>(std::llround((rect.x - y * sine) * kOne));
        const auto startY = static_cast<std::int64_t>(std::llround((rect.y + y * cosine) * kOne));
        switch (page.format) {
        case PixelFormat::kBlackWhite:
            copyBitRow(page, startX, startY, stepX, stepY, result.row(y), result.width);
            break;
        case PixelFormat::kGray:
            copyRow<1>(page, startX, startY, stepX, stepY, result.row(y), result.width);
            break;
        case PixelFormat::kRgb:
            copyRow<3>(page, startX, startY, stepX, stepY, result.row(y), result.width);
            break;
        }
    }
    return result;
}

} // namespace orva
