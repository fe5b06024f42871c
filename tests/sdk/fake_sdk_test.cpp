// The scanner library of the tests keeps its promises: other tests rest on them.
#include "sdk/COrva_SDK.h"
#include "tests/fake_sdk/fake_sdk_control.h"
#include "tests/support/environment.h"
#include "tests/support/sandbox.h"
#include "tests/support/wait.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <mutex>
#include <thread>
#include <vector>

using ::testing::ElementsAre;

namespace {

std::mutex eventsMutex;
std::vector<std::string> events;
std::vector<std::thread::id> eventThreads;

void note(const std::string& event)
{
    const std::lock_guard<std::mutex> guard(eventsMutex);
    events.push_back(event);
    eventThreads.push_back(std::this_thread::get_id());
}

std::vector<std::string> seen()
{
    const std::lock_guard<std::mutex> guard(eventsMutex);
    return events;
}

void onState(int state, int page, std::string file)
{
    note("state " + std::to_string(state) + " " + std::to_string(page) + " " + file);
}

int onError(int code)
{
    note("error " + std::to_string(code));
    return 0;
}

class FakeSdkTest : public ::testing::Test
{
protected:
    FakeSdkTest()
    {
        events.clear();
        eventThreads.clear();
        EXPECT_EQ(m_sdk.LoadDll(m_fake.file().c_str()), 0);
        m_sdk.SetStateCallback(onState, nullptr);
        m_sdk.SetErrorCallback(onError, nullptr);
    }
    ~FakeSdkTest() override { m_sdk.UnInit(); }

    FakeSdk m_fake;
    COrva_SDK m_sdk;
};

} // namespace

TEST_F(FakeSdkTest, playsTheStepsOnAThreadOfItsOwnAndReturnsAfterTheLastOne)
{
    m_fake.script("job|clear\nstep|state|1|1|\nstep|error|-41\nstep|state|2|1|/扫描/a 1.jpg\n");
    EXPECT_EQ(m_sdk.Scan(), 0);
    EXPECT_THAT(
        seen(), ElementsAre("state 1 1 ", "error -41", "state 2 1 /扫描/a 1.jpg", "state -1 0 "));
    for (const std::thread::id thread : eventThreads) {
        EXPECT_NE(thread, std::this_thread::get_id());
    }
}

TEST_F(FakeSdkTest, blocksInScanUntilReleasedOrCancelled)
{
    m_fake.script("job|clear\nstep|wait\nstep|state|1|1|\nresult|Scan|-25|1\nbutton|2\n");
    int result = 1;
    std::thread worker([&] { result = m_sdk.Scan(); });
    ASSERT_TRUE(waitUntil([&] { return m_fake.scanning(); }));
    EXPECT_EQ(m_sdk.GetButtonStatus(), 0) << "no button while a job runs";
    EXPECT_TRUE(seen().empty());
    m_fake.release();
    worker.join();
    EXPECT_EQ(result, -25) << "the scripted result, once";
    EXPECT_EQ(m_sdk.GetButtonStatus(), 2);
    EXPECT_EQ(m_sdk.GetButtonStatus(), 0);

    events.clear();
    std::thread second([&] { result = m_sdk.Scan(); });
    ASSERT_TRUE(waitUntil([&] { return m_fake.scanning(); }));
    EXPECT_EQ(m_sdk.Scan(), -14) << "one job at a time";
    m_sdk.CancelScan();
    second.join();
    EXPECT_EQ(result, -44);
    EXPECT_THAT(seen(), ElementsAre("state -1 0 ")) << "the end is reported, the rest is not";
}

TEST_F(FakeSdkTest, writesPicturesIntoTheJobsFolder)
{
    const Sandbox sandbox;
    FileParam file {};
    std::snprintf(file.szFilePath, sizeof file.szFilePath, "%s", Sandbox::path("").c_str());
    m_sdk.SetFileParam(file);
    m_fake.script("job|clear\nstep|image|a.jpg|3|2\n");
    EXPECT_EQ(m_sdk.Scan(), 0);
    EXPECT_EQ(readBytes(Sandbox::path("a.jpg")).size(), 54U + 2 * 12) << "two rows of 12 bytes";
}

TEST_F(FakeSdkTest, offersWhatTheSourceHas)
{
    m_fake.script("papers|clear\npaper|A4|0|0|210|297\npaper@2|A3|0|0|297|420\n"
                  "resolution@2|75|75|75\nfire|error|-42\n");
    EXPECT_EQ(m_sdk.GetPaperCount(), 1);
    EXPECT_EQ(m_sdk.GetResolutionCount(), 5);
    m_sdk.SetScanSource(2);
    char name[64] = {};
    EXPECT_EQ(m_sdk.GetPaperName(0, name), 0);
    EXPECT_STREQ(name, "A3");
    EXPECT_EQ(m_sdk.GetResolutionCount(), 1);
    EXPECT_LT(m_sdk.SetScanSource(3), 0);
    EXPECT_TRUE(waitUntil([] { return !seen().empty(); }));
    EXPECT_THAT(seen(), ElementsAre("error -42"));

    FakeSdk none(FakeSdk::Variant::kNoDevices);
    COrva_SDK other;
    ASSERT_EQ(other.LoadDll(none.file().c_str()), 0);
    EXPECT_EQ(other.GetScannerCount(), 0);
    other.UnInit();
}

TEST_F(FakeSdkTest, aWrongScriptLineEndsTheTest)
{
    EXPECT_DEATH(m_fake.script("step|sleeep|5\n"), "bad script line \"step.sleeep.5\"");
    EXPECT_DEATH(m_fake.script("paper|A4|0|0\n"), "bad script line");
}

// A process of its own is steered through a FIFO and tells its calls in a file.
TEST_F(FakeSdkTest, followsItsControlFileBetweenInitAndUnInit)
{
    const Sandbox sandbox;
    const std::string fifo = Sandbox::path("control");
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    const ScopedEnvironment control("FAKE_SDK_CONTROL", fifo);
    ASSERT_EQ(m_sdk.Init(), 0);
    std::ofstream(fifo) << "havepaper|0\nbutton|4\n" << std::flush;
    EXPECT_TRUE(waitUntil([&] { return m_sdk.GetButtonStatus() == 4; }));
    EXPECT_EQ(m_sdk.HavePaper(), 0);
    m_sdk.UnInit();
    ASSERT_EQ(m_sdk.LoadDll(m_fake.file().c_str()), 0);
}
