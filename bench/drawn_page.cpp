#include "bench/drawn_page.h"

#include <algorithm>
#include <random>
#include <vector>

namespace bench {

using orva::Page;
using orva::PixelFormat;

namespace {

/// Drawing a normal distribution a pixel takes half a second; a table of draws looks the same.
std::vector<int> noiseTable(std::mt19937& random)
{
    std::normal_distribution<double> noise(0, 2);
    std::vector<int> table(65536);
    std::generate(table.begin(), table.end(), [&] { return static_cast<int>(noise(random)); });
    return table;
}

} // namespace

Page drawnPage(PixelFormat format, unsigned seed)
{
    Page page;
    page.dpiX = page.dpiY = 300;
    page.allocate(2480, 3508, format);
    std::mt19937 random(seed);
    const std::vector<int> noise = noiseTable(random);
    const int channels = format == PixelFormat::kRgb ? 3 : 1;
    for (int y = 0; y < page.height; ++y) {
        std::uint8_t* out = page.row(y);
        std::size_t next = random();
        for (int x = 0; x < page.width; ++x) {
            const bool text = y > 300 && y < 2000 && y % 60 < 36 && x > 300 && x < 2200
                && (x / 9 + y / 12) % 4 == 0;
            const bool picture = y > 2200 && y < 3200 && x > 1200 && x < 2200;
            const int level = text ? 40 : picture ? 60 + (x + y) % 700 / 5 : 240;
            for (int c = 0; c < channels; ++c) {
                const int value = level - 4 * c + noise[next++ % noise.size()];
                *out++ = static_cast<std::uint8_t>(std::clamp(value, 0, 255));
            }
        }
    }
    return page;
}

} // namespace bench
