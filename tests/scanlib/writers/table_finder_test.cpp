// Tables on pages whose words stand at known places.
#include "scanlib/writers/page_rulings.h"
#include "scanlib/writers/ruled_table.h"
#include "scanlib/writers/table_finder.h"
#include "tests/scanlib/page/drawn_pages.h"
#include "tests/scanlib/writers/text_pages.h"
#include "tests/scanlib/writers/written_files.h"

#include <gtest/gtest.h>

#include <cmath>

namespace orva {
namespace {

using Lines = std::vector<std::vector<PlacedWord>>;

/// "a|b" are cells side by side, "||" is an empty one, "<2>" before a text is a cell of two
/// columns.
std::string shown(const SheetLayout& sheet)
{
    std::string text;
    for (const TableRow& row : sheet.rows) {
        int column = 0;
        for (const TableCell& cell : row.cells) {
            for (; column < cell.column; ++column) {
                text += '|';
            }
            text += cell.columns > 1 ? "<" + std::to_string(cell.columns) + ">" : "";
            text += cell.text;
        }
        text += '\n';
    }
    return text;
}

struct Layout
{
    const char* name;
    Lines lines; ///< each a row of the page
    const char* expected;
};

class TableFinder : public testing::TestWithParam<Layout>
{
};

// Recognition gives a row of a table as one line, or each cell as a paragraph of its own, in the
// order of the columns; the sheet is the same. So it is when the page lies a little askew.
TEST_P(TableFinder, findsTheSameHoweverTheWordsAreGrouped)
{
    for (const int rise : { 0, 6, -6 }) {
        PageText whole;
        addParagraph(whole, 100, GetParam().lines, rise);
        EXPECT_EQ(shown(findTables(whole)), GetParam().expected) << "rise " << rise;
    }
    PageText cells;
    for (std::size_t column = 0; column < 6; ++column) {
        int top = 100;
        for (const auto& line : GetParam().lines) {
            if (column < line.size()) {
                addParagraph(cells, top, { { line[column] } });
            }
            top += kLinePitch;
        }
    }
    EXPECT_EQ(shown(findTables(cells)), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Pages, TableFinder,
    testing::Values(
        Layout { "plain", { { { 100, "a" }, { 400, "b" } }, { { 100, "c" }, { 400, "d" } } },
            "a|b\nc|d\n" },
        Layout { "textAround",
            { { { 300, "收支情况" } }, { { 100, "项目" }, { 500, "金额" } },
                { { 100, "收入" }, { 500, "12" } },
                { { 100, "以上数字经过核对没有发现任何错误。" } } },
            "收支情况\n项目|金额\n收入|12\n以上数字经过核对没有发现任何错误。\n" },
        Layout { "emptyCells",
            { { { 100, "a" }, { 400, "b" }, { 700, "c" } }, { { 400, "e" }, { 700, "f" } },
                { { 100, "g" }, { 700, "i" } }, { { 700, "k" } } },
            "a|b|c\n|e|f\ng||i\n||k\n" },
        Layout { "mergedHeading",
            { { { 100, "项目" }, { 420, "二零二四年度合计" } },
                { { 100, "收入" }, { 400, "100" }, { 700, "200" } },
                { { 100, "支出" }, { 400, "300" }, { 700, "400" } } },
            "项目|<2>二零二四年度合计\n收入|100|200\n支出|300|400\n" },
        Layout { "flushRightUnderCentred",
            { { { 100, "品名" }, { 560, "额" } }, { { 100, "纸" }, { 610, "5" } },
                { { 100, "笔" }, { 590, "15" } } },
            "品名|额\n纸|5\n笔|15\n" },
        Layout { "spreadHeading",
            { { { 100, "姓" }, { 200, "名" }, { 500, "年龄" } },
                { { 100, "欧阳文山" }, { 500, "31" } }, { { 100, "司马小明" }, { 500, "42" } } },
            "姓名|年龄\n欧阳文山|31\n司马小明|42\n" },
        Layout { "narrowBorderSeenElsewhere",
            { { { 100, "1000" }, { 300, "20" } }, { { 100, "10" }, { 300, "20" } },
                { { 100, "12345678" }, { 285, "2000" } } },
            "1000|20\n10|20\n12345678|2000\n" },
        Layout { "formRowAlone",
            { { { 100, "登记表" } }, { { 100, "编号" }, { 600, "日期" } },
                { { 100, "本表一式两份由双方各执一份妥善保管备查不得遗失。" } } },
            "登记表\n编号|日期\n本表一式两份由双方各执一份妥善保管备查不得遗失。\n" }),
    [](const auto& each) { return std::string(each.param.name); });

TEST(TableFinder, runningTextInColumnsComesInReadingOrder)
{
    PageText page;
    const std::string full = "这一行文字写满了一栏的宽度。";
    for (const int left : { 100, 800 }) {
        Lines lines(6, { { left, full } });
        lines.back() = { { left, left == 100 ? "左完" : "右完" } };
        addParagraph(page, 100, lines);
    }
    const std::string shownText = shown(findTables(page));
    EXPECT_LT(shownText.find("左完"), shownText.find(full, shownText.find("左完")));
    EXPECT_EQ(shownText.find('|'), std::string::npos) << shownText;
}

/// A table of three columns drawn with lines, or the same words without them, after a turn by
/// `slope`: a heading over two columns, a cell over two rows, cells of several lines.
PageText formText(double slope)
{
    PageText page;
    addParagraph(page, 40, { { { 100, "收支" }, { 180, "情况" } } });
    addParagraph(page, 140, { { { 110, "项目" }, { 420, "金额" } } });
    addParagraph(page, 240, { { { 110, "办公用品采" } }, { { 110, "购" } } });
    addParagraph(page, 240, { { { 410, "1,200" } } });
    addParagraph(page, 260, { { { 586, "|" }, { 610, "待定" } } });
    addParagraph(page, 400, { { { 110, "一" } }, { { 110, "首次" }, { 190, "预付款" } } });
    addParagraph(page, 400, { { { 410, "300" } } });
    addParagraph(page, 640, { { { 100, "以上" } } });
    for (Paragraph& paragraph : page.paragraphs) {
        for (TextLine& line : paragraph.lines) {
            for (Word& word : line.words) {
                const int down = static_cast<int>(std::lround(word.box.left * slope));
                const int right = -static_cast<int>(std::lround(word.box.top * slope));
                word.box = { word.box.left + right, word.box.top + down, word.box.right + right,
                    word.box.bottom + down };
            }
            line.baselineLeft += static_cast<int>(std::lround(line.box.left * slope));
            line.baselineRight += static_cast<int>(std::lround(line.box.right * slope));
        }
    }
    return page;
}

TEST(RuledTable, boxesAreCellsHoweverManyLinesTheyHold)
{
    Rulings rulings;
    rulings.across = { { 130, 100, 800 }, { 230, 101, 801 }, { 390, 100, 600 }, { 560, 99, 800 } };
    rulings.down = { { 100, 130, 561 }, { 400, 131, 560 }, { 600, 230, 560 }, { 800, 130, 560 },
        { 950, 130, 560 } }; // the last one meets no other
    for (const double slope : { 0.0, 0.06, -0.06 }) {
        const SheetLayout sheet = findTables(formText(slope), rulings, 200);
        EXPECT_EQ(shown(sheet),
            "收支情况\n项目|<2>金额\n办公用品采购|1,200|待定\n一\n首次预付款|300\n以上\n")
            << slope;
        ASSERT_EQ(sheet.rows.size(), 5U);
        EXPECT_EQ(sheet.rows[2].cells[2].rows, 2);
        EXPECT_EQ(sheet.columnPixels, (std::vector<int> { 300, 200, 200 }));
    }
}

TEST(RuledTable, entriesInOneBoxAreRowsAndAFrameIsNone)
{
    PageText page;
    addParagraph(page, 140, { { { 110, "品名" }, { 420, "数量" } } });
    addParagraph(page, 240, { { { 110, "纸" } }, { { 110, "笔" } }, { { 110, "墨" } } });
    addParagraph(page, 240, { { { 420, "5" } }, { { 420, "7" } }, { { 420, "9" } } });
    Rulings rulings;
    rulings.across = { { 130, 100, 800 }, { 230, 100, 800 }, { 560, 100, 800 } };
    rulings.down = { { 100, 130, 560 }, { 400, 130, 560 }, { 800, 130, 560 } };
    EXPECT_EQ(shown(findTables(page, rulings, 200)), "品名|数量\n纸|5\n笔|7\n墨|9\n");
    rulings.across.erase(rulings.across.begin() + 1);
    rulings.down.erase(rulings.down.begin() + 1);
    EXPECT_EQ(findRuledTables(rulings, 200).size(), 0U);
}

TEST(PageRulings, areFoundOnATiltedPageAndNotInPrint)
{
    constexpr double kSlope = 0.05;
    Page page = blankPage(1200, 1000, PixelFormat::kGray);
    std::fill(page.pixels.begin(), page.pixels.end(), std::uint8_t { 235 });
    const auto ink = [&page](int x, int y) {
        const int tiltedX = x - static_cast<int>(std::lround(y * kSlope));
        const int tiltedY = y + static_cast<int>(std::lround(x * kSlope));
        page.row(tiltedY)[tiltedX] = 40;
    };
    for (int i = 0; i < 600; ++i) {
        for (int thick = 0; thick < 3; ++thick) {
            ink(200 + i, 300 + thick); // one line across, one down
            ink(200 + thick, 300 + i);
            if (i % 30 < 24) {
                ink(200 + i, 500 + thick); // strokes of letters
            }
        }
        for (int thick = 0; thick < 60; ++thick) {
            ink(300 + i / 2, 700 + thick); // a solid bar
        }
    }
    EncodedPage encodedPage = encoded(FileFormat::kXls, page);
    const Rulings rulings = findRulings(encodedPage, kSlope);
    ASSERT_EQ(rulings.across.size(), 1U);
    ASSERT_EQ(rulings.down.size(), 1U);
    EXPECT_NEAR(rulings.across[0].at, 301, 3);
    EXPECT_NEAR(rulings.across[0].from, 200, 4);
    EXPECT_NEAR(rulings.across[0].to, 800, 4);
    EXPECT_NEAR(rulings.down[0].at, 201, 3);
    encodedPage.bytes.resize(30);
    EXPECT_TRUE(findRulings(encodedPage, kSlope).across.empty()) << "a damaged picture";
}

TEST(TableFinder, linesOfOneCellJoinWithoutRulings)
{
    PageText page;
    addParagraph(page, 100,
        { { { 100, "编号" }, { 300, "说明" } }, { { 100, "甲" }, { 300, "这一格的文字写满后" } },
            { { 300, "另起一行" } }, { { 100, "乙" }, { 300, "短" } } });
    EXPECT_EQ(shown(findTables(page)), "编号|说明\n甲|这一格的文字写满后另起一行\n乙|短\n");
}

TEST(TableFinder, widthsReachFromColumnToColumn)
{
    PageText page;
    addParagraph(page, 100, { { { 100, "a" }, { 400, "b" } }, { { 100, "c" }, { 400, "dd" } } });
    EXPECT_EQ(findTables(page).columnPixels, (std::vector<int> { 300, 40 }));
    EXPECT_TRUE(findTables({}).rows.empty());
}

} // namespace
} // namespace orva
