// A SANE scanner against scripted answers: what it offers, batches, faults, cancelling, silence.
#include "scanlib/device/sane/sane_device.h"
#include "scanlib/device/sane/sane_driver_parts.h"
#include "scanlib/device/sane/sane_words.h"
#include "tests/scanlib/device/image_files.h"
#include "tests/scanlib/device/scripted_sane.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <fstream>

namespace {

using namespace device_tests;
using namespace std::chrono_literals;
using orva::Page;
using orva::SourceKind;
using testing::ElementsAre;

class SaneScript : public testing::Test
{
protected:
    SaneScript()
    {
        m_limits.start = 300ms;
        m_limits.read = 300ms;
        m_limits.poll = 300ms;
        m_limits.configure = 500ms;
        m_limits.open = 1000ms;
        m_limits.cancel = 500ms;
        m_limits.cancelPatience = 50ms;
        m_limits.busyPause = 5ms;
        m_limits.searchPause = 0ms;
        m_limits.stop = 200ms;
        m_script.addOption({ "source", SANE_TYPE_STRING, SANE_UNIT_NONE, true,
            { "Flatbed", "ADF Front", "ADF Back", "ADF Duplex" } });
        m_script.addOption({ "mode", SANE_TYPE_STRING, SANE_UNIT_NONE, true,
            { "Lineart", "Halftone", "Gray", "Color" } });
        m_script.addOption({ "resolution", SANE_TYPE_INT, SANE_UNIT_DPI, true, {}, {}, 50, 600 });
        for (const char* edge : { "tl-x", "br-x" }) {
            m_script.addOption({ edge, SANE_TYPE_FIXED, SANE_UNIT_MM, true, {}, {}, 0, 216 });
        }
        for (const char* edge : { "tl-y", "br-y" }) {
            m_script.addOption({ edge, SANE_TYPE_FIXED, SANE_UNIT_MM, true, {}, {}, 0, 356 });
        }
    }
    ~SaneScript() override
    {
        m_script.releaseSilence();
        m_device.reset();
        m_driver.reset();
        m_runtime->thread().stop(5s); // a thread that was left behind ends before the script does
    }

    void open()
    {
        m_runtime = std::make_shared<orva::SaneRuntime>(ScriptedSane::api(), m_limits);
        m_driver = orva::makeSaneDriver(m_runtime);
        const auto found = m_driver->enumerate(1s);
        ASSERT_FALSE(found.empty());
        m_device = m_driver->create(found.front());
        ASSERT_EQ(m_device->open().code(), orva::kOk);
    }

    std::size_t source(SourceKind kind) const
    {
        for (std::size_t i = 0; i < m_device->sources().size(); ++i) {
            if (m_device->sources()[i].kind == kind) {
                return i;
            }
        }
        ADD_FAILURE() << "no such source";
        return 0;
    }

    orva::Status configure(SourceKind kind = SourceKind::kFeeder,
        orva::ColorMode mode = orva::ColorMode::kGray, bool doubleFeed = false)
    {
        orva::AcquireSettings settings;
        settings.source = source(kind);
        settings.area = { "A5", 10, 20, 148, 210 };
        settings.dpiX = settings.dpiY = 300;
        settings.mode = mode;
        settings.detectDoubleFeed = doubleFeed;
        return m_device->configure(settings);
    }

    /// First pixel of each page, then the code that ended the job, 1000 for the end of feed.
    std::vector<int> runJob()
    {
        std::vector<int> seen;
        for (;;) {
            Page page;
            bool end = false;
            const orva::Status status = m_device->nextPage(page, end, m_token);
            if (!status.ok() || end) {
                seen.push_back(status.ok() ? 1000 : status.code());
                break;
            }
            m_origins.push_back(
                std::to_string(page.sheet) + (page.side == orva::Side::kBack ? "b" : "f"));
            seen.push_back(page.pixels.at(0));
        }
        m_device->endBatch();
        return seen;
    }

