// How the window comes up, and choosing a device: what is bound, read, filled, hidden and started.
#include "tests/mainwindow/window_fixture.h"

#include <gmock/gmock.h>

using ::testing::ElementsAre;
using ::testing::UnorderedElementsAreArray;

class Device : public WindowTest
{
protected:
    /// Of the controls that some device does without.
    std::vector<std::string> hidden()
    {
        std::vector<std::string> names;
        for (const char* name :
            { "ColorDropoutComBox", "ColorDropoutchkBox", "MultiFeedChkBox", "RemoveHoleChkBox",
                "autoRotateModComBox", "button_setPrefeed", "label_35", "label_filterColor" }) {
            if (control<QWidget>(name)->isHidden()) {
                names.emplace_back(name);
            }
        }
        return names;
    }
};

TEST_F(Device, TheWindowPreparesTheLibraryInOrderAndKeepsItsResults)
{
    fake.script("result|Init|-20\nresult|ClearTmpData|-1\n");
    EXPECT_EQ(window().m_SDKInit, -20);
    EXPECT_EQ(window().m_SDKClear, -1);
    EXPECT_THAT(fake.callOrder(), ElementsAre("SetLogInfo", "Init", "ClearTmpData"));
    EXPECT_THAT(fake.lastCall("SetLogInfo"),
        ElementsAre("1", Sandbox::userFolder() + "/OrvaLog/tarvex-base-hld.log"));
    EXPECT_EQ(text("appVersionNoLabel"), "应用版本: 3.0.15.15");
    EXPECT_TRUE(control<QWidget>("autoRotatChkBox")->isHidden());
}

TEST_F(Device, ANameThatIsNotInTheListLeavesAWindowWithoutScanControls)
{
    chooseDevice("nobody");
    EXPECT_TRUE(window().isVisible());
    EXPECT_FALSE(enabled("scanMainBtn") || enabled("templateBtn"));
}

TEST_F(Device, ListsEveryDeviceAndLeavesTheChosenOneSelectedInTheLibrary)
{
    fake.script("devices|clear\n"
                "device|Orvascan X|1|A1|1.0|2.0|AvH4\n"
                "device|Orvascan Y|2|B2|1.1|2.1|AvF\n"
                "device|Orvascan Z|3|A3|1.2|2.2|AvF\n");
    std::vector<_tagdevicesInfomationItem> devices;
    const std::size_t before = (window(), fake.calls().size());
    window().getOnLineScanDevices(devices);
    ASSERT_EQ(devices.size(), 3U);
    EXPECT_EQ(devices[1].name + '|' + devices[1].serialNumber + '|' + devices[1].version1 + '|'
            + devices[1].version2 + '|' + devices[1].deviceClass,
        "Orvascan Y|B2|1.1|2.1|");
    const std::vector<std::string> calls = callsSince(before);
    EXPECT_THAT(std::vector<std::string>(calls.begin(), calls.begin() + 7),
        ElementsAre("GetScannerCount", "SelectScanner", "GetScannerName", "GetScannerVIDPID",
            "GetScannerVersion", "GetScannerSN", "SelectScanner"));

    window().onSelScanDeviceSig("Orvascan Y");
    EXPECT_EQ(fake.lastCall("SelectScanner").front(), "1");
    EXPECT_TRUE(window().isVisible());
    EXPECT_TRUE(window().windowTitle().startsWith("Velmar数字化安全采集系统 - Orvascan Y"));
    expect({ { "currentDeviceLabel", "当前设备:Orvascan Y" },
        { "currentDeviceSNLabel", "设备序列号:B2" },
        { "currentDeviceVersionLabel", "设备驱动固件版本：驱动(1.1)固件(2.1)" } });
    EXPECT_TRUE(polls());
}

TEST_F(Device, ClassAndSerialDecideTheControls)
{
    struct Case
    {
        const char* device;
        std::vector<std::string> hidden;
        bool hasOptions;
        int prefeeds;
    };
    const Case cases[] = {
        { "Orvascan H|1|A1|1|2|AvH4", { "RemoveHoleChkBox" }, true, 1 },
        { "Orvascan F|1|A1|1|2|AvF", { "MultiFeedChkBox", "RemoveHoleChkBox", "button_setPrefeed" },
            true, 0 },
        { "orvascan-like B|1|B1|1|2|AvF",
            { "ColorDropoutComBox", "ColorDropoutchkBox", "RemoveHoleChkBox", "autoRotateModComBox",
                "button_setPrefeed", "label_35", "label_filterColor" },
            false, 0 },
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.device);
        fake.script(std::string("reset\ndevices|clear\ndevice|") + c.device + '\n');
        chooseDevice(QString(c.device).section('|', 0, 0));
        EXPECT_THAT(hidden(), UnorderedElementsAreArray(c.hidden));
        EXPECT_EQ(enabled("button_SetSleepTime"), c.hasOptions);
        EXPECT_EQ(enabled("MultiFeedChkBox"), c.hasOptions);
        EXPECT_EQ(fake.count("SetPrefeed"), c.prefeeds);
        EXPECT_EQ(text("scanSourceComBo"), "ADF单面") << "the first feeder";
        ASSERT_EQ(closeWindow(), 0);
    }
    EXPECT_TRUE(logHas("未发现Orvascan字符串，不是Velmar设备，禁用设备选项"));
}

TEST_F(Device, MalformedPrefeedTextDoesNotCostTheWindow)
{
    fake.script("json|{\"Prefeed\":{\"nCap\":1,\"nEnable\":1,\"value\":\"abc\"}}\n");
    choose();
    EXPECT_TRUE(window().isVisible());
    EXPECT_TRUE(logHas("stof"));
}
