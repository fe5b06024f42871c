#include "bench/drawn_page.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <vector>

namespace bench {

using orva::Page;
using orva::PixelFormat;

namespace {

using Color = std::array<int, 3>;

constexpr double kGrain =
    3.5; ///< standard deviation of paper and sensor together, levels a channel
constexpr Color kPaper { 242, 239, 231 };
constexpr Color kInk { 38, 36, 42 };

// Print in lines of 12 points: signs of 6 x 9 cells, a cell of 4 pixels, with room around them.
constexpr int kCell = 4;
constexpr int kSignWidth = 7 * kCell;
constexpr int kLineHeight = 50;
constexpr int kSignHeight = 9 * kCell;

/// Drawing a normal distribution a pixel takes half a second; a table of draws looks the same.
std::vector<int> grainTable(std::mt19937& random)
{
    std::normal_distribution<double> noise(0, kGrain);
    std::vector<int> table(65536);
    std::generate(
        table.begin(), table.end(), [&] { return static_cast<int>(std::lround(noise(random))); });
    return table;
}

bool isText(int x, int y)
{
    return y > 300 && y < 2000 && x > 300 && x < 2200;
}

bool isPicture(int x, int y)
{
    return y > 2200 && y < 3200 && x > 1200 && x < 2200;
}

/// Whether a cell of the page's signs is inked. One sign in six is a space.
bool isInked(int cellX, int line, int cellY, unsigned seed)
{
    const int sign = cellX / 7;
    const int column = cellX % 7;
    if (column == 6 || cellY < 0 || cellY >= 9) {
        return false;
    }
    auto bits = static_cast<std::uint64_t>(sign * 977 + line * 7919) + seed * 104729ULL + 1;
    bits *= 0x9E3779B97F4A7C15ULL;
    bits ^= bits >> 29U;
    bits *= 0xBF58476D1CE4E5B9ULL;
    bits ^= bits >> 32U;
    // Pairs of rows share their cells: strokes, not dust.
    return bits % 6 != 0
        && ((bits >> static_cast<unsigned>(3 + column / 2 + cellY / 2 * 3)) & 1U) != 0;
}

/// Share of ink, 0 to 4: an edge of print is two or three pixels wide under an optic.
int inkAt(int x, int y, unsigned seed)
{
    int share = 0;
    for (const int dy : { 0, 1 }) {
        for (const int dx : { 0, 1 }) {
            const int left = x + dx - 300;
            const int top = y + dy - 300;
            const int inLine = top % kLineHeight;
            share += inLine < kSignHeight
                    && isInked(left / kCell, top / kLineHeight, inLine / kCell, seed)
                ? 1
                : 0;
        }
    }
    return share;
}

/// Slow shades with some texture, as skin, cloth and leaves have.
Color pictureAt(int x, int y, unsigned seed)
{
    const double phase = seed;
    const double shade = 55 * std::sin(x / 170.0 + phase) * std::cos(y / 230.0);
    const double texture =
        14 * std::sin(x / 3.1 + 2 * std::sin(y / 17.0)) * std::sin(y / 4.3 + x / 41.0);
    const double level = 125 + shade + texture;
    const double tint = 30 * std::sin((x - 2 * y) / 400.0 + phase);
    return { static_cast<int>(level + tint), static_cast<int>(level),
        static_cast<int>(level - tint - 10) };
}

Color colorAt(int x, int y, unsigned seed)
{
    if (isPicture(x, y)) {
        return pictureAt(x, y, seed);
    }
    Color color = kPaper;
    if (isText(x, y)) {
        const int ink = inkAt(x, y, seed);
        for (std::size_t c = 0; c < color.size(); ++c) {
            color[c] += (kInk[c] - kPaper[c]) * ink / 4;
        }
    }
    return color;
}

} // namespace

Page drawnPage(PixelFormat format, unsigned seed)
{
    Page page;
    page.dpiX = page.dpiY = 300;
    page.allocate(2480, 3508, format);
    std::mt19937 random(seed);
    const std::vector<int> grain = grainTable(random);
    const std::size_t channels = format == PixelFormat::kRgb ? 3 : 1;
    for (int y = 0; y < page.height; ++y) {
        std::uint8_t* out = page.row(y);
        std::size_t next = random();
        for (int x = 0; x < page.width; ++x) {
            const Color color = colorAt(x, y, seed);
            for (std::size_t c = 0; c < channels; ++c) {
                const int value = color[c] + grain[next++ % grain.size()];
                *out++ = static_cast<std::uint8_t>(std::clamp(value, 0, 255));
            }
        }
    }
    return page;
}

} // namespace bench
