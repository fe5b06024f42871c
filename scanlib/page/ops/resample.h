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
    double degrees = 0; ///< clockwise, how far its top edge runs downhill; -45..45
};

/// Grey and colour are interpolated between neighbours, first down the columns, then along the rows
/// (Catmull and Smith, 3-D transformations of images in scanline order, 1980): both steps are
/// mixtures of two shifted rows, which needs no address a pixel. Black-and-white takes the nearest.
/// Outside the page is white. Without tilt and with whole numbers pixels are copied exactly.
Page extracted(const Page& page, const TiltedRect& rect);

/// The same in place. Memory of the thread's page before is used again: fresh memory is dearer than
/// the turn itself.
void extract(Page& page, const TiltedRect& rect);

} // namespace orva
