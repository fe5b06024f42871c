// Rows and columns in recognised text, from the places of the words and the lines that the page
// rules. A pure function: no picture is looked at here.
#pragma once

#include "scanlib/base/page_text.h"
#include "scanlib/writers/page_rulings.h"

#include <string>
#include <vector>

namespace orva {

struct TableCell
{
    int column = 0; ///< from 0
    int columns = 1; ///< more than one: the cell spans them
    std::string text; ///< UTF-8; a line feed where the author began a new line
    int rows = 1; ///< more than one: the cell spans them, and those below leave its columns out
    bool isWrapped = false; ///< of a table: lines break at the border of the cell
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

/// The page is laid straight first. A table that the page rules has the rows, columns and spans of
/// its boxes, whatever the number of lines in them; boxes of one row that hold the lines of several
/// entries side by side are parted between these.
///
/// Elsewhere lines are put into rows by their base lines. A table is at least two rows that follow
/// each other and have several parts with wide gaps between them; its columns are the places that
/// these parts have in common over the rows, and a part over several columns is a merged cell. A
/// row that only goes on with full lines of the one above is part of it. Running text in columns is
/// no table: it comes in reading order.
///
/// `rulings` are those of the page turned by textSlope() of the same text; `dpi` is the page's.
SheetLayout findTables(const PageText& text, const Rulings& rulings = {}, double dpi = 0);

} // namespace orva
