// Finding scanners and opening them: slow and hanging searches, replugged devices, names, lists.
#include "tests/scanlib/device/script_fixture.h"
#include "tests/scanlib/temporary_folder.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>

namespace {

using namespace device_tests;
using namespace std::chrono_literals;
using testing::ElementsAre;
using Clock = std::chrono::steady_clock;

class SaneFinding : public SaneScript
{
};

TEST_F(SaneFinding, ASearchThatTakesLongGoesOnInTheBackground)
{
    m_script.searchSilent = true;
    makeDriver();
    EXPECT_TRUE(m_driver->enumerate(50ms).empty());
    m_script.releaseSilence();
    EXPECT_EQ(m_driver->enumerate(2s).size(), 1U);
    EXPECT_EQ(m_script.count("get_devices"), 1);
    EXPECT_EQ(m_script.hosts, 1);
    // one that never ends is broken off when a scanner is to be opened
    m_script.released = false;
    EXPECT_EQ(m_driver->enumerate(50ms).size(), 1U); // what is known
    m_device = m_driver->create(m_driver->enumerate(50ms).front());
    const auto start = Clock::now();
    EXPECT_EQ(m_device->open().code(), orva::kOk);
    EXPECT_LT(Clock::now() - start, 2s);
    EXPECT_EQ(m_script.count("get_devices"), 2);
    EXPECT_EQ(m_driver->enumerate(50ms).size(), 1U);
    EXPECT_EQ(m_script.count("get_devices"), 2); // none while a scanner is open
}

TEST_F(SaneFinding, ASearchEndsAtOnceWhenTheLibraryDoes)
{
    m_script.searchSilent = true;
    makeDriver();
    const auto start = Clock::now();
    std::thread listing([&] { EXPECT_TRUE(m_driver->enumerate(20s).empty()); });
    m_driver->stopEnumerating();
    listing.join();
    m_driver.reset();
    EXPECT_LT(Clock::now() - start, 2s);
    EXPECT_EQ(m_script.running, 0);
}

TEST_F(SaneFinding, AnOpeningThatHangsEndsInTimeAndAtOnceWhenItIsCancelled)
{
    makeDriver();
    m_device = m_driver->create(m_driver->enumerate(1s).front());
    m_script.openSilent = true;
    std::thread canceller([&] {
        std::this_thread::sleep_for(50ms);
        m_device->requestCancel();
    });
    auto start = Clock::now();
    EXPECT_EQ(m_device->open().code(), orva::kCancelled);
    EXPECT_LT(Clock::now() - start, 300ms);
    canceller.join();
    int button = 0;
    EXPECT_EQ(m_device->pressedButton(button).code(), orva::kDeviceTimeout); // does not wait
    // the same opening is waited for again, then its helper is ended and another one tries
    EXPECT_EQ(m_device->open().code(), orva::kOk);
    EXPECT_GT(Clock::now() - start, 600ms);
    EXPECT_LT(Clock::now() - start, 3s);
    EXPECT_EQ(m_script.count("open script:0"), 2);
    start = Clock::now();
    m_device.reset();
    EXPECT_LT(Clock::now() - start, 1s);
    EXPECT_EQ(m_script.running, 0);
}

TEST_F(SaneFinding, AReplugedDeviceIsFoundUnderItsNewKeyAndNoOtherIsTakenForIt)
{
    m_script.devices = { { "script:0", "Paperlane", "P100", "sheetfed scanner" },
        { "script:1", "Paperlane", "P100", "sheetfed scanner" } };
    open();
    const orva::DeviceIdentity identity = m_device->identity();
    m_device.reset();
    m_device = m_driver->create(identity);
    m_script.devices.erase(m_script.devices.begin());
    m_script.openStatus["script:0"] = SANE_STATUS_INVAL;
    EXPECT_EQ(m_device->open().code(), orva::kDeviceNotFound);
    m_script.devices.push_back({ "script:7", "Paperlane", "P100", "sheetfed scanner" });
    EXPECT_EQ(m_device->open().code(), orva::kOk);
    EXPECT_EQ(m_script.count("open script:1"), 0);
    EXPECT_EQ(m_script.count("open script:7"), 1);
}

TEST_F(SaneFinding, AScannerThatIsAwayIsNotSearchedForAtEveryLook)
{
    m_parts.limits.searchPause = 1h;
    open();
    const orva::DeviceIdentity identity = m_device->identity();
    m_device.reset();
    m_device = m_driver->create(identity);
    m_script.openStatus["script:0"] = SANE_STATUS_INVAL;
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(m_device->open().code(), orva::kDeviceNotFound);
    }
    EXPECT_EQ(m_script.count("get_devices"), 2); // of the list, and of the first look
}

