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

TEST_F(Settings, ComeBackAfterARestart)
{
    choose();
    select("comboBox_doc", "图片");
    select("scanSourceComBo", "ADF双面");
    select("colorModeComBo", "灰度");
    select("paperTypeComBo", "A5");
    select("DPIComBo", "300");
    select("MergeComBo", "左右合并");
    select("DenoiseComBo", "普通");
    select("rotAngleComBox", "右旋90度");
    select("fileTypeCombo", "tif");
    select("imageCompressCombo", "平衡选择(50%)");
    select("seperateCombo", "-");
    check("multipage_radio", true);
    check("serialNameRadio", true);
    check("sameNameAddNoRadio", true);
    check("autoBColorChkBox", true);
    check("autoCropChkBox", false);
    check("MultiFeedChkBox", true);
    check("checkBox_blank", true);
    check("autopLevelchkBox", false);
    control<QSpinBox>("nameNoLenSpinBox")->setValue(4);
    control<QLineEdit>("nameNoSerialEdit")->setText(QStringLiteral("0042"));
    control<QLineEdit>("fileNamePreEdit")->setText(QStringLiteral("Ab9"));
    control<QSpinBox>("lightSpinBox")->setValue(-30);
    control<QSpinBox>("constraSpinBox")->setValue(60);
    control<QDoubleSpinBox>("gammaSpinBox")->setValue(2.4);
    control<QSlider>("BlankSlider")->setValue(20);
    restart();
    EXPECT_EQ(text("comboBox_doc"), QStringLiteral("图片"));
    EXPECT_EQ(text("scanSourceComBo"), QStringLiteral("ADF双面"));
    EXPECT_EQ(text("colorModeComBo"), QStringLiteral("灰度"));
    EXPECT_EQ(text("paperTypeComBo"), QStringLiteral("A5"));
    EXPECT_EQ(text("DPIComBo"), QStringLiteral("300"));
    EXPECT_EQ(text("MergeComBo"), QStringLiteral("左右合并"));
    EXPECT_EQ(text("DenoiseComBo"), QStringLiteral("普通"));
    EXPECT_EQ(text("rotAngleComBox"), QStringLiteral("右旋90度"));
    EXPECT_EQ(text("fileTypeCombo"), QStringLiteral("tif"));
    EXPECT_EQ(text("imageCompressCombo"), QStringLiteral("平衡选择(50%)"));
    EXPECT_EQ(text("seperateCombo"), QStringLiteral("-"));
    EXPECT_TRUE(checked("multipage_radio"));
    EXPECT_TRUE(checked("serialNameRadio"));
    EXPECT_TRUE(checked("sameNameAddNoRadio"));
    EXPECT_TRUE(checked("autoBColorChkBox"));
    EXPECT_FALSE(checked("autoCropChkBox"));
    EXPECT_TRUE(checked("MultiFeedChkBox"));
    EXPECT_TRUE(checked("checkBox_blank"));
    EXPECT_TRUE(control<QWidget>("BlankSlider")->isEnabled());
    EXPECT_FALSE(checked("autopLevelchkBox"));
    EXPECT_TRUE(control<QWidget>("lightSlider")->isEnabled());
    EXPECT_EQ(value("nameNoLenSpinBox"), 4);
    EXPECT_EQ(control<QLineEdit>("nameNoSerialEdit")->text(), QStringLiteral("0042"));
    EXPECT_EQ(control<QLineEdit>("fileNamePreEdit")->text(), QStringLiteral("Ab9"));
    EXPECT_EQ(control<QLineEdit>("filePathEdit")->text().toStdString(), outputFolder());
    EXPECT_EQ(value("lightSpinBox"), -30);
    EXPECT_EQ(value("constraSpinBox"), 60);
    EXPECT_DOUBLE_EQ(control<QDoubleSpinBox>("gammaSpinBox")->value(), 2.4);
    EXPECT_EQ(control<QLabel>("label_Blank")->text(), QStringLiteral("20"));
    EXPECT_EQ(fake.callsOf("SetScanSource").back().arguments.front(), "2");
}

TEST_F(Settings, KeepTheirOddities)
{
    choose();
    select("timeNametypeCombo", "月日年");
    select("colorModeComBo", "黑白");
    select("ColorDropoutComBox", "红色");
    restart();
    // the date order is written under another key than it is read from
    EXPECT_EQ(control<QComboBox>("timeNametypeCombo")->currentIndex(), 0);
    EXPECT_EQ(text("colorModeComBo"), QStringLiteral("黑白"));
    EXPECT_EQ(text("ColorDropoutComBox"), QStringLiteral("无操作"));
    EXPECT_TRUE(control<QWidget>("ColorDropoutComBox")->isEnabled());
    EXPECT_TRUE(control<QWidget>("threholdSlider")->isEnabled());
    EXPECT_FALSE(control<QWidget>("autopLevelchkBox")->isEnabled());
}

TEST_F(Settings, OfAnotherDeviceAreNotUsed)
{
    choose();
    control<QSpinBox>("lightSpinBox")->setValue(-30);
    ASSERT_EQ(closeWindow(), 0);
    {
        QSettings stored(QString::fromStdString(file()), QSettings::IniFormat);
        stored.setValue("appValue/ScanDeviceName", "Orvascan B");
    }
    choose();
    EXPECT_TRUE(logHas("本次扫描设备与上次不同"));
    EXPECT_NE(value("lightSpinBox"), -30);
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
