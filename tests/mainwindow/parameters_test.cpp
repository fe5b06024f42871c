// What reaches the library for a job: order of the calls and the raw bytes of the two records. The
// expected bytes are laid out here from the border's description, not through the records.
#include "tests/mainwindow/window_fixture.h"
#include "tests/support/answer_modal.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>
#include <QSpinBox>

#include <gmock/gmock.h>

#include <cstring>

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

/// Little-endian fields at fixed places of a zeroed record.
class Bytes
{
public:
    explicit Bytes(std::size_t size)
        : m_hex(size * 2, '0')
    {
    }
    Bytes& u8(std::size_t at, unsigned value)
    {
        static const char kDigits[] = "0123456789abcdef";
        m_hex[at * 2] = kDigits[(value >> 4) & 15];
        m_hex[at * 2 + 1] = kDigits[value & 15];
        return *this;
    }
    Bytes& i32(std::size_t at, std::int32_t value)
    {
        const auto bits = static_cast<std::uint32_t>(value);
        for (std::size_t i = 0; i < 4; ++i) {
            u8(at + i, (bits >> (8 * i)) & 255);
        }
        return *this;
    }
    Bytes& f32(std::size_t at, float value)
    {
        std::int32_t bits = 0;
        std::memcpy(&bits, &value, sizeof bits);
        return i32(at, bits);
    }
    Bytes& text(std::size_t at, const std::string& value)
    {
        for (std::size_t i = 0; i < value.size(); ++i) {
            u8(at + i, static_cast<unsigned char>(value[i]));
        }
        return *this;
    }
    const std::string& hex() const { return m_hex; }

private:
    std::string m_hex;
};

} // namespace

class Parameters : public WindowTest
{
protected:
    void SetUp() override { choose(); }
    std::string sent(const char* entry)
    {
        const auto calls = fake.callsOf(entry);
        return calls.empty() ? std::string() : calls.back().arguments.front();
    }
    void check(const char* name, bool on) { control<QAbstractButton>(name)->setChecked(on); }
};

TEST_F(Parameters, GoOutInTheFixedOrder)
{
    select("paperTypeComBo", "B5");
    const std::size_t before = fake.calls().size();
    ASSERT_EQ(window().onSetScanConfig(0), 0);
    EXPECT_THAT(callsSince(before),
        ElementsAre("GetScanSourceCount", "GetScanSourceName", "GetScanSourceName", "SetScanSource",
            "GetPaperCount", "GetPaperName", "GetPaperName", "GetPaperName", "GetPaperSize",
            "SetPaperSize", "GetResolutionCount", "GetResolutionName", "GetResolutionName",
            "GetResolutionName", "GetResolution", "SetResolution", "SetColorMode", "SetJPGQulity",
            "SetImageParam", "SetFileParam", "GetScannerSN"));
    EXPECT_EQ(g_mainWindow, &window());
    EXPECT_TRUE(logHas("# SDK get Scanner SN = A1234567 #"));
    EXPECT_TRUE(logHas("# SDK SET color_mode = 0 #"));
    const auto paper = fake.callsOf("SetPaperSize").back().arguments;
    EXPECT_EQ(paper.back(), "2");
}

TEST_F(Parameters, ColourRecordsByteByByte)
{
    check("autopLevelchkBox", false);
    control<QSpinBox>("lightSpinBox")->setValue(-100);
    control<QSpinBox>("constraSpinBox")->setValue(41);
    control<QDoubleSpinBox>("gammaSpinBox")->setValue(2.2);
    select("rotAngleComBox", "旋转180度");
    select("MergeComBo", "左右拆分");
    select("DenoiseComBo", "强化");
    check("autoBColorChkBox", true);
    check("MultiFeedChkBox", true);
    check("checkBox_blank", true);
    control<QSlider>("BlankSlider")->setValue(77);
    select("fileTypeCombo", "双层pdf");
    check("multipage_radio", true);
    control<QLineEdit>("fileNamePreEdit")->setText(QStringLiteral("Invoice2024"));
    select("seperateCombo", "_");
    select("timeNametypeCombo", "日月年");
    select("imageCompressCombo", "大小优先(30%)");
    ASSERT_EQ(window().onSetScanConfig(0), 0);
    EXPECT_EQ(sent("SetImageParam"),
        Bytes(68)
            .u8(1, 1)
            .i32(4, -100)
            .i32(8, 41)
            .f32(16, 2.2F)
            .i32(20, 3)
            .i32(32, 2)
            .i32(40, 4)
            .i32(44, 1)
            .u8(56, 1)
            .u8(58, 1)
            .i32(60, 77)
            .u8(64, 1)
            .hex());
    EXPECT_EQ(sent("SetFileParam"),
        Bytes(312)
            .text(0, outputFolder())
            .text(256, "Invoice2024")
            .u8(276, 1)
            .u8(277, 1)
            .text(278, "_")
            .i32(284, 2)
            .i32(300, 1)
            .i32(304, 5)
            .hex());
    EXPECT_EQ(sent("SetJPGQulity"), "3");
}

