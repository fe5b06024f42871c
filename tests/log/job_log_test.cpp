#include "log/itprojectlog.h"
#include "log/log_paths.h"
#include "tests/support/sandbox.h"

#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <thread>

using ::testing::HasSubstr;

namespace {

using TimePoint = std::chrono::system_clock::time_point;

TimePoint localMoment(int year, int month, int day, int hour, int minute, int second, int ms)
{
    std::tm local {};
    local.tm_year = year - 1900;
    local.tm_mon = month - 1;
    local.tm_mday = day;
    local.tm_hour = hour;
    local.tm_min = minute;
    local.tm_sec = second;
    local.tm_isdst = -1;
    return std::chrono::system_clock::from_time_t(std::mktime(&local))
        + std::chrono::milliseconds(ms);
}

InstituteOfInformation batch()
{
    InstituteOfInformation record;
    std::strcpy(record.startTime, "23:59:58:001");
    std::strcpy(record.endTime, "00:00:03:999");
    std::strcpy(record.userName, "扫描员");
    std::strcpy(record.computerName, "desk-3");
    record.pageCount = 12;
    record.files = { "/data/合同 1.pdf", "/data/合同 2.pdf" };
    return record;
}

const std::string kBlockStart = "--------------------------------------------------\n"
                                "开始时间: 23:59:58:001\n"
                                "结束时间: 00:00:03:999\n"
                                "计算机名称: desk-3\n"
                                "用户名称: 扫描员\n"
                                "作业页数: 12\n";

// A writer on a folder of the sandbox, switched on, at a fixed moment.
class JobLogTest : public ::testing::Test
{
protected:
    JobLogTest()
    {
        std::filesystem::create_directories(m_folder);
        m_log.GetDestSavePath(m_folder.c_str());
        m_log.setEnabledValue(1);
        m_log.setClock([this] { return m_now; });
    }
    std::string file(const std::string& below) const { return m_folder + "/" + below; }

    Sandbox m_sandbox;
    std::string m_folder = Sandbox::path("作业 日志");
    TimePoint m_now = localMoment(2024, 3, 7, 14, 5, 9, 42);
    ITProLog m_log;
};

} // namespace

TEST_F(JobLogTest, writesABatchAsOneBlock)
{
    InstituteOfInformation record = batch();
    m_log.AddBatch(&record);
    EXPECT_EQ(readBytes(file("2024-3/tarvex-base-pro-2024_3_7.log")),
        kBlockStart
            + "扫描结果: 成功!\n"
              "生成的文件：\n"
              "/data/合同 1.pdf\n"
              "/data/合同 2.pdf\n");
}

TEST_F(JobLogTest, namesEveryResultAndEndsWithoutFiles)
{
    struct Case
    {
        int result;
        const char* text;
    };
    std::string expected;
    for (const Case& c : { Case { 0, "成功!" }, Case { -1, "失败" }, Case { 5, "不正常" } }) {
        InstituteOfInformation record = batch();
        record.files.clear();
        record.result = c.result;
        m_log.AddBatch(&record);
        expected += kBlockStart + "扫描结果: " + c.text + "\n生成的文件：\n";
    }
    EXPECT_EQ(readBytes(file("2024-3/tarvex-base-pro-2024_3_7.log")), expected);
}

TEST_F(JobLogTest, textThatFillsItsFieldWithoutAnEndStopsThere)
{
    InstituteOfInformation record = batch();
    std::memset(record.computerName, 'c', sizeof record.computerName);
    m_log.AddBatch(&record);
    EXPECT_THAT(readBytes(file("2024-3/tarvex-base-pro-2024_3_7.log")),
        HasSubstr("计算机名称: " + std::string(32, 'c') + "\n用户名称: 扫描员\n"));
}

TEST_F(JobLogTest, aBatchOverMidnightIsWholeInTheFileOfItsLastDay)
{
    InstituteOfInformation record = batch();
    m_now = localMoment(2024, 2, 29, 23, 59, 59, 999);
    m_log.Add(kJobLogTag, "%s", "before");
    m_now = localMoment(2024, 3, 1, 0, 0, 0, 0);
    m_log.AddBatch(&record);
    EXPECT_EQ(readBytes(file("2024-2/tarvex-base-pro-2024_2_29.log")), "before\n");
    EXPECT_THAT(readBytes(file("2024-3/tarvex-base-pro-2024_3_1.log")), HasSubstr(kBlockStart));
}

