// The job log: its bytes, its files and days, and that no block is lost, split or mixed.
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

using ::testing::EndsWith;
using ::testing::HasSubstr;

namespace fs = std::filesystem;

namespace {

using TimePoint = std::chrono::system_clock::time_point;

TimePoint moment(int year, int month, int day, int hour = 0, int minute = 0, int second = 0)
{
    std::tm local {};
    local.tm_year = year - 1900;
    local.tm_mon = month - 1;
    local.tm_mday = day;
    local.tm_hour = hour;
    local.tm_min = minute;
    local.tm_sec = second;
    local.tm_isdst = -1;
    return std::chrono::system_clock::from_time_t(std::mktime(&local));
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
        fs::create_directories(folder);
        log.GetDestSavePath(folder.c_str());
        log.setEnabledValue(1);
        log.setClock([this] { return now; });
        std::strcpy(record.startTime, "23:59:58:001");
        std::strcpy(record.endTime, "00:00:03:999");
        std::strcpy(record.userName, "扫描员");
        std::strcpy(record.computerName, "desk-3");
        record.pageCount = 12;
        record.files = { "/data/合同 1.pdf", "/data/合同 2.pdf" };
    }
    std::string file(const std::string& below) const { return folder + "/" + below; }

    Sandbox sandbox;
    std::string folder = Sandbox::path("作业 日志");
    std::string day = file("2024-3/tarvex-base-pro-2024_3_7.log");
    TimePoint now = moment(2024, 3, 7, 14, 5, 9) + std::chrono::milliseconds(642);
    ITProLog log;
    InstituteOfInformation record;
};

} // namespace

TEST_F(JobLogTest, WritesABatchAsOneBlockAndNamesEveryResult)
{
    const std::pair<int, const char*> results[] = { { 0, "成功!" }, { -1, "失败" },
        { 5, "不正常" } };
    std::string expected;
    for (const auto& [result, text] : results) {
        record.result = result;
        ::testing::internal::CaptureStdout();
        log.AddBatch(&record);
        std::string printed = "[func:AddBatch] destHome = " + folder + "/\n";
        for (int line = 0; line < 8 + 2; ++line) { // the block's eight and two files
            printed += "chFile:" + folder + "/2024-3\n";
        }
        EXPECT_EQ(::testing::internal::GetCapturedStdout(), printed);
        expected += kBlockStart + "扫描结果: " + text
            + "\n生成的文件：\n/data/合同 1.pdf\n/data/合同 2.pdf\n";
    }
    EXPECT_EQ(readBytes(day), expected);
    std::memset(record.computerName, 'c', sizeof record.computerName); // no end
    log.AddBatch(&record);
    EXPECT_THAT(readBytes(day), HasSubstr("计算机名称: " + std::string(32, 'c') + "\n用户"));
}

TEST_F(JobLogTest, ABatchOverMidnightIsWholeInTheFileOfItsLastDay)
{
    now = moment(2024, 2, 29, 23, 59, 59);
    log.Add(kJobLogTag, "%s", "before");
    now = moment(2024, 3, 1);
    log.AddBatch(&record);
    EXPECT_EQ(readBytes(file("2024-2/tarvex-base-pro-2024_2_29.log")), "before\n");
    EXPECT_THAT(readBytes(file("2024-3/tarvex-base-pro-2024_3_1.log")), HasSubstr(kBlockStart));

    // also when the clock passes midnight while the block is put together
    int looks = 0;
    log.setClock([&] { return moment(2024, 12, ++looks == 1 ? 30 : 31); });
    log.AddBatch(&record);
    const std::string first = readBytes(file("2024-12/tarvex-base-pro-2024_12_30.log"));
    const std::string second = readBytes(file("2024-12/tarvex-base-pro-2024_12_31.log"));
    EXPECT_TRUE(first.empty() != second.empty());
    EXPECT_THAT(first + second, HasSubstr(kBlockStart + "扫描结果: 成功!\n生成的文件：\n"));
}

TEST_F(JobLogTest, SwitchedOffItWritesNothingAndLongLinesAreCut)
{
    EXPECT_EQ(ITProLog().enabledValue(), 0) << "off when made";
    log.setEnabledValue(0);
    log.AddBatch(&record);
    log.Add(kJobLogTag, "%s", "line");
    EXPECT_TRUE(fs::is_empty(folder)) << "not even a folder";
    log.setEnabledValue(1);
    log.Add("other", "%s", std::string(5000, 'x').c_str());
    EXPECT_EQ(readBytes(file("2024-3/other-2024_3_7.log")), std::string(4095, 'x') + "\n");
}

