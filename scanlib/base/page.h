// One scanned side as pixels in memory, top row first, with what must travel with it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace orva {

enum class PixelFormat
{
    kBlackWhite, ///< 1 bit a pixel, most significant bit first, 1 is black
    kGray, ///< 8 bits, 0 is black
    kRgb, ///< 3 bytes, red first
};

enum class Side
{
    kFront,
    kBack
};

inline int bitsPerPixel(PixelFormat format)
{
    return format == PixelFormat::kBlackWhite ? 1 : format == PixelFormat::kGray ? 8 : 24;
}

/// Rows are padded to whole bytes, nothing more: bytesPerLine = ceil(width x bits / 8).
inline std::size_t bytesPerLine(int width, PixelFormat format)
{
    return (static_cast<std::size_t>(width) * static_cast<std::size_t>(bitsPerPixel(format)) + 7)
        / 8;
}

struct Page
{
    int width = 0; ///< pixels
    int height = 0; ///< pixels
    PixelFormat format = PixelFormat::kRgb;
    double dpiX = 0; ///< dots per inch
    double dpiY = 0;
    std::vector<std::uint8_t> pixels; ///< height x bytesPerLine

    int sheet = 0; ///< from 1, in the order of feeding
    Side side = Side::kFront;
    int number = 0; ///< from 1, the order in which the sides were scanned
    std::string stream; ///< tag in the file name when one side gives several files; empty else

    std::size_t stride() const { return bytesPerLine(width, format); }
    const std::uint8_t* row(int y) const
    {
        return pixels.data() + stride() * static_cast<std::size_t>(y);
    }
    std::uint8_t* row(int y) { return pixels.data() + stride() * static_cast<std::size_t>(y); }
    std::size_t bytes() const { return pixels.size(); }
    void allocate(int newWidth, int newHeight, PixelFormat newFormat)
    {
        width = newWidth;
        height = newHeight;
        format = newFormat;
        pixels.resize(stride() * static_cast<std::size_t>(height));
    }
};

} // namespace orva
