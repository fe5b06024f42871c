// Cancelling, closing while a job runs, and callbacks that call the library.
#include "tests/scanlib/session/fakes.h"

#include <future>
#include <thread>

using namespace fakes;
using namespace orva;

namespace {

class Cancelling : public SessionTest
{
protected:
    Cancelling()
    {
        device.sheets = 500;
        device.perSide = 2ms;
    }
    std::future<int> scanInBackground()
    {
        return std::async(std::launch::async, [this] { return session->scan(); });
    }
    void expectCleanEnd()
    {
        EXPECT_EQ(Recorder::instance().count(kErrorEvent), 0) << "a cancellation is no error";
        EXPECT_EQ(Recorder::instance().count(-1), 1);
        EXPECT_EQ(static_cast<int>(savedPages().size()), Recorder::instance().count(1));
        EXPECT_EQ(savedPages(), upTo(Recorder::instance().count(1)))
            << "no page in the middle is lost";
    }
};

} // namespace

TEST_F(Cancelling, deviceThatWaitsForPaperIsWoken)
{
    device.perSide = 60s;
    auto job = scanInBackground();
    while (device.waits == 0) {
        std::this_thread::yield();
    }
    const auto begin = std::chrono::steady_clock::now();
    session->cancelScan();
    EXPECT_EQ(job.get(), kCancelled);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 1s);
}

TEST_F(Cancelling, aCallbackMayCallEverything)
{
    std::vector<int> answers;
    Recorder::instance().setHook([&](const Event& event) {
        if (event.state == 1 && event.page == 3) {
            std::string text;
            _tagPageParameter page {};
            answers = { session->buttonStatus(), session->havePaper(), session->scan(),
                session->unInit(), session->selectScanner(0), session->sourceCount(),
                session->pageParameters(page), session->scannerState(), session->clearTmpData(),
                session->cancelScan(), session->cancelScan() };
        }
    });
    device.button = 1;
    EXPECT_EQ(session->scan(), kCancelled);
    EXPECT_EQ(
        answers, (std::vector<int> { 0, kBusy, kBusy, kBusy, kBusy, 2, kOk, 1, kOk, kOk, kOk }));
    expectCleanEnd();
    EXPECT_EQ(session->buttonStatus(), 1);
    EXPECT_EQ(session->cancelScan(), kOk) << "nothing to cancel";
    device.sheets = 1;
    EXPECT_EQ(session->scan(), kOk) << "the next job is not cancelled";
}

TEST_F(Cancelling, unInitEndsARunningJobAndLeavesNoCallbackBehind)
{
    auto job = scanInBackground();
    ASSERT_TRUE(Recorder::instance().waitFor(1, 3));
    EXPECT_EQ(session->unInit(), kOk);
    const std::size_t events = Recorder::instance().events().size();
    EXPECT_EQ(job.get(), kCancelled);
    EXPECT_EQ(Recorder::instance().events().size(), events);
    expectCleanEnd();
    EXPECT_EQ(session->scan(), kNotInitialised);
    EXPECT_EQ(session->unInit(), kOk);
    EXPECT_EQ(session->init(), kOk) << "the library can be used again";
}

/// Whoever waits for a device that is being opened: a look at its buttons, a cancel, the end.
TEST_F(Cancelling, aDeviceThatHangsWhenItIsOpenedKeepsNobodyWaiting)
{
    restart();
    device.openHangs = true;
    ASSERT_EQ(session->scannerCount(), 1);
    ASSERT_EQ(session->selectScanner(0), kOk);
    EXPECT_EQ(session->buttonStatus(), 0);
    EXPECT_EQ(device.opens, 0);
    const auto begin = std::chrono::steady_clock::now();
    auto job = scanInBackground();
    while (device.opens == 0) {
        std::this_thread::sleep_for(1ms);
    }
    session->cancelScan();
    EXPECT_EQ(job.get(), kCancelled);
    std::thread asking([&] { session->sourceCount(); });
    while (device.opens == 1) {
        std::this_thread::sleep_for(1ms);
    }
    EXPECT_EQ(session->unInit(), kOk);
    asking.join();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 3s);
}

TEST_F(Cancelling, unInitDoesNotWaitForEverForACallback)
{
    SessionParts impatient = parts();
    impatient.endingLimit = 50ms;
    impatient.mutedLimit = 50ms;
    session = std::make_unique<Session>(impatient);
    session->init();
    session->selectScanner(0);
    session->setStateCallback(Recorder::state);
    choose({});
    std::promise<void> release;
    std::shared_future<void> released = release.get_future().share();
    Recorder::instance().setHook([released](const Event& event) {
        if (event.state == 1 && event.page == 1) {
            released.wait();
        }
    });
    auto job = scanInBackground();
    ASSERT_TRUE(Recorder::instance().waitFor(1, 1));
    EXPECT_EQ(session->unInit(), kBusy);
    release.set_value();
    EXPECT_EQ(job.get(), kCancelled);
    EXPECT_EQ(Recorder::instance().events().size(), 1U) << "muted";
    EXPECT_EQ(session->unInit(), kOk);
}

TEST_F(Cancelling, entryPointsFromOtherThreadsDuringJobs)
{
    device.sheets = 30;
    device.perSide = 1ms;
    std::atomic<bool> stop { false };
    const auto poke = [&] {
        while (!stop) {
            double width = 0;
            double height = 0;
            std::string text;
            session->buttonStatus();
            session->paperSizeMax(width, height);
            session->deviceInfo(text);
            session->setResolution(300, 300);
            session->setImageParam({});
        }
    };
    std::thread pokers[] = { std::thread(poke), std::thread(poke) };
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(session->scan(), kOk);
    }
    stop = true;
    for (std::thread& thread : pokers) {
        thread.join();
    }
    EXPECT_EQ(Recorder::instance().count(2), 150);
}
