// Choosing a device: what is bound, read, filled, hidden and started.
#include "tests/mainwindow/window_fixture.h"

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>

#include <gmock/gmock.h>

using ::testing::ElementsAre;

class Device : public WindowTest
{
protected:
    bool hidden(const char* name) { return control<QWidget>(name)->isHidden(); }
};

TEST_F(Device, ListsEveryDeviceWithItsTexts)
{
    fake.script("devices|clear\n"
                "device|Orvascan X|1111:2222|A1|1.0|2.0|AvH4\n"
                "device|Other|3333:4444|B2|1.1|2.1|AvF\n");
    std::vector<_tagdevicesInfomationItem> devices;
    const std::size_t before = (window(), fake.calls().size());
    window().getOnLineScanDevices(devices);
    ASSERT_EQ(devices.size(), 2U);
    EXPECT_EQ(devices[1].name, "Other");
    EXPECT_EQ(devices[1].serialNumber, "B2");
    EXPECT_EQ(devices[1].version1, "1.1");
    EXPECT_EQ(devices[1].version2, "2.1");
    EXPECT_TRUE(devices[1].deviceClass.empty());
    EXPECT_THAT(callsSince(before),
        ElementsAre("GetScannerCount", "SelectScanner", "GetScannerName", "GetScannerVIDPID",
            "GetScannerVersion", "GetScannerSN", "SelectScanner", "GetScannerName",
            "GetScannerVIDPID", "GetScannerVersion", "GetScannerSN"));
}

TEST_F(Device, ChoosingTheSecondOfTwoLeavesItSelectedInTheLibrary)
{
    fake.script("devices|clear\n"
                "device|Orvascan X|1|A1|1.0|2.0|AvH4\n"
                "device|Orvascan Y|2|B2|1.1|2.1|AvF\n"
                "device|Orvascan Z|3|A3|1.2|2.2|AvF\n");
    choose(QStringLiteral("Orvascan Y"));
    const auto selected = fake.callsOf("SelectScanner");
    ASSERT_FALSE(selected.empty());
    EXPECT_EQ(selected.back().arguments.front(), "1");
    EXPECT_TRUE(logHas("GetDevInfo return 0"));
    EXPECT_TRUE(window().isVisible());
    EXPECT_TRUE(window().windowTitle().contains(QStringLiteral("Velmar数字化安全采集系统")));
    EXPECT_TRUE(
        control<QLabel>("currentDeviceLabel")->text().contains(QStringLiteral("Orvascan Y")));
    EXPECT_TRUE(control<QLabel>("currentDeviceSNLabel")->text().contains(QStringLiteral("B2")));
    EXPECT_TRUE(
        control<QLabel>("currentDeviceVersionLabel")->text().contains(QStringLiteral("固件(2.1)")));
    EXPECT_TRUE(waitCount("GetButtonStatus", 1));
}

TEST_F(Device, ClassAndSerialDecideTheControls)
{
    choose(); // A serial, AvH4, device information with IsHigh
    EXPECT_FALSE(hidden("ColorDropoutComBox"));
    EXPECT_FALSE(hidden("button_setPrefeed"));
    EXPECT_EQ(text("scanSourceComBo"), QStringLiteral("ADF单面")) << "the first feeder";
    EXPECT_TRUE(hidden("RemoveHoleChkBox"));
    EXPECT_TRUE(control<QPushButton>("button_SetSleepTime")->isEnabled());
    EXPECT_EQ(fake.count("SetPrefeed"), 1);
}

TEST_F(Device, OfAnotherMakerHasNoDeviceOptions)
{
    fake.script("devices|clear\ndevice|orvascan-like B|1|B1|1|2|AvF\n");
    choose(QStringLiteral("orvascan-like B"));
    EXPECT_TRUE(logHas("未发现Orvascan字符串，不是Velmar设备，禁用设备选项"));
    EXPECT_FALSE(control<QPushButton>("button_SetSleepTime")->isEnabled());
    EXPECT_FALSE(control<QCheckBox>("MultiFeedChkBox")->isEnabled());
    for (const char* name : { "label_filterColor", "ColorDropoutComBox", "ColorDropoutchkBox",
             "label_35", "autoRotateModComBox", "button_setPrefeed", "RemoveHoleChkBox" }) {
        EXPECT_TRUE(hidden(name)) << name;
    }
    EXPECT_EQ(fake.count("SetPrefeed"), 0);
}

TEST_F(Device, AFeederOfClassAvFHidesDoubleFeedDetection)
{
    fake.script("devices|clear\ndevice|Orvascan F|1|A1|1|2|AvF\n");
    choose(QStringLiteral("Orvascan F"));
    EXPECT_TRUE(hidden("MultiFeedChkBox"));
    EXPECT_TRUE(hidden("button_setPrefeed"));
}

TEST_F(Device, MalformedPrefeedTextDoesNotCostTheWindow)
{
    fake.script("json|{\"Prefeed\":{\"nCap\":1,\"nEnable\":1,\"value\":\"abc\"}}\n");
    choose();
    EXPECT_TRUE(window().isVisible());
    EXPECT_TRUE(logHas("stof"));
}
