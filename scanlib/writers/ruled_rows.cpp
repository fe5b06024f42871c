#include "scanlib/writers/ruled_rows.h"

#include "scanlib/writers/flow_text.h"
#include "scanlib/writers/text_rows.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

namespace orva {

namespace {

constexpr std::size_t kLeastEntries = 3; // two lines of short words are rather one heading
constexpr double kSameLine = 0.4; // em squares between base lines side by side

struct FilledCell
{
    const RuledCell* box;
    std::vector<TextRow> lines; ///< from top to bottom
};

std::vector<const Word*> wordsOf(const TextRow& line)
{
    std::vector<const Word*> words;
    for (const RowPart& part : line.parts) {
        words.insert(words.end(), part.words.begin(), part.words.end());
    }
    return words;
}

/// A line ends early when the first word of the next would have found room.
bool endsEarly(const TextRow& line, const TextRow& next, double rightEdge)
{
    return rightEdge - line.parts.back().right
        > next.parts.front().words.front()->box.width() + next.em;
}

std::string textOf(const FilledCell& cell)
{
    int rightEdge = 0;
    for (const TextRow& line : cell.lines) {
        rightEdge = std::max(rightEdge, line.parts.back().right);
    }
    std::string text;
    const Word* last = nullptr;
    for (std::size_t i = 0; i < cell.lines.size(); ++i) {
        const std::vector<const Word*> words = wordsOf(cell.lines[i]);
        if (i > 0 && endsEarly(cell.lines[i - 1], cell.lines[i], rightEdge)) {
            text += '\n';
        } else if (last != nullptr && isBlankAtBreak(*last, *words.front())) {
            text += ' ';
        }
        text += orva::textOf(words);
        last = words.back();
    }
    return text;
}

/// Whether line i of both cells stands at the same height.
bool isBeside(const FilledCell& a, const FilledCell& b, std::size_t i)
{
    return std::abs(a.lines[i].baseline - b.lines[i].baseline) < kSameLine * a.lines[i].em;
}

/// How many entries the boxes of one row hold: their common number of lines, or one.
std::size_t entriesOf(const std::vector<FilledCell>& row)
{
    const FilledCell* first = nullptr;
    std::size_t filled = 0;
    for (const FilledCell& cell : row) {
        if (cell.lines.empty()) {
            continue;
        }
        first = first == nullptr ? &cell : first;
        ++filled;
        if (cell.box->rows > 1 || cell.lines.size() != first->lines.size()
            || cell.lines.size() < kLeastEntries) {
            return 1;
        }
        for (std::size_t i = 0; i < cell.lines.size(); ++i) {
            if (!isBeside(cell, *first, i)
                || (i > 0 && !endsEarly(cell.lines[i - 1], cell.lines[i], cell.box->right))) {
                return 1;
            }
        }
    }
    return filled > 1 ? first->lines.size() : 1;
}

TableRow rowOf(const std::vector<FilledCell>& cells, std::size_t entry, std::size_t entries)
{
    TableRow row;
    for (const FilledCell& cell : cells) {
        FilledCell part = cell;
        if (entries > 1 && !cell.lines.empty()) {
            part.lines = { cell.lines[entry] };
        }
        const RuledCell& box = *cell.box;
        if (!part.lines.empty() || box.columns > 1 || box.rows > 1) {
            row.cells.push_back({ box.column, box.columns, textOf(part), box.rows, true });
        }
    }
    return row;
}

} // namespace

std::vector<TableRow> ruledRows(const PageText& straight, const RuledTable& table)
{
    std::vector<PageText> texts(table.cells.size()); // the lines point into them
    std::vector<TableRow> rows;
    std::vector<FilledCell> row;
    int next = 0; // row of the table
    for (std::size_t i = 0; i < table.cells.size(); ++i) {
        texts[i].paragraphs.push_back(textInBox(straight, table.cells[i]));
        row.push_back({ &table.cells[i], rowsOf(texts[i]) });
        if (i + 1 < table.cells.size() && table.cells[i + 1].row == table.cells[i].row) {
            continue;
        }
        for (; next < table.cells[i].row; ++next) {
            rows.emplace_back(); // only boxes from above reach into it
        }
        ++next;
        const std::size_t entries = entriesOf(row);
        for (std::size_t entry = 0; entry < entries; ++entry) {
            rows.push_back(rowOf(row, entry, entries));
        }
        row.clear();
    }
    return rows;
}

} // namespace orva
