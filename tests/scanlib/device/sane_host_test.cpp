// Helper processes that die or hang at the worst moment, and the way over the network.
#include "tests/scanlib/device/image_files.h"
#include "tests/scanlib/device/test_backend.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <thread>

namespace {

using namespace device_tests;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

class SaneHelper : public testing::Test
{
protected:
    void SetUp() override
    {
        wish({});
        m_driver = orva::makeSaneDriver(testBackendParts());
    }
    void list()
    {
        const auto found = m_driver->enumerate(20s);
        ASSERT_EQ(found.size(), 1U);
        m_device = m_driver->create(found[0]);
    }
    /// Pages delivered, and the code at the end; 1000 for the end of feed.
    std::pair<int, int> runJob(const std::function<void(int)>& beforePage = {})
    {
        orva::AcquireSettings settings;
        settings.source = 1;
        settings.area = { "名片", 0, 0, 90, 54 };
        settings.dpiX = settings.dpiY = 100;
        orva::Status status = m_device->open();
        status = status.ok() ? m_device->configure(settings) : status;
        for (int pages = 0;; ++pages) {
            if (beforePage) {
                beforePage(pages);
            }
            orva::Page page;
            bool end = false;
            status = status.ok() ? m_device->nextPage(page, end, m_token) : status;
            if (!status.ok() || end) {
                m_device->endBatch();
                return { pages, status.ok() ? 1000 : status.code() };
            }
        }
    }

    std::unique_ptr<orva::Driver> m_driver;
    std::unique_ptr<orva::Device> m_device;
    orva::CancelToken m_token;
};

TEST_F(SaneHelper, IsOneProcessWhileAScannerIsOpenAndGoneAfterwards)
{
    list();
    EXPECT_TRUE(runningHelpers().empty()); // the search is over
    ASSERT_EQ(m_device->open().code(), orva::kOk);
    EXPECT_EQ(runningHelpers().size(), 1U);
    EXPECT_EQ(runJob().second, 1000);
    EXPECT_EQ(runningHelpers().size(), 1U);
    const auto start = Clock::now();
    m_device.reset();
    EXPECT_LT(Clock::now() - start, 1s);
    EXPECT_TRUE(runningHelpers().empty());
}

/// What the helper does, what the job ends with and how many pages it keeps, within which time.
TEST_F(SaneHelper, ThatDiesOrHangsCostsTheJobAndTheNextOneRuns)
{
    struct Row
    {
        BackendWishes wishes;
        std::pair<int, int> expected;
        std::chrono::milliseconds limit;
    };
    const std::vector<Row> rows {
        { { { "crash-read", "3" } }, { 2, orva::kDriverCrashed }, 2s },
        { { { "hang-read", "3" } }, { 2, orva::kDeviceTimeout }, 6s },
        { { { "crash-open", "1" } }, { 0, orva::kDriverCrashed }, 2s },
        { { { "hang-open", "1" } }, { 0, orva::kDeviceTimeout }, 5s },
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.wishes.front().first);
        wish({});
        list();
        wish(row.wishes);
        const auto start = Clock::now();
        EXPECT_EQ(runJob(), row.expected);
        EXPECT_LT(Clock::now() - start, row.limit);
        wish({});
        EXPECT_EQ(runJob(), (std::pair<int, int> { 10, 1000 }));
        m_device.reset();
        EXPECT_TRUE(runningHelpers().empty());
    }
}

TEST_F(SaneHelper, KilledInTheMiddleOfAPageLeavesTheFinishedOnes)
{
    wish({ { "read-limit", "1" }, { "read-limit-size", "64" }, { "read-delay", "1" },
        { "read-delay-duration", "200000" } });
    list();
    std::thread killer;
    const auto result = runJob([&](int page) {
        if (page == 1) {
            killer = std::thread([] {
                std::this_thread::sleep_for(100ms);
                for (const int pid : runningHelpers()) {
                    ::kill(pid, SIGKILL);
                }
            });
        }
    });
    killer.join();
    EXPECT_EQ(result, (std::pair<int, int> { 1, orva::kDriverCrashed }));
    wish({});
    EXPECT_EQ(runJob(), (std::pair<int, int> { 10, 1000 }));
}

TEST_F(SaneHelper, AReadThatNeverReturnsIsCancelledWithinTwoSeconds)
{
    wish({});
    list();
    wish({ { "hang-read", "1" } });
    std::thread canceller([&] {
        std::this_thread::sleep_for(300ms);
        m_token.cancel();
    });
    const auto start = Clock::now();
    EXPECT_EQ(runJob(), (std::pair<int, int> { 0, orva::kCancelled }));
    EXPECT_LT(Clock::now() - start, 2600ms);
    canceller.join();
    EXPECT_TRUE(runningHelpers().empty());
}

TEST_F(SaneHelper, ASearchThatCrashesOrHangsFindsNothingAndTheNextOneDoes)
{
    for (const char* fault : { "crash-search", "hang-search" }) {
        SCOPED_TRACE(fault);
        wish({ { fault, "1" } });
        m_driver = orva::makeSaneDriver(testBackendParts());
        const auto start = Clock::now();
        EXPECT_TRUE(m_driver->enumerate(500ms).empty());
        EXPECT_LT(Clock::now() - start, 1500ms);
        wish({});
        const bool hangs = std::string(fault) == "hang-search";
        for (int i = 0; hangs && i < 60 && !runningHelpers().empty(); ++i) {
            m_driver->enumerate(100ms);
        }
        EXPECT_EQ(m_driver->enumerate(20s).size(), 1U);
    }
    orva::SaneParts parts = testBackendParts();
    parts.launcher = orva::processLauncher("/none/orva-sane-host");
    EXPECT_TRUE(orva::makeSaneDriver(parts)->enumerate(1s).empty());
}

} // namespace
