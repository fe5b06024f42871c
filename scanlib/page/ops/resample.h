// Takes an upright rectangle out of a tilted page.
#pragma once

#include "scanlib/base/page.h"

namespace orva {

/// Page pixels; the rectangle's left edge runs along the tilt, its top left corner is (x, y).
struct TiltedRect
{
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;
    double degrees = 0; ///< clockwise, how far its top edge runs downhill
};

/// Grey and colour are interpolated between four pixels, black-and-white takes the nearest; outside
/// the page is white.
Page extracted(const Page& page, const TiltedRect& rect);

} // namespace orva
