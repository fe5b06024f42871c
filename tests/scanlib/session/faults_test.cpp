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
};

} // namespace

TEST_F(Faults, keepWhatWasScannedBeforeAndTheRestForTheNextStart)
{
    const struct
    {
        ResultCode code;
        std::function<void()> arm;
        int saved; ///< by the job itself
    } cases[] = {
        { kPaperJam, [&] { device.faultAtSide[3] = kPaperJam; }, 2 },
        { kDamagedPage, [&] { pages.failOperationsAt = 4; }, 3 },
        { kDiskFull, [&] { pages.failWriterAtPage = 4; }, 3 },
        { kNoMemory,
            [&] {
                pages.duringEncode = [](int number) {
                    if (number == 2) {
                        throw std::bad_alloc();
                    }
                };
            },
            1 },
    };
    device.sheets = 200;
    device.perSide = 2ms;
    for (const bool multiPage : { false, true }) {
        for (const auto& each : cases) {
            SCOPED_TRACE(std::to_string(each.code) + (multiPage ? ", document" : ""));
            choose({ multiPage ? FileFormat::kPdf : FileFormat::kJpg, multiPage });
            Recorder::instance().reset();
            each.arm();
            const int delivered = device.delivered;
            const int batches = device.endBatches;
            scanExpecting(each.code);
            EXPECT_EQ(savedPages(), upTo(each.saved));
            EXPECT_EQ(Recorder::instance().count(2), multiPage ? 1 : each.saved);
            EXPECT_LT(device.delivered - delivered, device.sheets) << "the device is stopped";
            EXPECT_EQ(device.endBatches, batches + 1);
            EXPECT_EQ(session->clearTmpData(), kOk) << "must not take pages that are in no file";
            const int reported = Recorder::instance().count(1);
            EXPECT_GE(reported, each.saved);

            device.faultAtSide.clear();
            pages.failOperationsAt = pages.failWriterAtPage = 0;
            pages.duringEncode = nullptr;
            restart();
            waitForRecovery();
            EXPECT_EQ(savedPages(), upTo(reported)) << "in the order of their names";
            EXPECT_TRUE(namesIn(folder.path() / "spool").empty());
            std::filesystem::remove_all(output);
            std::filesystem::create_directory(output);
        }
    }
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
