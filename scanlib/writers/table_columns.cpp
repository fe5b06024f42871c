#include "scanlib/writers/table_columns.h"

#include <algorithm>
#include <cstddef>

namespace orva {

namespace {

// In em squares of the row.
constexpr double kNarrowCellGap = 0.45; ///< where the other rows show a border of columns
constexpr double kOverlap = 0.3; ///< at least, for two parts to be of one column
constexpr double kSameColumnGap = 2; ///< at most, between columns that are never both filled

bool overlaps(const RowPart& part, const TableColumn& column, double em)
{
    const int common = std::min(part.right, column.right) - std::max(part.left, column.left);
    const int narrower = std::min(part.right - part.left, column.right - column.left);
    return common > std::min(kOverlap * em, narrower / 2.0);
}

} // namespace

std::pair<int, int> columnsOf(
    const RowPart& part, const std::vector<TableColumn>& columns, double em)
{
    int first = static_cast<int>(columns.size());
    int last = -1;
    for (int i = 0; i < static_cast<int>(columns.size()); ++i) {
        if (overlaps(part, columns[static_cast<std::size_t>(i)], em)) {
            first = std::min(first, i);
            last = i;
        }
    }
    return { first, last };
}

std::vector<TableColumn> placesOf(const std::vector<TextRow>& rows)
{
    std::vector<std::pair<const RowPart*, double>> parts;
    for (const TextRow& row : rows) {
        for (const RowPart& part : row.parts) {
            parts.emplace_back(&part, row.em);
        }
    }
    std::stable_sort(parts.begin(), parts.end(), [](const auto& a, const auto& b) {
        return a.first->right - a.first->left < b.first->right - b.first->left;
    });
    std::vector<TableColumn> columns;
    for (const auto& [part, em] : parts) {
        const auto [first, last] = columnsOf(*part, columns, em);
        if (first > last) {
            const auto behind = std::find_if(columns.begin(), columns.end(),
                [left = part->left](const TableColumn& column) { return column.left > left; });
            columns.insert(behind, { part->left, part->right });
        } else if (first == last) {
            TableColumn& column = columns[static_cast<std::size_t>(first)];
            column.left = std::min(column.left, part->left);
            column.right = std::max(column.right, part->right);
        }
    }
    return columns;
}

namespace {

/// Whether two neighbours are one column: parts lie over both more often than in each of them (a
/// spread heading, 姓　名), or there is never anything in both and hardly a gap (a centred heading
/// over flush numbers).
bool isOneColumn(
    const std::vector<TextRow>& rows, const std::vector<TableColumn>& columns, int left)
{
    int over = 0;
    int both = 0;
    double em = 1;
    for (const TextRow& row : rows) {
        bool inLeft = false;
        bool inRight = false;
        em = std::max(em, row.em);
        for (const RowPart& part : row.parts) {
            const auto [first, last] = columnsOf(part, columns, row.em);
            over += first <= left && last > left ? 1 : 0;
            inLeft = inLeft || last == left;
            inRight = inRight || first == left + 1;
        }
        both += inLeft && inRight ? 1 : 0;
    }
    const TableColumn& a = columns[static_cast<std::size_t>(left)];
    const TableColumn& b = columns[static_cast<std::size_t>(left) + 1];
    return over > both || (both == 0 && b.left - a.right < kSameColumnGap * em);
}

} // namespace

std::vector<TableColumn> columnsOfRows(const std::vector<TextRow>& rows)
{
    std::vector<TableColumn> columns = placesOf(rows);
    for (int left = 0; left + 1 < static_cast<int>(columns.size());) {
        if (!isOneColumn(rows, columns, left)) {
            ++left;
            continue;
        }
        const auto at = columns.begin() + left;
        at->right = std::max(at->right, (at + 1)->right);
        columns.erase(at + 1);
        left = std::max(0, left - 1);
    }
    return columns;
}

std::vector<RowPart> cutAtBorders(
    const RowPart& part, const std::vector<TableColumn>& columns, double em)
{
    std::vector<RowPart> pieces;
    for (const Word* const word : part.words) {
        bool cut = pieces.empty();
        if (!cut && word->box.left - pieces.back().right > kNarrowCellGap * em) {
            const int from = pieces.back().right;
            const int to = word->box.left;
            for (std::size_t i = 1; i < columns.size(); ++i) {
                cut = cut
                    || (from < columns[i].left && columns[i - 1].right < to
                        && part.left < columns[i - 1].right && columns[i].left < part.right);
            }
        }
        if (cut) {
            pieces.push_back({ word->box.left, word->box.right, {} });
        }
        pieces.back().right = std::max(pieces.back().right, word->box.right);
        pieces.back().words.push_back(word);
    }
    return pieces;
}

} // namespace orva