    ScriptedSane m_script;
    orva::SaneLimits m_limits;
    std::shared_ptr<orva::SaneRuntime> m_runtime;
    std::unique_ptr<orva::Driver> m_driver;
    std::unique_ptr<orva::Device> m_device;
    orva::CancelToken m_token;
    std::vector<std::string> m_origins;
};

TEST_F(SaneScript, OffersSourcesPapersAndResolutionsOfTheDevice)
{
    open();
    const auto& sources = m_device->sources();
    ASSERT_EQ(sources.size(), 3U);
    EXPECT_EQ(sources[0].name, "平板");
    EXPECT_EQ(sources[1].name, "ADF单面");
    EXPECT_EQ(sources[2].name, "ADF双面");
    std::vector<std::string> papers;
    for (const orva::PaperSize& paper : sources[1].papers) {
        papers.push_back(paper.name);
    }
    EXPECT_THAT(papers, ElementsAre("A4", "A5", "B5", "Letter", "Legal", "名片", "自动"));
    EXPECT_THAT(sources[1].resolutions, ElementsAre(75, 100, 150, 200, 240, 300, 400, 600));
}

TEST_F(SaneScript, SettingsReachTheDeviceSourceFirst)
{
    open();
    m_script.calls.clear();
    ASSERT_EQ(configure(SourceKind::kDuplex, orva::ColorMode::kBlackWhite).code(), orva::kOk);
    EXPECT_EQ(m_script.calls.front(), "set source");
    EXPECT_EQ(m_script.option("source").text, "ADF Duplex");
    EXPECT_EQ(m_script.option("mode").text, "Gray"); // binarised afterwards
    EXPECT_EQ(m_script.option("resolution").value, 300);
    EXPECT_NEAR(m_script.option("tl-x").value, 10, 0.001);
    EXPECT_NEAR(m_script.option("tl-y").value, 20, 0.001);
    EXPECT_NEAR(m_script.option("br-x").value, 158, 0.001);
    EXPECT_NEAR(m_script.option("br-y").value, 230, 0.001);
}

TEST_F(SaneScript, ADeviceWithLineartOnlyIsAskedForLineart)
{
    m_script.option("mode").texts = { "Lineart" };
    open();
    ASSERT_EQ(configure().code(), orva::kOk);
    EXPECT_EQ(m_script.option("mode").text, "Lineart");
}

TEST_F(SaneScript, AreaInPixelsAndPageSizeOptionsAreServed)
{
    m_script.addOption({ "page-width", SANE_TYPE_FIXED, SANE_UNIT_MM, true, {}, {}, 10, 221 });
    for (const char* edge : { "tl-x", "br-x", "tl-y", "br-y" }) {
        m_script.option(edge).unit = SANE_UNIT_PIXEL;
        m_script.option(edge).max = 2540;
    }
    m_script.option("resolution").value = 254;
    open();
    EXPECT_NEAR(m_device->sources()[0].maxWidthMm, 254, 0.01);
    ASSERT_EQ(configure().code(), orva::kOk);
    // a feeder centres a sheet of this width; here it ends where the area ends
    EXPECT_NEAR(m_script.option("page-width").value, 158, 0.01);
    EXPECT_NEAR(m_script.option("br-x").value, 158 / 25.4 * 300, 0.1);
}

TEST_F(SaneScript, DevicesWithoutSourcesAreGuessedAndADuplexSwitchIsUsed)
{
    m_script.options.erase(m_script.options.begin());
    m_script.addOption({ "duplex", SANE_TYPE_BOOL });
    open();
    ASSERT_EQ(m_device->sources().size(), 2U);
    ASSERT_EQ(configure(SourceKind::kDuplex).code(), orva::kOk);
    EXPECT_EQ(m_script.option("duplex").value, 1);
    ASSERT_EQ(configure(SourceKind::kFeeder).code(), orva::kOk);
    EXPECT_EQ(m_script.option("duplex").value, 0);
}

TEST(SaneWords, SourceSpellings)
{
    using orva::sourceWord;
    using orva::SourceWord;
    for (const char* word : { "Flatbed", "FlatBed", "Document Table", "Flat Bed" }) {
        EXPECT_EQ(sourceWord(word), SourceWord::kFlatbed) << word;
    }
    for (const char* word : { "ADF", "ADF Front", "Automatic Document Feeder",
             "Automatic Document Feeder(left aligned)", "Document Feeder" }) {
        EXPECT_EQ(sourceWord(word), SourceWord::kFeeder) << word;
    }
    for (const char* word :
        { "ADF Duplex", "Duplex", "Automatic Document Feeder(left aligned,Duplex)",
            "Auto Document Feeder - Both Sides" }) {
        EXPECT_EQ(sourceWord(word), SourceWord::kDuplex) << word;
    }
    for (const char* word : { "ADF Back", "Card Duplex", "Transparency Unit", "Slide", "" }) {
        EXPECT_EQ(sourceWord(word), SourceWord::kUnknown) << word;
    }
}

TEST_F(SaneScript, ABatchEndsWithTheFeederAndIsCancelledExactlyOnce)
{
    open();
    m_script.frames = { grayFrame(4, 6, 10), grayFrame(4, 6, 20), grayFrame(4, 6, 30) };
    ASSERT_EQ(configure(SourceKind::kDuplex).code(), orva::kOk);
    EXPECT_THAT(runJob(), ElementsAre(10, 20, 30, 1000));
    EXPECT_THAT(m_origins, ElementsAre("1f", "1b", "2f"));
    EXPECT_EQ(m_script.count("cancel"), 1);
    EXPECT_EQ(m_script.calls.back(), "cancel");
    EXPECT_EQ(m_script.threads.size(), 1U);
}

TEST_F(SaneScript, EmptyFeederIsNoPaperWhereverItIsTold)
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

TEST_F(SaneScript, TheGlassGivesOnePage)
{
    open();
    m_script.frames = { grayFrame(4, 6, 10), grayFrame(4, 6, 20) };
    ASSERT_EQ(configure(SourceKind::kFlatbed).code(), orva::kOk);
    EXPECT_THAT(runJob(), ElementsAre(10, 1000));
    EXPECT_EQ(m_script.count("start"), 1);
}

TEST_F(SaneScript, EveryStatusAtStartAndAtReadHasItsCode)
{
    open();
    const std::vector<std::pair<SANE_Status, orva::ResultCode>> rows {
        { SANE_STATUS_UNSUPPORTED, orva::kNotSupported },
        { SANE_STATUS_CANCELLED, orva::kCancelled }, { SANE_STATUS_DEVICE_BUSY, orva::kDeviceBusy },
        { SANE_STATUS_INVAL, orva::kDeviceBadParameter }, { SANE_STATUS_JAMMED, orva::kPaperJam },
        { SANE_STATUS_COVER_OPEN, orva::kCoverOpen }, { SANE_STATUS_IO_ERROR, orva::kDeviceIo },
        { SANE_STATUS_NO_MEM, orva::kNoMemory }, { SANE_STATUS_ACCESS_DENIED, orva::kAccessDenied }
    };
    for (const auto& [status, code] : rows) {
        SCOPED_TRACE(status);
        ScriptFrame refusing;
        refusing.start = status;
        m_script.frames = { grayFrame(4, 6, 10) };
        m_script.frames.insert(m_script.frames.end(), 10, refusing); // busy is tried again
        ASSERT_EQ(configure().code(), orva::kOk);
        EXPECT_THAT(runJob(), ElementsAre(10, code));
        ScriptFrame breaking = grayFrame(4, 6, 20);
        breaking.reads[1].status = status;
        m_script.frames = { grayFrame(4, 6, 10), breaking };
        ASSERT_EQ(configure().code(), orva::kOk);
        EXPECT_THAT(runJob(), ElementsAre(10, code));
    }
    EXPECT_EQ(m_script.count("cancel"), static_cast<int>(rows.size()) * 2);
}

TEST_F(SaneScript, BusyIsTriedAgainAndStaleOptionsAreSetOnceMore)
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

TEST_F(SaneScript, NoDataWhereAPageWasPromisedIsAnError)
{
    open();
    ScriptFrame hollow;
    hollow.parameters = parameters(SANE_FRAME_GRAY, 4, 6, 8);
    m_script.frames = { grayFrame(4, 6, 10), hollow };
    ASSERT_EQ(configure().code(), orva::kOk);
    EXPECT_THAT(runJob(), ElementsAre(10, orva::kDeviceIo));
}

TEST_F(SaneScript, DoubleFeedIsToldFromAJamByTheSensor)
{
    m_script.addOption({ "double-feed", SANE_TYPE_BOOL, SANE_UNIT_NONE, false });
    m_script.addOption(
        { "df-action", SANE_TYPE_STRING, SANE_UNIT_NONE, true, { "Default", "Continue", "Stop" } });
    m_script.addOption({ "df-thickness", SANE_TYPE_BOOL });
    open();
    ScriptFrame jammed;
    jammed.start = SANE_STATUS_JAMMED;
    m_script.frames = { jammed };
    m_script.option("double-feed").value = 1;
    ASSERT_EQ(configure(SourceKind::kFeeder, orva::ColorMode::kGray, true).code(), orva::kOk);
    EXPECT_EQ(m_script.option("df-action").text, "Stop");
    EXPECT_EQ(m_script.option("df-thickness").value, 1);
    EXPECT_THAT(runJob(), ElementsAre(orva::kDoubleFeed));
    m_script.frames = { jammed };
    m_script.option("double-feed").value = 0;
    ASSERT_EQ(configure().code(), orva::kOk);
    EXPECT_EQ(m_script.option("df-thickness").value, 0);
    EXPECT_THAT(runJob(), ElementsAre(orva::kPaperJam));
}

TEST_F(SaneScript, CancelWakesAReadThatWaitsAndIsSentOnce)
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
        EXPECT_EQ(
            m_device->nextPage(page, end, byToken ? token : m_token).code(), orva::kCancelled);
        m_device->endBatch();
        EXPECT_EQ(m_script.count("cancel"), before + 1);
        EXPECT_EQ(m_script.frames.size(), 1U); // nothing is started after a cancel
    }
}

