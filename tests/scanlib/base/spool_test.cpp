#include "scanlib/base/spool.h"
#include "tests/scanlib/temporary_folder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>

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

TEST(Spool, aRootThatCannotBeUsedIsReplacedByTheTemporaryFolder)
{
    const TemporaryFolder folder;
    writeFile(folder.path() / "file", "");
    SpoolFolder job;
    ASSERT_TRUE(job.create(folder.path() / "file" / "spool").ok());
    EXPECT_EQ(job.path().string().rfind(std::filesystem::temp_directory_path().string(), 0), 0U);
    job.remove();
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
    job.remove();
}
