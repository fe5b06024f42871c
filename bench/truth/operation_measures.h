// Quality of the page operations over a truth set, one table row each.
#pragma once

#include <QString>

#include <string>
#include <vector>

namespace truth {

struct Row
{
    std::string operation;
    int pages = 0;
    std::string quality;
    double ms = 0; ///< processor time a page, median; 0: not measured
};

/// Reads NAME.jpg, NAME.json and the layers of every page. Throws std::runtime_error when one of
/// them or an operation fails. One thread.
std::vector<Row> measureOperations(const QString& folder);

} // namespace truth
