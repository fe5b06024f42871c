// The columns of tables without printed lines, from where the parts of their rows lie.
#pragma once

#include "scanlib/writers/text_rows.h"

#include <utility>
#include <vector>

namespace orva {

/// Pixels of the straight page.
struct TableColumn
{
    int left = 0;
    int right = 0;
};

/// First and last column that the part lies in; first > last for none. `em` is that of its row.
std::pair<int, int> columnsOf(
    const RowPart& part, const std::vector<TableColumn>& columns, double em);

/// Where the parts of the rows lie one above the other. The narrow ones come first, so that a
/// merged cell finds the columns that it spans.
std::vector<TableColumn> placesOf(const std::vector<TextRow>& rows);

/// The same, with places joined that are two sides of one column.
std::vector<TableColumn> columnsOfRows(const std::vector<TextRow>& rows);

/// Cuts a part where one of its own gaps lies on a border of columns that other rows show.
std::vector<RowPart> cutAtBorders(
    const RowPart& part, const std::vector<TableColumn>& columns, double em);

} // namespace orva
