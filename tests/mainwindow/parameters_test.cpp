// What reaches the library for a job: order of the calls, every byte of the two records, and what
// is refused before a record goes out.
#include "tests/mainwindow/window_fixture.h"

#include <gmock/gmock.h>

#include <cstring>

using ::testing::ElementsAre;

namespace {

template <typename Record>
std::string bytesOf(const Record& record)
{
    return { reinterpret_cast<const char*>(&record), sizeof record };
}

/// Padding is sent too.
template <typename Record>
Record zeroed()
{
    Record record;
    std::memset(&record, 0, sizeof record);
    return record;
}

} // namespace

class Parameters : public WindowTest
{
protected:
    void SetUp() override
    {
        choose();
        std::strcpy(file.szFilePath, outputFolder().c_str());
    }
    void expectSent()
    {
        ASSERT_EQ(window().onSetScanConfig(0), 0);
        EXPECT_EQ(fake.lastCall("SetImageParam").front(), bytesOf(image));
        EXPECT_EQ(fake.lastCall("SetFileParam").front(), bytesOf(file));
    }
    ImageParam image = zeroed<ImageParam>();
    FileParam file = zeroed<FileParam>();
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
    EXPECT_THAT(fake.lastCall("SetPaperSize"), ElementsAre("0", "0", "182", "257", "2"));
    EXPECT_THAT(fake.lastCall("SetResolution"), ElementsAre("200", "200"));
    EXPECT_TRUE(logHas("# SDK get Scanner SN = A1234567 #"));
}

TEST_F(Parameters, ColourRecordsByteByByte)
{
    set({ { "autopLevelchkBox", "false" }, { "lightSpinBox", "-100" }, { "constraSpinBox", "41" },
        { "gammaSpinBox", "2.2" }, { "rotAngleComBox", "旋转180度" }, { "MergeComBo", "左右拆分" },
        { "DenoiseComBo", "强化" }, { "autoBColorChkBox", "true" }, { "MultiFeedChkBox", "true" },
        { "checkBox_blank", "true" }, { "BlankSlider", "77" }, { "fileTypeCombo", "双层pdf" },
        { "multipage_radio", "true" }, { "fileNamePreEdit", "Invoice2024" },
        { "seperateCombo", "_" }, { "timeNametypeCombo", "日月年" },
        { "imageCompressCombo", "大小优先(30%)" } });
    image.bAutoCropDeskew = image.bMultiFeed = image.bRemoveBlank = image.bDeviceOption = 1;
    image.nBrightness = -100;
    image.nContrast = 41;
    image.nGamma = 2.2F;
    image.nRotateAngle = 3;
    image.nSplit = 2;
    image.nDenoise = 4;
    image.nBackGround = 1;
    image.nBlankThresoldValue = 77;
    std::strcpy(file.szFileName, "Invoice2024");
    std::strcpy(file.szSeparator, "_");
    file.bSameNameCover = file.bTimeNamed = 1;
    file.nTimeNamedType = 2;
    file.nMultiPage = 1;
    file.nFormatIndex = 5;
    expectSent();
    EXPECT_THAT(fake.lastCall("SetJPGQulity"), ElementsAre("3"));
    EXPECT_THAT(fake.lastCall("SetColorMode"), ElementsAre("0"));

    ASSERT_EQ(window().onSetScanConfig(1), 0); // a preview is one JPEG a side
    EXPECT_EQ(fake.lastFileParam().nFormatIndex, 0);
    EXPECT_EQ(fake.lastFileParam().nMultiPage, 0);
}

