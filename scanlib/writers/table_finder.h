// Rows and columns in recognised text. A pure function of the words' places: no picture, no lines
// drawn on the page.
#pragma once

#include "scanlib/base/page_text.h"

#include <string>
#include <vector>

namespace orva {

struct TableCell
{
    int column = 0; ///< from 0
    int columns = 1; ///< more than one: the cell spans them
    std::string text; ///< UTF-8, one line
};

/// Cells from left to right; columns without a cell are empty. Text outside tables is a row of one
/// cell in column 0, or of one cell a part where wide gaps cut it.
struct TableRow
{
    std::vector<TableCell> cells;
};

struct SheetLayout
{
    std::vector<TableRow> rows; ///< from top to bottom
    std::vector<int> columnPixels; ///< widths; only the columns that tables have
};

/// Lines are put into rows by their base lines, the page's slope taken out. A table is at least two
/// rows that follow each other and have several parts with wide gaps between them; its columns are
/// the places that these parts have in common over the rows, and a part over several columns is a
/// merged cell. Running text in columns is no table: it comes in reading order.
SheetLayout findTables(const PageText& text);

} // namespace orva