/// Cancels at every moment of a batch: the code is right, one cancel reaches the device at the
/// most.
TEST_F(SaneScript, CancelAtAnyMomentIsSentOnce)
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
}

TEST_F(SaneScript, ASilentDeviceIsGivenUpAndLaterCallsDoNotWait)
{
    open();
    m_script.cancelWakes = false;
    ScriptFrame silent = grayFrame(4, 6, 10);
    silent.reads[0].silent = true;
    m_script.frames = { silent };
    ASSERT_EQ(configure().code(), orva::kOk);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_THAT(runJob(), ElementsAre(orva::kDeviceTimeout));
    int button = 0;
    EXPECT_EQ(m_device->pressedButton(button).code(), orva::kDeviceTimeout);
    EXPECT_EQ(configure().code(), orva::kDeviceTimeout);
    m_device.reset();
    m_driver.reset(); // with the thread still inside the driver
    EXPECT_LT(std::chrono::steady_clock::now() - start, 3s);
    EXPECT_EQ(m_script.count("cancel"), 1);
    EXPECT_EQ(m_script.count("close"), 0); // never while a call runs
    m_script.releaseSilence();
    m_runtime->thread().stop(5s);
    for (int i = 0; i < 500 && m_script.count("close") == 0; ++i) {
        std::this_thread::sleep_for(10ms);
    }
    EXPECT_EQ(m_script.count("close"), 1);
}

