#include "scanlib/writers/biff_workbook.h"

#include "scanlib/base/units.h"
#include "scanlib/writers/cell_number.h"
#include "scanlib/writers/flow_text.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

namespace orva {

namespace {

enum Kind : unsigned
{
    kEof = 0x000A,
    kDateMode = 0x0022,
    kFont = 0x0031,
    kWindow1 = 0x003D,
    kCodePage = 0x0042,
    kColInfo = 0x007D,
    kWsBool = 0x0081,
    kBoundSheet = 0x0085,
    kSetup = 0x00A1,
    kXf = 0x00E0,
    kMergedCells = 0x00E5,
    kLabelSst = 0x00FD,
    kDimensions = 0x0200,
    kBlank = 0x0201,
    kNumber = 0x0203,
    kRow = 0x0208,
    kWindow2 = 0x023E,
    kStyle = 0x0293,
    kFormat = 0x041E,
    kBof = 0x0809,
};

constexpr unsigned kGlobals = 0x0005;
constexpr unsigned kWorksheet = 0x0010;
constexpr unsigned kUtf16 = 1200;
constexpr int kMaxRows = 65536;
constexpr int kMaxColumns = 256;
constexpr std::size_t kMaxCellUnits = 32767;
constexpr std::size_t kMergedPerRecord = 1027;
// Every reader expects these styles, then the one of plain cells; ours follow.
constexpr unsigned kStyleFormats = 15;
constexpr unsigned kPlainCell = kStyleFormats;
constexpr unsigned kWrappedCell = kPlainCell + 1;
constexpr unsigned kFirstOwnFormat = 164;
constexpr double kDigitMillimetres = 1.85; // width of a digit of the 10-point font
constexpr unsigned kLineTwips = 260;
constexpr int kMostLines = 31; // what a row can be high
constexpr int kMinColumnDigits = 4;
constexpr int kMaxColumnDigits = 120;

void addBof(std::vector<std::uint8_t>& stream, unsigned what)
{
    // Version of the format, contents, build and year of the program that BIFF8 came with, history.
    addRecord(stream, kBof,
        RecordData().u16(0x0600).u16(what).u16(0x0DBB).u16(0x07CC).u32(0x00C1).u32(0x0306));
}

void addStyleXf(std::vector<std::uint8_t>& stream)
{
    // Parent, alignment to the bottom, what it sets.
    addRecord(stream, kXf,
        RecordData().u16(0).u16(0).u16(0xFFF5).u8(0x20).u8(0).u8(0).u8(0xF4).u32(0).u32(0).u16(
            0x20C0));
}

/// Cells are aligned to the top, so that a row of one and of several lines reads across.
void addCellXf(std::vector<std::uint8_t>& stream, unsigned format, bool isWrapped)
{
    const unsigned alignment = isWrapped ? 0x08 : 0x00;
    const unsigned used = format != 0 ? 0x14 : 0x10; // alignment; number format
    addRecord(stream, kXf,
        RecordData()
            .u16(0)
            .u16(format)
            .u16(0x0001)
            .u8(alignment)
            .u8(0)
            .u8(0)
            .u8(used)
            .u32(0)
            .u32(0)
            .u16(0x20C0));
}

/// The number of the standard paper that comes nearest, of those that spreadsheets number.
unsigned paperNumber(double shortMm, double longMm)
{
    constexpr struct
    {
        unsigned number;
        double width;
        double height;
    } kPapers[] = { { 8, 297, 420 }, { 9, 210, 297 }, { 11, 148, 210 }, { 70, 105, 148 },
        { 12, 257, 364 }, { 13, 182, 257 }, { 1, 215.9, 279.4 }, { 5, 215.9, 355.6 } };
    const auto* const nearest =
        std::min_element(std::begin(kPapers), std::end(kPapers), [&](const auto& a, const auto& b) {
            return std::hypot(a.width - shortMm, a.height - longMm)
                < std::hypot(b.width - shortMm, b.height - longMm);
        });
    return nearest->number;
}

/// As wide as the paper and as many sheets long as it takes.
void addPrintSetup(std::vector<std::uint8_t>& stream, const SheetPaper& paper)
{
    constexpr unsigned kFitToPaper = 0x0100;
    constexpr unsigned kUpright = 0x0002;
    constexpr unsigned kPrintDpi = 600;
    constexpr double kHeaderInches = 0.5;
    constexpr unsigned kDefaultOutlines = 0x04C1;
    addRecord(stream, kWsBool, RecordData().u16(kDefaultOutlines | kFitToPaper));
    const bool isUpright = paper.widthMm <= paper.heightMm;
    const auto [shortMm, longMm] = std::minmax(paper.widthMm, paper.heightMm);
    // Paper, percent, first page number, sheets across and down (0: any), flags, resolution, room
    // for header and footer, copies.
    addRecord(stream, kSetup,
        RecordData()
            .u16(paperNumber(shortMm, longMm))
            .u16(100)
            .u16(1)
            .u16(1)
            .u16(0)
            .u16(isUpright ? kUpright : 0)
            .u16(kPrintDpi)
            .u16(kPrintDpi)
            .f64(kHeaderInches)
            .f64(kHeaderInches)
            .u16(1));
}

void addFont(std::vector<std::uint8_t>& stream)
{
    constexpr unsigned kHeightTwips = 200;
    constexpr unsigned kAutomaticColor = 0x7FFF;
    constexpr unsigned kNormalWeight = 400;
    constexpr unsigned kSimplifiedChinese = 134;
    addRecord(stream, kFont,
        RecordData()
            .u16(kHeightTwips)
            .u16(0)
            .u16(kAutomaticColor)
            .u16(kNormalWeight)
            .u16(0)
            .u8(0)
            .u8(0)
            .u8(kSimplifiedChinese)
            .u8(0)
            .shortText(u"SimSun"));
}

void append(std::vector<std::uint8_t>& to, const std::vector<std::uint8_t>& from)
{
    to.insert(to.end(), from.begin(), from.end());
}

} // namespace

void BiffWorkbook::beginSheet(const std::vector<int>& columnWidths, const SheetPaper& paper)
{
    ++m_partOfPage;
    Sheet& sheet = m_sheets.emplace_back();
    std::string name = "第" + std::to_string(m_pages) + "页";
    if (m_partOfPage > 1) {
        name += "(" + std::to_string(m_partOfPage) + ")";
    }
    sheet.name = utf16Of(name);
    sheet.columnWidths = columnWidths;
    sheet.paper = paper;
}

void BiffWorkbook::addPage(const SheetLayout& layout, double dpi, const SheetPaper& paper)
{
    ++m_pages;
    m_partOfPage = 0;
    std::vector<int> widths;
    for (const int pixels : layout.columnPixels) {
        const double digits = pixels * units::kMillimetresPerInch
            / (dpi > 0 ? dpi : units::kAssumedDpi) / kDigitMillimetres;
        widths.push_back(std::clamp(static_cast<int>(std::lround(digits * 256)),
            kMinColumnDigits * 256, kMaxColumnDigits * 256));
    }
    widths.resize(std::min<std::size_t>(widths.size(), kMaxColumns));
    beginSheet(widths, paper);
    for (const TableRow& row : layout.rows) {
        std::vector<Cell> cells;
        for (const TableCell& cell : row.cells) {
            if (cell.column >= kMaxColumns && !cells.empty()) {
                cells.back().text += u' ' + utf16Of(cell.text);
                cells.back().plain.clear();
                continue;
            }
            const int column = std::min(cell.column, kMaxColumns - 1);
            cells.push_back({ column, std::min(cell.columns, kMaxColumns - column), cell.rows,
                cell.isWrapped, utf16Of(cell.text), cell.text });
        }
        addRow(cells);
    }
}

void BiffWorkbook::addRow(const std::vector<Cell>& cells)
{
    std::vector<Cell> below;
    int lines = 1;
    if (m_sheets.back().rows == kMaxRows) {
        const Sheet& full = m_sheets.back();
        beginSheet(std::vector<int>(full.columnWidths), SheetPaper(full.paper));
    }
    for (const Cell& cell : cells) {
        Cell here = cell;
        if (cell.text.size() > kMaxCellUnits) {
            Cell rest = cell;
            here.text.resize(kMaxCellUnits);
            here.plain.clear();
            rest.text.erase(0, kMaxCellUnits);
            rest.plain.clear();
            below.push_back(std::move(rest));
        }
        addCell(here);
        lines = std::max(lines, linesOf(here));
    }
    if (lines > 1) {
        m_sheets.back().heights.push_back({ m_sheets.back().rows, lines });
    }
    ++m_sheets.back().rows;
    if (!below.empty()) {
        addRow(below);
    }
}

/// About as many as the cell needs in its columns: not every reader finds that out by itself.
int BiffWorkbook::linesOf(const Cell& cell) const
{
    const std::vector<int>& widths = m_sheets.back().columnWidths;
    int room = 0; // digits
    for (int i = cell.column; i < cell.column + cell.columns; ++i) {
        const auto at = static_cast<std::size_t>(i);
        room += at < widths.size() ? widths[at] / 256 : kMinColumnDigits;
    }
    if (!cell.isWrapped || cell.rows > 1) {
        return 1;
    }
    int lines = 1;
    int used = 0;
    for (const char16_t unit : cell.text) {
        const int own = unit >= 0x2E80 ? 2 : 1;
        const bool isFull = used + own >= room; // a word less than the line could hold
        lines += unit == u'\n' || isFull ? 1 : 0;
        used = unit == u'\n' ? 0 : isFull ? own : used + own;
    }
    return std::min(lines, kMostLines);
}

void BiffWorkbook::addCell(const Cell& cell)
{
    Sheet& sheet = m_sheets.back();
    const auto row = static_cast<unsigned>(sheet.rows);
    const auto place = [&](int column) {
        return RecordData().u16(row).u16(static_cast<unsigned>(column));
    };
    if (const auto number = cellNumberOf(cell.plain)) {
        addRecord(sheet.cells, kNumber,
            place(cell.column).u16(formatOf(number->format)).f64(number->value));
    } else {
        addRecord(sheet.cells, kLabelSst,
            place(cell.column)
                .u16(cell.isWrapped ? kWrappedCell : kPlainCell)
                .u32(m_texts.add(cell.text)));
    }
    for (int i = 1; i < cell.columns; ++i) {
        addRecord(sheet.cells, kBlank, place(cell.column + i).u16(kPlainCell));
    }
    if (cell.columns > 1 || cell.rows > 1) {
        sheet.merged.push_back({ sheet.rows, std::min(sheet.rows + cell.rows, kMaxRows) - 1,
            cell.column, cell.column + cell.columns - 1 });
    }
    sheet.columns = std::max(sheet.columns, cell.column + cell.columns);
}

unsigned BiffWorkbook::formatOf(const std::string& format)
{
    const auto at = std::find(m_formats.begin(), m_formats.end(), format);
    const auto index = static_cast<unsigned>(at - m_formats.begin());
    if (at == m_formats.end()) {
        m_formats.push_back(format);
    }
    return kWrappedCell + 1 + index;
}

std::vector<std::uint8_t> BiffWorkbook::sheetBytes(const Sheet& sheet, bool first) const
{
    std::vector<std::uint8_t> stream;
    addBof(stream, kWorksheet);
    addPrintSetup(stream, sheet.paper);
    for (std::size_t i = 0; i < sheet.columnWidths.size(); ++i) {
        const auto column = static_cast<unsigned>(i);
        addRecord(stream, kColInfo,
            RecordData()
                .u16(column)
                .u16(column)
                .u16(static_cast<unsigned>(sheet.columnWidths[i]))
                .u16(kPlainCell)
                .u16(0)
                .u16(0));
    }
    addRecord(stream, kDimensions,
        RecordData()
            .u32(0)
            .u32(static_cast<std::uint32_t>(sheet.rows))
            .u16(0)
            .u16(static_cast<unsigned>(sheet.columns))
            .u16(0));
    for (const auto& [row, lines] : sheet.heights) {
        constexpr std::uint32_t kOwnHeight = 0x0140;
        addRecord(stream, kRow,
            RecordData()
                .u16(static_cast<unsigned>(row))
                .u16(0)
                .u16(static_cast<unsigned>(sheet.columns))
                .u16(static_cast<unsigned>(lines) * kLineTwips)
                .u32(0)
                .u32(kOwnHeight));
    }
    append(stream, sheet.cells);
    const unsigned shown = first ? 0x06B6 : 0x00B6; // grid, headings, zeros; selected and on top
    addRecord(stream, kWindow2, RecordData().u16(shown).u16(0).u16(0).u32(64).u16(0).u16(0).u32(0));
    for (std::size_t begin = 0; begin < sheet.merged.size(); begin += kMergedPerRecord) {
        const std::size_t end = std::min(begin + kMergedPerRecord, sheet.merged.size());
        RecordData data;
        data.u16(static_cast<unsigned>(end - begin));
        for (std::size_t i = begin; i < end; ++i) {
            const auto& [top, bottom, from, to] = sheet.merged[i];
            data.u16(static_cast<unsigned>(top)).u16(static_cast<unsigned>(bottom));
            data.u16(static_cast<unsigned>(from)).u16(static_cast<unsigned>(to));
        }
        addRecord(stream, kMergedCells, data);
    }
    addRecord(stream, kEof, {});
    return stream;
}

std::vector<std::uint8_t> BiffWorkbook::globals(const std::vector<std::uint32_t>& sheetStarts) const
{
    std::vector<std::uint8_t> stream;
    addBof(stream, kGlobals);
    addRecord(stream, kCodePage, RecordData().u16(kUtf16));
    // Place and size of the window in twips, which sheets are shown, width of their tabs.
    addRecord(stream, kWindow1,
        RecordData().u16(0).u16(0).u16(18000).u16(12000).u16(0x0038).u16(0).u16(0).u16(1).u16(600));
    addRecord(stream, kDateMode, RecordData().u16(0));
    for (int i = 0; i < 4; ++i) {
        addFont(stream); // readers expect four before the first of one's own
    }
    for (std::size_t i = 0; i < m_formats.size(); ++i) {
        addRecord(stream, kFormat,
            RecordData()
                .u16(kFirstOwnFormat + static_cast<unsigned>(i))
                .longText(utf16Of(m_formats[i])));
    }
    for (unsigned i = 0; i < kStyleFormats; ++i) {
        addStyleXf(stream);
    }
    addCellXf(stream, 0, false);
    addCellXf(stream, 0, true);
    for (std::size_t i = 0; i < m_formats.size(); ++i) {
        addCellXf(stream, kFirstOwnFormat + static_cast<unsigned>(i), false);
    }
    addRecord(stream, kStyle, RecordData().u16(0x8000).u8(0).u8(0xFF)); // the built-in "Normal"
    for (std::size_t i = 0; i < m_sheets.size(); ++i) {
        addRecord(stream, kBoundSheet,
            RecordData().u32(sheetStarts[i]).u16(0).shortText(m_sheets[i].name));
    }
    m_texts.write(stream);
    addRecord(stream, kEof, {});
    return stream;
}

std::vector<std::uint8_t> BiffWorkbook::bytes() const
{
    std::vector<std::vector<std::uint8_t>> sheets;
    for (const Sheet& sheet : m_sheets) {
        sheets.push_back(sheetBytes(sheet, sheets.empty()));
    }
    // The length of the first part does not depend on the numbers in it.
    std::vector<std::uint32_t> starts(sheets.size(), 0);
    std::size_t start = globals(starts).size();
    for (std::size_t i = 0; i < sheets.size(); ++i) {
        starts[i] = static_cast<std::uint32_t>(start);
        start += sheets[i].size();
    }
    std::vector<std::uint8_t> stream = globals(starts);
    for (const std::vector<std::uint8_t>& sheet : sheets) {
        append(stream, sheet);
    }
    return stream;
}

} // namespace orva
