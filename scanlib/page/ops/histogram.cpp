#include "scanlib/page/ops/histogram.h"

#include "scanlib/page/ops/color_conversion.h"

#include <algorithm>
#include <numeric>
#include <vector>

namespace orva {

Histogram lumaHistogram(const Page& page)
{
    // Two counters in turn: neighbours are often equal, and a counter cannot be read back at once.
    Histogram even {};
    Histogram odd {};
    std::vector<std::uint8_t> gray(static_cast<std::size_t>(page.width) + 1);
    for (int y = 0; y < page.height; ++y) {
        grayRow(page, y, gray.data());
        int x = 0;
        for (; x + 1 < page.width; x += 2) {
            ++even[gray[static_cast<std::size_t>(x)]];
            ++odd[gray[static_cast<std::size_t>(x) + 1]];
        }
        if (x < page.width) {
            ++even[gray[static_cast<std::size_t>(x)]];
        }
    }
    std::transform(even.begin(), even.end(), odd.begin(), even.begin(), std::plus<> {});
    return even;
}

std::uint64_t pixelCount(const Histogram& histogram)
{
    return std::accumulate(histogram.begin(), histogram.end(), std::uint64_t { 0 });
}

int levelAtShare(const Histogram& histogram, double share)
{
    const double wanted = share * static_cast<double>(pixelCount(histogram));
    std::uint64_t sum = 0;
    for (int level = 0; level < 255; ++level) {
        sum += histogram[static_cast<std::size_t>(level)];
        if (static_cast<double>(sum) >= wanted) {
            return level;
        }
    }
    return 255;
}

int mostFrequentLevel(const Histogram& histogram, int lowest)
{
    int best = lowest;
    std::uint64_t most = 0;
    for (int level = lowest; level < 256; ++level) {
        std::uint64_t sum = 0;
        for (int near = std::max(0, level - 2); near <= std::min(255, level + 2); ++near) {
            sum += histogram[static_cast<std::size_t>(near)];
        }
        if (sum > most) {
            most = sum;
            best = level;
        }
    }
    return best;
}

} // namespace orva
