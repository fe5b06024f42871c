#include "scanlib/base/spool.h"
#include "tests/scanlib/temporary_folder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <thread>

using namespace orva;

namespace {

std::filesystem::path deadJob(const std::filesystem::path& root)
{
    SpoolFolder job;
    EXPECT_TRUE(job.create(root).ok());
    std::filesystem::path payload;
    EXPECT_TRUE(job.store("page-1", { 1, 2, 3 }, payload).ok());
    EXPECT_TRUE(job.note("first").ok());
    return job.path();
}

} // namespace

TEST(Spool, aDeadJobCanBeTakenOverALivingOneNot)
{
    const TemporaryFolder root;
    const std::filesystem::path dead = deadJob(root.path() / "spool");
    EXPECT_EQ(contentOf(dead / "page-1"), "\1\2\3");
    // The process died in the middle of a line.
    std::ofstream(dead / "journal", std::ios::app) << "half";

    SpoolFolder heir;
    ASSERT_TRUE(heir.takeOver(dead));
    ASSERT_TRUE(heir.note("second").ok());
    const std::vector<std::string> lines = heir.journal();
    ASSERT_GE(lines.size(), 2U);
    EXPECT_EQ(lines.front(), "first");
    EXPECT_EQ(lines.back(), "second") << "the cut line must not swallow the next";

    SpoolFolder other;
    EXPECT_FALSE(other.takeOver(dead));
    EXPECT_EQ(spoolFolders(root.path() / "spool").front(), dead);
    heir.remove();
    EXPECT_FALSE(std::filesystem::exists(dead));
}

TEST(Spool, aRootThatCannotBeUsedIsReplacedByTheUsersOwnTemporaryFolder)
{
    const TemporaryFolder folder;
    const TemporaryFolder temporary;
    setenv("TMPDIR", temporary.path().c_str(), 1);
    const std::filesystem::path unusable = folder.path() / "file" / "spool";
    writeFile(folder.path() / "file", "");
    {
        SpoolFolder job;
        ASSERT_TRUE(job.create(unusable).ok());
        EXPECT_EQ(job.path().string().rfind(temporary.path().string(), 0), 0U);
        EXPECT_EQ(spoolFolders(unusable), std::vector<std::filesystem::path> { job.path() });
        for (const std::filesystem::path& each : { job.path(), job.path().parent_path() }) {
            EXPECT_EQ(
                std::filesystem::status(each).permissions(), std::filesystem::perms::owner_all)
                << each;
        }
        job.remove();
    }
    // Somebody else has put a link or a folder of his own there.
    const std::filesystem::path own = temporary.path() / namesIn(temporary.path()).front();
    std::filesystem::remove(own);
    std::filesystem::create_directory_symlink(folder.path(), own);
    SpoolFolder job;
    EXPECT_FALSE(job.create(unusable).ok());
    unsetenv("TMPDIR");
}

TEST(Spool, theSharedRootTakesEveryUserAndAJobIsItsUsersAlone)
{
    const TemporaryFolder folder;
    SpoolFolder job;
    ASSERT_TRUE(job.create(folder.path() / "a" / "spool").ok());
    using std::filesystem::perms;
    EXPECT_EQ(std::filesystem::status(folder.path() / "a" / "spool").permissions(),
        perms::all | perms::sticky_bit);
    EXPECT_EQ(std::filesystem::status(job.path()).permissions(), perms::owner_all);
    std::filesystem::path payload;
    ASSERT_TRUE(job.store("page-1", { 1 }, payload).ok());
    EXPECT_EQ(
        std::filesystem::status(payload).permissions(), perms::owner_read | perms::owner_write);
    EXPECT_FALSE(job.store("page-1", { 2 }, payload).ok()) << "what is there is not written into";
    EXPECT_EQ(contentOf(payload), "\1");
    job.remove();
}

TEST(Spool, aJobThatBeginsIsNeverTakenForADeadOne)
{
    const TemporaryFolder folder;
    std::atomic<bool> done { false };
    int taken = 0;
    std::thread recovery([&] {
        while (!done) {
            for (const std::filesystem::path& each : spoolFolders(folder.path())) {
                SpoolFolder dead;
                if (dead.takeOver(each)) {
                    ++taken;
                    dead.remove();
                }
            }
        }
    });
    for (int i = 0; i < 500; ++i) {
        SpoolFolder job;
        ASSERT_TRUE(job.create(folder.path()).ok());
        std::filesystem::path payload;
        EXPECT_TRUE(job.store("page", { 1 }, payload).ok()) << "its folder is gone";
        job.remove();
    }
    done = true;
    recovery.join();
    EXPECT_EQ(taken, 0);
}

TEST(Spool, aFullDiskIsToldAndLeavesNoHalfPage)
{
    const TemporaryFolder folder;
    SpoolFolder job;
    ASSERT_TRUE(job.create(folder.path()).ok());
    rlimit before {};
    getrlimit(RLIMIT_FSIZE, &before);
    const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit small { 1000, before.rlim_max };
    setrlimit(RLIMIT_FSIZE, &small);
    std::filesystem::path file;
    const Status status = job.store("page-1", std::vector<std::uint8_t>(5000), file);
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, oldHandler);
    EXPECT_EQ(status.code(), kDiskFull);
    EXPECT_FALSE(std::filesystem::exists(file));

    // Half a line fits; the next one, when there is room again, must not become its end.
    setrlimit(RLIMIT_FSIZE, &small);
    std::signal(SIGXFSZ, SIG_IGN);
    EXPECT_EQ(job.note(std::string(5000, 'x')).code(), kDiskFull);
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, oldHandler);
    EXPECT_TRUE(job.note("next").ok());
    EXPECT_EQ(job.journal().back(), "next");
    job.remove();
}
