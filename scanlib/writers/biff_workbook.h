// The workbook stream of an xls file (BIFF8): sheets of texts and numbers. No formulas, no frames.
#pragma once

#include "scanlib/writers/biff_records.h"
#include "scanlib/writers/table_finder.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace orva {

/// What a sheet is printed on: the standard paper that comes nearest, upright or across.
struct SheetPaper
{
    double widthMm = 210;
    double heightMm = 297;
};

class BiffWorkbook
{
public:
    /// A sheet for one page; dpi turns column widths into those of the sheet. What the format
    /// cannot hold goes on elsewhere: rows past 65,536 on a further sheet, characters past 32,767
    /// in the cell below, columns past 256 in the last one.
    void addPage(const SheetLayout& layout, double dpi, const SheetPaper& paper = {});
    std::size_t sheets() const { return m_sheets.size(); }
    /// All of the stream.
    std::vector<std::uint8_t> bytes() const;

private:
    struct Cell
    {
        int column;
        int columns;
        int rows;
        bool isWrapped;
        std::u16string text;
        std::string plain; ///< the same in UTF-8; empty for what must stay text
    };
    struct Sheet
    {
        std::u16string name;
        std::vector<std::uint8_t> cells; ///< records
        std::vector<int> columnWidths; ///< 1/256 of a digit
        std::vector<std::array<int, 4>> merged; ///< first and last row, first and last column
        std::vector<std::array<int, 2>> heights; ///< row and its lines of text, where several
        SheetPaper paper;
        int rows = 0;
        int columns = 0;
    };

    void addRow(const std::vector<Cell>& cells);
    void addCell(const Cell& cell);
    int linesOf(const Cell& cell) const;
    void beginSheet(const std::vector<int>& columnWidths, const SheetPaper& paper);
    unsigned formatOf(const std::string& format);
    std::vector<std::uint8_t> sheetBytes(const Sheet& sheet, bool first) const;
    std::vector<std::uint8_t> globals(const std::vector<std::uint32_t>& sheetStarts) const;

    std::vector<Sheet> m_sheets;
    SharedTexts m_texts;
    std::vector<std::string> m_formats; ///< of numbers, in the order of their cell styles
    int m_pages = 0;
    int m_partOfPage = 0; ///< sheets that the page has so far
};

} // namespace orva