TEST_F(SaneScript, ASearchThatTakesLongGoesOnInTheBackground)
{
    m_script.searchSilent = true;
    m_runtime = std::make_shared<orva::SaneRuntime>(ScriptedSane::api(), m_limits);
    m_driver = orva::makeSaneDriver(m_runtime);
    EXPECT_TRUE(m_driver->enumerate(50ms).empty());
    m_script.releaseSilence();
    EXPECT_EQ(m_driver->enumerate(2s).size(), 1U);
    EXPECT_EQ(m_script.count("get_devices"), 1);
    EXPECT_EQ(m_script.count("init"), 1);
}

TEST_F(SaneScript, ADeadHandleIsClosedAndTheNextJobOpensTheScannerAnew)
{
    open();
    ScriptFrame broken = grayFrame(4, 6, 20);
    broken.reads[1].status = SANE_STATUS_IO_ERROR;
    m_script.frames = { grayFrame(4, 6, 10), broken };
    ASSERT_EQ(configure().code(), orva::kOk);
    EXPECT_THAT(runJob(), ElementsAre(10, orva::kDeviceIo));
    EXPECT_EQ(m_script.count("close"), 1);
    int button = 0;
    EXPECT_EQ(m_device->pressedButton(button).code(), orva::kNotInitialised);
    EXPECT_EQ(m_script.count("open script:0"), 1); // looking at the buttons opens nothing
    m_script.frames = { grayFrame(4, 6, 30) };
    ASSERT_EQ(configure().code(), orva::kOk);
    EXPECT_THAT(runJob(), ElementsAre(30, 1000));
    EXPECT_EQ(m_script.count("open script:0"), 2);
}

