// Divides a line of text into the cells of its letters.
#pragma once

#include "scanlib/ocr/ink_profile.h"

#include <vector>

namespace orva {

/// A letter, or the blank before a word. Lengths are in ems, the width of a Chinese letter.
struct Cell
{
    double width = 1; ///< usual
    double slack = 0.1; ///< standard deviation of the width
    bool mark = false; ///< full-width punctuation: ink in a part of the cell
    bool blank = false;
    double expected = 0; ///< pixel at which the recogniser lets it end
    bool endsWord = false;
};

/// The borders of cells from the first column with ink to the last: of all ways to divide the line
/// the one that goes through least ink with cells closest to their usual widths (dynamic
/// programming). The first cell's beginning and the ends of all, pixels; empty when there is no
/// way, or when the letters would be far from as wide as the line is high.
std::vector<int> cellBorders(const InkProfile& ink, const std::vector<Cell>& cells, int lineHeight);

} // namespace orva
