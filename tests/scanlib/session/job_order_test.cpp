// Jobs that go well: what is reported, in which order, and what is in the files by then.
#include "tests/scanlib/session/fakes.h"

#include <thread>

using namespace fakes;
using namespace orva;

TEST_F(SessionTest, everySideAndEveryFileIsReportedInOrderAndTheEndOnceAtLast)
{
    device.sheets = 12;
    device.duplex = true;
    // Some pages take longer than others, so that workers overtake each other.
    pages.duringEncode = [](int number) { std::this_thread::sleep_for(number * 7 % 5 * 2ms); };
    for (const bool document : { false, true }) {
        choose({ document ? FileFormat::kPdf : FileFormat::kJpg, document });
        Recorder::instance().reset();
        std::atomic<int> incomplete { 0 };
        Recorder::instance().setHook([&](const Event& event) {
            if (event.state == 2 && pagesOf(event.file).size() != (document ? 24U : 1U)) {
                ++incomplete;
            }
        });
        EXPECT_EQ(session->scan(), kOk);
        EXPECT_EQ(incomplete, 0) << "a file was told before it was complete under its name";
        EXPECT_EQ(savedPages(), upTo(24));
        EXPECT_EQ(visibleNames().front(), document ? "001.pdf" : "001.jpg");
        EXPECT_EQ(visibleNames().back(), document ? "001.pdf" : "024.jpg");
        const std::vector<Event> events = Recorder::instance().events();
        int sides = 0;
        for (const Event& event : events) {
            EXPECT_TRUE(event.state != 1 || event.page == ++sides);
        }
        EXPECT_EQ(sides, 24);
        EXPECT_EQ(Recorder::instance().count(2), document ? 1 : 24);
        EXPECT_EQ(Recorder::instance().count(-1), 1);
        EXPECT_EQ(events.back().state, -1);
        EXPECT_EQ(Recorder::instance().count(kErrorEvent), 0);
        EXPECT_EQ(device.endBatches, document ? 2 : 1);
        EXPECT_TRUE(namesIn(folder.path() / "spool").empty());
        _tagPageParameter last {};
        EXPECT_EQ(session->pageParameters(last), kOk);
        EXPECT_EQ(last.nPage, 24);
        EXPECT_EQ(last.nWidth, 64);
        std::filesystem::remove_all(output);
        std::filesystem::create_directory(output);
    }
}

TEST_F(SessionTest, bothSidesOfASheetComeTogetherWhenTheyAreMerged)
{
    device.sheets = 5;
    device.duplex = true;
    pages.wholeSheets = true;
    EXPECT_EQ(session->scan(), kOk);
    EXPECT_EQ(pages.groups, 5);
    EXPECT_EQ(Recorder::instance().count(1), 10);
}

TEST_F(SessionTest, aBlankSideIsCountedButGivesNoFile)
{
    device.sheets = 4;
    pages.blankSide = 2;
    EXPECT_EQ(session->scan(), kOk);
    EXPECT_EQ(Recorder::instance().count(1), 4);
    EXPECT_EQ(savedPages(), (std::vector<int> { 1, 3, 4 }));
}

TEST_F(SessionTest, theNextJobReplacesOrAddsAsItIsTold)
{
    device.sheets = 1;
    EXPECT_EQ(session->scan(), kOk);
    EXPECT_EQ(session->scan(), kOk);
    EXPECT_EQ(visibleNames(), (std::vector<std::string> { "001.jpg", "001_2.jpg" }));
    choose({ FileFormat::kJpg, false, true });
    EXPECT_EQ(session->scan(), kOk);
    EXPECT_EQ(visibleNames().size(), 2U);
}

TEST_F(SessionTest, aCallbackThatSleepsDoesNotHoldUpThePages)
{
    device.sheets = 6;
    int deliveredDuringFirst = 0;
    Recorder::instance().setHook([&](const Event& event) {
        if (event.state == 1 && event.page == 1) {
            const auto deadline = std::chrono::steady_clock::now() + 10s;
            while (visibleNames().size() < 6 && std::chrono::steady_clock::now() < deadline) {
                std::this_thread::sleep_for(5ms);
            }
            deliveredDuringFirst = device.delivered;
        }
    });
    EXPECT_EQ(session->scan(), kOk);
    EXPECT_EQ(deliveredDuringFirst, 6) << "all was scanned and written during the first callback";
    EXPECT_EQ(Recorder::instance().count(2), 6);
}

TEST_F(SessionTest, memoryHoldsAFewSidesHoweverManyThereAre)
{
    device.sheets = 1000;
    device.sidePixels = 512; // 256 KiB a side, four of them fill the queue
    limits.queueBytes = 1U << 20U;
    restart();
    int mostInFlight = 0;
    std::mutex mutex;
    pages.duringEncode = [&](int) {
        const std::lock_guard<std::mutex> lock(mutex);
        mostInFlight = std::max(mostInFlight, device.delivered - pages.encoded);
    };
    choose({ FileFormat::kPdf, true });
    EXPECT_EQ(session->scan(), kOk);
    EXPECT_EQ(savedPages(), upTo(1000));
    // Four in the queue, one with each worker and one with the device.
    EXPECT_LE(mostInFlight, 4 + 2 + 1);
}
