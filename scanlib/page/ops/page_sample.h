// Every n-th pixel of every n-th row, for operations that count tones.
#pragma once

#include "scanlib/base/page.h"
#include "scanlib/page/ops/color_conversion.h"
#include "scanlib/page/ops/histogram.h"

#include <cstdint>
#include <vector>

namespace orva {

struct PageSample
{
    int width = 0;
    int height = 0;
    int step = 1; ///< page pixels from sample to sample
    std::size_t channels = 1;
    std::vector<std::uint8_t> pixels; ///< as the page's, without padding
    std::vector<std::uint8_t> lumas;

    std::size_t at(int x, int y) const
    {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(width)
            + static_cast<std::size_t>(x);
    }
    const std::uint8_t* color(int x, int y) const { return pixels.data() + at(x, y) * channels; }
    int luma(int x, int y) const { return lumas[at(x, y)]; }
    Histogram histogram() const; ///< of the luminance
};

/// About 75 dpi; of small pages all, so that there are some 60,000 samples. Grey and colour only.
PageSample sampleOf(const Page& page);

} // namespace orva
