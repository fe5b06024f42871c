// A turn by the angle a is done as two shears. Between them lies a row that has the column x of the
// page and the row v of the result: its pixel is the page's at
//   y(x) = y0 + (x - x0) tan a + v / cos a,
// and the result's pixel u is this row's at
//   x(u) = x0 + u cos a - v sin a.
// Positions are kept in 1/65536 pixel. As long as the whole part of y(x), or of x(u) - u, stays the
// same, the pixels of a stretch are mixed from two rows, or from one row and itself moved by a
// pixel.
#include "scanlib/page/ops/resample.h"

#include "scanlib/base/units.h"
#include "scanlib/page/ops/page_like.h"
#include "scanlib/page/ops/row_loops.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace orva {

namespace {

constexpr int kShift = 16;
constexpr std::int64_t kOne = std::int64_t { 1 } << kShift;
// Rows of the result are made in blocks, and these in tiles of columns: what the next row of the
// block reads lies in the first-level cache, where a whole row would cross a hundred rows of the
// page.
constexpr int kBlockRows = 16;
constexpr std::int64_t kStrip = 128; // columns
constexpr std::int64_t kLineBytes = 64; // of the processor's caches
constexpr std::int64_t kSpare = 16; // bytes, as the row loops like it

std::int64_t fixed(double value)
{
    return std::llround(value * static_cast<double>(kOne));
}

/// position(i) = base + i x slope, in 1/65536.
struct Ramp
{
    std::int64_t base = 0;
    std::int64_t slope = 0;

    std::int64_t at(std::int64_t i) const { return base + i * slope; }
    /// The first index behind `i` at which the whole part is another, at most `end`.
    std::int64_t nextStep(std::int64_t i, std::int64_t end) const
    {
        if (slope == 0) {
            return end;
        }
        const std::int64_t part = at(i) & (kOne - 1);
        const std::int64_t steps = slope > 0 ? (kOne - 1 - part) / slope + 1 : part / -slope + 1;
        return std::min(end, i + steps);
    }
};

Ramp rampOf(double base, double slope)
{
    Ramp ramp;
    ramp.base = fixed(base);
    ramp.slope = fixed(slope);
    return ramp;
}

/// The low 16 bits of index x slope for every byte of a row.
std::vector<std::uint16_t> partsOf(std::int64_t slope, int width, int channels)
{
    std::vector<std::uint16_t> parts;
    parts.reserve(static_cast<std::size_t>(width) * static_cast<std::size_t>(channels));
    for (int x = 0; x < width; ++x) {
        parts.insert(
            parts.end(), static_cast<std::size_t>(channels), static_cast<std::uint16_t>(x * slope));
    }
    return parts;
}

class Turn
{
public:
    Turn(const Page& page, const TiltedRect& rect, int width, int channels)
        : m_page(page)
        , m_loops(rowLoops())
        , m_channels(channels)
        , m_width(width)
        , m_down(rampOf(rect.y - rect.x * tangent(rect), tangent(rect)))
        , m_nextDown(1 / std::cos(radiansOf(rect)))
        , m_along(rampOf(rect.x, std::cos(radiansOf(rect)) - 1))
        , m_nextAlong(-std::sin(radiansOf(rect)))
        , m_downParts(partsOf(m_down.slope, page.width, channels))
        , m_alongParts(partsOf(m_along.slope, width, channels))
        , m_white(page.stride(), 255)
        , m_betweenBytes((width + 2) * m_channels + kSpare)
        , m_between(static_cast<std::size_t>(kBlockRows * m_betweenBytes))
    {
    }

    /// Rows v to v + count - 1 of the result, at most kBlockRows.
    void rows(int v, int count, Page& result)
    {
        for (int k = 0; k < count; ++k) {
            prepare(m_block[static_cast<std::size_t>(k)], v + k, k);
        }
        for (std::int64_t x = 0; x < m_page.width; x += kStrip) {
            for (int k = 0; k < count; ++k) {
                columns(m_block[static_cast<std::size_t>(k)], x,
                    std::min<std::int64_t>(x + kStrip, m_page.width));
            }
        }
        for (int k = 0; k < count; ++k) {
            along(m_block[static_cast<std::size_t>(k)], result.row(v + k));
        }
    }

private:
    /// One row between: columns `left` to `left + width + 1` of the page, white outside of it.
    struct Between
    {
        Ramp down;
        Ramp along; ///< of x(u) - u
        std::int64_t left = 0;
        std::int64_t first = 0; ///< columns that are on the page
        std::int64_t last = 0;
        std::uint8_t* pixels = nullptr;
    };

    static double radiansOf(const TiltedRect& rect) { return rect.degrees * units::kPi / 180.0; }
    static double tangent(const TiltedRect& rect) { return std::tan(radiansOf(rect)); }

    void prepare(Between& row, int v, int place)
    {
        row.down = m_down;
        row.down.base += fixed(v * m_nextDown);
        row.along = m_along;
        row.along.base += fixed(v * m_nextAlong);
        row.left = row.along.base >> kShift;
        row.first = std::clamp<std::int64_t>(row.left, 0, m_page.width);
        row.last = std::clamp<std::int64_t>(row.left + m_width + 2, row.first, m_page.width);
        row.pixels = m_between.data() + place * m_betweenBytes;
        std::fill_n(row.pixels, (row.first - row.left) * m_channels, std::uint8_t { 255 });
    }

