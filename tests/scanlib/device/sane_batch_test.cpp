// Batches of a SANE scanner: ends, faults, one cancel, silence, a helper that is gone.
#include "tests/scanlib/device/script_fixture.h"
#include "tests/scanlib/temporary_folder.h"

#include <gmock/gmock.h>

#include <chrono>

namespace {

using namespace device_tests;
using namespace std::chrono_literals;
using orva::Page;
using orva::SourceKind;
using testing::ElementsAre;
using Clock = std::chrono::steady_clock;

class SaneBatch : public SaneScript
{
};

TEST_F(SaneBatch, EndsWithTheFeederAndIsCancelledExactlyOnce)
{
    open();
    m_script.frames = { grayFrame(4, 6, 10), grayFrame(700, 3000, 20), grayFrame(4, 6, 30) };
    ASSERT_EQ(configure(SourceKind::kDuplex).code(), orva::kOk);
    EXPECT_THAT(runJob(), ElementsAre(10, 20, 30, 1000)); // the second is larger than the ring
    EXPECT_THAT(m_origins, ElementsAre("1f", "1b", "2f"));
    EXPECT_EQ(m_script.count("cancel"), 1);
    EXPECT_EQ(m_script.calls.back(), "cancel");
    EXPECT_EQ(m_script.threads.size(), 1U);
    // the glass gives one page
    m_script.frames = { grayFrame(4, 6, 10), grayFrame(4, 6, 20) };
    ASSERT_EQ(configure(SourceKind::kFlatbed).code(), orva::kOk);
    EXPECT_THAT(runJob(), ElementsAre(10, 1000));
    EXPECT_EQ(m_script.frames.size(), 1U);
}

TEST_F(SaneBatch, EmptyFeederIsNoPaperWhereverItIsTold)
{
    open();
    ASSERT_EQ(configure().code(), orva::kOk);
    EXPECT_THAT(runJob(), ElementsAre(orva::kNoPaper));
    ScriptFrame empty;
    empty.parameters = parameters(SANE_FRAME_GRAY, 4, 6, 8);
    empty.reads.push_back({ SANE_STATUS_NO_DOCS, {} });
    m_script.frames = { empty };
    ASSERT_EQ(configure().code(), orva::kOk);
    EXPECT_THAT(runJob(), ElementsAre(orva::kNoPaper));
    m_script.frames = { grayFrame(4, 6, 10), empty };
    ASSERT_EQ(configure().code(), orva::kOk);
    EXPECT_THAT(runJob(), ElementsAre(10, 1000));
}

TEST_F(SaneBatch, BusyIsTriedAgainAndStaleOptionsAreSetOnceMore)
{
    open();
    ScriptFrame refusing;
    refusing.start = SANE_STATUS_DEVICE_BUSY;
    m_script.frames = { refusing, refusing, grayFrame(4, 6, 10) };
    ASSERT_EQ(configure().code(), orva::kOk);
    EXPECT_THAT(runJob(), ElementsAre(10, 1000));
    refusing.start = SANE_STATUS_INVAL;
    m_script.frames = { refusing, grayFrame(4, 6, 20) };
    ASSERT_EQ(configure().code(), orva::kOk);
    const int before = m_script.count("set source");
    EXPECT_THAT(runJob(), ElementsAre(20, 1000));
    EXPECT_EQ(m_script.count("set source"), before + 1);
}

TEST_F(SaneBatch, DoubleFeedIsToldFromAJamByTheSensor)
{
    addSensor("double-feed");
    open();
    ScriptFrame jammed;
    jammed.start = SANE_STATUS_JAMMED;
    for (const bool fed : { true, false }) {
        m_script.frames = { jammed };
        m_script.option("double-feed").value = fed;
        ASSERT_EQ(configure().code(), orva::kOk);
        EXPECT_THAT(runJob(), ElementsAre(fed ? orva::kDoubleFeed : orva::kPaperJam));
    }
}

TEST_F(SaneBatch, CancelWakesAReadThatWaitsAndIsSentOnce)
{
    open();
    for (const bool byToken : { true, false }) {
        ScriptFrame waiting = grayFrame(4, 6, 10);
        waiting.reads[1].silent = true;
        m_script.frames = { waiting, grayFrame(4, 6, 20) };
        m_script.cancelled = false;
        const int before = m_script.count("cancel");
        ASSERT_EQ(configure().code(), orva::kOk);
        orva::CancelToken token;
        std::thread canceller([&] {
            std::this_thread::sleep_for(30ms);
            byToken ? token.cancel() : m_device->requestCancel();
        });
        Page page;
        bool end = false;
        EXPECT_EQ(m_device->nextPage(page, end, token).code(), orva::kCancelled);
        canceller.join();
        m_device->endBatch();
        EXPECT_EQ(m_script.count("cancel"), before + 1);
        EXPECT_EQ(m_script.frames.size(), 1U); // nothing is started after a cancel
    }
}

/// Cancels at every moment of a batch: the code is right, one cancel reaches the device at the
/// most, and the next job is not hit by it.
TEST_F(SaneBatch, CancelAtAnyMomentIsSentOnce)
{
    open();
    for (int delay = 0; delay < 40; ++delay) {
        m_script.frames.assign(200, grayFrame(40, 60, 10));
        const int before = m_script.count("cancel");
        ASSERT_EQ(configure().code(), orva::kOk);
        std::thread canceller([&] {
            std::this_thread::sleep_for(std::chrono::microseconds(100 * delay));
            m_device->requestCancel();
        });
        const int last = runJob().back();
        canceller.join();
        EXPECT_TRUE(last == orva::kCancelled || last == 1000);
        EXPECT_LE(m_script.count("cancel"), before + 1);
    }
    m_script.frames = { grayFrame(4, 6, 10) };
    ASSERT_EQ(configure().code(), orva::kOk);
    EXPECT_THAT(runJob(), ElementsAre(10, 1000));
}

/// A driver that does not even take a cancel: its helper is ended, the next job has a new one.
TEST_F(SaneBatch, ASilentDeviceCostsTheJobAndItsHelper)
{
    open();
    const int hosts = m_script.hosts;
    m_script.cancelWakes = false;
    ScriptFrame silent = grayFrame(4, 6, 20);
    silent.reads[0].silent = true;
    m_script.frames = { grayFrame(4, 6, 10), silent };
    ASSERT_EQ(configure().code(), orva::kOk);
    const auto start = Clock::now();
    EXPECT_THAT(runJob(), ElementsAre(10, orva::kDeviceTimeout));
    EXPECT_LT(Clock::now() - start, 2s);
    EXPECT_EQ(m_script.count("cancel"), 1);
    int button = 0;
    EXPECT_EQ(m_device->pressedButton(button).code(), orva::kNotInitialised); // opens nothing
    EXPECT_EQ(m_script.hosts, hosts);
    m_script.released = false;
    m_script.frames = { grayFrame(4, 6, 30) };
    ASSERT_EQ(configure().code(), orva::kOk);
    EXPECT_THAT(runJob(), ElementsAre(30, 1000));
    EXPECT_EQ(m_script.hosts, hosts + 1);
}

TEST_F(SaneBatch, ADeadHandleIsClosedAndTheNextJobOpensTheScannerAnew)
{
    open();
    ScriptFrame broken = grayFrame(4, 6, 20);
    broken.reads[1].status = SANE_STATUS_IO_ERROR;
    m_script.frames = { grayFrame(4, 6, 10), broken };
    ASSERT_EQ(configure().code(), orva::kOk);
    EXPECT_THAT(runJob(), ElementsAre(10, orva::kDeviceIo));
    EXPECT_EQ(m_script.count("close"), 1);
    m_script.frames = { grayFrame(4, 6, 30) };
    ASSERT_EQ(configure().code(), orva::kOk);
    EXPECT_THAT(runJob(), ElementsAre(30, 1000));
    EXPECT_EQ(m_script.count("open script:0"), 2);
}

TEST_F(SaneBatch, AScannerThatIsUnpluggedInAJobIsToldFromABrokenTransfer)
{
    const TemporaryFolder usb;
    std::filesystem::create_directory(usb.path() / "1-4");
    writeFile(usb.path() / "1-4" / "busnum", "1\n");
    writeFile(usb.path() / "1-4" / "devnum", "12\n");
    m_parts.usbFolder = usb.path().string();
    m_script.devices = { { "script:libusb:001:012", "Paperlane", "P100", "sheetfed scanner" } };
    ScriptFrame broken = grayFrame(4, 6, 10);
    broken.reads[1].status = SANE_STATUS_IO_ERROR;
    open();
    for (const bool unplugged : { false, true }) {
        m_script.frames = { broken };
        ASSERT_EQ(configure().code(), orva::kOk);
        writeFile(usb.path() / "1-4" / "devnum", unplugged ? "13\n" : "12\n");
        EXPECT_THAT(runJob(), ElementsAre(unplugged ? orva::kDeviceLost : orva::kDeviceIo));
    }
}

TEST_F(SaneBatch, AFeederThatNeverRunsEmptyEndsTheJob)
{
    ScriptFrame dot;
    dot.parameters = parameters(SANE_FRAME_GRAY, 1, 1, 8);
    dot.reads.push_back({ SANE_STATUS_GOOD, "x" });
    open();
    m_script.frames = { dot };
    m_script.neverEmpty = true;
    ASSERT_EQ(configure().code(), orva::kOk);
    const std::vector<int> seen = runJob();
    EXPECT_EQ(seen.back(), orva::kDeviceIo);
    EXPECT_LT(seen.size(), 50'000U);
}

} // namespace
