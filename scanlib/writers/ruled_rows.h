// The rows of a sheet from the boxes of a ruled table.
#pragma once

#include "scanlib/base/page_text.h"
#include "scanlib/writers/ruled_table.h"
#include "scanlib/writers/table_finder.h"

#include <vector>

namespace orva {

/// One row of the sheet for each of the table, and more where the boxes of one row hold several
/// entries: at least three lines side by side that all end before they are full.
std::vector<TableRow> ruledRows(const PageText& straight, const RuledTable& table);

} // namespace orva