/// The scanner as the SANE thread sees it, here on the test's own.
class SaneScriptScanner : public SaneScript
{
protected:
    SaneScriptScanner()
        : m_scanner(
            (m_runtime = std::make_shared<orva::SaneRuntime>(ScriptedSane::api(), m_limits)))
    {
    }
    ~SaneScriptScanner() override { m_scanner.close(); }

    orva::Status begin()
    {
        orva::AcquireSettings settings;
        settings.source = 1;
        settings.area = { "A5", 0, 0, 148, 210 };
        const orva::Status status = m_scanner.open("script:0", "");
        return status.ok() ? m_scanner.configure(settings) : status;
    }
    orva::Status side()
    {
        Page page;
        bool end = false;
        return m_scanner.nextSide(page, end);
    }

    orva::SaneScanner m_scanner;
};

TEST_F(SaneScriptScanner, AFeederThatNeverRunsEmptyEndsTheJob)
{
    ScriptFrame dot;
    dot.parameters = parameters(SANE_FRAME_GRAY, 1, 1, 8);
    dot.reads.push_back({ SANE_STATUS_GOOD, "x" });
    m_script.frames = { dot };
    m_script.neverEmpty = true;
    ASSERT_EQ(begin().code(), orva::kOk);
    orva::Status status;
    for (int sides = 0; status.ok() && sides < 50'000; ++sides) {
        status = side();
    }
    EXPECT_EQ(status.code(), orva::kDeviceIo);
}

TEST_F(SaneScriptScanner, ALateCancelDoesNotHitTheNextJob)
{
    m_script.frames = { grayFrame(4, 6, 10), grayFrame(4, 6, 20) };
    ASSERT_EQ(begin().code(), orva::kOk);
    ASSERT_EQ(side().code(), orva::kOk);
    const unsigned first = m_scanner.batch();
    m_scanner.endBatch();
    ASSERT_EQ(begin().code(), orva::kOk);
    ASSERT_EQ(side().code(), orva::kOk);
    m_scanner.cancelFromOutside(first);
    EXPECT_EQ(m_script.count("cancel"), 1); // the first job's own
    m_scanner.cancelFromOutside(m_scanner.batch());
    EXPECT_EQ(m_script.count("cancel"), 2);
}

TEST_F(SaneScript, AReplugedDeviceIsFoundUnderItsNewKey)
{
    open();
    const orva::DeviceIdentity identity = m_device->identity();
    m_device.reset();
    m_script.openStatus["script:0"] = SANE_STATUS_INVAL;
    m_device = m_driver->create(identity);
    EXPECT_EQ(m_device->open().code(), orva::kDeviceNotFound);
    m_script.devices = { { "script:7", "Paperlane", "P100", "sheetfed scanner" } };
    EXPECT_EQ(m_device->open().code(), orva::kOk);
    EXPECT_EQ(m_script.count("open script:7"), 1);
}

