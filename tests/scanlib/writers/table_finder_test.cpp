// Tables on pages whose words stand at known places.
#include "scanlib/writers/table_finder.h"
#include "tests/scanlib/writers/text_pages.h"

#include <gtest/gtest.h>

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

TEST(TableFinder, widthsReachFromColumnToColumn)
{
    PageText page;
    addParagraph(page, 100, { { { 100, "a" }, { 400, "b" } }, { { 100, "c" }, { 400, "dd" } } });
    EXPECT_EQ(findTables(page).columnPixels, (std::vector<int> { 300, 40 }));
    EXPECT_TRUE(findTables({}).rows.empty());
}

} // namespace
} // namespace orva
