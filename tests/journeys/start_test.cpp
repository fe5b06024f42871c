// From the start to the device dialog: one copy at a time, and machines where something is missing.
#include "app/install_paths.h"
#include "tests/fake_sdk/fake_sdk_control.h"
#include "tests/journeys/journey.h"
#include "tests/support/wait.h"

#include <gmock/gmock.h>

#include <csignal>
#include <filesystem>

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::SizeIs;

namespace {

std::string instanceFile()
{
    return std::string(install_paths::kConfigFolder) + "TarvexBaseUI.pid";
}
std::string uninstallFile()
{
    return std::string(install_paths::kConfigFolder) + "tarvex-base.pid";
}
/// The decimal number and one zero byte.
std::string idBytes(const Process& process)
{
    return std::to_string(process.id()) + std::string(1, '\0');
}

class StartJourney : public Journey
{
protected:
    void closeDeviceDialog()
    {
        const WindowId devices = display().wait(titles::kDevices, 60s);
        ASSERT_NE(devices, 0U);
        display().key(devices, "Escape");
        expectCleanEnd();
    }
};

} // namespace

TEST_F(StartJourney, firstStartThenASecondCopyThenACrash)
{
    ASSERT_FALSE(fileExists(instanceFile()));
    Process& first = start();
    ASSERT_NE(display().wait(titles::kSplash), 0U);
    ASSERT_NE(display().wait(titles::kDevices), 0U);
    EXPECT_TRUE(display().waitGone(titles::kSplash));
    EXPECT_EQ(readBytes(instanceFile()), idBytes(first));
    EXPECT_EQ(readBytes(uninstallFile()), idBytes(first));
    const std::string log = Sandbox::runLog();
    EXPECT_THAT(log, HasSubstr("程序启动"));

    Process& second = start();
    const WindowId box = display().wait(titles::kAlreadyRunning);
    ASSERT_NE(box, 0U);
    EXPECT_EQ(display().find(titles::kSplash), 0U);
    EXPECT_THAT(second.output(), Not(HasSubstr("MainWindow")));
    display().key(box, "Return");
    EXPECT_EQ(second.waitForEnd(5s), 0);
    EXPECT_TRUE(first.running());
    EXPECT_EQ(readBytes(instanceFile()), idBytes(first));
    EXPECT_EQ(readBytes(uninstallFile()), idBytes(first));
    EXPECT_EQ(Sandbox::runLog().substr(0, log.size()), log) << "a line of the first copy is gone";

    first.signal(SIGKILL);
    EXPECT_EQ(first.waitForEnd(5s), 128 + SIGKILL);
    ASSERT_TRUE(display().waitGone(titles::kDevices));
    Process& third = start();
    ASSERT_NE(display().wait(titles::kDevices), 0U);
    EXPECT_EQ(readBytes(instanceFile()), idBytes(third));
    EXPECT_EQ(readBytes(uninstallFile()), idBytes(third));
    closeDeviceDialog();
}

TEST_F(StartJourney, withoutALibraryItCanBeClosed)
{
    replaceLibrary({});
    start();
    closeDeviceDialog();
    EXPECT_THAT(Sandbox::runLog(), HasSubstr("[LoadDll()][nRet = -404]"));
}

TEST_F(StartJourney, aLibraryThatLacksARequiredEntryCanBeClosed)
{
    replaceLibrary(FakeSdk::fileOf(FakeSdk::Variant::kWithoutScan));
    start();
    closeDeviceDialog();
    EXPECT_THAT(Sandbox::runLog(), HasSubstr("[LoadDll()][nRet = -401]"));
}

TEST_F(StartJourney, aConfigurationFolderThatCannotBeWrittenEndsItWithStatusOne)
{
    obeyPermissions();
    fs::permissions(install_paths::kConfigFolder, fs::perms(0555));
    Process& process = start();
    EXPECT_EQ(process.waitForEnd(20s), 1);
    EXPECT_THAT(process.output(), Not(HasSubstr("MainWindow")));
    EXPECT_THAT(Sandbox::runLog(), HasSubstr("return fd = -1, can't open " + instanceFile()));
}

TEST_F(StartJourney, aDataRootThatCannotBeWrittenStillLetsItScan)
{
    obeyPermissions();
    loadSheets(1);
    fs::remove_all(Sandbox::userFolder()); // neither settings nor logs nor pages have a place
    fs::permissions(dataRoot(), fs::perms(0555));
    openMainWindow();
    pressScan();
    waitForFinishedJob();
    EXPECT_THAT(namesIn(Sandbox::home() + "/Documents/扫描文件"), SizeIs(1))
        << "one-sided by default";
    closeByKey();
}