    /// Columns `from` to `to - 1`, of those that are on the page.
    void columns(Between& row, std::int64_t from, std::int64_t to)
    {
        const std::int64_t last = std::min(to, row.last);
        for (std::int64_t x = from; x < last; x += kLineBytes / m_channels) {
            const std::int64_t y = (row.down.at(x) >> kShift) + kBlockRows + 1;
            __builtin_prefetch(line(y) + x * m_channels, 0, 2);
        }
        for (std::int64_t x = std::max(from, row.first); x < last;) {
            const std::int64_t end = row.down.nextStep(x, last);
            const std::int64_t y = row.down.at(x) >> kShift;
            m_loops.mix(line(y) + x * m_channels, line(y + 1) + x * m_channels,
                m_downParts.data() + x * m_channels, static_cast<std::uint16_t>(row.down.base),
                row.pixels + (x - row.left) * m_channels,
                static_cast<std::size_t>((end - x) * m_channels),
                static_cast<std::size_t>(
                    std::min<std::int64_t>(kSpare, (m_page.width - end) * m_channels)));
            x = end;
        }
    }

    void along(const Between& row, std::uint8_t* out)
    {
        const std::int64_t behind = (row.left + m_width + 2 - row.last) * m_channels;
        std::fill_n(row.pixels + (row.last - row.left) * m_channels, behind, std::uint8_t { 255 });
        for (std::int64_t u = 0; u < m_width;) {
            const std::int64_t end = row.along.nextStep(u, m_width);
            const std::uint8_t* const a =
                row.pixels + ((row.along.at(u) >> kShift) + u - row.left) * m_channels;
            m_loops.mix(a, a + m_channels, m_alongParts.data() + u * m_channels,
                static_cast<std::uint16_t>(row.along.base), out + u * m_channels,
                static_cast<std::size_t>((end - u) * m_channels),
                static_cast<std::size_t>(
                    std::min<std::int64_t>(kSpare, (m_width - end) * m_channels)));
            u = end;
        }
    }

    const std::uint8_t* line(std::int64_t y) const
    {
        return y >= 0 && y < m_page.height ? m_page.row(static_cast<int>(y)) : m_white.data();
    }

    const Page& m_page;
    const RowLoops& m_loops;
    const std::int64_t m_channels;
    const std::int64_t m_width;
    const Ramp m_down; ///< of row 0 of the result, and what each further one adds to its base
    const double m_nextDown;
    const Ramp m_along;
    const double m_nextAlong;
    const std::vector<std::uint16_t> m_downParts;
    const std::vector<std::uint16_t> m_alongParts;
    const std::vector<std::uint8_t> m_white;
    const std::int64_t m_betweenBytes; ///< of one row
    std::vector<std::uint8_t> m_between;
    std::array<Between, kBlockRows> m_block;
};

void turnBits(const Page& page, const TiltedRect& rect, Page& result)
{
    const double radians = rect.degrees * units::kPi / 180.0;
    const std::int64_t stepX = fixed(std::cos(radians));
    const std::int64_t stepY = fixed(std::sin(radians));
    std::fill(result.pixels.begin(), result.pixels.end(), std::uint8_t { 0 });
    for (int v = 0; v < result.height; ++v) {
        std::int64_t x = fixed(rect.x - v * std::sin(radians) + 0.5);
        std::int64_t y = fixed(rect.y + v * std::cos(radians) + 0.5);
        std::uint8_t* const out = result.row(v);
        for (int u = 0; u < result.width; ++u, x += stepX, y += stepY) {
            const std::int64_t column = x >> kShift;
            const std::int64_t line = y >> kShift;
            if (column >= 0 && line >= 0 && column < page.width && line < page.height
                && ((page.row(static_cast<int>(line))[column >> 3] >> (7 - (column & 7))) & 1)
                    != 0) {
                out[u >> 3] = static_cast<std::uint8_t>(out[u >> 3] | (0x80 >> (u & 7)));
            }
        }
    }
}

void extractInto(const Page& page, const TiltedRect& rect, Page& result)
{
    result.allocate(std::max(1, static_cast<int>(std::lround(rect.width))),
        std::max(1, static_cast<int>(std::lround(rect.height))), page.format);
    if (page.format == PixelFormat::kBlackWhite) {
        turnBits(page, rect, result);
        return;
    }
    Turn turn(page, rect, result.width, page.format == PixelFormat::kRgb ? 3 : 1);
    for (int v = 0; v < result.height; v += kBlockRows) {
        turn.rows(v, std::min(kBlockRows, result.height - v), result);
    }
}

} // namespace

Page extracted(const Page& page, const TiltedRect& rect)
{
    Page result = withoutPixels(page);
    extractInto(page, rect, result);
    return result;
}

void extract(Page& page, const TiltedRect& rect)
{
    thread_local std::vector<std::uint8_t> spare;
    Page result;
    result.pixels.swap(spare);
    extractInto(page, rect, result);
    page.width = result.width;
    page.height = result.height;
    page.pixels.swap(result.pixels);
    spare.swap(result.pixels);
}

} // namespace orva
