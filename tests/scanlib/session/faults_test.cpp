// Jobs that go wrong: nothing that was scanned before the fault is lost, the error is told once and
// in time, the end once and last.
#include "tests/scanlib/session/fakes.h"

#include <thread>

using namespace fakes;
using namespace orva;

namespace {

class Faults : public SessionTest
{
protected:
    /// Runs the job and checks what holds for every failed one.
    void scanExpecting(ResultCode code)
    {
        const auto begin = std::chrono::steady_clock::now();
        EXPECT_EQ(session->scan(), code);
        EXPECT_LT(std::chrono::steady_clock::now() - begin, 10s);
        const std::vector<Event> events = Recorder::instance().events();
        ASSERT_GE(events.size(), 2U);
        EXPECT_EQ(Recorder::instance().count(kErrorEvent), 1);
        EXPECT_EQ(Recorder::instance().count(-1), 1);
        EXPECT_EQ(events.back().state, -1);
        EXPECT_EQ(events[events.size() - 2].state, kErrorEvent);
        EXPECT_EQ(events[events.size() - 2].page, code);
        for (const std::string& name : namesIn(output)) {
            EXPECT_NE(name.front(), '.') << "left behind: " << name;
        }
    }
    bool isSpoolEmpty() { return namesIn(folder.path() / "spool").empty(); }
};

} // namespace

TEST_F(Faults, jamAtSheetThreeOfTen)
{
    device.sheets = 10;
    device.faultAtSide[3] = kPaperJam;
    scanExpecting(kPaperJam);
    EXPECT_EQ(savedPages(), upTo(2));
    EXPECT_EQ(device.endBatches, 1);
    EXPECT_TRUE(isSpoolEmpty());

    Recorder::instance().reset();
    std::filesystem::remove_all(output / "001.jpg");
    std::filesystem::remove_all(output / "002.jpg");
    choose({ FileFormat::kPdf, true });
    scanExpecting(kPaperJam);
    EXPECT_EQ(visibleNames(), std::vector<std::string> { "001.pdf" });
    EXPECT_EQ(savedPages(), upTo(2));

    Recorder::instance().reset();
    device.faultAtSide.clear();
    EXPECT_EQ(session->scan(), kOk) << "the next job is not harmed";
}

TEST_F(Faults, damagedPageLeavesTheOthers)
{
    device.sheets = 6;
    pages.failOperationsAt = 4;
    choose({ FileFormat::kPdf, true });
    scanExpecting(kDamagedPage);
    const std::vector<int> saved = savedPages();
    ASSERT_GE(saved.size(), 3U);
    EXPECT_EQ(std::vector<int>(saved.begin(), saved.begin() + 3), upTo(3));
    EXPECT_EQ(std::count(saved.begin(), saved.end(), 4), 0);
    EXPECT_EQ(static_cast<int>(saved.size()), Recorder::instance().count(1));
}

TEST_F(Faults, exceptionInAWorkerIsAFault)
{
    pages.duringEncode = [](int number) {
        if (number == 2) {
            throw std::bad_alloc();
        }
    };
    scanExpecting(kNoMemory);
    EXPECT_EQ(savedPages().front(), 1);
}

TEST_F(Faults, diskFullInADocumentKeepsWhatFitsAndTheRestForTheNextStart)
{
    device.sheets = 6;
    pages.failWriterAtPage = 4;
    choose({ FileFormat::kPdf, true });
    scanExpecting(kDiskFull);
    EXPECT_EQ(savedPages(), upTo(3)) << "the document with the pages so far";
    EXPECT_EQ(Recorder::instance().files().size(), 1U);
    EXPECT_EQ(session->clearTmpData(), kOk) << "must not take the pages that are in no file";
    const int reported = Recorder::instance().count(1);

    pages.failWriterAtPage = 0;
    restart();
    ASSERT_TRUE(waitForFiles(2));
    EXPECT_EQ(savedPages(), upTo(reported)) << "each side that was reported is in a file";
    session.reset();
    EXPECT_TRUE(isSpoolEmpty());
}

TEST_F(Faults, outputFolderRemovedInTheMiddle)
{
    device.sheets = 6;
    device.perSide = 20ms;
    pages.duringEncode = [&](int number) {
        if (number == 3) {
            std::filesystem::remove_all(output);
        }
    };
    scanExpecting(kFolderMissing);
    EXPECT_LT(device.delivered, 6) << "the device is stopped";
    const int reported = Recorder::instance().count(1);
    const int saved = Recorder::instance().count(2);
    std::filesystem::create_directory(output);
    pages.duringEncode = nullptr;
    restart();
    EXPECT_TRUE(waitForFiles(static_cast<std::size_t>(reported - saved)))
        << "what was scanned but not saved comes back";
}

TEST_F(Faults, refusedRecordRefusesTheJob)
{
    device.sheets = 1;
    EXPECT_EQ(session->setFileParam(fileParam(output, { FileFormat::kXls })), kFormatNotSupported);
    scanExpecting(kFormatNotSupported);
    EXPECT_EQ(session->setFileParam(fileParam("relative")), kBadFileName);
    FileParam open = fileParam(output);
    std::fill(std::begin(open.szFileName), std::end(open.szFileName), 'x');
    EXPECT_EQ(session->setFileParam(open), kBadFileName) << "no terminator";
    EXPECT_EQ(device.delivered, 0);
}

TEST_F(Faults, theErrorDoesNotWaitForASlowEnd)
{
    device.sheets = 3;
    device.faultAtSide[3] = kCoverOpen;
    pages.duringEncode = [](int) { std::this_thread::sleep_for(2200ms); };
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(session->scan(), kCoverOpen);
    for (const Event& event : Recorder::instance().events()) {
        if (event.state == kErrorEvent) {
            EXPECT_LT(event.time - begin, 2s);
        }
    }
    EXPECT_EQ(Recorder::instance().count(kErrorEvent), 1);
    EXPECT_EQ(Recorder::instance().events().back().state, -1);
    EXPECT_EQ(savedPages(), upTo(2));
}
