#include "scanlib/writers/table_finder.h"

#include "scanlib/base/units.h"
#include "scanlib/writers/cell_number.h"
#include "scanlib/writers/flow_text.h"
#include "scanlib/writers/ruled_rows.h"
#include "scanlib/writers/ruled_table.h"
#include "scanlib/writers/table_columns.h"
#include "scanlib/writers/text_rows.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <utility>

namespace orva {

namespace {

// All in em squares of the row, unless they say otherwise.
constexpr double kTableLeading = 6; ///< rows of one table are not farther apart
constexpr double kWrappedWidth = 4; ///< at least, of a line that goes on in the next
constexpr double kTightPitch = 0.75; ///< at most, of the widest: lines of one cell
// Running text in columns: so much of the parts fill so much of their column.
constexpr double kFullShare = 0.7;
constexpr double kFullWidth = 0.85;
constexpr double kProseWidth = 12;
constexpr std::size_t kProseRows = 5;

/// A cell in one row of text.
struct Found
{
    int column = 0;
    int columns = 1;
    std::vector<const Word*> words;

    int right() const { return words.back()->box.right; }
    int width() const { return right() - words.front()->box.left; }
};

std::vector<Found> cellsOf(const TextRow& row, const std::vector<TableColumn>& columns)
{
    std::vector<Found> cells;
    int free = 0; // first column behind the last cell
    for (const RowPart& part : row.parts) {
        for (const RowPart& piece : cutAtBorders(part, columns, row.em)) {
            auto [first, last] = columnsOf(piece, columns, row.em);
            last = std::max(last, std::min(first, static_cast<int>(columns.size()) - 1));
            first = std::max(std::min(first, last), free);
            if (first > last && !cells.empty()) { // one more part of the same cell
                std::vector<const Word*>& words = cells.back().words;
                words.insert(words.end(), piece.words.begin(), piece.words.end());
                continue;
            }
            cells.push_back({ first, last - first + 1, piece.words });
            free = last + 1;
        }
    }
    return cells;
}

/// Whether every cell goes on with a full line of the same cell above. Where the first column is
/// empty that is enough; else the lines must also lie closer than the rows of the table.
bool isWrapped(const std::vector<Found>& above, const std::vector<Found>& cells,
    const std::vector<TableColumn>& columns, double em, bool isTight)
{
    return !cells.empty() && (isTight || cells.front().column > 0)
        && std::all_of(cells.begin(), cells.end(), [&](const Found& cell) {
               const auto before = std::find_if(above.begin(), above.end(),
                   [&cell](const Found& each) { return each.column == cell.column; });
               if (before == above.end() || before->columns != cell.columns
                   || before->width() < kWrappedWidth * em
                   || (cellNumberOf(textOf(before->words)) && cellNumberOf(textOf(cell.words)))) {
                   return false;
               }
               const auto last = static_cast<std::size_t>(cell.column + cell.columns - 1);
               return columns[last].right - before->right() < cell.words.front()->box.width() + em;
           });
}

void addTableRows(
    const std::vector<TextRow>& rows, const std::vector<TableColumn>& columns, SheetLayout& sheet)
{
    double widest = 0;
    for (std::size_t i = 1; i < rows.size(); ++i) {
        widest = std::max(widest, rows[i].baseline - rows[i - 1].baseline);
    }
    std::vector<Found> above;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        std::vector<Found> cells = cellsOf(rows[i], columns);
        const bool isTight =
            i > 0 && rows[i].baseline - rows[i - 1].baseline < kTightPitch * widest;
        if (i > 0 && isWrapped(above, cells, columns, rows[i].em, isTight)) {
            for (TableCell& cell : sheet.rows.back().cells) {
                const auto more = std::find_if(cells.begin(), cells.end(),
                    [&cell](const Found& each) { return each.column == cell.column; });
                const auto before = std::find_if(above.begin(), above.end(),
                    [&cell](const Found& each) { return each.column == cell.column; });
                if (more != cells.end() && before != above.end()) {
                    cell.text +=
                        isBlankAtBreak(*before->words.back(), *more->words.front()) ? " " : "";
                    cell.text += textOf(more->words);
                }
            }
        } else {
            TableRow& added = sheet.rows.emplace_back();
            for (const Found& cell : cells) {
                added.cells.push_back({ cell.column, cell.columns, textOf(cell.words), 1, true });
            }
        }
        above = std::move(cells);
    }
}

/// Rows of a table end before one that does not fit to those above.
bool goesOn(const std::vector<TextRow>& table, const TextRow& next)
{
    if (next.baseline - table.back().baseline
        > kTableLeading * std::max(next.em, table.back().em)) {
        return false;
    }
    const std::vector<TableColumn> columns = placesOf(table);
    std::size_t over = 0;
    std::size_t pieces = 0;
    for (const RowPart& part : next.parts) {
        for (const RowPart& piece : cutAtBorders(part, columns, next.em)) {
            const auto [first, last] = columnsOf(piece, columns, next.em);
            over += last > first ? 1 : 0;
            ++pieces;
        }
    }
    return pieces == 1 ? over == 0 : 2 * over <= pieces;
}

bool isRunningText(const std::vector<TextRow>& rows, const std::vector<TableColumn>& columns)
{
    int parts = 0;
    int full = 0;
    for (const TextRow& row : rows) {
        for (const RowPart& part : row.parts) {
            const auto [first, last] = columnsOf(part, columns, row.em);
            if (first > last) {
                continue;
            }
            const TableColumn& column = columns[static_cast<std::size_t>(first)];
            const int width = column.right - column.left;
            ++parts;
            full += width > kProseWidth * row.em && part.right - part.left > kFullWidth * width;
        }
    }
    return rows.size() >= kProseRows && full > kFullShare * parts;
}

/// The lines of the rows, each a row of its own, as they are read.
void addLines(const std::vector<TextRow>& rows, const PageText& text, SheetLayout& sheet)
{
    std::vector<const TextLine*> wanted;
    for (const TextRow& row : rows) {
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
void addParts(const TextRow& row, SheetLayout& sheet)
{
    TableRow& added = sheet.rows.emplace_back();
    for (const RowPart& part : row.parts) {
        added.cells.push_back({ static_cast<int>(added.cells.size()), 1, textOf(part.words) });
    }
}

void widen(SheetLayout& sheet, std::size_t column, int pixels)
{
    sheet.columnPixels.resize(std::max(sheet.columnPixels.size(), column + 1));
    sheet.columnPixels[column] = std::max(sheet.columnPixels[column], pixels);
}

void addTable(const std::vector<TextRow>& rows, const PageText& text, SheetLayout& sheet)
{
    const auto severalParts = std::count_if(
        rows.begin(), rows.end(), [](const TextRow& row) { return row.parts.size() > 1; });
    const std::vector<TableColumn> columns = columnsOfRows(rows);
    if (severalParts < 2 || columns.size() < 2) {
        for (const TextRow& row : rows) {
            addParts(row, sheet);
        }
        return;
    }
    if (isRunningText(rows, columns)) {
        addLines(rows, text, sheet);
        return;
    }
    addTableRows(rows, columns, sheet);
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const int next = i + 1 < columns.size() ? columns[i + 1].left : columns[i].right;
        widen(sheet, i, next - columns[i].left);
    }
}

/// What no line rules, as far as it lies above.
void addUnruled(const PageText& text, const std::vector<TextRow>& rows, SheetLayout& sheet)
{
    std::vector<TextRow> table;
    for (const TextRow& row : rows) {
        if (!table.empty() && !goesOn(table, row)) {
            addTable(table, text, sheet);
            table.clear();
        }
        if (!table.empty() || row.parts.size() > 1) {
            table.push_back(row);
        } else {
            addParts(row, sheet);
        }
    }
    if (!table.empty()) {
        addTable(table, text, sheet);
    }
}

void addRuled(const PageText& text, const RuledTable& table, SheetLayout& sheet)
{
    std::vector<TableRow> rows = ruledRows(text, table);
    std::move(rows.begin(), rows.end(), std::back_inserter(sheet.rows));
    for (std::size_t i = 0; i + 1 < table.edgesX.size(); ++i) {
        widen(sheet, i, static_cast<int>(std::lround(table.edgesX[i + 1] - table.edgesX[i])));
    }
}

} // namespace

SheetLayout findTables(const PageText& text, const Rulings& rulings, double dpi)
{
    const PageText straight = straightened(text, textSlope(text));
    PageText rest = straight;
    const std::vector<RuledTable> tables =
        findRuledTables(rulings, dpi > 0 ? dpi : units::kAssumedDpi);
    for (const RuledTable& table : tables) {
        removeTable(rest, table);
    }
    const std::vector<TextRow> rows = rowsOf(rest);
    SheetLayout sheet;
    auto from = rows.begin();
    for (const RuledTable& table : tables) {
        const auto to = std::find_if(from, rows.end(),
            [&table](const TextRow& row) { return row.baseline > table.edgesY.front(); });
        addUnruled(rest, { from, to }, sheet);
        addRuled(straight, table, sheet);
        from = to;
    }
    addUnruled(rest, { from, rows.end() }, sheet);
    return sheet;
}

} // namespace orva
