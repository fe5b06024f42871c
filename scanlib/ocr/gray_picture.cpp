#include "scanlib/ocr/gray_picture.h"

#include "scanlib/base/units.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace orva {

namespace {

/// Adds the brightness of a row's pixels from `left` on to the sums, `reduction` pixels to a sum.
void addRow(const Page& page, int y, int left, int reduction, std::vector<unsigned>& sums)
{
    const std::uint8_t* const row = page.row(y);
    const auto step = static_cast<std::size_t>(reduction);
    std::size_t x = static_cast<std::size_t>(left);
    for (unsigned& sum : sums) {
        for (std::size_t i = 0; i < step; ++i, ++x) {
            if (page.format == PixelFormat::kRgb) {
                const std::uint8_t* const p = row + x * 3;
                // ITU-R BT.601, in 256ths
                sum += (77U * p[0] + 150U * p[1] + 29U * p[2]) >> 8U;
            } else if (page.format == PixelFormat::kGray) {
                sum += row[x];
            } else {
                sum += ((row[x / 8] >> (7U - x % 8)) & 1U) != 0 ? 0U : 255U;
            }
        }
    }
}

int dpiOf(const Page& page, int reduction)
{
    const double dpi = page.dpiY > 0 ? page.dpiY : units::kAssumedDpi;
    return std::max(1, static_cast<int>(std::lround(dpi / reduction)));
}

} // namespace

TextBox wholePage(const Page& page)
{
    return { 0, 0, page.width, page.height };
}

void takeGray(const Page& page, const TextBox& part, int reduction, GrayPicture& out)
{
    out.width = part.width() / reduction;
    out.height = part.height() / reduction;
    out.dpi = dpiOf(page, reduction);
    const auto width = static_cast<std::size_t>(out.width);
    out.pixels.resize(width * static_cast<std::size_t>(out.height));
    const auto area = static_cast<unsigned>(reduction * reduction);
    std::vector<unsigned> sums(width);
    for (int y = 0; y < out.height; ++y) {
        std::fill(sums.begin(), sums.end(), 0U);
        for (int i = 0; i < reduction; ++i) {
            addRow(page, part.top + y * reduction + i, part.left, reduction, sums);
        }
        std::uint8_t* const to = out.pixels.data() + static_cast<std::size_t>(y) * width;
        std::transform(sums.begin(), sums.end(), to,
            [area](unsigned sum) { return static_cast<std::uint8_t>(sum / area); });
    }
}

void turnRight(GrayPicture& picture)
{
    std::vector<std::uint8_t> turned(picture.pixels.size());
    const auto width = static_cast<std::size_t>(picture.width);
    const auto height = static_cast<std::size_t>(picture.height);
    for (std::size_t y = 0; y < height; ++y) {
        for (std::size_t x = 0; x < width; ++x) {
            turned[x * height + (height - 1 - y)] = picture.pixels[y * width + x];
        }
    }
    picture.pixels = std::move(turned);
    std::swap(picture.width, picture.height);
}

} // namespace orva
