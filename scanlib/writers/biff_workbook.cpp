#include "scanlib/writers/biff_workbook.h"

#include "scanlib/base/units.h"
#include "scanlib/writers/cell_number.h"
#include "scanlib/writers/flow_text.h"

#include <algorithm>
#include <cmath>

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
    kBoundSheet = 0x0085,
    kXf = 0x00E0,
    kMergedCells = 0x00E5,
    kLabelSst = 0x00FD,
    kDimensions = 0x0200,
    kBlank = 0x0201,
    kNumber = 0x0203,
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
constexpr unsigned kFirstOwnFormat = 164;
constexpr double kDigitMillimetres = 1.85; // width of a digit of the 10-point font
constexpr int kMinColumnDigits = 4;
constexpr int kMaxColumnDigits = 120;

void addBof(std::vector<std::uint8_t>& stream, unsigned what)
{
    // Version of the format, contents, build and year of the program that BIFF8 came with, history.
    addRecord(stream, kBof,
        RecordData().u16(0x0600).u16(what).u16(0x0DBB).u16(0x07CC).u32(0x00C1).u32(0x0306));
}

void addXf(std::vector<std::uint8_t>& stream, unsigned format, bool isStyle)
{
    const unsigned flags = isStyle ? 0xFFF5 : 0x0001; // parent; locked
    const unsigned used = isStyle ? 0xF4 : format != 0 ? 0x04 : 0x00; // own number format
    addRecord(stream, kXf,
        RecordData().u16(0).u16(format).u16(flags).u8(0x20).u8(0).u8(0).u8(used).u32(0).u32(0).u16(
            0x20C0));
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

void BiffWorkbook::beginSheet(const std::vector<int>& columnWidths)
{
    ++m_partOfPage;
    Sheet& sheet = m_sheets.emplace_back();
    std::string name = "第" + std::to_string(m_pages) + "页";
    if (m_partOfPage > 1) {
        name += "(" + std::to_string(m_partOfPage) + ")";
    }
    sheet.name = utf16Of(name);
    sheet.columnWidths = columnWidths;
}

void BiffWorkbook::addPage(const SheetLayout& layout, double dpi)
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
    beginSheet(widths);
    for (const TableRow& row : layout.rows) {
        std::vector<Cell> cells;
        for (const TableCell& cell : row.cells) {
            if (cell.column >= kMaxColumns && !cells.empty()) {
                cells.back().text += u' ' + utf16Of(cell.text);
                cells.back().plain.clear();
                continue;
            }
            const int column = std::min(cell.column, kMaxColumns - 1);
            cells.push_back({ column, std::min(cell.columns, kMaxColumns - column),
                utf16Of(cell.text), cell.text });
        }
        addRow(cells);
    }
}

void BiffWorkbook::addRow(const std::vector<Cell>& cells)
{
    std::vector<Cell> below;
    if (m_sheets.back().rows == kMaxRows) {
        beginSheet(std::vector<int>(m_sheets.back().columnWidths));
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
    }
    ++m_sheets.back().rows;
    if (!below.empty()) {
        addRow(below);
    }
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
        addRecord(
            sheet.cells, kLabelSst, place(cell.column).u16(kPlainCell).u32(m_texts.add(cell.text)));
    }
    for (int i = 1; i < cell.columns; ++i) {
        addRecord(sheet.cells, kBlank, place(cell.column + i).u16(kPlainCell));
    }
    if (cell.columns > 1) {
        sheet.merged.push_back({ sheet.rows, cell.column, cell.column + cell.columns - 1 });
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
    return kPlainCell + 1 + index;
}

std::vector<std::uint8_t> BiffWorkbook::sheetBytes(const Sheet& sheet, bool first) const
{
    std::vector<std::uint8_t> stream;
    addBof(stream, kWorksheet);
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
    append(stream, sheet.cells);
    const unsigned shown = first ? 0x06B6 : 0x00B6; // grid, headings, zeros; selected and on top
    addRecord(stream, kWindow2, RecordData().u16(shown).u16(0).u16(0).u32(64).u16(0).u16(0).u32(0));
    for (std::size_t begin = 0; begin < sheet.merged.size(); begin += kMergedPerRecord) {
        const std::size_t end = std::min(begin + kMergedPerRecord, sheet.merged.size());
        RecordData data;
        data.u16(static_cast<unsigned>(end - begin));
        for (std::size_t i = begin; i < end; ++i) {
            const auto& [row, from, to] = sheet.merged[i];
            data.u16(static_cast<unsigned>(row)).u16(static_cast<unsigned>(row));
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
        addXf(stream, 0, true);
    }
    addXf(stream, 0, false);
    for (std::size_t i = 0; i < m_formats.size(); ++i) {
        addXf(stream, kFirstOwnFormat + static_cast<unsigned>(i), false);
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
