// A page as the recognition sees it: grey, whole or a part, in its own size or reduced.
#pragma once

#include "scanlib/base/page.h"
#include "scanlib/base/page_text.h"

#include <cstdint>
#include <vector>

namespace orva {

struct GrayPicture
{
    int width = 0;
    int height = 0;
    int dpi = 0;
    std::vector<std::uint8_t> pixels; ///< width x height, top row first, 0 is black
};

/// Any pixel format. The box lies within the page; each pixel of the picture is the mean of
/// `reduction` x `reduction` of the page's. Memory that the picture has is used again.
void takeGray(const Page& page, const TextBox& part, int reduction, GrayPicture& out);
TextBox wholePage(const Page& page);

/// A quarter turn clockwise.
void turnRight(GrayPicture& picture);

} // namespace orva
