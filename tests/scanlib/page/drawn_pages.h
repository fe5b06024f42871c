// Pages drawn pixel by pixel, so that every test knows what is on them.
#pragma once

#include "scanlib/base/page.h"

#include <algorithm>
#include <cstdint>
#include <random>

namespace orva {

struct Color
{
    int red = 255;
    int green = 255;
    int blue = 255;
};

inline constexpr Color kWhite { 255, 255, 255 };
inline constexpr Color kBlack { 0, 0, 0 };

inline void setPixel(Page& page, int x, int y, Color color)
{
    std::uint8_t* const row = page.row(y);
    switch (page.format) {
    case PixelFormat::kBlackWhite: {
        const auto bit = static_cast<std::uint8_t>(0x80 >> (x & 7));
        row[x / 8] =
            static_cast<std::uint8_t>(color.red < 128 ? row[x / 8] | bit : row[x / 8] & ~bit);
        break;
    }
    case PixelFormat::kGray:
        row[x] = static_cast<std::uint8_t>(color.red);
        break;
    case PixelFormat::kRgb:
        row[3 * x] = static_cast<std::uint8_t>(color.red);
        row[3 * x + 1] = static_cast<std::uint8_t>(color.green);
        row[3 * x + 2] = static_cast<std::uint8_t>(color.blue);
        break;
    }
}

/// Red, green, blue of a pixel; of a grey or black-and-white page three equal values.
inline Color pixel(const Page& page, int x, int y)
{
    const std::uint8_t* const row = page.row(y);
    switch (page.format) {
    case PixelFormat::kBlackWhite:
        return ((row[x / 8] >> (7 - x % 8)) & 1) != 0 ? kBlack : kWhite;
    case PixelFormat::kGray:
        return { row[x], row[x], row[x] };
    case PixelFormat::kRgb:
        break;
    }
    return { row[3 * x], row[3 * x + 1], row[3 * x + 2] };
}

inline bool operator==(Color a, Color b)
{
    return a.red == b.red && a.green == b.green && a.blue == b.blue;
}

inline void fillRect(Page& page, int left, int top, int width, int height, Color color)
{
    for (int y = std::max(0, top); y < std::min(page.height, top + height); ++y) {
        for (int x = std::max(0, left); x < std::min(page.width, left + width); ++x) {
            setPixel(page, x, y, color);
        }
    }
}

inline void fillDisc(Page& page, int centreX, int centreY, double radius, Color color)
{
    const int reach = static_cast<int>(radius) + 1;
    for (int y = std::max(0, centreY - reach); y <= std::min(page.height - 1, centreY + reach);
         ++y) {
        for (int x = std::max(0, centreX - reach); x <= std::min(page.width - 1, centreX + reach);
             ++x) {
            const double dx = x - centreX;
            const double dy = y - centreY;
            if (dx * dx + dy * dy <= radius * radius) {
                setPixel(page, x, y, color);
            }
        }
    }
}

inline Page blankPage(
    int width, int height, PixelFormat format, Color paper = kWhite, double dpi = 200)
{
    Page page;
    page.dpiX = page.dpiY = dpi;
    page.sheet = page.number = 1;
    page.allocate(width, height, format);
    fillRect(page, 0, 0, width, height, paper);
    return page;
}

/// Every pixel by chance, the same at every run.
inline Page noisePage(int width, int height, PixelFormat format, unsigned seed = 1)
{
    Page page = blankPage(width, height, format);
    std::mt19937 random(seed);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const unsigned bits = random();
            const int value = static_cast<int>(bits & 255U);
            setPixel(page, x, y,
                { value, static_cast<int>((bits >> 8) & 255U),
                    static_cast<int>((bits >> 16) & 255U) });
        }
    }
    return page;
}

/// Scanner noise: every value moves by at most `amount`.
inline void addNoise(Page& page, int amount, unsigned seed = 7)
{
    std::mt19937 random(seed);
    for (std::uint8_t& value : page.pixels) {
        const int moved =
            value + static_cast<int>(random() % (2U * static_cast<unsigned>(amount) + 1U)) - amount;
        value = static_cast<std::uint8_t>(std::min(255, std::max(0, moved)));
    }
}

/// Something like a line of print: words of strokes, about `heightPx` tall. Returns its end.
inline int drawTextLine(
    Page& page, int left, int top, int letters, int heightPx, Color ink = kBlack)
{
    const int stroke = std::max(1, heightPx / 8);
    int x = left;
    for (int i = 0; i < letters; ++i) {
        fillRect(page, x, top, stroke, heightPx, ink);
        fillRect(page, x, top + (i % 3) * (heightPx - stroke) / 2, heightPx / 2, stroke, ink);
        fillRect(page, x + heightPx / 2, top + heightPx / 3, stroke, heightPx - heightPx / 3, ink);
        x += heightPx * 4 / 5 + (i % 5 == 4 ? heightPx / 2 : 0);
    }
    return x;
}

} // namespace orva
