// What a setting becomes on its way into the library's records, and the lines that tell it.
#include "mainwindow/rules/file_param.h"
#include "mainwindow/rules/param_codes.h"

#include <QString>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

using namespace rules;
using testing::ElementsAre;

namespace {

std::vector<int> codesOf(int (*code)(const QString&), const std::vector<const char*>& texts)
{
    std::vector<int> codes;
    for (const char* text : texts) {
        codes.push_back(code(QString::fromUtf8(text)));
    }
    return codes;
}

FileControls serialControls(const char* start, int digits)
{
    FileControls c;
    c.timeNamed = false;
    c.serialStart = start;
    c.serialDigits = digits;
    c.separator = "-";
    c.fileFormat = 4;
    c.multiPage = 1;
    return c;
}

/// Every byte that no field owns, in a record that held other things before.
template <typename Record>
std::vector<int> bytesAt(const Record& record, std::vector<int> offsets)
{
    unsigned char raw[sizeof(Record)];
    std::memcpy(raw, &record, sizeof(Record));
    std::vector<int> values;
    for (const int offset : offsets) {
        values.push_back(raw[offset]);
    }
    return values;
}

} // namespace

TEST(ParamCodes, TextsGiveTheLibrarysNumbersAndUnknownOnesTheNeutralCode)
{
    EXPECT_THAT(codesOf(colorModeCode, { "彩色", "灰度", "黑白", "多流输出", "黑白 ", "" }),
        ElementsAre(0, 1, 2, 3, 0, 0));
    EXPECT_THAT(codesOf(fileFormatCode,
                    { "jpg", "bmp", "png", "tif", "pdf", "双层pdf", "ofd", "双层ofd", "txt", "rtf",
                        "xls", "PDF", "gif" }),
        ElementsAre(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 0, 0));
    EXPECT_THAT(codesOf(rotateCode, { "不旋转", "左旋90度", "右旋90度", "旋转180度", "45" }),
        ElementsAre(0, 1, 2, 3, 0));
    EXPECT_THAT(codesOf(dropoutCode, { "无操作", "红色", "绿色", "蓝色", "黄色" }),
        ElementsAre(0, 1, 2, 3, 0));
    const std::vector<const char*> merge { "无操作", "上下拆分", "左右拆分", "上下合并", "左右合并",
        "?" };
    EXPECT_THAT(codesOf(splitCode, merge), ElementsAre(0, 1, 2, 0, 0, 0));
    EXPECT_THAT(codesOf(mergeCode, merge), ElementsAre(0, 0, 0, 1, 2, 0));
    EXPECT_THAT(codesOf(timeNameTypeCode, { "年月日", "月日年", "日月年", "日年月", "" }),
        ElementsAre(0, 1, 2, -1, -1));
}

TEST(ParamCodes, ModesThatHangOnASecondControl)
{
    EXPECT_EQ(textModeCode(true, "快速识别"), 1);
    EXPECT_EQ(textModeCode(true, "复杂识别"), 3);
    EXPECT_EQ(textModeCode(true, "别的"), 0);
    EXPECT_EQ(textModeCode(false, "全文识别"), 0);
    std::vector<int> denoise;
    for (int index = -1; index <= 3; ++index) {
        denoise.push_back(denoiseCode(index));
    }
    EXPECT_THAT(denoise, ElementsAre(0, 0, 3, 4, 0));
    EXPECT_EQ(timeNamedCode(false, false), 1);
    EXPECT_EQ(timeNamedCode(false, true), 0);
    EXPECT_EQ(multiPageCode(true, true), 0);
    EXPECT_EQ(multiPageCode(false, true), 1);
    EXPECT_EQ(multiPageCode(false, false), 0);
}

TEST(FileRecord, SerialStartIsPaddedAndTheDateOrderIsNotWritten)
{
    FileParam p;
    std::memset(&p, 0xA5, sizeof(p));
    ASSERT_EQ(fillFileParam(serialControls("7", 4), false, &p), FileParamFault::kNone);
    EXPECT_STREQ(p.szIndex, "0007");
    EXPECT_EQ(p.nTimeNamedType, 0);
    EXPECT_EQ(p.bTimeNamed, 0);
    EXPECT_STREQ(p.szSeparator, "-");
    EXPECT_EQ(p.nFormatIndex, 4);
    EXPECT_EQ(p.nMultiPage, 1);
    EXPECT_THAT(bytesAt(p, { 0, 255, 256, 275, 280, 282, 283, 293, 298, 299 }), testing::Each(0));
    ASSERT_EQ(fillFileParam(serialControls("12", 1), false, &p), FileParamFault::kNone);
    EXPECT_STREQ(p.szIndex, "12");
    ASSERT_EQ(fillFileParam(serialControls("12", 0), false, &p), FileParamFault::kNone);
    EXPECT_STREQ(p.szIndex, "") << "no digit count, no start";
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
        FileControls controls = serialControls("", 1);
        controls.prefix = c.prefix;
        controls.separator = c.separator;
        controls.serialStart = c.serial;
        FileParam p;
        EXPECT_EQ(fillFileParam(controls, false, &p), c.fault) << c.prefix.toStdString();
        EXPECT_EQ(faultNotice(c.fault).text.isEmpty(), c.fault == FileParamFault::kNone);
        if (c.fault != FileParamFault::kNone) {
            EXPECT_EQ(p.nFormatIndex, 0) << "nothing of a refused record may be sent";
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

TEST(SentParameters, LinesInTheirOrderAndWording)
{
    ImageParam image {};
    image.bAutoCropDeskew = image.bAutoLevel = image.bRemoveBlank = 1;
    image.nContrast = 38;
    image.nBrightness = -7;
    image.nGamma = 1.1F;
    image.nBlankThresoldValue = 55;
    FileParam file;
    FileControls controls = serialControls("7", 3);
    controls.prefix = "doc";
    ASSERT_EQ(fillFileParam(controls, false, &file), FileParamFault::kNone);
    ASSERT_EQ(setFolder("/data/扫描 文件", &file), FileParamFault::kNone);
    EXPECT_THAT(sentParameterLines(0, 2, image, file),
        ElementsAre("# SDK SET color_mode = 0 #", "# SDK SET JPGQulity = 2 #",
            "# SDK SET bAutoCropDeskew = 1 #", "# SDK SET bAutoLevel = 1 #",
            "# SDK SET nContrast = 38 #", "# SDK SET nThresold = 0 #",
            "# SDK SET nBrightness = -7 #", "# SDK SET nGamma = 1.100000 #",
            "# SDK SET m_fileName.bTimeNamed = 0 #", "# SDK SET m_fileName.nTimeNamedType = 0 #",
            "# SDK SET m_fileName.szIndex = 007 #", "# SDK SET m_fileName.bSameNameCover = 1 #",
            "# SDK SET m_fileName.nFormatIndex = 4 #", "# SDK SET m_fileName.szFileName = doc #",
            "# SDK SET m_fileName.szSeparator = - #", "# SDK SET m_fileName.nMultiPage = 1 #",
            "# SDK SET m_fileName.szFilePath = /data/扫描 文件 #"));
    EXPECT_EQ(blankPageLine(image), "bRemoveBlank=1,nBlankThresoldValue=55\n");
}
