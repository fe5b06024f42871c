// Helper processes that die or hang at the worst moment, and the way over the network.
#include "tests/scanlib/device/test_backend.h"
#include "tests/scanlib/temporary_folder.h"

#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
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
    std::pair<int, int> runJob()
    {
        orva::AcquireSettings settings;
        settings.source = 1;
        settings.area = { "名片", 0, 0, 90, 54 };
        settings.dpiX = settings.dpiY = 100;
        orva::Status status = m_device->open();
        status = status.ok() ? m_device->configure(settings) : status;
        for (int pages = 0;; ++pages) {
            orva::Page page;
            bool end = false;
            status = status.ok() ? m_device->nextPage(page, end, m_token) : status;
            if (!status.ok() || end) {
                m_device->endBatch();
                m_detail = status.detail();
                return { pages, status.ok() ? 1000 : status.code() };
            }
        }
    }

    std::unique_ptr<orva::Driver> m_driver;
    std::unique_ptr<orva::Device> m_device;
    orva::CancelToken m_token;
    std::string m_detail; ///< of the end of the last job
};

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

/// Also when the driver is within a call that never returns, and the library had no time to say
/// good-bye.
TEST_F(SaneHelper, NeverOutlivesTheLibrary)
{
    list();
    wish({ { "hang-read", "2" } });
    const pid_t library = ::fork();
    if (library == 0) {
        runJob();
        ::_exit(0);
    }
    std::vector<int> helpers;
    for (int i = 0; i < 200 && helpers.empty(); ++i) {
        std::this_thread::sleep_for(10ms);
        helpers = runningHelpers(library);
    }
    std::this_thread::sleep_for(300ms); // into the second page
    ::kill(library, SIGKILL);
    ::waitpid(library, nullptr, 0);
    ASSERT_EQ(helpers.size(), 1U);
    const auto start = Clock::now();
    while (isRunning(helpers.front()) && Clock::now() - start < 10s) {
        std::this_thread::sleep_for(10ms);
    }
    EXPECT_LT(Clock::now() - start, 3s);
}

/// saned on a loopback address of its own, with SANE's test driver behind it.
class Daemon
{
public:
    Daemon()
        : m_address("127.66." + std::to_string(::getpid() >> 8 & 255) + "."
            + std::to_string((::getpid() & 127) + 1))
    {
        writeFile(m_folder.path() / "dll.conf", "test\n");
        writeFile(m_folder.path() / "test.conf", "number_of_devices 1\n");
        writeFile(m_folder.path() / "saned.conf", "127.0.0.0/8\n");
        m_pid = ::fork();
        if (m_pid == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            ::unsetenv("LD_PRELOAD"); // a sanitizer's runtime is not for that one
            ::setenv("SANE_CONFIG_DIR", m_folder.path().c_str(), 1);
            ::execl("/usr/sbin/saned", "saned", "-l", "-b", m_address.c_str(), nullptr);
            ::_exit(127);
        }
    }
    ~Daemon()
    {
        ::kill(m_pid, SIGKILL);
        ::waitpid(m_pid, nullptr, 0);
    }
    Daemon(const Daemon&) = delete;
    Daemon& operator=(const Daemon&) = delete;
    const std::string& address() const { return m_address; }

private:
    const TemporaryFolder m_folder;
    const std::string m_address;
    pid_t m_pid = 0;
};

TEST_F(SaneHelper, ReachesAScannerOfAnotherMachineThroughItsDaemon)
{
    const Daemon daemon;
    const TemporaryFolder client;
    writeFile(client.path() / "dll.conf", "net\n");
    writeFile(client.path() / "net.conf", "connect_timeout = 3\n" + daemon.address() + "\n");
    orva::SaneParts parts = testBackendParts();
    ::setenv("SANE_CONFIG_DIR", client.path().c_str(), 1);
    m_driver = orva::makeSaneDriver(parts);
    std::vector<orva::DeviceIdentity> found;
    for (int tries = 0; found.empty() && tries < 20; ++tries) { // it needs a moment to listen
        std::this_thread::sleep_for(100ms);
        found = m_driver->enumerate(5s);
    }
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].key, "net:" + daemon.address() + ":test:0");
    EXPECT_EQ(found[0].name, "Noname frontend-tester");
    m_device = m_driver->create(found[0]);
    EXPECT_EQ(runJob(), (std::pair<int, int> { 10, 1000 })) << m_detail;
}

} // namespace