TEST_F(Parameters, BlackAndWhiteSerialRecordsByteByByte)
{
    set({ { "colorModeComBo", "黑白" }, { "ColorDropoutComBox", "绿色" },
        { "ColorDropoutchkBox", "true" }, { "autoCropChkBox", "false" },
        { "autoRotatChkBox", "true" }, { "autoRotateModComBox", "复杂识别" },
        { "RemoveHoleChkBox", "true" }, { "scanSourceComBo", "ADF双面" },
        { "MergeComBo", "左右合并" }, { "serialNameRadio", "true" }, { "nameNoLenSpinBox", "5" },
        { "nameNoSerialEdit", "12" }, { "sameNameAddNoRadio", "true" }, { "comboBox_doc", "图片" },
        { "threholdSpinBox", "200" } });
    image.nThresold = 200;
    image.nColorDropout = 2;
    image.bAdvColorDropout = image.bAutoText = image.bRemoveHole = image.bDeviceOption = 1;
    image.nMerge = 2;
    image.nAutoTextMode = 3;
    image.nBlankThresoldValue = 55;
    image.bMultiFeed = 0;
    std::strcpy(file.szIndex, "00012");
    file.nDocType = 2;
    expectSent();
    EXPECT_THAT(fake.lastCall("SetColorMode"), ElementsAre("2"));
}

TEST_F(Parameters, RefusedSourceSendsNothingElseAndLeavesTheWindowReady)
{
    fake.script("result|SetScanSource|-16\n");
    const std::size_t before = fake.calls().size();
    click("scanMainBtn");
    EXPECT_EQ(callsSince(before).back(), "SetScanSource");
    EXPECT_TRUE(logHas("[func:onStartScan]扫描参数设置失败"));
    EXPECT_TRUE(enabled("scanMainBtn"));
    EXPECT_TRUE(polls());
}

TEST_F(Parameters, AFolderIsMadeOrRefusedWithANotice)
{
    const std::string odd = Sandbox::path("扫描 \"件\" $(x)");
    set("filePathEdit", QString::fromStdString(odd));
    ASSERT_EQ(window().onSetScanConfig(0), 0);
    EXPECT_EQ(std::string(fake.lastFileParam().szFilePath), odd);
    EXPECT_TRUE(fileExists(odd));

    const int sent = fake.count("SetImageParam");
    writeBytes(Sandbox::path("file"), "x");
    set("filePathEdit", QString::fromStdString(Sandbox::path("file/below")));
    const SeenModal notice = told([this] { EXPECT_EQ(window().onSetScanConfig(0), -1); });
    EXPECT_EQ(notice.title, "路径异常");
    EXPECT_EQ(notice.text, "当前目录无创建权限!\n请重新选择路径!");
    EXPECT_EQ(fake.count("SetImageParam"), sent);
}

TEST_F(Parameters, SummaryOfThePreviewPageKeepsItsSwappedCaptions)
{
    set({ { "fileNamePreEdit", "doc" }, { "rotAngleComBox", "左旋90度" } });
    window().onSetPreviewConfigInfo();
    expect({ { "filePreSwitchVL", "文件命名前缀:doc" }, { "rotAngleVL", "旋转角度:左旋90度" },
        { "constraVL", "对比度数值:自动" }, { "threholdValueVL", "对比度数值:自动" },
        { "brightValueVL", "阈值数值:自动" }, { "gammaValueVL", "GAMMA数值:自动" } });
    set({ { "autopLevelchkBox", "false" }, { "autoCropChkBox", "false" },
        { "serialNameRadio", "true" }, { "sameNameAddNoRadio", "true" }, { "lightSpinBox", "-7" },
        { "constraSpinBox", "38" }, { "threholdSpinBox", "129" }, { "gammaSpinBox", "2.7" } });
    window().onSetPreviewConfigInfo();
    expect({ { "fileNameVL", "文件命名方式:顺序" }, { "fileSameCoverVL", "文件同名覆盖:否" },
        { "autoCropVL", "自动裁切: 关" }, { "autoLevelVL", "自动色阶: 关" },
        { "constraVL", "对比度数值:38" }, { "threholdValueVL", "阈值数值:129" },
        { "brightValueVL", "亮度数值:-7" }, { "gammaValueVL", "GAMMA数值:2.7" } });
}
