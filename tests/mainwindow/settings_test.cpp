// Settings of a device: factory set, what comes back after a restart, what is kept apart on
// purpose.
#include "log/itprojectlog.h"
#include "tests/mainwindow/window_fixture.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QDir>
#include <QDoubleSpinBox>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QSettings>
#include <QSlider>
#include <QSpinBox>

class Settings : public WindowTest
{
protected:
    static std::string file() { return Sandbox::userFolder() + "/Orvascan A300/Orvascan A300.ini"; }
    bool checked(const char* name) { return control<QAbstractButton>(name)->isChecked(); }
    void check(const char* name, bool on) { control<QAbstractButton>(name)->setChecked(on); }
    int value(const char* spinBox) { return control<QSpinBox>(spinBox)->value(); }
    void restart()
    {
        ASSERT_EQ(closeWindow(), 0);
        std::vector<_tagdevicesInfomationItem> devices;
        window().getOnLineScanDevices(devices);
        window().onSelScanDeviceSig(QString::fromUtf8(kDevice));
    }
};

TEST_F(Settings, FirstUseShowsTheFactorySet)
{
    fake.script("filetypes|clear\n"); // the device has no defaults of its own
    std::vector<_tagdevicesInfomationItem> devices;
    window().getOnLineScanDevices(devices);
    window().onSelScanDeviceSig(QString::fromUtf8(kDevice));
    EXPECT_TRUE(logHas("应用窗口首次使用"));
    EXPECT_EQ(value("lightSpinBox"), 18);
    EXPECT_EQ(value("constraSpinBox"), 38);
    EXPECT_EQ(value("threholdSpinBox"), 128);
    EXPECT_DOUBLE_EQ(control<QDoubleSpinBox>("gammaSpinBox")->value(), 1.1);
    EXPECT_EQ(control<QSlider>("gammaSlider")->value(), 11);
    EXPECT_EQ(control<QSlider>("BlankSlider")->value(), 55);
    EXPECT_EQ(text("paperTypeComBo"), QStringLiteral("A4"));
    EXPECT_EQ(text("DPIComBo"), QStringLiteral("200"));
    EXPECT_EQ(text("colorModeComBo"), QStringLiteral("彩色"));
    EXPECT_TRUE(checked("timeNameRadio"));
    EXPECT_TRUE(checked("sameNameCoverRadio"));
    EXPECT_TRUE(checked("singlepage_radio"));
    EXPECT_TRUE(checked("autoCropChkBox"));
    EXPECT_TRUE(checked("autopLevelchkBox"));
    EXPECT_FALSE(checked("MultiFeedChkBox"));
    EXPECT_FALSE(control<QWidget>("ColorDropoutComBox")->isEnabled());
    EXPECT_FALSE(control<QWidget>("BlankSlider")->isEnabled());
    EXPECT_TRUE(control<QLineEdit>("filePathEdit")->text().endsWith(QStringLiteral("/扫描文件")));
    EXPECT_FALSE(fileExists(file()));
    EXPECT_EQ(closeWindow(), 0);
    QSettings stored(QString::fromStdString(file()), QSettings::IniFormat);
    EXPECT_EQ(stored.value("appValue/firstStart").toInt(), 1);
    EXPECT_EQ(stored.value("appValue/ScanDeviceName").toString(), QStringLiteral("Orvascan A300"));
}

TEST_F(Settings, KeepTheirOddities)
{
    choose();
    select("timeNametypeCombo", "月日年");
    select("colorModeComBo", "黑白");
    select("ColorDropoutComBox", "红色");
    check("autoRotatChkBox", true);
    select("autoRotateModComBox", "全文识别");
    fake.script("filetypes|clear\nfiletype|1|2|3|24\n");
    click("argSetDefaultBtn");
    ASSERT_EQ(control<QSlider>("gammaSlider")->value(), 2) << "a document type truncates it";
    restart();
    // the date order is written under another key than it is read from
    EXPECT_EQ(control<QComboBox>("timeNametypeCombo")->currentIndex(), 0);
    EXPECT_TRUE(control<QWidget>("timeNametypeCombo")->isEnabled()) << "files are named by time";
    EXPECT_EQ(text("ColorDropoutComBox"), QStringLiteral("无操作"));
    EXPECT_TRUE(control<QWidget>("ColorDropoutComBox")->isEnabled());
    EXPECT_TRUE(checked("autoRotatChkBox"));
    EXPECT_EQ(text("autoRotateModComBox"), QStringLiteral("快速识别")) << "put back by its rule";
    EXPECT_DOUBLE_EQ(control<QDoubleSpinBox>("gammaSpinBox")->value(), 2.4);
    EXPECT_EQ(control<QSlider>("gammaSlider")->value(), 2);
}

TEST_F(Settings, ASerialThatOutgrowsItsDigitsKeepsThemAllAndTellsTheOperator)
{
    choose();
    click("serialNameRadio");
    control<QSpinBox>("nameNoLenSpinBox")->setValue(3);
    control<QLineEdit>("nameNoSerialEdit")->setText(QStringLiteral("999"));
    click("scanMainBtn");
    ASSERT_TRUE(waitIdle());
    auto* serial = control<QLineEdit>("nameNoSerialEdit");
    ASSERT_TRUE(QTest::qWaitFor([&] { return serial->text() != QStringLiteral("999"); }));
    const QString next = serial->text();
    EXPECT_GE(next.toInt(), 1000);
    EXPECT_EQ(value("nameNoLenSpinBox"), 4);
    EXPECT_EQ(
        control<QLabel>("nameHintLabel")->text(), QStringLiteral("序号已进位，序号长度改为4"));
    EXPECT_TRUE(logHas("[func:onChangeNameNoSerial]serial start " + next.toStdString()));
    restart();
    EXPECT_EQ(control<QLineEdit>("nameNoSerialEdit")->text(), next) << "or 100 would come again";
    ASSERT_EQ(window().onSetScanConfig(0), 0);
    EXPECT_EQ(QString(fake.lastFileParam().szIndex), next);
}

TEST_F(Settings, LogOnComesBackIntoForceAtStart)
{
    choose();
    writeBytes(Sandbox::path("joblog/keep"), "");
    control<QLineEdit>("LogFilePathEdit")->setText(QString::fromStdString(Sandbox::path("joblog")));
    select("comboSetLogLevel", "开启日志");
    EXPECT_EQ(IOFLog.enabledValue(), 1) << "at once";
    restart();
    EXPECT_EQ(IOFLog.enabledValue(), 1);
    EXPECT_EQ(std::string(IOFLog.destination()), Sandbox::path("joblog") + "/");
    select("comboSetLogLevel", "关闭日志");
    EXPECT_EQ(IOFLog.enabledValue(), 0);
}

TEST_F(Settings, WithoutADeviceNothingIsReadOrWritten)
{
    window().readSetting();
    window().writeSetting();
    EXPECT_EQ(logCount("m_CurrentSelectDevName is not exist!"), 2);
    EXPECT_EQ(closeWindow(), 0);
    EXPECT_FALSE(fileExists(file()));
}
