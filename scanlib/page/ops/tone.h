// All that changes the tones of a page, in one pass over it: background, automatic levels,
// brightness, contrast and gamma.
#pragma once

#include "scanlib/base/page.h"

#include <array>
#include <cstdint>

namespace orva {

using ToneTable = std::array<std::uint8_t, 256>;

/// With x the level from 0 (black) to 1 (white):
///   contrast c (-100..100) turns the curve around the middle, y = (x - 1/2) k + 1/2, with the
///   slope
///     k = (100 + c) / 100 for c <= 0 (at -100 everything is mid-grey),
///     k = 100 / (100 - c) for c > 0  (at 100 the curve is a step);
///   brightness b (-100..100) moves it, y + b / 100, so that at 100 all is white and at -100 black;
///   gamma g (0.1..5.0) comes last, y ^ (1 / g): above 1 the middle tones become lighter, black and
///     white stay.
ToneTable toneTable(int brightness, int contrast, double gamma);

struct ToneRequest
{
    bool removeBackground = false;
    bool autoLevels = false; ///< in place of the three below
    int brightness = 0;
    int contrast = 0;
    double gamma = 1.0;
};

/// Grey and colour; black-and-white pages have no tones and are left alone.
/// Background removal: the paper (paper_map.h), less 8 percent for grain and what shows through,
/// becomes white in every channel at every place, darker values are stretched with it, black stays;
/// pictures without paper are left alone. Then the levels (levels.h) of what that leaves, or the
/// table above.
void applyTones(Page& page, const ToneRequest& request);

} // namespace orva
