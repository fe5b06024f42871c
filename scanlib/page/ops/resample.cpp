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
#include "scanlib/page/ops/vectors.h"

#include <algorithm>
#include <cmath>

namespace orva {

namespace {

constexpr int kShift = 16;
constexpr std::int64_t kOne = std::int64_t { 1 } << kShift;

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

std::uint8_t mixed(unsigned a, unsigned b, unsigned part)
{
    return static_cast<std::uint8_t>((a * (256U - part) + b * part + 128U) >> 8U);
}

/// out = a + (b - a) x part, byte by byte; the part of byte i is (parts[i] + base) / 65536.
void mix(const std::uint8_t* a, const std::uint8_t* b, const std::uint16_t* parts,
    std::uint16_t base, std::uint8_t* out, std::int64_t count)
{
    const auto eight = [&](std::int64_t i) {
        const Words8 part = (loadWords(parts + i) + base) >> 8U;
        const Words8 sum = loadBytes(a + i) * (256 - part) + loadBytes(b + i) * part + 128;
        storeBytes(sum >> 8U, out + i);
    };
    if (count < 8) {
        for (std::int64_t i = 0; i < count; ++i) {
            out[i] = mixed(a[i], b[i], static_cast<std::uint16_t>(parts[i] + base) >> 8U);
        }
        return;
    }
    for (std::int64_t i = 0; i + 8 <= count; i += 8) {
        eight(i);
    }
    eight(count - 8);
}

class Turn
{
public:
    Turn(const Page& page, const TiltedRect& rect, int width, int channels)
        : m_page(page)
        , m_rect(rect)
        , m_radians(rect.degrees * units::kPi / 180.0)
        , m_channels(channels)
        , m_width(width)
        , m_down(fixed(std::tan(m_radians)))
        , m_along(fixed(std::cos(m_radians)) - kOne)
        , m_downParts(partsOf(m_down, page.width, channels))
        , m_alongParts(partsOf(m_along, width, channels))
        , m_white(page.stride(), 255)
        , m_between((static_cast<std::size_t>(width) + 4) * static_cast<std::size_t>(channels))
    {
    }

    void row(int v, std::uint8_t* out)
    {
        Ramp along; // of x(u) - u
        along.base = fixed(m_rect.x - v * std::sin(m_radians));
        along.slope = m_along;
        const std::int64_t left = along.base >> kShift;
        columns(v, left);
        for (std::int64_t u = 0; u < m_width;) {
            const std::int64_t end = along.nextStep(u, m_width);
            const std::uint8_t* const a =
                m_between.data() + ((along.at(u) >> kShift) + u - left) * m_channels;
            mix(a, a + m_channels, m_alongParts.data() + u * m_channels,
                static_cast<std::uint16_t>(along.base), out + u * m_channels,
                (end - u) * m_channels);
            u = end;
        }
    }

private:
    /// The row between: columns `left` to `left + width + 1` of the page, white outside of it.
    void columns(int v, std::int64_t left)
    {
        Ramp down;
        down.slope = m_down;
        down.base = fixed(m_rect.y + v / std::cos(m_radians) - m_rect.x * std::tan(m_radians));
        const std::int64_t count = static_cast<std::int64_t>(m_between.size()) / m_channels;
        const std::int64_t first = std::clamp<std::int64_t>(left, 0, m_page.width);
        const std::int64_t last = std::clamp<std::int64_t>(left + count, first, m_page.width);
        const auto at = [&](std::int64_t x) { return m_between.data() + (x - left) * m_channels; };
        std::fill(m_between.begin(), m_between.end(), std::uint8_t { 255 });
        for (std::int64_t x = first; x < last;) {
            const std::int64_t end = down.nextStep(x, last);
            const std::int64_t y = down.at(x) >> kShift;
            mix(line(y) + x * m_channels, line(y + 1) + x * m_channels,
                m_downParts.data() + x * m_channels, static_cast<std::uint16_t>(down.base), at(x),
                (end - x) * m_channels);
            x = end;
        }
    }
    const std::uint8_t* line(std::int64_t y) const
    {
        return y >= 0 && y < m_page.height ? m_page.row(static_cast<int>(y)) : m_white.data();
    }

    const Page& m_page;
    const TiltedRect m_rect;
    const double m_radians;
    const std::int64_t m_channels;
    const std::int64_t m_width;
    const std::int64_t m_down;
    const std::int64_t m_along;
    const std::vector<std::uint16_t> m_downParts;
    const std::vector<std::uint16_t> m_alongParts;
    const std::vector<std::uint8_t> m_white;
    std::vector<std::uint8_t> m_between;
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
    for (int v = 0; v < result.height; ++v) {
        turn.row(v, result.row(v));
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
