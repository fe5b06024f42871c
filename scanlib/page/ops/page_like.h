// A new page for what becomes of another one.
#pragma once

#include "scanlib/base/page.h"

namespace orva {

/// The page's resolution and its place in the batch. No size, no pixels.
inline Page withoutPixels(const Page& page)
{
    Page result;
    result.dpiX = page.dpiX;
    result.dpiY = page.dpiY;
    result.sheet = page.sheet;
    result.side = page.side;
    result.number = page.number;
    result.stream = page.stream;
    return result;
}

} // namespace orva