TEST(SaneLists, DriversThatAskTheNetworkOrCameLaterAreSearchedByThemselves)
{
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder.path() / "dll.d");
    writeFile(folder.path() / "dll.conf", "# remark\nfujitsu\n  net # remark\n\ngenesys\nhpaio\n");
    writeFile(folder.path() / "dll.d" / "added", "airscan\nhpaio\n");
    std::vector<std::string> groups;
    for (const orva::BackendGroup& group :
        orva::backendGroups({ folder.path() / "none", folder.path() })) {
        groups.push_back(group.name + ": " + group.backends);
    }
    EXPECT_THAT(groups,
        ElementsAre("local: fujitsu,genesys", "net: net", "airscan: airscan", "hpaio: hpaio"));
    EXPECT_EQ(orva::backendGroups({ folder.path() / "none" }).size(), 1U);
}

TEST(SaneLists, OneScannerOfTwoDriversIsListedOnce)
{
    const std::vector<orva::FoundDevice> kept = orva::withoutDuplicates({
        { "escl:http://192.168.7.20:80", "Paperlane", "P300", "flatbed or ADF scanner", "", "" },
        { "airscan:e0:Paperlane P300", "Paperlane", "Paperlane P300", "ip=192.168.7.20", "", "" },
        { "airscan:w0:PAPERLANE P300", "WSD", "PAPERLANE P300", "ip=192.168.7.20", "", "" },
        { "airscan:e1:Paperlane P300", "eSCL", "Paperlane P300", "ip=192.168.7.21", "", "" },
        { "test:0", "Noname", "frontend-tester", "virtual device", "", "" },
        { "test:1", "Noname", "frontend-tester", "virtual device", "", "" },
        { "test:1", "Noname", "frontend-tester", "virtual device", "", "" },
    });
    std::vector<std::string> keys(kept.size());
    std::transform(kept.begin(), kept.end(), keys.begin(),
        [](const orva::FoundDevice& device) { return device.key; });
    EXPECT_THAT(keys,
        ElementsAre(
            "escl:http://192.168.7.20:80", "airscan:e1:Paperlane P300", "test:0", "test:1"));
}

TEST(SaneLists, UsbDevicesGetSerialNumberAndProductFromTheKernel)
{
    const TemporaryFolder folder;
    const auto device = folder.path() / "1-4";
    std::filesystem::create_directories(device);
    for (const auto& [name, text] : std::vector<std::pair<const char*, const char*>> {
             { "busnum", "1\n" }, { "devnum", "12\n" }, { "serial", "A1B2\n" },
             { "idVendor", "0a1b\n" }, { "idProduct", "00c2\n" } }) {
        writeFile(device / name, text);
    }
    orva::FoundDevice found { "epsonds:libusb:001:012", "", "", "", "", "" };
    orva::addUsbFacts(found, folder.path().string());
    EXPECT_EQ(found.serial, "A1B2");
    EXPECT_EQ(found.vidPid, "0a1b:00c2");
    const std::string list = folder.path().string();
    EXPECT_FALSE(orva::isUnplugged("epsonds:libusb:001:012", list));
    EXPECT_TRUE(orva::isUnplugged("epsonds:libusb:001:013", list)); // plugged in again since
    EXPECT_FALSE(orva::isUnplugged("net:host:test:0", list));
    EXPECT_FALSE(orva::isUnplugged("epsonds:libusb:001:013", list + "/none"));
}

TEST(SaneLists, NamesAreReadableAndFitForAFolder)
{
    const auto nameOf = [](const char* key, const char* vendor, const char* model) {
        return orva::identityOf({ key, vendor, model, "", "", "" }).name;
    };
    EXPECT_EQ(nameOf("a:1", "paperlane", "PaperLane P100"), "PaperLane P100");
    EXPECT_EQ(nameOf("a:1", "eSCL", "Paperlane P300"), "Paperlane P300");
    EXPECT_EQ(nameOf("a:1", "", " P3000/P5000\t(USB)\n"), "P3000-P5000 (USB)");
    EXPECT_EQ(nameOf("net:10.0.0.7:a:1", " ", ""), "net:10.0.0.7:a:1");
    EXPECT_EQ(nameOf("escl:http://10.0.0.7:80", "", ".."), "escl:http:--10.0.0.7:80");
}

} // namespace
