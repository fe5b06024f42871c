// How the window comes up: order of the library calls, and life without a usable library.
#include "tests/mainwindow/window_fixture.h"

#include <QFile>
#include <QLabel>
#include <QPushButton>

#include <gmock/gmock.h>

using ::testing::ElementsAre;
using ::testing::HasSubstr;

class Start : public WindowTest
{
};

class StartWithoutScan : public WindowTest
{
protected:
    StartWithoutScan()
        : WindowTest(FakeSdk::Variant::kWithoutScan)
    {
    }
};

TEST_F(Start, PreparesTheLibraryInOrderAndWritesItsResults)
{
    window();
    EXPECT_THAT(fake.callOrder(), ElementsAre("SetLogInfo", "Init", "ClearTmpData"));
    EXPECT_THAT(fake.calls()[0].arguments,
        ElementsAre("1", Sandbox::userFolder() + "/OrvaLog/tarvex-base-hld.log"));
    EXPECT_TRUE(logHas("[m_SDKInit = 0],[m_SDKClear = 0]"));
    EXPECT_TRUE(logHas("Orvascan_preview_image.jpg]"));
    EXPECT_EQ(control<QLabel>("appVersionNoLabel")->text(), QStringLiteral("应用版本: 3.0.15.15"));
    EXPECT_TRUE(control<QWidget>("autoRotatChkBox")->isHidden());
    EXPECT_TRUE(control<QPushButton>("btn_Login")->isEnabled());
    EXPECT_FALSE(control<QPushButton>("btn_Log_Management")->isEnabled());
}

TEST_F(Start, FailedInitIsKeptForStartUp)
{
    fake.script("result|Init|-20\nresult|ClearTmpData|-1\n");
    EXPECT_EQ(window().m_SDKInit, -20);
    EXPECT_EQ(window().m_SDKClear, -1);
}

TEST_F(Start, WithoutALibraryTheWindowWorksAndCloses)
{
    QFile::remove(QString::fromStdString(
        Sandbox::root() + "/opt/apps/orvascan/scanner/lib/OrvaSDK/libOrva_SDK.so"));
    std::vector<_tagdevicesInfomationItem> devices;
    EXPECT_EQ(window().getOnLineScanDevices(devices), 0);
    EXPECT_TRUE(devices.empty());
    EXPECT_TRUE(logHas("[LoadDll()][nRet = -404]"));
    // a name that is not in the list: scan controls off, window shown
    window().onSelScanDeviceSig(QStringLiteral("nobody"));
    EXPECT_TRUE(window().isVisible());
    EXPECT_FALSE(control<QPushButton>("scanMainBtn")->isEnabled());
    EXPECT_FALSE(control<QPushButton>("templateBtn")->isEnabled());
    EXPECT_EQ(closeWindow(), 0);
    EXPECT_TRUE(fake.calls().empty());
}

TEST_F(StartWithoutScan, LeavesABrokenLibraryUninitialised)
{
    window();
    EXPECT_TRUE(logHas("[LoadDll()][nRet = -401]"));
    EXPECT_EQ(fake.count("Init"), 0);
    EXPECT_EQ(fake.count("ClearTmpData"), 0);
    EXPECT_EQ(window().m_SDKInit, 0);
    EXPECT_EQ(closeWindow(), 0);
}