TEST_F(JobLogTest, ABlockThatCannotBeWrittenIsToldToTheRunLog)
{
    const auto expectTold = [&](const char* reason) {
        log.AddBatch(&record);
        EXPECT_THAT(
            Sandbox::runLog(), HasSubstr("job log " + day + " cannot be written: " + reason));
    };
    writeBytes(file("2024-3"), "a file where the month's folder should be");
    expectTold("Not a directory");
    fs::remove(file("2024-3"));
    fs::create_directories(file("2024-3"));
    fs::create_symlink("/dev/full", day);
    expectTold("No space left on device");
    fs::remove_all(folder); // removed altogether, it is made again
    log.AddBatch(&record);
    EXPECT_THAT(readBytes(day), HasSubstr(kBlockStart));

    // one that does not fit leaves the file as it was; the limit is not for this process
    const std::string before = readBytes(day);
    const pid_t other = ::fork();
    if (other == 0) {
        ::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit { before.size() + 100, RLIM_INFINITY };
        ::setrlimit(RLIMIT_FSIZE, &limit);
        log.AddBatch(&record);
        ::_exit(0);
    }
    ASSERT_EQ(::waitpid(other, nullptr, 0), other);
    EXPECT_EQ(readBytes(day), before);
}

TEST_F(JobLogTest, BlocksOfTwoUsersAndTwoThreadsNeverMix)
{
    ASSERT_EQ(::chmod(folder.c_str(), 0777), 0) << "a folder for all";
    constexpr int kBlocks = 40;
    const auto blockOf = [](char who) {
        std::string block =
            "用户名称: " + std::string(1, who) + "\n作业页数: 0\n扫描结果: 成功!\n生成的文件：\n";
        for (int i = 0; i < 60; ++i) {
            block += "/data/" + std::string(200, who) + "\n";
        }
        return block;
    };
    const auto writeBlocks = [this](char who) {
        InstituteOfInformation own;
        own.userName[0] = who;
        own.files.assign(60, "/data/" + std::string(200, who));
        for (int i = 0; i < kBlocks; ++i) {
            log.AddBatch(&own);
        }
    };
    const pid_t other = ::fork();
    if (other == 0) {
        constexpr uid_t kAnotherUser = 54321;
        // only root can become another user
        const bool ready =
            ::geteuid() != 0 || ::setresuid(kAnotherUser, kAnotherUser, kAnotherUser) == 0;
        writeBlocks('p');
        ::_exit(ready ? 0 : 1);
    }
    std::thread first(writeBlocks, 'a');
    std::thread second(writeBlocks, 'b');
    first.join();
    second.join();
    int status = -1;
    ASSERT_EQ(::waitpid(other, &status, 0), other);
    ASSERT_EQ(status, 0);

    const std::string text = readBytes(day);
    const std::string dashes = std::string(50, '-') + "\n";
    int blocks = 0;
    for (std::size_t at = 0; at < text.size(); ++blocks) {
        ASSERT_EQ(text.compare(at, dashes.size(), dashes), 0) << "block " << blocks;
        const std::size_t end = std::min(text.find(dashes, at + dashes.size()), text.size());
        const std::string block = text.substr(at, end - at);
        ASSERT_THAT(block, EndsWith(blockOf(block[block.size() - 2]))) << "block " << blocks;
        at = end;
    }
    EXPECT_EQ(blocks, 3 * kBlocks);
}

TEST_F(JobLogTest, KeepsItsFolderWhenTheNewOneIsNotWritable)
{
    const std::string closed = Sandbox::path("closed");
    fs::create_directories(closed);
    ASSERT_EQ(::chmod(closed.c_str(), 0555), 0);
    ::testing::internal::CaptureStdout();
    log.GetDestSavePath(closed.c_str());
    EXPECT_EQ(::testing::internal::GetCapturedStdout(),
        "[func:GetDestSavePath] logSavePath: " + closed + " do not have authority! \n");
    log.GetDestSavePath(std::string(5000, 'x').c_str());
    log.GetDestSavePath(nullptr);
    EXPECT_EQ(log.destination(), folder + "/");
    log.GetDefaultSavePath();
    EXPECT_EQ(log.destination(), Sandbox::home() + "/.ORVA/TarvexBaseUI/");
}

TEST_F(JobLogTest, TimesAndNamesFitTheirFields)
{
    char text[256] = {};
    log.GetCurDayTime(text);
    EXPECT_STREQ(text, "14:05:09:642");
    log.GetCurYearMonth(text);
    EXPECT_STREQ(text, "2024-3");
    const ScopedEnvironment home("HOME", "/home/用户用户用户用户用户用户"); // 36 bytes
    log.GetCurUserName(record.userName);
    EXPECT_STREQ(record.userName, "用户用户用户用户用户"); // 30 of at most 31 bytes

    ASSERT_EQ(::gethostname(text, sizeof text), 0);
    const std::string host = text;
    const auto nameIn = [this](int size) {
        std::string buffer(256, '#');
        log.GetComputerName(buffer.data(), size);
        return buffer;
    };
    ::testing::internal::CaptureStdout();
    EXPECT_EQ(nameIn(256).substr(0, host.size() + 1), host + '\0');
    EXPECT_EQ(::testing::internal::GetCapturedStdout(),
        "ITProLog::GetComputerName() nSize=" + std::to_string(host.size() + 1) + ",nlen=256\n");
    EXPECT_EQ(nameIn(int(host.size())).substr(0, host.size() + 1), host + "#") << "no end";
    EXPECT_EQ(nameIn(0), std::string(256, '#'));
    log.GetComputerName(nullptr, 10);
}
