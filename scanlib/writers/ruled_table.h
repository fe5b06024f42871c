// Tables that the page rules: boxes between printed lines, and the words in them.
#pragma once

#include "scanlib/base/page_text.h"
#include "scanlib/writers/page_rulings.h"

#include <vector>

namespace orva {

/// A box of a table. Pixels of the straight page; row and column from 0.
struct RuledCell
{
    int row = 0;
    int column = 0;
    int rows = 1; ///< more than one: no line divides it from what lies below
    int columns = 1;
    double left = 0;
    double top = 0;
    double right = 0;
    double bottom = 0;
};

struct RuledTable
{
    std::vector<double> edgesX; ///< one more than columns
    std::vector<double> edgesY;
    std::vector<RuledCell> cells; ///< from left to right, row by row
};

/// Lines that meet form a table when they part it into at least four boxes. From top to bottom.
std::vector<RuledTable> findRuledTables(const Rulings& rulings, double dpi);

/// The lines of text in the box, in their order on the page, cut from the lines of the page: a word
/// belongs where its middle lies; boxes of lines stay whole. What was read from the printed lines
/// themselves is left out.
Paragraph textInBox(const PageText& straight, const RuledCell& box);

/// The page without the words in the table.
void removeTable(PageText& straight, const RuledTable& table);

} // namespace orva
