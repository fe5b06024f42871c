#include "scanlib/ocr/straightening.h"

#include "scanlib/base/units.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace orva {

namespace {

constexpr std::uint8_t kWhite = 255;
/// Positions are kept in 65,536ths of a pixel; the weights of the four neighbours in 256ths.
constexpr int kFractionBits = 16;
constexpr double kOne = 1 << kFractionBits;

int side(double length)
{
    return std::max(1, static_cast<int>(std::lround(length)));
}

unsigned weight(std::int64_t position)
{
    return static_cast<unsigned>((position >> (kFractionBits - 8)) & 0xFF);
}

/// `x` and `y` in 65,536ths; white where one of the four pixels is missing.
std::uint8_t between(const GrayPicture& picture, std::int64_t x, std::int64_t y)
{
    const std::int64_t left = x >> kFractionBits;
    const std::int64_t top = y >> kFractionBits;
    if (left < 0 || top < 0 || left + 1 >= picture.width || top + 1 >= picture.height) {
        return kWhite;
    }
    const std::uint8_t* const above = picture.pixels.data() + top * picture.width + left;
    const std::uint8_t* const below = above + picture.width;
    const unsigned right = weight(x);
    const unsigned down = weight(y);
    const unsigned first = above[0] * (256 - right) + above[1] * right;
    const unsigned second = below[0] * (256 - right) + below[1] * right;
    return static_cast<std::uint8_t>((first * (256 - down) + second * down + (1U << 15U)) >> 16U);
}

TextBox united(const TextBox& a, const TextBox& b)
{
    return { std::min(a.left, b.left), std::min(a.top, b.top), std::max(a.right, b.right),
        std::max(a.bottom, b.bottom) };
}

} // namespace

Straightening::Straightening(int width, int height, double degrees)
    : m_width(width)
    , m_height(height)
    , m_cos(std::cos(degrees * units::kPi / 180))
    , m_sin(std::sin(degrees * units::kPi / 180))
    , m_straightWidth(side(width * m_cos + height * std::abs(m_sin)))
    , m_straightHeight(side(height * m_cos + width * std::abs(m_sin)))
{
}

Straightening::Point Straightening::tilted(double x, double y) const
{
    const double fromMiddleX = x - m_straightWidth / 2.0;
    const double fromMiddleY = y - m_straightHeight / 2.0;
    return { m_width / 2.0 + fromMiddleX * m_cos - fromMiddleY * m_sin,
        m_height / 2.0 + fromMiddleX * m_sin + fromMiddleY * m_cos };
}

void Straightening::straighten(const GrayPicture& picture, GrayPicture& out) const
{
    out.width = m_straightWidth;
    out.height = m_straightHeight;
    out.dpi = picture.dpi;
    out.pixels.resize(static_cast<std::size_t>(out.width) * static_cast<std::size_t>(out.height));
    const auto stepX = static_cast<std::int64_t>(std::lround(m_cos * kOne));
    const auto stepY = static_cast<std::int64_t>(std::lround(m_sin * kOne));
    std::uint8_t* to = out.pixels.data();
    for (int row = 0; row < out.height; ++row) {
        // middles of pixels lie at halves
        const Point first = tilted(0.5, row + 0.5);
        auto x = static_cast<std::int64_t>(std::llround((first.x - 0.5) * kOne));
        auto y = static_cast<std::int64_t>(std::llround((first.y - 0.5) * kOne));
        for (int column = 0; column < out.width; ++column, x += stepX, y += stepY) {
            *to++ = between(picture, x, y);
        }
    }
}

TextBox Straightening::tilted(const TextBox& box) const
{
    const Point middle = tilted((box.left + box.right) / 2.0, (box.top + box.bottom) / 2.0);
    const double halfWidth = box.width() * m_cos / 2;
    const double halfHeight = box.height() * m_cos / 2;
    const auto whole = [](double value) { return static_cast<int>(std::lround(value)); };
    return { whole(middle.x - halfWidth), whole(middle.y - halfHeight), whole(middle.x + halfWidth),
        whole(middle.y + halfHeight) };
}

void Straightening::tiltBack(PageText& text) const
{
    for (Paragraph& paragraph : text.paragraphs) {
        for (TextLine& line : paragraph.lines) {
            const Point left = tilted(line.box.left, line.baselineLeft);
            const Point right = tilted(line.box.right, line.baselineRight);
            line.box = tilted(line.box);
            // the base line is asked for at the ends of the box
            const double slope = (right.y - left.y) / std::max(1.0, right.x - left.x);
            line.baselineLeft =
                static_cast<int>(std::lround(left.y + slope * (line.box.left - left.x)));
            line.baselineRight =
                static_cast<int>(std::lround(left.y + slope * (line.box.right - left.x)));
            for (Word& word : line.words) {
                word.box = tilted(word.box);
            }
            const bool isFirst = &line == &paragraph.lines.front();
            paragraph.box = isFirst ? line.box : united(paragraph.box, line.box);
        }
    }
}

} // namespace orva
