// Colour dropout: what is printed in one colour (forms, stamps, rules) disappears into the paper.
#pragma once

#include "scanlib/base/page.h"
#include "sdk/codes.h"

namespace orva {

/// Needs a colour page; others are left alone.
/// A page that is to stay in colour: pixels in which the colour exceeds both others by more than 40
/// levels become as light as that colour's own channel, without hue. A page that goes on in grey:
/// the channel itself, in which ink of that colour is as light as paper; the page is grey then.
/// Reinforced: pixels that exceed by more than 20 levels become white outright, which also takes
/// dark and pale shades.
void dropColor(Page& page, ColorDropout color, bool reinforced, bool keepColor);

} // namespace orva
