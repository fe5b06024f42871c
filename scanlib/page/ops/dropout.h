// Colour dropout: what is printed in one colour (forms, stamps, rules) disappears into the paper.
#pragma once

#include "scanlib/base/page.h"
#include "sdk/codes.h"

namespace orva {

/// Needs a colour page; others are left alone. Levels count against the page's own paper, so that
/// yellow paper is not half red.
/// By how much the colour's channel exceeds the larger of the others says how much ink of that
/// colour lies there, and the pixel becomes lighter by as much, up to the paper: ink of that colour
/// is gone, black print under it stays, mixed edges fade without a seam. Below 12 levels nothing
/// happens, from 36 on all of it. Reinforced: from 6 to 18 levels, and lighter by five times as
/// much, which also takes dark and dull shades. `keepColor` false: the page goes on in grey, whose
/// level is that of the colour's channel.
void dropColor(Page& page, ColorDropout color, bool reinforced, bool keepColor);

} // namespace orva
