// Which recognised texts are numbers in a spreadsheet. Only those that look the same afterwards.
#pragma once

#include <optional>
#include <string>

namespace orva {

struct CellNumber
{
    double value = 0;
    std::string format; ///< of the spreadsheet: "0", "#,##0.00", "0.0%" ...
};

/// Plain, grouped by commas, or with a percent sign; up to 15 digits, up to 6 behind the point.
/// Nothing for what would lose something: leading zeros (007), signs (+5), long identifiers.
std::optional<CellNumber> cellNumberOf(const std::string& text);

} // namespace orva
