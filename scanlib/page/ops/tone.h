// Brightness, contrast and gamma in one look-up table and one pass.
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

/// Puts every byte of a grey or colour page through the table. Black-and-white pages have no tones
/// and are left alone.
void applyTone(Page& page, const ToneTable& table);
/// The same with a table for each channel, red first; of a grey page the first one counts.
void applyTone(Page& page, const std::array<ToneTable, 3>& tables);

} // namespace orva