TEST_F(Parameters, BlackAndWhiteSerialRecordsByteByByte)
{
    select("colorModeComBo", "黑白");
    control<QSpinBox>("threholdSpinBox")->setValue(200);
    select("ColorDropoutComBox", "绿色");
    check("ColorDropoutchkBox", true);
    check("autoCropChkBox", false);
    check("autoRotatChkBox", true);
    select("autoRotateModComBox", "复杂识别");
    check("RemoveHoleChkBox", true);
    select("scanSourceComBo", "ADF双面");
    select("MergeComBo", "左右合并");
    check("serialNameRadio", true);
    control<QSpinBox>("nameNoLenSpinBox")->setValue(5);
    control<QLineEdit>("nameNoSerialEdit")->setText(QStringLiteral("12"));
    check("sameNameAddNoRadio", true);
    select("comboBox_doc", "图片");
    control<QSpinBox>("threholdSpinBox")->setValue(200); // the document type has brought its own
    ASSERT_EQ(window().onSetScanConfig(0), 0);
    EXPECT_EQ(sent("SetImageParam"),
        Bytes(68)
            .i32(12, 200)
            .i32(24, 2)
            .u8(28, 1)
            .i32(36, 2)
            .u8(48, 1)
            .i32(52, 3)
            .u8(57, 1)
            .i32(60, 55)
            .u8(64, 1)
            .hex());
    EXPECT_EQ(sent("SetFileParam"),
        Bytes(312).text(0, outputFolder()).text(288, "00012").i32(308, 2).hex());
    EXPECT_EQ(sent("SetColorMode"), "2");
}

TEST_F(Parameters, PreviewIsOneJpegASide)
{
    select("fileTypeCombo", "pdf");
    check("multipage_radio", true);
    ASSERT_EQ(window().onSetScanConfig(1), 0);
    EXPECT_EQ(fake.lastFileParam().nFormatIndex, 0);
    EXPECT_EQ(fake.lastFileParam().nMultiPage, 0);
    EXPECT_EQ(sent("SetImageParam").substr(0, 4), "0101") << "levels and cropping are automatic";
}

TEST_F(Parameters, RefusedSourceSendsNothingElse)
{
    fake.script("result|SetScanSource|-16\n");
    const std::size_t before = fake.calls().size();
    EXPECT_EQ(window().onSetScanConfig(0), -1);
    EXPECT_EQ(callsSince(before).back(), "SetScanSource");
    EXPECT_TRUE(logHas("++++++++++++++++++source_set ret = -16"));
}

TEST_F(Parameters, FolderThatCannotBeMadeIsToldAndStopsTheJob)
{
    writeBytes(Sandbox::path("file"), "x");
    control<QLineEdit>("filePathEdit")
        ->setText(QString::fromStdString(Sandbox::path("file") + "/below"));
    AnswerModal answer(QStringLiteral("确 定"));
    EXPECT_EQ(window().onSetScanConfig(0), -1);
    EXPECT_EQ(answer.title(), QStringLiteral("路径异常"));
    EXPECT_EQ(answer.text(), QStringLiteral("当前目录无创建权限!\n请重新选择路径!"));
    EXPECT_EQ(fake.count("SetImageParam"), 0);
    EXPECT_EQ(fake.count("SetFileParam"), 0);
}

TEST_F(Parameters, FolderNameWithBlanksQuotesAndChineseArrivesWhole)
{
    const std::string folder = Sandbox::path("扫描 \"件\" $(x)");
    control<QLineEdit>("filePathEdit")->setText(QString::fromStdString(folder));
    ASSERT_EQ(window().onSetScanConfig(0), 0);
    EXPECT_EQ(std::string(fake.lastFileParam().szFilePath), folder);
    EXPECT_TRUE(fileExists(folder));
}

TEST_F(Parameters, SummaryOfThePreviewPageKeepsItsSwappedCaptions)
{
    const auto expectLabels = [this](
                                  std::initializer_list<std::pair<const char*, const char*>> all) {
        window().onSetPreviewConfigInfo();
        for (const auto& [label, expected] : all) {
            EXPECT_EQ(control<QLabel>(label)->text(), QString::fromUtf8(expected)) << label;
        }
    };
    control<QLineEdit>("fileNamePreEdit")->setText(QStringLiteral("doc"));
    select("rotAngleComBox", "左旋90度");
    expectLabels({ { "fileNameVL", "文件命名方式:时间" }, { "fileSameCoverVL", "文件同名覆盖:是" },
        { "fileSepareteVL", "文件名分隔符:无" }, { "filePreSwitchVL", "文件命名前缀:doc" },
        { "scanColorModeVL", "扫描颜色模式:彩色" }, { "scanSourceVL", "扫描源模式:ADF单面" },
        { "scanPaperSizeVL", "扫描纸张类型:A4" }, { "scanDPISizeVL", "扫描DPI类型:200" },
        { "autoCropVL", "自动裁切: 开" }, { "autoLevelVL", "自动色阶: 开" },
        { "rotAngleVL", "旋转角度:左旋90度" }, { "constraVL", "对比度数值:自动" },
        { "threholdValueVL", "对比度数值:自动" }, { "brightValueVL", "阈值数值:自动" },
        { "gammaValueVL", "GAMMA数值:自动" } });
    for (const char* box : { "autopLevelchkBox", "autoCropChkBox" }) {
        check(box, false);
    }
    check("serialNameRadio", true);
    check("sameNameAddNoRadio", true);
    control<QSpinBox>("lightSpinBox")->setValue(-7);
    control<QSpinBox>("constraSpinBox")->setValue(38);
    control<QSpinBox>("threholdSpinBox")->setValue(129);
    control<QDoubleSpinBox>("gammaSpinBox")->setValue(2.7);
    expectLabels({ { "fileNameVL", "文件命名方式:顺序" }, { "fileSameCoverVL", "文件同名覆盖:否" },
        { "autoCropVL", "自动裁切: 关" }, { "autoLevelVL", "自动色阶: 关" },
        { "constraVL", "对比度数值:38" }, { "threholdValueVL", "阈值数值:129" },
        { "brightValueVL", "亮度数值:-7" }, { "gammaValueVL", "GAMMA数值:2.7" } });
}
