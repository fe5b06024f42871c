// Between colour and grey.
#pragma once

#include "scanlib/base/page.h"

#include <cstdint>

namespace orva {

/// Weights of red, green and blue in 1/256, ITU-R BT.601 (0.299, 0.587, 0.114): what scanners and
/// JPEG call luminance. They add up to 256, so that grey input keeps its value exactly.
inline constexpr int kRedWeight = 77;
inline constexpr int kGreenWeight = 150;
inline constexpr int kBlueWeight = 29;

inline std::uint8_t luma(int red, int green, int blue)
{
    return static_cast<std::uint8_t>(
        (kRedWeight * red + kGreenWeight * green + kBlueWeight * blue + 128) >> 8);
}

/// Writes the grey values of one row: `page.width` bytes. Of a black-and-white page 0 and 255.
void grayRow(const Page& page, int y, std::uint8_t* out);

/// 8 bits a pixel, whatever came in. A grey page is left alone.
void toGray(Page& page);
/// 3 bytes a pixel, whatever came in. A colour page is left alone.
void toRgb(Page& page);

} // namespace orva
