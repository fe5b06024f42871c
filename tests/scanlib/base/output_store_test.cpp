#include "scanlib/base/output_store.h"
#include "tests/scanlib/temporary_folder.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utime.h>

#include <ctime>
#include <set>
#include <thread>

using namespace orva;

namespace {

std::string save(OutputStore& store, const std::string& stem, const std::string& content)
{
    Reservation place;
    if (!store.reserve(stem, "txt", place).ok()) {
        return "no reservation";
    }
    writeFile(place.hiddenFile(), content);
    std::filesystem::path file;
    const Status status = store.commit(place, file);
    return status.ok() ? file.filename().string() : status.detail();
}

void saveMany(const std::filesystem::path& folder, const std::string& who, int count)
{
    OutputStore store(folder, SameName::kAddNumber);
    for (int i = 0; i < count; ++i) {
        save(store, "same", who + std::to_string(i));
    }
}

} // namespace

TEST(OutputStore, addsNumbersBeforeTheExtensionOrReplaces)
{
    const TemporaryFolder folder;
    writeFile(folder.path() / "a.txt", "old");
    OutputStore adding(folder.path(), SameName::kAddNumber);
    EXPECT_EQ(save(adding, "a", "second"), "a_2.txt");
    EXPECT_EQ(save(adding, "a", "third"), "a_3.txt");
    EXPECT_EQ(contentOf(folder.path() / "a.txt"), "old");
    OutputStore replacing(folder.path(), SameName::kReplace);
    EXPECT_EQ(save(replacing, "a", "new"), "a.txt");
    EXPECT_EQ(contentOf(folder.path() / "a.txt"), "new");
    EXPECT_EQ(namesIn(folder.path()), (std::vector<std::string> { "a.txt", "a_2.txt", "a_3.txt" }));
}

TEST(OutputStore, jobsAndProcessesThatRaceForOneNameLoseNothing)
{
    constexpr int kFiles = 40;
    const TemporaryFolder folder;
    pid_t children[2] = {};
    for (pid_t& child : children) {
        child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            saveMany(folder.path(), "process" + std::to_string(getpid()) + "-", kFiles);
            _exit(0);
        }
    }
    std::thread threads[] = { std::thread(saveMany, folder.path(), "threadA-", kFiles),
        std::thread(saveMany, folder.path(), "threadB-", kFiles) };
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const pid_t child : children) {
        int status = 0;
        waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
    }
    std::set<std::string> contents;
    for (const std::string& name : namesIn(folder.path())) {
        EXPECT_NE(name.front(), '.');
        contents.insert(contentOf(folder.path() / name));
    }
    EXPECT_EQ(contents.size(), 4U * kFiles);
    EXPECT_EQ(namesIn(folder.path()).size(), 4U * kFiles);
}

TEST(OutputStore, aLeftoverOfADeadJobDoesNotBlockItsNameForEver)
{
    const TemporaryFolder folder;
    const std::filesystem::path leftover = folder.path() / ".a.txt.orva-part";
    OutputStore store(folder.path(), SameName::kAddNumber);
    writeFile(leftover, "half");
    EXPECT_EQ(save(store, "a", "x"), "a_2.txt") << "a young one may belong to a living job";
    const utimbuf old { std::time(nullptr) - 3600, std::time(nullptr) - 3600 };
    utime(leftover.c_str(), &old);
    EXPECT_EQ(save(store, "a", "x"), "a.txt");

    Reservation living;
    ASSERT_TRUE(store.reserve("b", "txt", living).ok());
    utime(living.hiddenFile().c_str(), &old);
    EXPECT_EQ(save(store, "b", "x"), "b_2.txt") << "its job still holds it";
    writeFile(leftover, "half");
    removeHiddenLeftovers(folder.path());
    EXPECT_TRUE(std::filesystem::exists(living.hiddenFile()));
    EXPECT_FALSE(std::filesystem::exists(leftover));
    EXPECT_TRUE(std::filesystem::exists(folder.path() / "a.txt"));
}

TEST(OutputStore, namesThatNobodyChoseArePassedOver)
{
    const TemporaryFolder folder;
    writeFile(folder.path() / "1.txt", "old");
    for (const SameName mode : { SameName::kAddNumber, SameName::kReplace }) {
        OutputStore store(folder.path(), mode);
        Reservation place;
        bool taken = false;
        EXPECT_TRUE(store.reserveIfFree("1", "txt", place, taken).ok());
        EXPECT_TRUE(taken);
        EXPECT_TRUE(store.reserveIfFree("2", "txt", place, taken).ok());
        EXPECT_FALSE(taken);
    }
}

TEST(OutputStore, tellsWhatIsWrongWithAFolder)
{
    const TemporaryFolder folder;
    Reservation place;
    OutputStore missing(folder.path() / "gone", SameName::kAddNumber);
    EXPECT_EQ(missing.check().code(), kFolderMissing);
    EXPECT_EQ(missing.reserve("a", "txt", place).code(), kFolderMissing);
    writeFile(folder.path() / "file", "");
    EXPECT_EQ(
        OutputStore(folder.path() / "file", SameName::kReplace).check().code(), kFolderMissing);
    OutputStore good(folder.path(), SameName::kReplace);
    EXPECT_EQ(good.check().code(), kOk);
    EXPECT_EQ(good.reserve(std::string(300, 'x'), "txt", place).code(), kBadFileName);
    std::filesystem::create_directory(folder.path() / "d.txt");
    EXPECT_EQ(good.reserve("d", "txt", place).code(), kBadFileName);
    // /proc/sys refuses new files to everybody, root included.
    EXPECT_NE(
        OutputStore("/proc/sys", SameName::kAddNumber).reserve("a", "txt", place).code(), kOk);
}