// Also when the clock passes midnight while the block is put together.
TEST_F(JobLogTest, aBlockIsNeverSplitBetweenTwoDays)
{
    int looks = 0;
    m_log.setClock([&] {
        ++looks;
        return localMoment(2024, 12, looks == 1 ? 30 : 31, 0, 0, 0, 0);
    });
    InstituteOfInformation record = batch();
    m_log.AddBatch(&record);
    const std::string first = readBytes(file("2024-12/tarvex-base-pro-2024_12_30.log"));
    const std::string second = readBytes(file("2024-12/tarvex-base-pro-2024_12_31.log"));
    EXPECT_TRUE(first.empty() != second.empty());
    EXPECT_THAT(first + second, HasSubstr(kBlockStart + "扫描结果: 成功!\n生成的文件：\n"));
}

TEST_F(JobLogTest, switchedOffItWritesNothingAndMakesNoFolder)
{
    m_log.setEnabledValue(0);
    InstituteOfInformation record = batch();
    m_log.AddBatch(&record);
    m_log.Add(kJobLogTag, "%s", "line");
    EXPECT_TRUE(std::filesystem::is_empty(m_folder));
    EXPECT_EQ(ITProLog().enabledValue(), 0) << "off when made";
}

TEST_F(JobLogTest, cutsALineAt4095BytesAndNamesFilesByTheTag)
{
    m_log.Add("other", "%s", std::string(5000, 'x').c_str());
    EXPECT_EQ(readBytes(file("2024-3/other-2024_3_7.log")), std::string(4095, 'x') + "\n");
}

TEST_F(JobLogTest, aBlockThatCannotBeWrittenIsToldToTheRunLog)
{
    const std::string day = file("2024-3/tarvex-base-pro-2024_3_7.log");
    const auto expectTold = [&](const char* reason) {
        InstituteOfInformation record = batch();
        m_log.AddBatch(&record);
        EXPECT_THAT(
            Sandbox::runLog(), HasSubstr("job log " + day + " cannot be written: " + reason));
    };
    writeBytes(file("2024-3"), "a file where the month's folder should be");
    expectTold("Not a directory");
    std::filesystem::remove(file("2024-3"));
    std::filesystem::create_directories(file("2024-3"));
    std::filesystem::create_symlink("/dev/full", day);
    expectTold("No space left on device");

    // removed altogether, it is made again
    std::filesystem::remove_all(m_folder);
    InstituteOfInformation record = batch();
    m_log.AddBatch(&record);
    EXPECT_THAT(readBytes(day), HasSubstr(kBlockStart));
}

TEST_F(JobLogTest, aBlockThatDoesNotFitLeavesTheFileAsItWas)
{
    InstituteOfInformation record = batch();
    m_log.AddBatch(&record);
    const std::string before = readBytes(file("2024-3/tarvex-base-pro-2024_3_7.log"));
    const pid_t other = ::fork(); // the limit is not for this process
    if (other == 0) {
        ::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit { before.size() + 100, RLIM_INFINITY };
        ::setrlimit(RLIMIT_FSIZE, &limit);
        m_log.AddBatch(&record);
        ::_exit(0);
    }
    ASSERT_EQ(::waitpid(other, nullptr, 0), other);
    EXPECT_EQ(readBytes(file("2024-3/tarvex-base-pro-2024_3_7.log")), before);
}

TEST_F(JobLogTest, blocksOfTwoUsersAndTwoThreadsNeverMix)
{
    ASSERT_EQ(::chmod(m_folder.c_str(), 0777), 0) << "a folder for all";
    constexpr int kBlocks = 40;
    const auto writeBlocks = [this](const std::string& who) {
        for (int i = 0; i < kBlocks; ++i) {
            InstituteOfInformation record;
            std::strcpy(record.userName, who.c_str());
            record.files.assign(60, "/data/" + std::string(200, who[0]));
            m_log.AddBatch(&record);
        }
    };
    const pid_t other = ::fork();
    if (other == 0) {
        constexpr uid_t kAnotherUser = 54321;
        // only root can become another user
        const bool ready =
            ::geteuid() != 0 || ::setresuid(kAnotherUser, kAnotherUser, kAnotherUser) == 0;
        writeBlocks("p");
        ::_exit(ready ? 0 : 1);
    }
    std::thread first(writeBlocks, "a");
    std::thread second(writeBlocks, "b");
    first.join();
    second.join();
    int status = -1;
    ASSERT_EQ(::waitpid(other, &status, 0), other);
    ASSERT_EQ(status, 0);

    const std::string text = readBytes(file("2024-3/tarvex-base-pro-2024_3_7.log"));
    std::size_t at = 0;
    int blocks = 0;
    const std::string dashes = std::string(50, '-') + "\n";
    while (at < text.size()) {
        ASSERT_EQ(text.compare(at, dashes.size(), dashes), 0) << "block " << blocks;
        std::size_t end = text.find(dashes, at + dashes.size());
        end = end == std::string::npos ? text.size() : end;
        const std::string block = text.substr(at, end - at);
        const std::size_t user = block.find("用户名称: ");
        ASSERT_NE(user, std::string::npos);
        const char who = block[user + std::strlen("用户名称: ")];
        std::string files = "生成的文件：\n";
        for (int i = 0; i < 60; ++i) {
            files += "/data/" + std::string(200, who) + "\n";
        }
        ASSERT_THAT(block, ::testing::EndsWith(files));
        ++blocks;
        at = end;
    }
    EXPECT_EQ(blocks, 3 * kBlocks);
}

