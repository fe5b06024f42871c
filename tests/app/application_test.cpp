// The executable itself, in processes of its own.
#include "app/install_paths.h"
#include "tests/fake_sdk/fake_sdk_control.h"
#include "tests/support/application_process.h"
#include "tests/support/sandbox.h"
#include "tests/support/wait.h"

#include <gmock/gmock.h>

#include <csignal>
#include <filesystem>

using ::testing::HasSubstr;
using ::testing::Not;

namespace {

constexpr char kSearched[] = "getOnLineScanDevice-- end \n";

std::string pidFile()
{
    return std::string(install_paths::kConfigFolder) + "TarvexBaseUI.pid";
}
std::string idBytes(pid_t process)
{
    return std::to_string(process) + std::string(1, '\0');
}

class ApplicationTest : public ::testing::Test
{
protected:
    ApplicationTest() { FakeSdk(FakeSdk::Variant::kComplete).install(); }
    Sandbox m_sandbox;
};

} // namespace

TEST_F(ApplicationTest, aSecondCopyLeavesTheFirstOnesFilesAlone)
{
    writeBytes(Sandbox::runLogFile(), "a line of the run before\n");
    const std::map<std::string, std::string> record { { "FAKE_SDK_LOG", Sandbox::path("calls") } };
    ApplicationProcess first(record);
    ASSERT_TRUE(first.waitForOutput(kSearched)) << first.output();
    EXPECT_EQ(readBytes(pidFile()), idBytes(first.process()));
    EXPECT_THAT(Sandbox::runLog(), Not(HasSubstr("a line of the run before")));
    EXPECT_THAT(Sandbox::runLog(), HasSubstr("[func:getOnLineScanDevices]\n"));
    EXPECT_THAT(readBytes(Sandbox::path("calls")), HasSubstr("\tSelectScanner\t0\n"));

    ApplicationProcess second;
    EXPECT_TRUE(
        waitUntil([] { return Sandbox::runLog().find("write lock fail! ") != std::string::npos; },
            std::chrono::seconds(20)));
    EXPECT_EQ(second.waitForEnd(std::chrono::milliseconds(300)), -1) << "its box waits";
    EXPECT_THAT(second.output(), Not(HasSubstr("new MainWindow")));
    EXPECT_EQ(readBytes(pidFile()), idBytes(first.process()));
    EXPECT_THAT(Sandbox::runLog(), HasSubstr("[func:getOnLineScanDevices]\n")) << "not wiped";
}

TEST_F(ApplicationTest, startsAgainAfterACrash)
{
    {
        ApplicationProcess first;
        ASSERT_TRUE(first.waitForOutput(kSearched)) << first.output();
        first.signal(SIGKILL);
        EXPECT_EQ(first.waitForEnd(), 128 + SIGKILL);
    }
    ApplicationProcess second;
    ASSERT_TRUE(second.waitForOutput(kSearched)) << second.output();
    EXPECT_EQ(readBytes(pidFile()), idBytes(second.process()));
}

TEST_F(ApplicationTest, aPidFileThatCannotBeOpenedEndsItWithStatusOne)
{
    std::filesystem::create_directories(pidFile()); // a folder in its place
    ApplicationProcess process;
    EXPECT_EQ(process.waitForEnd(), 1) << process.output();
    EXPECT_THAT(process.output(), Not(HasSubstr("new MainWindow")));
    EXPECT_THAT(Sandbox::runLog(), HasSubstr("return fd = -1, can't open " + pidFile()));
}

TEST_F(ApplicationTest, goesOnWhenNobodyReadsWhatItPrints)
{
    for (const ApplicationProcess::Output output :
        { ApplicationProcess::Output::kClosedPipe, ApplicationProcess::Output::kNone }) {
        std::filesystem::remove(Sandbox::runLogFile());
        ApplicationProcess process({}, output);
        EXPECT_TRUE(waitUntil(
            [] {
                return Sandbox::runLog().find("[func:getOnLineScanDevices]") != std::string::npos;
            },
            std::chrono::seconds(20)));
        EXPECT_EQ(process.waitForEnd(std::chrono::milliseconds(300)), -1) << "it runs on";
        EXPECT_EQ(readBytes(pidFile()), idBytes(process.process())) << "no printed line in it";
    }
}
