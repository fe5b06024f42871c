// What a setting becomes on its way into the library's records, and what is refused.
#include "mainwindow/rules/file_param.h"
#include "mainwindow/rules/param_codes.h"

#include <gmock/gmock.h>

#include <cstring>

using namespace rules;
using testing::ElementsAre;

namespace {

std::vector<int> codesOf(int (*code)(const QString&), const QStringList& texts)
{
    std::vector<int> codes;
    for (const QString& text : texts) {
        codes.push_back(code(text));
    }
    return codes;
}

} // namespace

TEST(ParamCodes, WhereTheOrderOfAListIsNotThatOfTheCodesAndUnknownTexts)
{
    EXPECT_THAT(codesOf(colorModeCode, { "多流输出", "黑白 ", "" }), ElementsAre(3, 0, 0));
    EXPECT_THAT(codesOf(fileFormatCode, { "双层pdf", "xls", "PDF" }), ElementsAre(5, 10, 0));
    const QStringList merge { "无操作", "上下拆分", "左右拆分", "上下合并", "左右合并", "?" };
    EXPECT_THAT(codesOf(splitCode, merge), ElementsAre(0, 1, 2, 0, 0, 0));
    EXPECT_THAT(codesOf(mergeCode, merge), ElementsAre(0, 0, 0, 1, 2, 0));
    EXPECT_THAT(codesOf(timeNameTypeCode, { "年月日", "月日年", "日月年", "日年月" }),
        ElementsAre(0, 1, 2, -1));
    EXPECT_EQ(textModeCode(true, "复杂识别"), 3);
    EXPECT_EQ(textModeCode(true, "别的"), 0);
    EXPECT_EQ(textModeCode(false, "全文识别"), 0);
    EXPECT_EQ(denoiseCode(1), 3);
    EXPECT_EQ(denoiseCode(3), 0);
    EXPECT_EQ(timeNamedCode(false, false), 1);
    EXPECT_EQ(multiPageCode(true, true), 0);
}

TEST(FileRecord, LongestTextsFitAndOneByteMoreIsRefusedWithANotice)
{
    struct Case
    {
        QString prefix, separator, serial;
        FileParamFault fault;
    };
    const std::vector<Case> cases {
        { QString(19, 'a'), "----", "9999999999", FileParamFault::kNone },
        { QString(20, 'a'), "-", "1", FileParamFault::kPrefixRefused },
        { "扫描扫描扫描扫", "-", "1", FileParamFault::kPrefixRefused }, // 21 bytes in 7 characters
        { "../a", "-", "1", FileParamFault::kPrefixRefused },
        { QString("a") + QChar(0) + "b", "-", "1", FileParamFault::kPrefixRefused },
        { "a", "-----", "1", FileParamFault::kSeparatorRefused },
        { "a", "/", "1", FileParamFault::kSeparatorRefused },
        { "a", "-", "10000000000", FileParamFault::kSerialRefused },
        { "a", "-", "1\n", FileParamFault::kSerialRefused },
    };
    for (const Case& c : cases) {
        FileControls controls;
        controls.timeNamed = false;
        controls.prefix = c.prefix;
        controls.separator = c.separator;
        controls.serialStart = c.serial;
        controls.serialDigits = 1;
        controls.fileFormat = 4;
        FileParam p;
        EXPECT_EQ(fillFileParam(controls, false, &p), c.fault) << c.prefix.toStdString();
        EXPECT_EQ(faultNotice(c.fault).text.isEmpty(), c.fault == FileParamFault::kNone);
        EXPECT_EQ(p.nFormatIndex, c.fault == FileParamFault::kNone ? 4 : 0)
            << "nothing of a refused record may be sent";
        controls.serialDigits = 0;
        if (c.fault == FileParamFault::kNone) {
            static_cast<void>(fillFileParam(controls, false, &p));
            EXPECT_STREQ(p.szIndex, "") << "no digit count, no start";
        }
    }
}

TEST(FileRecord, AFolderOf255BytesFitsAndAnotherByteLeavesTheRecordAlone)
{
    FileParam p {};
    EXPECT_EQ(setFolder(QString(85, QChar(0x626B)), &p), FileParamFault::kNone); // 3 bytes each
    EXPECT_EQ(std::strlen(p.szFilePath), 255U);
    EXPECT_EQ(setFolder("/" + QString(85, QChar(0x626B)), &p), FileParamFault::kFolderTooLong);
    EXPECT_EQ(std::strlen(p.szFilePath), 255U);
    EXPECT_EQ(faultNotice(FileParamFault::kFolderTooLong).title, "路径异常");
}
