// Faults of the device, the image work, the disk and the operator in any combination: each side
// that was reported is in exactly one file, at the latest after the next start, and no other is.
#include "scanlib/session/job_journal.h"
#include "scanlib/session/recovery.h"
#include "tests/scanlib/session/fakes.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <ctime>
#include <future>
#include <random>
#include <thread>

using namespace fakes;
using namespace orva;

namespace {

class AnyOrder : public SessionTest
{
protected:
    /// Pages 1 and so on in the journal, as a job has them in no file yet.
    static std::vector<EncodedPage> store(JobJournal& journal, int count)
    {
        std::vector<EncodedPage> stored(static_cast<std::size_t>(count));
        for (int number = 1; number <= count; ++number) {
            EncodedPage& page = stored[static_cast<std::size_t>(number) - 1];
            const std::string text = "page " + std::to_string(number) + "\n";
            page.number = number;
            page.bytes.assign(text.begin(), text.end());
            EXPECT_TRUE(journal.store(page).ok());
        }
        return stored;
    }
    OutputSettings settings() const
    {
        OutputSettings result;
        result.folder = output;
        result.naming.timeNamed = false;
        result.naming.serialStart = "007";
        return result;
    }
};

} // namespace

TEST_F(AnyOrder, whatIsReportedIsSavedOnceAndNothingElse)
{
    std::mt19937 random(23);
    const auto oneOf = [&](int choices) { return static_cast<int>(random() % choices); };
    int failed = 0;
    for (int round = 0; round < 60; ++round) {
        device.sheets = 4 + oneOf(12);
        device.duplex = oneOf(2) == 0;
        const int sides = device.sheets * (device.duplex ? 2 : 1);
        const auto aSide = [&] { return 1 + oneOf(sides); };
        device.faultAtSide.clear();
        if (oneOf(3) == 0) {
            const ResultCode codes[] = { kPaperJam, kDeviceLost, kNoPaper, kCancelled,
                kDamagedPage };
            device.faultAtSide[aSide()] = codes[oneOf(5)];
        }
        pages.failOperationsAt = oneOf(4) == 0 ? aSide() : 0;
        pages.failWriterAtPage = oneOf(3) == 0 ? aSide() : 0;
        pages.wholeSheets = oneOf(3) == 0;
        const int throwing = oneOf(5) == 0 ? aSide() : 0;
        const unsigned jitter = static_cast<unsigned>(random());
        pages.duringEncode = [=](int number) {
            std::this_thread::sleep_for(
                std::chrono::microseconds((jitter >> (number % 16)) % 1500));
            if (number == throwing) {
                throw std::bad_alloc();
            }
        };
        const bool multiPage = oneOf(2) == 0;
        choose({ multiPage ? FileFormat::kPdf : FileFormat::kJpg, multiPage });
        Recorder::instance().reset();

        auto job = std::async(std::launch::async, [&] { return session->scan(); });
        const bool closing = oneOf(4) == 0;
        if (closing || oneOf(3) == 0) {
            std::this_thread::sleep_for(std::chrono::microseconds(random() % 8000));
            closing ? session->unInit() : session->cancelScan();
        }
        const int code = job.get();
        failed += code != kOk && code != kCancelled ? 1 : 0;
        const int reported = Recorder::instance().count(1);
        if (code != kBusy && code != kNotInitialised) { // closed before it began
            EXPECT_EQ(Recorder::instance().count(-1), 1);
            EXPECT_EQ(Recorder::instance().events().back().state, -1);
            EXPECT_EQ(Recorder::instance().count(kErrorEvent), code != kOk && code != kCancelled);
        }
        pages.failWriterAtPage = 0;
        restart();
        waitForRecovery();
        std::vector<int> saved = savedPages();
        std::sort(saved.begin(), saved.end());
        EXPECT_EQ(saved, upTo(reported)) << "round " << round << ", code " << code;
        EXPECT_TRUE(namesIn(folder.path() / "spool").empty());
        EXPECT_EQ(namesIn(output), visibleNames());
        std::filesystem::remove_all(output);
        std::filesystem::create_directory(output);
    }
    EXPECT_GT(failed, 15) << "the test must meet faults";
}