TEST_F(SaneScript, AnotherScannerOfTheSameModelIsNotTakenForTheOneThatIsAway)
{
    m_script.devices = { { "script:0", "Paperlane", "P100", "sheetfed scanner" },
        { "script:1", "Paperlane", "P100", "sheetfed scanner" } };
    open();
    const orva::DeviceIdentity identity = m_device->identity();
    m_device.reset();
    m_device = m_driver->create(identity);
    m_script.devices.erase(m_script.devices.begin());
    m_script.openStatus["script:0"] = SANE_STATUS_INVAL;
    EXPECT_EQ(m_device->open().code(), orva::kDeviceNotFound);
    m_script.devices.push_back({ "script:7", "Paperlane", "P100", "sheetfed scanner" });
    EXPECT_EQ(m_device->open().code(), orva::kOk);
    EXPECT_EQ(m_script.count("open script:1"), 0);
    EXPECT_EQ(m_script.count("open script:7"), 1);
}

TEST_F(SaneScript, AScannerThatIsAwayIsNotSearchedForAtEveryLook)
{
    m_limits.searchPause = 1h;
    open();
    const orva::DeviceIdentity identity = m_device->identity();
    m_device.reset();
    m_device = m_driver->create(identity);
    m_script.openStatus["script:0"] = SANE_STATUS_INVAL;
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(m_device->open().code(), orva::kDeviceNotFound);
    }
    EXPECT_EQ(m_script.count("get_devices"), 2); // of the list, and of the first look
}

TEST_F(SaneScript, OpenFaultsHaveTheirCodes)
{
    open();
    m_device.reset();
    for (const auto& [status, code] : std::vector<std::pair<SANE_Status, orva::ResultCode>> {
             { SANE_STATUS_DEVICE_BUSY, orva::kDeviceBusy },
             { SANE_STATUS_ACCESS_DENIED, orva::kAccessDenied },
             { SANE_STATUS_IO_ERROR, orva::kDeviceIo },
             { SANE_STATUS_INVAL, orva::kDeviceNotFound } }) {
        m_script.openStatus["script:0"] = status;
        auto device = m_driver->create(m_driver->enumerate(1s).front());
        EXPECT_EQ(device->open().code(), code);
    }
}

TEST_F(SaneScript, ButtonsReportEachPressOnce)
{
    for (const char* name : { "scan", "email", "cancel" }) {
        m_script.addOption({ name, SANE_TYPE_BOOL, SANE_UNIT_NONE, false });
    }
    m_script.option("email").value = 1; // held since before the start
    open();
    int button = -1;
    ASSERT_EQ(m_device->pressedButton(button).code(), orva::kOk);
    EXPECT_EQ(button, 0);
    m_script.option("email").value = 0;
    m_script.option("scan").value = 1;
    ASSERT_EQ(m_device->pressedButton(button).code(), orva::kOk);
    EXPECT_EQ(button, 1);
    ASSERT_EQ(m_device->pressedButton(button).code(), orva::kOk);
    EXPECT_EQ(button, 0);
    m_script.option("scan").value = 0;
    m_script.option("email").value = 1;
    ASSERT_EQ(m_device->pressedButton(button).code(), orva::kOk);
    EXPECT_EQ(button, 2);
}

TEST_F(SaneScript, TimesAndPaperSensorAreThoseOfTheDevice)
{
    m_script.addOption(
        { "sleeptimer", SANE_TYPE_INT, SANE_UNIT_NONE, true, {}, {}, 0, 254, {}, 15 });
    m_script.addOption({ "page-loaded", SANE_TYPE_BOOL, SANE_UNIT_NONE, false });
    open();
    orva::DeviceTiming timing;
    ASSERT_EQ(m_device->timing(timing).code(), orva::kOk);
    EXPECT_TRUE(timing.sleep.enabled);
    EXPECT_EQ(timing.sleep.max, 254);
    EXPECT_EQ(timing.sleep.value, 15);
    EXPECT_FALSE(timing.autoOff.enabled);
    EXPECT_EQ(m_device->setTimes(30, -1).code(), orva::kOk);
    EXPECT_EQ(m_script.option("sleeptimer").value, 30);
    EXPECT_EQ(m_device->setTimes(400, -1).code(), orva::kValueOutOfRange);
    EXPECT_EQ(m_device->setTimes(-1, 2).code(), orva::kNotSupported);
    EXPECT_EQ(m_device->setPrefeed(true, 2).code(), orva::kNotSupported);
    bool paper = true;
    ASSERT_EQ(configure().code(), orva::kOk);
    ASSERT_EQ(m_device->hasPaper(paper).code(), orva::kOk);
    EXPECT_FALSE(paper);
    ASSERT_EQ(configure(SourceKind::kFlatbed).code(), orva::kOk);
    ASSERT_EQ(m_device->hasPaper(paper).code(), orva::kOk);
    EXPECT_TRUE(paper);
}

