// Where the letters of a recognised line go in an invisible text layer. Pixels of the page.
#pragma once

#include "scanlib/base/page_text.h"

#include <vector>

namespace orva {

/// A word, or the blank behind one; its letters share its length evenly.
struct LayerRun
{
    std::vector<char32_t> letters; ///< never empty
    double start = 0; ///< x of the left end; y of the upper end on a vertical line
    double length = 0; ///< above 0
};

struct LayerLine
{
    bool vertical = false; ///< letters below each other
    double size = 0; ///< of the font: kAscent of it stand above the base line
    double base = 0; ///< y of the base line at x = 0; on a vertical line its x
    double slope = 0; ///< pixels down for each to the right; 0 on a vertical line
    std::vector<LayerRun> runs; ///< in reading order
};

/// Part of the font's size above and below the base line.
inline constexpr double kAscent = 0.8;
inline constexpr double kDescent = 0.2;

/// Blanks stand where a reader would type them. A word that is followed without one reaches to the
/// next, so that programs that copy text see no gap.
LayerLine layerLine(const TextLine& line);

} // namespace orva