TEST_F(JobLogTest, printsWhereEveryLineGoesAndWhoseJobItIs)
{
    InstituteOfInformation record = batch();
    ::testing::internal::CaptureStdout();
    m_log.AddBatch(&record);
    std::string expected = "[func:AddBatch] destHome = " + m_folder + "/\n";
    for (int line = 0; line < 8 + 2; ++line) { // the block's eight and two files
        expected += "chFile:" + m_folder + "/2024-3\n";
    }
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), expected);

    const ScopedEnvironment home("HOME", "/home/扫描员");
    ::testing::internal::CaptureStdout();
    m_log.GetCurUserName(record.userName);
    EXPECT_EQ(::testing::internal::GetCapturedStdout(),
        "ITProLog::GetCurUserName(char *user) \nITProLog::GetCurUserName() 扫描员\nuser:扫描员\n");
}

TEST_F(JobLogTest, keepsItsFolderWhenTheNewOneIsNotWritable)
{
    const std::string closed = Sandbox::path("closed");
    std::filesystem::create_directories(closed);
    ASSERT_EQ(::chmod(closed.c_str(), 0555), 0);
    ::testing::internal::CaptureStdout();
    m_log.GetDestSavePath(closed.c_str());
    EXPECT_EQ(::testing::internal::GetCapturedStdout(),
        "[func:GetDestSavePath] logSavePath: " + closed + " do not have authority! \n");
    EXPECT_EQ(m_log.destination(), m_folder + "/");
    m_log.GetDestSavePath(std::string(5000, 'x').c_str());
    m_log.GetDestSavePath(nullptr);
    EXPECT_EQ(m_log.destination(), m_folder + "/");

    m_log.GetDefaultSavePath();
    EXPECT_EQ(m_log.destination(), Sandbox::home() + "/.ORVA/TarvexBaseUI/");
}

TEST_F(JobLogTest, tellsTimesAsTheRunLogDoes)
{
    char text[32] = {};
    m_log.GetCurDayTime(text);
    EXPECT_STREQ(text, "14:05:09:042");
    m_log.GetCurYearMonth(text);
    EXPECT_STREQ(text, "2024-3");
}

TEST_F(JobLogTest, userNameFitsTheRecordAndIsNotCutInsideACharacter)
{
    InstituteOfInformation record;
    const ScopedEnvironment home("HOME", "/home/用户用户用户用户用户用户"); // 36 bytes
    m_log.GetCurUserName(record.userName);
    EXPECT_STREQ(record.userName, "用户用户用户用户用户"); // 30 of at most 31 bytes
}

TEST_F(JobLogTest, computerNameFitsTheBufferItIsGiven)
{
    char host[256] = {};
    ASSERT_EQ(::gethostname(host, sizeof host), 0);
    const std::string name = host;
    ASSERT_GE(name.size(), 2U);

    char whole[256];
    std::memset(whole, '#', sizeof whole);
    ::testing::internal::CaptureStdout();
    m_log.GetComputerName(whole, sizeof whole);
    EXPECT_EQ(::testing::internal::GetCapturedStdout(),
        "ITProLog::GetComputerName() nSize=" + std::to_string(name.size() + 1) + ",nlen=256\n");
    EXPECT_EQ(std::string(whole), name);

    std::memset(whole, '#', sizeof whole);
    m_log.GetComputerName(whole, static_cast<int>(name.size()));
    EXPECT_EQ(std::string(whole, name.size() + 1), name + "#") << "exactly that many, no end";
    m_log.GetComputerName(nullptr, 10);
    m_log.GetComputerName(whole, 0);
}