TEST(SaneSearch, OneScannerOfTwoDriversIsListedOnce)
{
    const std::vector<orva::FoundDevice> kept = orva::withoutDuplicates({
        { "escl:http://192.168.7.20:80", "Paperlane", "P300", "flatbed or ADF scanner", "", "" },
        { "airscan:e0:Paperlane P300", "Paperlane", "Paperlane P300", "ip=192.168.7.20", "", "" },
        { "airscan:w0:PAPERLANE P300", "WSD", "PAPERLANE P300", "ip=192.168.7.20", "", "" },
        { "airscan:e1:Paperlane P300", "eSCL", "Paperlane P300", "ip=192.168.7.21", "", "" },
        { "test:0", "Noname", "frontend-tester", "virtual device", "", "" },
        { "test:1", "Noname", "frontend-tester", "virtual device", "", "" },
        { "test:1", "Noname", "frontend-tester", "virtual device", "", "" },
    });
    std::vector<std::string> keys;
    for (const orva::FoundDevice& device : kept) {
        keys.push_back(device.key);
    }
    EXPECT_THAT(keys,
        ElementsAre(
            "escl:http://192.168.7.20:80", "airscan:e1:Paperlane P300", "test:0", "test:1"));
}

TEST(SaneSearch, UsbDevicesGetSerialNumberAndProductFromTheKernel)
{
    const TemporaryFolder folder;
    const auto device = folder.path() / "1-4";
    std::filesystem::create_directories(device);
    for (const auto& [name, text] : std::vector<std::pair<const char*, const char*>> {
             { "busnum", "1\n" }, { "devnum", "12\n" }, { "serial", "A1B2\n" },
             { "idVendor", "0a1b\n" }, { "idProduct", "00c2\n" } }) {
        writeText(device / name, text);
    }
    orva::FoundDevice found { "epsonds:libusb:001:012", "", "", "", "", "" };
    orva::addUsbFacts(found, folder.path().string());
    EXPECT_EQ(found.serial, "A1B2");
    EXPECT_EQ(found.vidPid, "0a1b:00c2");
    const std::string list = folder.path().string();
    EXPECT_FALSE(orva::isUnplugged("epsonds:libusb:001:012", list));
    EXPECT_TRUE(orva::isUnplugged("epsonds:libusb:001:013", list)); // plugged in again since
    EXPECT_FALSE(orva::isUnplugged("net:host:test:0", list));
    EXPECT_FALSE(orva::isUnplugged("epsonds:libusb:001:013", list + "/none"));
}

TEST(SaneSearch, NamesAreReadableAndFitForAFolder)
{
    const auto nameOf = [](const char* key, const char* vendor, const char* model) {
        return orva::identityOf({ key, vendor, model, "", "", "" }).name;
    };
    EXPECT_EQ(nameOf("a:1", "Paperlane", "P100"), "Paperlane P100");
    EXPECT_EQ(nameOf("a:1", "paperlane", "PaperLane P100"), "PaperLane P100");
    EXPECT_EQ(nameOf("a:1", "eSCL", "Paperlane P300"), "Paperlane P300");
    EXPECT_EQ(nameOf("a:1", "", " P3000/P5000\t(USB)\n"), "P3000-P5000 (USB)");
    EXPECT_EQ(nameOf("net:10.0.0.7:a:1", " ", ""), "net:10.0.0.7:a:1");
    EXPECT_EQ(nameOf("escl:http://10.0.0.7:80", "", ".."), "escl:http:--10.0.0.7:80");
}

} // namespace
