// What each entry point answers in each state, and the settings that it keeps.
#include "tests/scanlib/session/fakes.h"

#include <future>

using namespace fakes;
using namespace orva;

TEST_F(SessionTest, everyStateRefusesWhatIsNotLegalInIt)
{
    struct Case
    {
        const char* what;
        std::function<int(Session&)> call;
        int closed;
        int idle;
        int scanning;
    };
    std::string text;
    int x = 0;
    double d = 0;
    const Case cases[] = {
        { "count", [](Session& s) { return s.scannerCount(); }, kNotInitialised, 1, 1 },
        { "name", [&](Session& s) { return s.scannerName(0, text); }, kNotInitialised, 0, 0 },
        { "name 1", [&](Session& s) { return s.scannerName(1, text); }, kNotInitialised,
            kIndexOutOfRange, kIndexOutOfRange },
        { "sources", [](Session& s) { return s.sourceCount(); }, kNotInitialised,
            kNoScannerSelected, 2 },
        { "set source", [](Session& s) { return s.setSource(0); }, kNotInitialised,
            kNoScannerSelected, kBusy },
        { "resolution", [&](Session& s) { return s.resolution(0, x, x); }, kNotInitialised,
            kNoScannerSelected, 0 },
        { "paper max", [&](Session& s) { return s.paperSizeMax(d, d); }, kNotInitialised,
            kNoScannerSelected, 0 },
        { "paper", [](Session& s) { return s.havePaper(); }, kNotInitialised, kNoScannerSelected,
            kBusy },
        { "button", [](Session& s) { return s.buttonStatus(); }, kNotInitialised,
            kNoScannerSelected, 0 },
        { "information", [&](Session& s) { return s.deviceInfo(text); }, kNotInitialised,
            kNoScannerSelected, kBusy },
        { "record", [](Session& s) { return s.setImageParam({}); }, kNotInitialised, 0, kBusy },
        { "callback", [](Session& s) { return s.setErrorCallback(nullptr); }, kNotInitialised, 0,
            kBusy },
        { "temporary data", [](Session& s) { return s.clearTmpData(); }, kNotInitialised, 0, 0 },
        { "state", [](Session& s) { return s.scannerState(); }, kNotInitialised, kNoScannerSelected,
            1 },
        { "cancel", [](Session& s) { return s.cancelScan(); }, kNotInitialised, 0, 0 },
    };
    Session fresh(parts());
    for (const Case& c : cases) {
        EXPECT_EQ(c.call(fresh), c.closed) << c.what << ", closed";
    }
    ASSERT_EQ(fresh.init(), kOk);
    EXPECT_EQ(fresh.init(), kOk) << "twice is harmless";
    for (const Case& c : cases) {
        EXPECT_EQ(c.call(fresh), c.idle) << c.what << ", idle";
    }
    fresh.setStateCallback(Recorder::state);
    fresh.setErrorCallback(Recorder::error);
    EXPECT_EQ(fresh.scan(), kNoScannerSelected);
    EXPECT_EQ(Recorder::instance().count(kErrorEvent), 1) << "told as every failure is";
    EXPECT_EQ(Recorder::instance().count(-1), 1);

    device.sheets = 1000;
    device.perSide = 5ms;
    auto job = std::async(std::launch::async, [&] { return session->scan(); });
    ASSERT_TRUE(Recorder::instance().waitFor(1, 1));
    EXPECT_EQ(session->scan(), kBusy);
    for (const Case& c : cases) {
        EXPECT_EQ(c.call(*session), c.scanning) << c.what << ", scanning";
    }
    EXPECT_EQ(job.get(), kCancelled);
}

