// The run log and its relatives: lines that stay whole, the wiping at the start, levels,
// stopwatches.
#include "app/common.h"
#include "log/Log.h"
#include "tests/support/sandbox.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <ctime>
#include <filesystem>
#include <sstream>
#include <thread>

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;

namespace fs = std::filesystem;

namespace {

std::vector<std::string> linesOf(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

// Where the untagged form writes today, in the home folder of the sandbox.
std::string dayLog(const std::string& module)
{
    const std::time_t now = std::time(nullptr);
    std::tm local {};
    ::localtime_r(&now, &local);
    return Sandbox::home() + "/.ORVA/TarvexBaseUI/test_run_log/Log/" + module + "-"
        + std::to_string(local.tm_year + 1900) + "_" + std::to_string(local.tm_mon + 1) + "_"
        + std::to_string(local.tm_mday) + ".log";
}

class RunLog : public ::testing::Test
{
protected:
    RunLog()
    {
        fs::create_directories(Sandbox::path("cwd"));
        fs::current_path(Sandbox::path("cwd")); // the level file is read from there
    }
    ~RunLog() override { fs::current_path(m_before); }

    Sandbox m_sandbox;

private:
    fs::path m_before = fs::current_path();
};

} // namespace

TEST_F(RunLog, ALineIsTheTimeATabABlankAndTheMessageWhateverTheTag)
{
    runLog("[func:%s] 扫描 %d%%", "onStartScan", 7);
    Log.Add("tarvex-base-ui", "%s", "second");
    Log.Add("another tag", "%s", std::string(3000, 'b').c_str());
    const std::vector<std::string> lines = linesOf(Sandbox::runLog());
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_THAT(
        lines[0].substr(0, 12), MatchesRegex("([01][0-9]|2[0-3]):[0-5][0-9]:[0-5][0-9]:[0-9]{3}"));
    EXPECT_EQ(lines[0].substr(12), "\t [func:onStartScan] 扫描 7%");
    EXPECT_EQ(lines[1].substr(12), "\t second");
    EXPECT_EQ(lines[2].substr(12), "\t " + std::string(2999, 'b')) << "cut";
}

TEST_F(RunLog, AFileThatCannotBeOpenedIsToldOnStandardOutputOnly)
{
    CLog log(0);
    EXPECT_EQ(log.SetLogFileName(nullptr), -1);
    EXPECT_EQ(log.SetLogFileName(""), -1);
    EXPECT_EQ(log.SetLogFileName(Sandbox::path("none/x.log").c_str()), 0);
    ::testing::internal::CaptureStdout();
    log.Add("t", "%s", "lost");
    EXPECT_EQ(::testing::internal::GetCapturedStdout(),
        "CLog::Add() openfile(" + Sandbox::path("none/x.log") + ") failed\n");
}

TEST_F(RunLog, LinesOfManyThreadsAndOfAnotherProcessStayWhole)
{
    constexpr int kThreads = 4;
    constexpr int kLines = 50;
    const auto writeLines = [](char who) {
        for (int i = 0; i < kLines; ++i) {
            runLog("%s", std::string(900, who).c_str());
        }
    };
    const pid_t other = ::fork();
    if (other == 0) {
        writeLines('z');
        ::_exit(0);
    }
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back(writeLines, static_cast<char>('a' + i));
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    ASSERT_EQ(::waitpid(other, nullptr, 0), other);
    const std::vector<std::string> lines = linesOf(Sandbox::runLog());
    EXPECT_EQ(lines.size(), (kThreads + 1U) * kLines);
    for (const std::string& line : lines) {
        ASSERT_EQ(line.substr(12), "\t " + std::string(900, line.back()));
    }
}

// A second name for the same file shows what was written before the first one was removed.
TEST_F(RunLog, WipingOverwritesEveryByteBeforeItRemovesTheFile)
{
    CLog log(0);
    const std::string file = Sandbox::path("secret");
    const std::string witness = Sandbox::path("witness");
    for (const std::size_t size : { 0U, 1U, 1024U, 2500U }) {
        writeBytes(file, std::string(size, 's'));
        fs::create_hard_link(file, witness);
        log.DeleteLogFile(file.c_str());
        EXPECT_FALSE(fileExists(file));
        EXPECT_EQ(readBytes(witness), std::string(size, '\1'));
        fs::remove(witness);
    }
    log.DeleteLogFile(nullptr);
    log.DeleteLogFile(Sandbox::path("none").c_str());

    writeBytes(Sandbox::runLogFile(), std::string(5000, 'x'));
    CLog started("module");
    EXPECT_FALSE(fileExists(Sandbox::runLogFile())) << "that of the last run";
}

// All users of the machine may write the folder that holds the log.
TEST_F(RunLog, WipingNeverFollowsALinkAndNeverWaitsForAPipe)
{
    CLog log(0);
    const std::string other = Sandbox::path("somebody's file");
    const std::string link = Sandbox::path("link");
    writeBytes(other, "keep me");
    fs::create_symlink(other, link);
    log.DeleteLogFile(link.c_str());
    EXPECT_FALSE(fs::is_symlink(link));
    EXPECT_EQ(readBytes(other), "keep me");

    const std::string pipe = Sandbox::path("pipe");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0666), 0);
    log.DeleteLogFile(pipe.c_str());
    EXPECT_FALSE(fileExists(pipe));
}

