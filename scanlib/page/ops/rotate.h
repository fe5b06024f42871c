// Turns by quarter steps, exact for every size and pixel format.
#pragma once

#include "scanlib/base/page.h"
#include "sdk/codes.h"

namespace orva {

/// kRight90 turns clockwise. Quarter turns swap width and height, and dpiX and dpiY.
void rotate(Page& page, RotateAngle angle);

} // namespace orva