TEST_F(AnyOrder, recoveredFilesHaveTheNamesTheyWouldHaveHad)
{
    session.reset();
    const std::filesystem::path spool = folder.path() / "spool";
    const struct
    {
        bool multiPage;
        bool timeNamed;
        const char* serial;
        const char* begun; ///< name of the document, when one was begun
        const char* there; ///< a file of another job
        std::vector<std::string> made;
    } cases[] = {
        { true, true, "", "A20240102", "x.pdf", { "A20240102_恢复.pdf", "x.pdf" } },
        { true, false, "007", "007_2", "007.pdf", { "007.pdf", "007_2_恢复.pdf" } },
        { true, false, "007", nullptr, "007_恢复.pdf", { "007_恢复.pdf", "007_恢复_2.pdf" } },
        { false, false, "007", nullptr, "x.jpg", { "007_恢复.jpg", "008_恢复.jpg", "x.jpg" } },
        { false, false, "", nullptr, "1.jpg", { "1.jpg", "2_恢复.jpg", "3_恢复.jpg" } },
        // 2024-01-02 at noon, as the payloads say
        { false, true, "", nullptr, "x.jpg",
            { "20240102120000000_恢复.jpg", "20240102120000001_恢复.jpg", "x.jpg" } },
    };
    for (const auto& each : cases) {
        writeFile(output / each.there, "end 0\n");
        OutputSettings wanted = settings();
        wanted.multiPage = each.multiPage;
        wanted.format = each.multiPage ? FileFormat::kPdf : FileFormat::kJpg;
        wanted.naming.timeNamed = each.timeNamed;
        wanted.naming.serialStart = each.serial;
        {
            JobJournal dead;
            ASSERT_TRUE(dead.begin(spool, wanted).ok());
            for (const EncodedPage& stored : store(dead, 2)) {
                std::tm noon {};
                noon.tm_year = 2024 - 1900;
                noon.tm_mday = 2;
                noon.tm_hour = 12;
                noon.tm_isdst = -1;
                const timespec times[2] = { { std::mktime(&noon), 0 }, { std::mktime(&noon), 0 } };
                ASSERT_EQ(utimensat(AT_FDCWD, stored.file.c_str(), times, 0), 0);
            }
            if (each.begun != nullptr) {
                dead.noteName("", each.begun);
            }
        }
        recoverJobs(spool, fakeTools(pages), CancelToken());
        EXPECT_EQ(visibleNames(), each.made);
        EXPECT_EQ(savedPages(), upTo(2));
        std::filesystem::remove_all(output);
        std::filesystem::create_directory(output);
    }
}

TEST_F(AnyOrder, recoveryPassesOverADamagedPayloadAndSavesTheOthers)
{
    session.reset();
    const std::filesystem::path spool = folder.path() / "spool";
    {
        JobJournal dead;
        ASSERT_TRUE(dead.begin(spool, settings()).ok());
        std::filesystem::resize_file(store(dead, 3)[1].file, 3); // the power went
    }
    EXPECT_EQ(recoverJobs(spool, fakeTools(pages), CancelToken()), 2);
    EXPECT_EQ(savedPages(), (std::vector<int> { 1, 3 }));
}

TEST_F(AnyOrder, aCommitThatFailedTakesNoPageWithIt)
{
    session.reset();
    JobJournal journal;
    ASSERT_TRUE(journal.begin(folder.path() / "spool", settings()).ok());
    const std::vector<EncodedPage> all = store(journal, 2);
    const std::filesystem::path hidden = output / ".007.pdf.part";
    const std::filesystem::path file = output / "007.pdf";
    writeFile(hidden, "both");
    journal.noteCommit(hidden, file, all);
    journal.noteCommitFailed();
    // The document is made again of the first page, and the disk gives out the same inode.
    const std::vector<EncodedPage> first(all.begin(), all.begin() + 1);
    journal.noteCommit(hidden, file, first);
    std::filesystem::rename(hidden, file);
    const JobJournal::Leftover left = journal.leftover();
    ASSERT_EQ(left.unsaved.size(), 1U);
    EXPECT_EQ(left.unsaved.front().number, 2);
    EXPECT_EQ(left.files, 1U);
    journal.remove();
}

TEST_F(AnyOrder, anotherProcessNeitherRecoversNorClearsARunningJob)
{
    session.reset();
    device.sheets = 60;
    device.perSide = 3ms;
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        setUpSession();
        choose({ FileFormat::kPdf, true }); // all payloads lie in the spool until the end
        const int code = session->scan();
        session.reset();
        _exit(code == kOk ? 0 : 1);
    }
    const std::filesystem::path spool = folder.path() / "spool";
    int status = 0;
    int rounds = 0;
    while (waitpid(child, &status, WNOHANG) == 0) {
        EXPECT_EQ(recoverJobs(spool, fakeTools(pages), CancelToken()), 0);
        EXPECT_TRUE(clearSpool(spool).ok());
        rounds += spoolFolders(spool).empty() ? 0 : 1;
        std::this_thread::sleep_for(200us);
    }
    EXPECT_EQ(status, 0);
    EXPECT_GT(rounds, 10) << "the job must be met while it runs";
    EXPECT_EQ(savedPages(), upTo(60));
    EXPECT_EQ(visibleNames().size(), 1U);
}