TEST_F(RunLog, LevelsComeFromTheLevelFileWhereEnableIsExactlyOne)
{
    const std::pair<const char*, int> cases[] = {
        { "<r><l enable='1'>LOG_ERROR</l><l enable='2'>LOG_FLOW</l><l>LOG_SPEED</l>"
          "<x enable='1'>LOG_SCANX</x><l enable='one'>LOG_DEBUG</l>"
          "<l enable='1'>LOG_OTHER</l><l enable='1'/></r>",
            1 | 8 },
        { "<r><l enable='1'>LOG_ERROR", 0 },
        { "<!-- no element -->", 0 },
    };
    EXPECT_EQ(CLog("m").levelMask(), 0) << "no file";
    EXPECT_EQ(CLog(0).levelMask(), 31);
    for (const auto& [xml, mask] : cases) {
        writeBytes("logmgr.xml", xml);
        EXPECT_EQ(CLog("m").levelMask(), mask) << xml;
    }
    EXPECT_THAT(readBytes(dayLog("m")), EndsWith("\t 没有找到element\n"));
}

TEST_F(RunLog, UntaggedLinesGoToTheDayLogWhenTheWriterIsNamed)
{
    CLog plain(0);
    plain.Add("text %d", 1);
    EXPECT_FALSE(fileExists(dayLog(""))) << "switched off";

    writeBytes("logmgr.xml", "<r><l enable='1'>LOG_FLOW</l></r>");
    CLog log("TarvexBaseUI-protocal");
    log.Add("text %d", 1);
    log.Add(1, "no such level %d", 2);
    log.Add(2 | 4, "100%% of %d%%", 3);
    log.Add(2, "%s", "50%% %s %d"); // the second look at the text finds no values to print
    EXPECT_THAT(linesOf(readBytes(dayLog("TarvexBaseUI-protocal"))),
        ElementsAre(EndsWith("\t text 1"), EndsWith("\t 100% of 3%"), EndsWith("\t 50% %s %d")));
    EXPECT_FALSE(fileExists(Sandbox::runLogFile())) << "not in the run log";
}

TEST_F(RunLog, StopwatchesMeasureUntilTheyAreTaken)
{
    CLog log(0);
    EXPECT_EQ(log.StarTimer(5), 0);
    EXPECT_EQ(log.StarTimer(5), -1);
    EXPECT_EQ(log.StarTimer(6), 0);
    const auto start = std::chrono::steady_clock::now();
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    const double first = log.Duration_not_erase(5);
    const double second = log.Duration(5);
    const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start;
    EXPECT_GE(first, 0.029);
    EXPECT_GE(second, first);
    EXPECT_LE(second, passed.count() + 0.1);
    EXPECT_EQ(log.Duration(5), 0.0) << "gone";
    EXPECT_GT(log.Duration_not_erase(6), 0.0) << "the other one runs on";
    log.Erase_a_timer(6);
    EXPECT_EQ(log.Duration(6), 0.0);
    EXPECT_EQ(log.StarTimer(5), 0) << "free again";
}

TEST_F(RunLog, TheStreamLogWritesStampedTextAndTellsItsFaults)
{
    EXPECT_EQ(CreateLogFile(nullptr), -604);
    EXPECT_EQ(CreateLogFile(Sandbox::path("none/x").c_str()), -612);
    ::testing::internal::CaptureStdout();
    AddLog("%d", 1);
    EXPECT_THAT(::testing::internal::GetCapturedStdout(), HasSubstr("not open---"));

    const std::string file = Sandbox::path("stream.log");
    writeBytes(file, "old");
    ASSERT_EQ(CreateLogFile(file.c_str()), 0);
    AddLog("Scan %d", 42);
    CloseLogFile();
    EXPECT_THAT(readBytes(file),
        MatchesRegex("\\[[0-9]{8} [ 0-9][0-9]:[ 0-9][0-9]:[ 0-9][0-9]:[ 0-9]{2}[0-9]\\] Scan 42"));
    EXPECT_EQ(fs::status(file).permissions(), fs::perms::all);
}