TEST_F(SessionTest, theSourceBringsItsPapersAndResolutions)
{
    EXPECT_EQ(session->currentSource(), 1) << "the first feeder";
    PaperSize area;
    session->currentPaperSize(area);
    EXPECT_EQ(area.name, "A4");
    PaperSize a5;
    ASSERT_EQ(session->paperSize(1, a5), kOk);
    EXPECT_EQ(session->setPaperSize(a5, 1), kOk);
    EXPECT_EQ(session->setResolution(300, 300), kOk);

    EXPECT_EQ(session->setSource(0), kOk);
    session->currentPaperSize(area);
    EXPECT_EQ(area.name, "A4") << "the flatbed has no A5";
    int x = 0;
    int y = 0;
    session->currentResolution(x, y);
    EXPECT_EQ(x, 200) << "the flatbed has no 300";

    ASSERT_EQ(session->paperSize(1, area), kOk);
    EXPECT_EQ(session->setPaperSize(area, 1), kOk);
    EXPECT_EQ(session->setSource(1), kOk);
    session->currentPaperSize(area);
    EXPECT_EQ(area.name, "自动") << "both have it";
    EXPECT_EQ(area.heightMm, 900);

    EXPECT_EQ(session->setSource(2), kIndexOutOfRange);
    EXPECT_EQ(session->setResolution(301, 300), kValueOutOfRange);
    EXPECT_EQ(session->setPaperSize({ "", 0, 0, 500, 100 }, -1), kValueOutOfRange);
    EXPECT_EQ(session->setPaperSize({ "", 0, 1, 100, 900 }, -1), kValueOutOfRange);
    EXPECT_EQ(session->setPaperSize({ "", 0, 0, 100, 0.0 / 0.0 }, -1), kValueOutOfRange);
    EXPECT_EQ(session->setPaperSize({ "", 0, 0, 100, 100 }, 9), kIndexOutOfRange);
    EXPECT_EQ(session->setPaperSize({ "", 10, 20, 100, 100 }, -1), kOk);
    EXPECT_EQ(session->setColorMode(4), kValueOutOfRange);
    EXPECT_EQ(session->setJpegQuality(-1), kValueOutOfRange);

    ImageParam image {};
    image.bMultiFeed = 1;
    session->setImageParam(image);
    EXPECT_EQ(session->scan(), kOk);
    EXPECT_TRUE(device.settings.detectDoubleFeed);
    EXPECT_EQ(device.settings.area.topMm, 20);
}

TEST_F(SessionTest, theDeviceIsOpenedOnceAndOnlyWhenItIsAsked)
{
    device.opens = 0;
    SessionParts twoScanners = parts();
    twoScanners.makeDrivers = [this](const LibraryPaths&) {
        std::vector<DeviceIdentity> identities(2);
        identities[0].key = "first";
        std::vector<std::unique_ptr<Driver>> drivers;
        drivers.push_back(std::make_unique<FakeDriver>(device, identities));
        return drivers;
    };
    Session fresh(twoScanners);
    fresh.init();
    fresh.selectScanner(0);
    DeviceIdentity identity;
    EXPECT_EQ(fresh.currentScanner(identity), kOk);
    EXPECT_EQ(device.opens, 0) << "going through the list must be quick";
    EXPECT_EQ(fresh.sourceCount(), 2);
    EXPECT_EQ(fresh.havePaper(), 1);
    EXPECT_EQ(device.opens, 1);
    device.paper = false;
    EXPECT_EQ(fresh.havePaper(), 0);
    fresh.selectScanner(1);
    EXPECT_EQ(fresh.sourceCount(), 2);
    EXPECT_EQ(device.opens, 2) << "the other one is not answered for by the first";

    int sleep = 7;
    int autoOff = 7;
    float seconds = 7;
    EXPECT_EQ(fresh.scannerSleepTime(sleep, autoOff), kOk);
    EXPECT_EQ(sleep, 15);
    EXPECT_EQ(autoOff, 7) << "a time that the device does not keep";
    EXPECT_EQ(fresh.prefeed(seconds), kOk);
    EXPECT_EQ(seconds, 2);
    device.timing = {};
    EXPECT_EQ(fresh.scannerSleepTime(sleep, autoOff), kNotSupported);
    EXPECT_EQ(fresh.prefeed(seconds), kNotSupported);
    EXPECT_EQ(sleep + autoOff + static_cast<int>(seconds), 15 + 7 + 2);
}
