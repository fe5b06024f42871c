// The job log's thread against folders that are slow, gone, or never answer.
#include "log/itprojectlog.h"
#include "tests/support/sandbox.h"
#include "tests/support/wait.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <thread>

using namespace std::chrono_literals;

namespace {

// A writer with its thread on a folder of the sandbox, on the 7th of March 2024.
class JobLogWriting : public ::testing::Test
{
protected:
    JobLogWriting()
    {
        writeBytes(m_day, "");
        m_log.GetDestSavePath(Sandbox::path("joblog").c_str());
        m_log.setEnabledValue(1);
        m_log.setClock([] {
            std::tm local {};
            local.tm_year = 124;
            local.tm_mon = 2;
            local.tm_mday = 7;
            return std::chrono::system_clock::from_time_t(std::mktime(&local));
        });
        m_log.startWriter();
    }
    /// Adds the lines without waiting for any of them.
    void add(ITProLog& log, std::initializer_list<const char*> lines)
    {
        const auto start = std::chrono::steady_clock::now();
        for (const char* line : lines) {
            log.Add(kJobLogTag, "%s", line);
        }
        EXPECT_LT(std::chrono::steady_clock::now() - start, 100ms);
    }

    Sandbox m_sandbox;
    std::string m_month = Sandbox::path("joblog/2024-3");
    std::string m_day = m_month + "/tarvex-base-pro-2024_3_7.log";
    ITProLog m_log;
};

} // namespace

TEST_F(JobLogWriting, ALockedFileHoldsNobodyUpAndTheOrderIsKept)
{
    const int other = ::open(m_day.c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(::flock(other, LOCK_EX), 0);
    add(m_log, { "first", "second", "third" });
    EXPECT_FALSE(m_log.flush(50ms));
    EXPECT_EQ(readBytes(m_day), "");
    ::close(other);
    ASSERT_TRUE(m_log.flush(5s));
    EXPECT_EQ(readBytes(m_day), "first\nsecond\nthird\n");

    std::filesystem::remove_all(m_month);
    writeBytes(m_month, "a file where the month's folder should be");
    add(m_log, { "lost" });
    ASSERT_TRUE(m_log.flush(5s));
    EXPECT_NE(
        Sandbox::runLog().find(m_day + " cannot be written: Not a directory"), std::string::npos);
    std::filesystem::remove(m_month);
    add(m_log, { "goes on" });
    ASSERT_TRUE(m_log.flush(5s));
    EXPECT_EQ(readBytes(m_day), "goes on\n");
}

TEST_F(JobLogWriting, TheEndWaitsForASlowFileButNotForOneThatNeverAnswers)
{
    const auto lastLine = [this](const char* line) {
        ITProLog log;
        log.GetDestSavePath(Sandbox::path("joblog").c_str());
        log.setEnabledValue(1);
        log.setClock([] { return std::chrono::system_clock::from_time_t(0); });
        log.startWriter();
        add(log, { line });
    };
    const std::string file = Sandbox::path("joblog/1970-1/tarvex-base-pro-1970_1_1.log");
    writeBytes(file, "");
    const int other = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(::flock(other, LOCK_EX), 0);
    std::thread unlock([other] {
        std::this_thread::sleep_for(300ms);
        ::close(other);
    });
    lastLine("slow");
    unlock.join();
    EXPECT_EQ(readBytes(file), "slow\n");

    std::filesystem::remove(file);
    ASSERT_EQ(::mkfifo(file.c_str(), 0666), 0); // nobody reads it: opening it never returns
    const auto start = std::chrono::steady_clock::now();
    lastLine("never");
    EXPECT_LT(std::chrono::steady_clock::now() - start, JobLogWriter::kLastWait + 1s);
    EXPECT_NE(Sandbox::runLog().find("cannot be written: Connection timed out"), std::string::npos);
    const int reader = ::open(file.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC); // lets it go
    char byte = 0;
    EXPECT_TRUE(waitUntil([&] { return ::read(reader, &byte, 1) == 1; }));
    ::close(reader);
}
