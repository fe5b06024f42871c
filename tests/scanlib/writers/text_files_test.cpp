// Formats of recognised text, made of pages whose words are known, and read by other programs.
#include "scanlib/writers/biff_records.h"
#include "scanlib/writers/biff_workbook.h"
#include "scanlib/writers/cell_number.h"
#include "scanlib/writers/flow_text.h"
#include "scanlib/writers/ole_container.h"
#include "tests/scanlib/writers/other_programs.h"
#include "tests/scanlib/writers/text_pages.h"
#include "tests/scanlib/writers/written_files.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

namespace orva {
namespace {

/// Two paragraphs and a table of numbers.
PageText report()
{
    PageText page;
    addParagraph(page, 200, { { { 200, "档案" }, { 280, "管理" }, { 360, "办法" } } });
    addParagraph(page, 320,
        { { { 200, "首行写得满满了整齐的二十个汉字正好到边。" } },
            { { 200, "接着" }, { 280, "写完。" } } });
    addParagraph(page, 520, { { { 200, "100%" }, { 300, "of" }, { 350, "{C:\\x}" } } });
    const char* const cells[4][4] = { { "编号", "姓名", "金额", "日期" },
        { "007", "张三", "1,234.50", "2024-03-05" }, { "008", "李四", "-20", "" },
        { "110101199003078888", "王 五", "12.5%", "待定" } };
    int y = 700;
    for (const auto& row : cells) {
        std::vector<PlacedWord> words;
        int x = 200;
        for (const char* const cell : row) {
            if (*cell != '\0') {
                words.push_back({ x, cell });
            }
            x += 450;
        }
        addParagraph(page, y, { words });
        y += 60;
    }
    return page;
}

class TextFile : public testing::Test
{
protected:
    std::filesystem::path made(FileFormat format, const std::vector<PageText>& texts)
    {
        std::vector<EncodedPage> pages;
        for (const PageText& text : texts) {
            EncodedPage page = encoded(format, blankPage(1654, 2339, PixelFormat::kGray));
            page.text = serialised(text);
            pages.push_back(spooled(page, folder.file("spool")));
        }
        std::filesystem::path path = folder.file("文件");
        EXPECT_TRUE(writeFile(format, path, pages).ok());
        return path;
    }
    TemporaryFolder folder;
};

TEST_F(TextFile, plainTextKeepsParagraphsTabsAndPages)
{
    const std::string text = contentOf(made(FileFormat::kTxt, { report(), PageText(), report() }));
    EXPECT_EQ(text.find("档案管理办法\n\n首行写得满满了整齐的二十个汉字正好到边。接着写完。\n\n"
                        "100% of {C:\\x}\n\n编号\t姓名\t金额\t日期\n\n007\t"),
        0U)
        << text;
    EXPECT_NE(text.find("待定\n\f\n\f\n档案"), std::string::npos) << text;
}

TEST_F(TextFile, richTextIsSevenBitWithChineseSizesSectionsAndFacts)
{
    const std::string rtf = contentOf(made(FileFormat::kRtf, { report(), report() }));
    EXPECT_TRUE(std::all_of(
        rtf.begin(), rtf.end(), [](char c) { return c == '\n' || (c >= 0x20 && c < 0x7F); }));
    for (const char* const part :
        { "\\ansicpg936", "\\fcharset134 SimSun", "{\\title \\u25195?\\u25551? & <1>}",
            "\\yr2023\\mo11\\dy1", "\\pgwsxn11909\\pghsxn16841", "\\u26723?\\u26696?\\u31649?",
            "\\fs29 ", "of \\{C:\\\\x\\}", "\\tx3240\\tx6480", "007\\tab ",
            "\\par\n\\sect\\sectd\\sbkpage" }) {
        EXPECT_NE(rtf.find(part), std::string::npos) << part << "\n" << rtf.substr(0, 3000);
    }
}

// xls2csv takes a character whose code ends in 00 or 01, such as U+4E00, for the border of a
// record: there is none on this page.
TEST_F(TextFile, workbookIsReadByAnotherProgram)
{
    const auto path = made(FileFormat::kXls, { report(), PageText(), report() });
    const std::string sheet = "档案管理办法\n首行写得满满了整齐的二十个汉字正好到边。\n接着写完。\n"
                              "100% of {C:\\x}\n编号,姓名,金额,日期\n007,张三,1234.5,2024-03-05\n"
                              "008,李四,-20\n110101199003078888,王 五,0.125,待定\n";
    EXPECT_EQ(outputOf("xls2csv -q0 -d utf-8 -b '=' " + quoted(path)), sheet + "=" + sheet + "=");
    EXPECT_NE(
        outputOf("file " + quoted(path)).find("Composite Document File V2"), std::string::npos);
}

/// Bytes of the strings that the pages show.
std::vector<std::size_t> shownStrings(const std::filesystem::path& pdf)
{
    const std::string drawn =
        outputOf("qpdf --stream-data=uncompress --normalize-content=n " + quoted(pdf) + " -");
    std::vector<std::size_t> sizes;
    for (std::size_t end = drawn.find("> Tj"); end != std::string::npos;
         end = drawn.find("> Tj", end + 1)) {
        sizes.push_back((end - drawn.rfind('<', end)) / 2);
    }
    return sizes;
}

TEST_F(TextFile, anyLettersCanBeSearchedInValidFiles)
{
    const std::string unknown = "\xEF\xBF\xBD";
    std::string longWord;
    for (int i = 0; i < 20000; ++i) {
        longWord += "档案";
    }
    const struct
    {
        std::string word;
        std::string found;
        std::size_t letters;
    } rows[] = { { "😀𠮷", "😀𠮷", 2 }, { "x\xED\xA0\x80y", "x" + unknown + "y", 3 },
        { "a\xC0\x80z", "a" + unknown + unknown + "z", 4 }, { "b\x01\x7F", "b" + unknown, 3 },
        { longWord, "档案档案档案", 40000 } };
    for (const auto& row : rows) {
        PageText text;
        addParagraph(text, 200, { { { 100, row.word } } });
        const auto pdf = made(FileFormat::kPdfText, { text });
        outputOf("qpdf --check " + quoted(pdf));
        EXPECT_NE(
            outputOf("pdftotext -raw " + quoted(pdf) + " -").find(row.found), std::string::npos)
            << row.found;
        const std::vector<std::size_t> strings = shownStrings(pdf);
        EXPECT_EQ(
            std::accumulate(strings.begin(), strings.end(), std::size_t { 0 }), 2 * row.letters)
            << row.found;
        ASSERT_FALSE(strings.empty());
        EXPECT_LE(*std::max_element(strings.begin(), strings.end()), 32767U)
            << "the limit of PDF/A";
        const auto ofd = made(FileFormat::kOfdText, { text });
        EXPECT_NE(outputOf("unzip -p " + quoted(ofd) + " Doc_0/Pages/Page_0/Content.xml"
                      + " | xmllint --xpath \"string(//*[local-name()='TextCode'])\" -")
                      .find(row.found),
            std::string::npos)
            << row.found;
    }
}

/// Lines of 40 pixels to the em whose box is raised by a bracket or by the line above.
TEST(EmSquare, isToldByIdeographsAndNotByWhatReachesBeyondThem)
{
    const struct
    {
        TextLine line;
        double em;
    } rows[] = {
        { { { 0, 0, 400, 37 }, 33, 33, { { { 0, 0, 37, 37 }, 90, "档" } } }, 40 },
        { { { 0, 0, 400, 60 }, 50, 50,
              { { { 0, 10, 77, 47 }, 90, "档案" }, { { 80, 0, 100, 60 }, 90, "（" },
                  { { 120, 10, 237, 47 }, 90, "管理室" }, { { 240, 10, 262, 47 }, 90, "卜" } } },
            40 },
        // a word that was given the place of the whole line
        { { { 0, 0, 400, 37 }, 33, 33, { { { 0, 0, 400, 37 }, 90, "档案" } } }, 40 },
        { { { 0, 0, 400, 29 }, 29, 29, { { { 0, 0, 90, 29 }, 90, "Desk" } } }, 40 },
    };
    for (const auto& row : rows) {
        EXPECT_NEAR(emPixels(row.line), row.em, 1.5) << lineText(row.line);
    }
}

TEST(CellNumber, onlyWhatLooksTheSameAfterwards)
{
    const struct
    {
        const char* text;
        const char* format; ///< nullptr: stays text
        double value;
    } cases[] = {
        { "0", "0", 0 },
        { "42", "0", 42 },
        { "-7", "0", -7 },
        { "12.50", "0.00", 12.5 },
        { "0.125", "0.000", 0.125 },
        { "1,234,567.8", "#,##0.0", 1234567.8 },
        { "999999999999999", "0", 999999999999999.0 },
        { "35%", "0%", 0.35 },
        { "007", nullptr, 0 },
        { "00.5", nullptr, 0 },
        { "+5", nullptr, 0 },
        { "-0", nullptr, 0 },
        { "1234567890123456", nullptr, 0 },
        { "1,23", nullptr, 0 },
        { "1234,567", nullptr, 0 },
        { "1.", nullptr, 0 },
        { ".5", nullptr, 0 },
        { "1.2.3", nullptr, 0 },
        { "1e5", nullptr, 0 },
        { "12%%", nullptr, 0 },
        { "-", nullptr, 0 },
        { "", nullptr, 0 },
        { "１２", nullptr, 0 },
        { "0.1234567", nullptr, 0 },
    };
    for (const auto& each : cases) {
        const auto number = cellNumberOf(each.text);
        ASSERT_EQ(number.has_value(), each.format != nullptr) << each.text;
        if (number) {
            EXPECT_EQ(number->format, each.format) << each.text;
            EXPECT_DOUBLE_EQ(number->value, each.value) << each.text;
        }
    }
}

/// A sheet of one row after the other, without looking for tables.
SheetLayout sheetOf(const std::vector<std::vector<std::string>>& rows)
{
    SheetLayout sheet;
    for (const auto& cells : rows) {
        TableRow& row = sheet.rows.emplace_back();
        for (const std::string& cell : cells) {
            row.cells.push_back({ static_cast<int>(row.cells.size()), 1, cell });
        }
    }
    return sheet;
}

TEST_F(TextFile, whatAWorkbookCannotHoldInOnePlaceGoesOnInTheNext)
{
    // Texts of every length around the end of a record, with narrow and wide characters in turn.
    std::vector<std::vector<std::string>> rows;
    std::string expected;
    for (int length = 1; length < 400; ++length) {
        std::string text(static_cast<std::size_t>(length), static_cast<char>('a' + length % 26));
        text += length % 2 == 0 ? "é" : "终";
        rows.push_back({ text });
        expected += text + "\n";
    }
    const std::string longText(70000, 'x'); // three cells
    rows.push_back({ longText, "right" });
    expected += std::string(32767, 'x') + ",right\n" + std::string(32767, 'x') + "\n"
        + std::string(70000 - 2 * 32767, 'x') + "\n";
    std::vector<std::string> wide(300, "c");
    rows.push_back(wide);
    for (int column = 0; column < 255; ++column) {
        expected += "c,";
    }
    expected += "c";
    for (int column = 256; column < 300; ++column) {
        expected += " c";
    }
    rows.insert(rows.end(), 65600, { "row" });
    BiffWorkbook book;
    book.addPage(sheetOf(rows), 200);
    EXPECT_EQ(book.sheets(), 2U) << "rows past 65,536";
    const auto path = folder.file("large.xls");
    std::vector<std::uint8_t> file;
    ASSERT_TRUE(oleFile(book.bytes(), {}, file).ok());
    std::ofstream(path, std::ios::binary)
        .write(
            reinterpret_cast<const char*>(file.data()), static_cast<std::streamsize>(file.size()));
    const std::string csv = outputOf("xls2csv -q0 -d utf-8 -b '=' " + quoted(path));
    EXPECT_TRUE(csv.substr(0, expected.size()) == expected);
    const auto count = [&csv](const std::string& wanted) {
        int found = 0;
        for (std::size_t at = csv.find(wanted); at != std::string::npos;
             at = csv.find(wanted, at + 1)) {
            ++found;
        }
        return found;
    };
    EXPECT_EQ(count("\nrow") + count("=row"), 65600);
}

} // namespace
} // namespace orva
