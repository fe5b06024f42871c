// The other ends of the dialogs: device times, pre-feed, temporary data, templates. What logging in
// does shows in the journeys of the office.
#include "tests/mainwindow/window_fixture.h"

#include <QDir>

class Dialogs : public WindowTest
{
protected:
    void SetUp() override
    {
        choose();
        QDir().mkpath(QString::fromStdString(outputFolder()));
        QObject::connect(&window(), &MainWindow::templateInfoSave,
            [this](const ScanTemplateParam& param) { collected = param; });
    }
    ScanTemplateParam collected;
};

TEST_F(Dialogs, TheMonitorRestsWhileTheDeviceTimesAreShown)
{
    const AnswerModal answer([this](QDialog& dialog) {
        const int polls = fake.count("GetButtonStatus");
        QThread::msleep(300); // more than one poll interval of this build
        EXPECT_EQ(fake.count("GetButtonStatus"), polls);
        dialog.reject();
    });
    click("button_SetSleepTime");
    EXPECT_EQ(answer.count(), 1);
    EXPECT_EQ(fake.count("GetScannerSleepTime"), 1);
    EXPECT_TRUE(polls());
}

TEST_F(Dialogs, WhatTheDeviceAnswersIsTold)
{
    struct Case
    {
        const char* entry;
        std::function<void()> set;
        std::vector<std::string> arguments;
        const char *title, *done, *refused;
    };
    const auto prefeed = [this](float time) {
        return [this, time] { window().slotUpdatePrefeedTimeValue(time); };
    };
    const char* const kPrefeed = "设置预进纸功能";
    const Case cases[] = {
        { "SetScannerTime", [this] { window().slotUpdateTimeValue(10, 20); }, { "10", "20" },
            "设置扫描仪时间", "设置扫描仪时间\n成功!", "设置扫描仪时间\n失败!" },
        { "SetPrefeed", prefeed(0.0F), { "0", "0" }, kPrefeed, "设置预进纸\n成功！",
            "设置预进纸\n失败!" },
        { "SetPrefeed", prefeed(0.5F), { "1", "0.5" }, kPrefeed, "设置预进纸\n成功！",
            "设置预进纸\n失败!" },
        { "ClearTmpData", [this] { click("button_clear_tmpdata"); }, {}, "手动清除",
            "手动清除文件成功!", "手动清除文件失败!" },
    };
    for (const Case& c : cases) {
        EXPECT_EQ(told(c.set).text, c.done);
        EXPECT_EQ(fake.lastCall(c.entry), c.arguments) << c.entry;
        fake.script(std::string("result|") + c.entry + "|-15|1\n");
        const SeenModal refused = told(c.set);
        EXPECT_EQ(refused.title, c.title);
        EXPECT_EQ(refused.text, c.refused);
    }
}

TEST_F(Dialogs, TemplateBringsItsSettingsBackOrIsRefused)
{
    const Values stored { { "scanSourceComBo", "ADF双面" }, { "DPIComBo", "300" },
        { "MergeComBo", "左右合并" }, { "colorModeComBo", "灰度" }, { "constraSpinBox", "-20" },
        { "autoBColorChkBox", "true" }, { "sameNameAddNoRadio", "true" },
        { "fileTypeCombo", "pdf" }, { "multipage_radio", "true" }, { "BlankSlider", "33" } };
    set(stored);
    window().onTemplateInfoCollect();
    click("baseSetDefaultBtn");
    set({ { "constraSpinBox", "5" }, { "RemoveHoleChkBox", "true" }, { "fileTypeCombo", "jpg" },
        { "sameNameCoverRadio", "true" }, { "autoBColorChkBox", "false" },
        { "BlankSlider", "34" } });
    QSignalSpy status(&window(), &MainWindow::templateInfoStatus);
    window().onTemplateInfoSave(collected);
    expect(stored);
    EXPECT_EQ(text("RemoveHoleChkBox"), "false");
    ASSERT_EQ(status.size(), 3);
    EXPECT_EQ(status.last()[1].toInt(), 100);

    select("DPIComBo", "200");
    const QString path = text("filePathEdit");
    for (const char* folder : { "/nowhere/at/all", ".", "/dev/null", "" }) {
        collected.savePath = folder;
        window().onTemplateInfoSave(collected);
        EXPECT_EQ(status.last()[1].toInt(), -1) << folder;
    }
    EXPECT_EQ(text("filePathEdit"), path);
    EXPECT_EQ(text("DPIComBo"), "200");
    EXPECT_TRUE(logHas("template can not write:/nowhere/at/all"));
}

TEST_F(Dialogs, ATemplateEditedByHandBringsNoStateThatClickingCouldNot)
{
    select("fileTypeCombo", "jpg");
    window().onTemplateInfoCollect();
    ScanTemplateParam odd = collected;
    odd.multiPage = true; // of a file type with one page
    odd.colorMode = "黑白";
    odd.autoLevel = true; // not in 黑白
    odd.denoise = "强化"; // not in 黑白
    odd.paperSize = "自动";
    odd.autoCrop = false; // 自动 crops
    odd.autoTextOrientation = true;
    odd.rotationIndex = 2; // not with text orientation
    odd.fileType = 99;
    odd.timeNamePrefix = "../x";
    odd.serialStart = "a/b";
    odd.threshold = 60000;
    odd.gamma = -1;
    for (int round = 0; round < 2; ++round) { // the second finds the lists where they are
        window().onTemplateInfoSave(odd);
        expect({ { "multipage_radio", "false" }, { "autopLevelchkBox", "false" },
            { "DenoiseComBo", "不去噪" }, { "rotAngleComBox", "不旋转" },
            { "comboBox_doc", "图文" }, { "fileNamePreEdit", "" }, { "nameNoSerialEdit", "" },
            { "threholdSpinBox", "255" } });
        EXPECT_TRUE(text("autoCropChkBox") == "true" || text("paperTypeComBo") != "自动");
    }
}
