// Settings of a device: the factory set, and what is kept apart on purpose. That everything else
// comes back shows in the journey of the settings.
#include "tests/mainwindow/window_fixture.h"

#include <QSettings>

class Settings : public WindowTest
{
};

TEST_F(Settings, FirstUseShowsTheFactorySet)
{
    const std::string file = Sandbox::userFolder() + "/Orvascan A300/Orvascan A300.ini";
    fake.script("filetypes|clear\n"); // the device has no defaults of its own
    chooseDevice();
    EXPECT_TRUE(logHas("应用窗口首次使用"));
    expect({ { "lightSpinBox", "18" }, { "constraSpinBox", "38" }, { "threholdSpinBox", "128" },
        { "gammaSpinBox", "1.1" }, { "gammaSlider", "11" }, { "BlankSlider", "55" },
        { "paperTypeComBo", "A4" }, { "DPIComBo", "200" }, { "colorModeComBo", "彩色" },
        { "timeNameRadio", "true" }, { "sameNameCoverRadio", "true" },
        { "singlepage_radio", "true" }, { "autoCropChkBox", "true" },
        { "autopLevelchkBox", "true" }, { "MultiFeedChkBox", "false" } });
    EXPECT_FALSE(enabled("ColorDropoutComBox") || enabled("BlankSlider"));
    EXPECT_TRUE(text("filePathEdit").endsWith("/扫描文件"));
    EXPECT_FALSE(fileExists(file));
    EXPECT_EQ(closeWindow(), 0);
    const QSettings stored(QString::fromStdString(file), QSettings::IniFormat);
    EXPECT_EQ(stored.value("appValue/firstStart").toInt(), 1);
    EXPECT_EQ(stored.value("appValue/ScanDeviceName").toString(), kDevice);
}

TEST_F(Settings, KeepTheirOddities)
{
    choose();
    set({ { "timeNametypeCombo", "月日年" }, { "colorModeComBo", "黑白" },
        { "ColorDropoutComBox", "红色" }, { "autoRotatChkBox", "true" },
        { "autoRotateModComBox", "全文识别" } });
    fake.script("filetypes|clear\nfiletype|1|2|3|24\n");
    click("argSetDefaultBtn");
    ASSERT_EQ(text("gammaSlider"), "2") << "a document type truncates it";
    ASSERT_EQ(closeWindow(), 0);
    chooseDevice();
    // the date order is written under another key than it is read from; two lists are put back by
    // their rule
    expect({ { "timeNametypeCombo", "年月日" }, { "ColorDropoutComBox", "无操作" },
        { "autoRotatChkBox", "true" }, { "autoRotateModComBox", "快速识别" },
        { "gammaSpinBox", "2.4" }, { "gammaSlider", "2" } });
    EXPECT_TRUE(enabled("timeNametypeCombo")) << "files are named by time";
    EXPECT_TRUE(enabled("ColorDropoutComBox"));
}
