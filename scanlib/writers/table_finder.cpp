#include "scanlib/writers/table_finder.h"

#include "scanlib/writers/flow_text.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

namespace orva {

namespace {

// All in em squares of the row, unless they say otherwise.
constexpr double kCellGap = 0.9; ///< at least, between two cells; justified text stays below
constexpr double kNarrowCellGap = 0.45; ///< where the other rows show a border of columns
constexpr double kOverlap = 0.3; ///< at least, for two parts to be of one column
constexpr double kSameColumnGap = 2; ///< at most, between columns that are never both filled
constexpr double kRowShare = 0.4; ///< of the lower line: base lines of one row differ by less
constexpr double kTableLeading = 6; ///< rows of one table are not farther apart
// Running text in columns: so much of the parts fill so much of their column.
constexpr double kFullShare = 0.7;
constexpr double kFullWidth = 0.85;
constexpr double kProseWidth = 12;
constexpr std::size_t kProseRows = 5;

/// Words without a gap as wide as between cells.
struct Part
{
    int left = 0;
    int right = 0;
    std::vector<const Word*> words;
};

struct Row
{
    double baseline = 0;
    double em = 1;
    std::vector<const TextLine*> lines;
    std::vector<Part> parts;
};

struct Column
{
    int left = 0;
    int right = 0;
};

struct PlacedLine
{
    const TextLine* line;
    double baseline; ///< where it meets the left edge of the page
};

double slopeOf(const std::vector<const TextLine*>& lines)
{
    double rise = 0;
    double run = 0;
    for (const TextLine* const line : lines) {
        rise += line->baselineRight - line->baselineLeft;
        run += line->box.width();
    }
    return run > 0 ? rise / run : 0;
}

std::string textOf(const std::vector<const Word*>& words)
{
    TextLine line;
    for (const Word* const word : words) {
        line.words.push_back(*word);
    }
    return lineText(line);
}

std::vector<Part> partsOf(std::vector<const Word*> words, double gap)
{
    std::stable_sort(words.begin(), words.end(),
        [](const Word* a, const Word* b) { return a->box.left < b->box.left; });
    std::vector<Part> parts;
    for (const Word* const word : words) {
        if (parts.empty() || word->box.left - parts.back().right > gap) {
            parts.push_back({ word->box.left, word->box.right, {} });
        }
        parts.back().right = std::max(parts.back().right, word->box.right);
        parts.back().words.push_back(word);
    }
    return parts;
}

void finishRow(Row& row)
{
    std::vector<const Word*> words;
    for (const TextLine* const line : row.lines) {
        row.em = std::max(row.em, emPixels(*line));
        for (const Word& word : line->words) {
            words.push_back(&word);
        }
    }
    row.parts = partsOf(std::move(words), kCellGap * row.em);
}

std::vector<Row> rowsOf(const PageText& text)
{
    std::vector<const TextLine*> lines;
    for (const Paragraph& paragraph : text.paragraphs) {
        for (const TextLine& line : paragraph.lines) {
            if (!line.words.empty()) {
                lines.push_back(&line);
            }
        }
    }
    const double slope = slopeOf(lines);
    std::vector<PlacedLine> placed;
    placed.reserve(lines.size());
    for (const TextLine* const line : lines) {
        placed.push_back({ line,
            (line->baselineLeft + line->baselineRight) / 2.0
                - slope * (line->box.left + line->box.right) / 2.0 });
    }
    std::stable_sort(placed.begin(), placed.end(),
        [](const PlacedLine& a, const PlacedLine& b) { return a.baseline < b.baseline; });
    std::vector<Row> rows;
    int height = 0; // of the lowest line in the row
    for (const PlacedLine& each : placed) {
        const int own = std::max(1, each.line->box.height());
        if (rows.empty()
            || each.baseline - rows.back().baseline > kRowShare * std::min(height, own)) {
            rows.emplace_back().baseline = each.baseline;
            height = own;
        }
        height = std::min(height, own);
        rows.back().lines.push_back(each.line);
    }
    std::for_each(rows.begin(), rows.end(), finishRow);
    return rows;
}

bool overlaps(const Part& part, const Column& column, double em)
{
    const int common = std::min(part.right, column.right) - std::max(part.left, column.left);
    const int narrower = std::min(part.right - part.left, column.right - column.left);
    return common > std::min(kOverlap * em, narrower / 2.0);
}

/// First and last column that the part lies in; first > last for none.
std::pair<int, int> columnsOf(const Part& part, const std::vector<Column>& columns, double em)
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

/// Where the parts of the rows lie one above the other. The narrow ones come first, so that a
/// merged cell finds the columns that it spans.
std::vector<Column> placesOf(const std::vector<Row>& rows)
{
    std::vector<std::pair<const Part*, double>> parts;
    for (const Row& row : rows) {
        for (const Part& part : row.parts) {
            parts.emplace_back(&part, row.em);
        }
    }
    std::stable_sort(parts.begin(), parts.end(), [](const auto& a, const auto& b) {
        return a.first->right - a.first->left < b.first->right - b.first->left;
    });
    std::vector<Column> columns;
    for (const auto& [part, em] : parts) {
        const auto [first, last] = columnsOf(*part, columns, em);
        if (first > last) {
            const auto behind = std::find_if(columns.begin(), columns.end(),
                [left = part->left](const Column& column) { return column.left > left; });
            columns.insert(behind, { part->left, part->right });
        } else if (first == last) {
            Column& column = columns[static_cast<std::size_t>(first)];
            column.left = std::min(column.left, part->left);
            column.right = std::max(column.right, part->right);
        }
    }
    return columns;
}

/// Whether two neighbours are one column: parts lie over both more often than in each of them (a
/// spread heading, 姓　名), or there is never anything in both and hardly a gap (a centred heading
/// over flush numbers).
bool isOneColumn(const std::vector<Row>& rows, const std::vector<Column>& columns, int left)
{
    int over = 0;
    int both = 0;
    double em = 1;
    for (const Row& row : rows) {
        bool inLeft = false;
        bool inRight = false;
        em = std::max(em, row.em);
        for (const Part& part : row.parts) {
            const auto [first, last] = columnsOf(part, columns, row.em);
            over += first <= left && last > left ? 1 : 0;
            inLeft = inLeft || last == left;
            inRight = inRight || first == left + 1;
        }
        both += inLeft && inRight ? 1 : 0;
    }
    const Column& a = columns[static_cast<std::size_t>(left)];
    const Column& b = columns[static_cast<std::size_t>(left) + 1];
    return over > both || (both == 0 && b.left - a.right < kSameColumnGap * em);
}

std::vector<Column> columnsOfRows(const std::vector<Row>& rows)
{
    std::vector<Column> columns = placesOf(rows);
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

/// Cuts a part where one of its own gaps lies on a border of columns that other rows show.
std::vector<Part> cutAtBorders(const Part& part, const std::vector<Column>& columns, double em)
{
    std::vector<Part> pieces;
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

TableRow tableRow(const Row& row, const std::vector<Column>& columns)
{
    TableRow result;
    std::vector<const Word*> words; // of the last cell
    int free = 0; // first column behind it
    for (const Part& part : row.parts) {
        for (const Part& piece : cutAtBorders(part, columns, row.em)) {
            auto [first, last] = columnsOf(piece, columns, row.em);
            last = std::max(last, std::min(first, static_cast<int>(columns.size()) - 1));
            first = std::max(std::min(first, last), free);
            if (first > last && !result.cells.empty()) { // one more part of the same cell
                words.insert(words.end(), piece.words.begin(), piece.words.end());
                result.cells.back().text = textOf(words);
                continue;
            }
            words = piece.words;
            result.cells.push_back({ first, last - first + 1, textOf(words) });
            free = last + 1;
        }
    }
    return result;
}

/// Rows of a table end before one that does not fit to those above.
bool goesOn(const std::vector<Row>& table, const Row& next)
{
    if (next.baseline - table.back().baseline
        > kTableLeading * std::max(next.em, table.back().em)) {
        return false;
    }
    const std::vector<Column> columns = placesOf(table);
    std::size_t over = 0;
    std::size_t pieces = 0;
    for (const Part& part : next.parts) {
        for (const Part& piece : cutAtBorders(part, columns, next.em)) {
            const auto [first, last] = columnsOf(piece, columns, next.em);
            over += last > first ? 1 : 0;
            ++pieces;
        }
    }
    return pieces == 1 ? over == 0 : 2 * over <= pieces;
}

bool isRunningText(const std::vector<Row>& rows, const std::vector<Column>& columns)
{
    int parts = 0;
    int full = 0;
    for (const Row& row : rows) {
        for (const Part& part : row.parts) {
            const auto [first, last] = columnsOf(part, columns, row.em);
            if (first > last) {
                continue;
            }
            const Column& column = columns[static_cast<std::size_t>(first)];
            const int width = column.right - column.left;
            ++parts;
            full += width > kProseWidth * row.em && part.right - part.left > kFullWidth * width;
        }
    }
    return rows.size() >= kProseRows && full > kFullShare * parts;
}

/// The lines of the rows, each a row of its own, as they are read.
void addLines(const std::vector<Row>& rows, const PageText& text, SheetLayout& sheet)
{
    std::vector<const TextLine*> wanted;
    for (const Row& row : rows) {
        wanted.insert(wanted.end(), row.lines.begin(), row.lines.end());
    }
    std::sort(wanted.begin(), wanted.end());
    for (const Paragraph& paragraph : text.paragraphs) {
        for (const TextLine& line : paragraph.lines) {
            if (std::binary_search(wanted.begin(), wanted.end(), &line)) {
                sheet.rows.push_back({ { { 0, 1, lineText(line) } } });
            }
        }
    }
}

/// Without columns of a table: the parts stand side by side.
void addParts(const Row& row, SheetLayout& sheet)
{
    TableRow& added = sheet.rows.emplace_back();
    for (const Part& part : row.parts) {
        added.cells.push_back({ static_cast<int>(added.cells.size()), 1, textOf(part.words) });
    }
}

void addTable(const std::vector<Row>& rows, const PageText& text, SheetLayout& sheet)
{
    const auto severalParts = std::count_if(
        rows.begin(), rows.end(), [](const Row& row) { return row.parts.size() > 1; });
    const std::vector<Column> columns = columnsOfRows(rows);
    if (severalParts < 2 || columns.size() < 2) {
        for (const Row& row : rows) {
            addParts(row, sheet);
        }
        return;
    }
    if (isRunningText(rows, columns)) {
        addLines(rows, text, sheet);
        return;
    }
    for (const Row& row : rows) {
        sheet.rows.push_back(tableRow(row, columns));
    }
    sheet.columnPixels.resize(std::max(sheet.columnPixels.size(), columns.size()));
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const int next = i + 1 < columns.size() ? columns[i + 1].left : columns[i].right;
        sheet.columnPixels[i] = std::max(sheet.columnPixels[i], next - columns[i].left);
    }
}

} // namespace

SheetLayout findTables(const PageText& text)
{
    SheetLayout sheet;
    std::vector<Row> table;
    for (Row& row : rowsOf(text)) {
        if (!table.empty() && !goesOn(table, row)) {
            addTable(table, text, sheet);
            table.clear();
        }
        if (!table.empty() || row.parts.size() > 1) {
            table.push_back(std::move(row));
        } else {
            addParts(row, sheet);
        }
    }
    if (!table.empty()) {
        addTable(table, text, sheet);
    }
    return sheet;
}

} // namespace orva
