// Which characters of two texts are the same, by the least number of edits (Levenshtein 1966).
#pragma once

#include <QString>

#include <vector>

namespace truth {

struct Alignment
{
    int edits = 0; ///< insertions, deletions and substitutions
    std::vector<int> match; ///< for each character of `got` its equal in `wanted`, -1 without
};

/// Time and memory grow with the product of the lengths; pages of some thousand characters are
/// fine.
Alignment aligned(const QString& wanted, const QString& got);

/// NFKC, plain quotation marks and dashes, no white space. One input character can become several.
QString normalised(const QString& text);

} // namespace truth
