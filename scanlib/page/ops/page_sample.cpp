#include "scanlib/page/ops/page_sample.h"

#include "scanlib/base/units.h"

#include <algorithm>
#include <cmath>

namespace orva {

namespace {

constexpr double kSampleDpi = 75;
constexpr int kLeastSide = 256; // samples

} // namespace

PageSample sampleOf(const Page& page)
{
    const double dpi = page.dpiX > 0 ? page.dpiX : units::kAssumedDpi;
    PageSample sample;
    sample.step = std::max(1,
        std::min(static_cast<int>(std::lround(dpi / kSampleDpi)),
            std::min(page.width, page.height) / kLeastSide));
    sample.channels = page.format == PixelFormat::kRgb ? 3 : 1;
    sample.width = (page.width + sample.step - 1) / sample.step;
    sample.height = (page.height + sample.step - 1) / sample.step;
    const std::size_t count = sample.at(0, sample.height);
    sample.pixels.resize(count * sample.channels);
    sample.lumas.resize(count);
    std::uint8_t* out = sample.pixels.data();
    std::uint8_t* luminance = sample.lumas.data();
    const std::size_t stride = static_cast<std::size_t>(sample.step) * sample.channels;
    for (int y = 0; y < sample.height; ++y) {
        const std::uint8_t* in = page.row(y * sample.step);
        for (int x = 0; x < sample.width; ++x, in += stride) {
            std::copy_n(in, sample.channels, out);
            out += sample.channels;
            *luminance++ = sample.channels == 3 ? luma(in[0], in[1], in[2]) : in[0];
        }
    }
    return sample;
}

Histogram PageSample::histogram() const
{
    Histogram result {};
    for (const std::uint8_t level : lumas) {
        ++result[level];
    }
    return result;
}

} // namespace orva
