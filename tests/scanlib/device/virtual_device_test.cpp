// The virtual scanner as a scanner: feeding, both sides, faults, and what it remembers.
#include "scanlib/device/virtual/scanner_state.h"
#include "scanlib/device/virtual/virtual_driver.h"
#include "tests/scanlib/device/image_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>

namespace {

using namespace device_tests;
using namespace std::chrono_literals;
using orva::Page;
using orva::ScannerState;
using testing::ElementsAre;
namespace fs = std::filesystem;

constexpr std::size_t kFlatbed = 0;
constexpr std::size_t kFeeder = 1;
constexpr std::size_t kDuplex = 2;

/// Sheets are 10 x 10 mm at 127 dpi, one grey each, so that a page tells which sheet it was.
class VirtualScanner : public testing::Test
{
protected:
    VirtualScanner()
    {
        m_paths.virtualScanner = m_folder.path() / "scanner";
        m_paths.sampleSheets = m_folder.path() / "samples";
        fs::create_directories(m_paths.sampleSheets);
        m_device = open();
    }

    std::unique_ptr<orva::Device> open() const
    {
        const auto driver = orva::makeVirtualDriver(m_paths);
        auto device = driver->create(driver->enumerate(1s).at(0));
        EXPECT_EQ(device->open().code(), orva::kOk);
        return device;
    }

    fs::path tray(const std::string& name) const { return m_paths.virtualScanner / "tray" / name; }
    void put(const std::string& name, std::uint8_t gray) const
    {
        writePng(tray(name), plain(50, 50, gray, 127));
    }
    orva::StateStore store() const { return orva::StateStore(m_paths.virtualScanner); }
    void arm(const std::function<void(orva::ScannerFaults&)>& change) const
    {
        ASSERT_EQ(
            store().update([&](ScannerState& state) { change(state.faults); }).code(), orva::kOk);
    }

    orva::Status configure(std::size_t source, bool doubleFeed = false)
    {
        orva::AcquireSettings settings;
        settings.source = source;
        settings.area = { "card", 0, 0, 10, 10 };
        settings.dpiX = settings.dpiY = 127;
        settings.mode = orva::ColorMode::kGray;
        settings.detectDoubleFeed = doubleFeed;
        return m_device->configure(settings);
    }

    /// Grey of the first pixel of each page, negative codes as they are; ends with 1000 at the end
    /// of feed.
    std::vector<int> runJob(std::size_t source, bool doubleFeed = false)
    {
        std::vector<int> seen;
        EXPECT_EQ(configure(source, doubleFeed).code(), orva::kOk);
        for (;;) {
            Page page;
            bool end = false;
            const orva::Status status = m_device->nextPage(page, end, m_token);
            if (!status.ok() || end) {
                seen.push_back(status.ok() ? 1000 : status.code());
                break;
            }
            EXPECT_EQ(page.width, 50);
            EXPECT_EQ(page.height, 50);
            m_origins.push_back(
                std::to_string(page.sheet) + (page.side == orva::Side::kBack ? "b" : "f"));
            seen.push_back(page.pixels.at(0));
        }
        m_device->endBatch();
        return seen;
    }

    TemporaryFolder m_folder;
    orva::LibraryPaths m_paths;
    std::unique_ptr<orva::Device> m_device;
    orva::CancelToken m_token;
    std::vector<std::string> m_origins; ///< sheet and side of the pages of runJob
};

TEST_F(VirtualScanner, FeedsInNameOrderAndTheTrayIsEmptyAfterwards)
{
    put("b.png", 20);
    put("a.png", 10);
    put("c.png", 30);
    for (int i = 0; i < 2; ++i) {
        EXPECT_THAT(runJob(kFlatbed), ElementsAre(10, 1000)); // stays on the glass
    }
    m_origins.clear();
    EXPECT_THAT(runJob(kFeeder), ElementsAre(10, 20, 30, 1000));
    EXPECT_THAT(m_origins, ElementsAre("1f", "2f", "3f"));
    EXPECT_TRUE(fs::exists(m_paths.virtualScanner / "fed" / "a.png"));
    EXPECT_THAT(runJob(kFeeder), ElementsAre(orva::kNoPaper));
}

TEST_F(VirtualScanner, BothSidesOfASheetComeFrontFirstAndAnUnprintedBackIsWhite)
{
    put("1-back.png", 12);
    put("1-front.png", 11);
    put("2.png", 21);
    EXPECT_THAT(runJob(kDuplex), ElementsAre(11, 12, 21, 255, 1000));
    EXPECT_THAT(m_origins, ElementsAre("1f", "1b", "2f", "2b"));
    put("1-back.png", 12);
    put("1-front.png", 11);
    EXPECT_THAT(runJob(kFeeder), ElementsAre(11, 1000));
    EXPECT_FALSE(fs::exists(tray("1-back.png")));
}

TEST_F(VirtualScanner, PagesOfATiffAreSheetsAndAJobThatStopsGoesOnThere)
{
    writeConverted(m_folder.path() / "a.tif",
        { plain(50, 50, 1, 127), plain(50, 50, 2, 127), plain(50, 50, 3, 127) });
    fs::copy(m_folder.path() / "a.tif", tray("a.tif"));
    arm([](auto& faults) { faults.jamSheet = 2; });
    EXPECT_THAT(runJob(kFeeder), ElementsAre(1, orva::kPaperJam));
    EXPECT_THAT(runJob(kFeeder), ElementsAre(2, 3, 1000));
    EXPECT_FALSE(fs::exists(tray("a.tif")));
}

TEST_F(VirtualScanner, SamplesServeWhileTheTrayIsEmptyAndAreNeverUsedUp)
{
    writePng(m_paths.sampleSheets / "s.png", plain(50, 50, 77, 127));
    bool paper = false;
    ASSERT_EQ(m_device->hasPaper(paper).code(), orva::kOk);
    EXPECT_TRUE(paper);
    EXPECT_THAT(runJob(kFeeder), ElementsAre(77, 1000));
    EXPECT_THAT(runJob(kFeeder), ElementsAre(77, 1000));
    put("own.png", 5);
    EXPECT_THAT(runJob(kFeeder), ElementsAre(5, 1000)); // a job does not go over to the samples
    ASSERT_EQ(store().update([](ScannerState& state) { state.empty = true; }).code(), orva::kOk);
    EXPECT_THAT(runJob(kFeeder), ElementsAre(orva::kNoPaper));
    ASSERT_EQ(m_device->hasPaper(paper).code(), orva::kOk);
    EXPECT_FALSE(paper);
}

TEST_F(VirtualScanner, FaultsComeAtTheirSheetAndLeaveTheRestOfThePaper)
{
    using orva::ScannerFaults;
    const struct
    {
        std::function<void(ScannerFaults&)> change;
        bool doubleFeed; ///< is watched for
        std::vector<int> seen;
        std::vector<int> seenNext;
    } cases[] = {
        { [](ScannerFaults& faults) { faults.jamSheet = 2; }, false, { 10, orva::kPaperJam },
            { 20, 30, 1000 } },
        { [](ScannerFaults& faults) { faults.doubleFeedSheet = 3; }, true,
            { 10, 20, orva::kDoubleFeed }, { 30, 1000 } },
        { [](ScannerFaults& faults) { faults.doubleFeedSheet = 3; }, false, { 10, 20, 30, 1000 },
            { orva::kNoPaper } },
        { [](ScannerFaults& faults) { faults.coverOpen = true; }, false, { orva::kCoverOpen },
            { orva::kCoverOpen } },
        { [](ScannerFaults& faults) {
             faults.hangSheet = 3;
             faults.hangMs = 50;
         },
            false, { 10, 20, orva::kDeviceTimeout }, { 30, 1000 } },
    };
    for (const auto& each : cases) {
        put("a.png", 10);
        put("b.png", 20);
        put("c.png", 30);
        arm([&](ScannerFaults& faults) {
            faults = {};
            each.change(faults);
        });
        EXPECT_EQ(runJob(kFeeder, each.doubleFeed), each.seen);
        EXPECT_EQ(runJob(kFeeder, each.doubleFeed), each.seenNext);
    }
    arm([](ScannerFaults& faults) { faults = {}; });
    writeFile(tray("a.png"), "");
    EXPECT_THAT(runJob(kFeeder), ElementsAre(orva::kDamagedPage));
    EXPECT_TRUE(fs::exists(tray("a.png"))) << "a damaged sheet stays in the tray";
}

TEST_F(VirtualScanner, UnpluggedDuringAJobItIsGoneUntilPluggedIn)
{
    put("a.png", 10);
    put("b.png", 20);
    arm([](auto& faults) { faults.unplugSheet = 2; });
    EXPECT_THAT(runJob(kFeeder), ElementsAre(10, orva::kDeviceLost));
    EXPECT_EQ(configure(kFeeder).code(), orva::kDeviceNotFound);
    EXPECT_EQ(m_device->open().code(), orva::kDeviceNotFound);
    EXPECT_TRUE(orva::makeVirtualDriver(m_paths)->enumerate(1s).empty());
    arm([](auto& faults) { faults = {}; });
    EXPECT_THAT(runJob(kFeeder), ElementsAre(20, 1000));
}

TEST_F(VirtualScanner, SlowFeedAndSilenceEndAtOnceWhenCancelled)
{
    for (const bool byToken : { true, false }) {
        put("a.png", 10);
        arm([&](auto& faults) {
            faults = {};
            (byToken ? faults.slowMs : faults.hangMs) = 60'000;
            faults.hangSheet = byToken ? 0 : 1;
        });
        ASSERT_EQ(configure(kFeeder).code(), orva::kOk);
        orva::CancelToken token;
        std::thread canceller([&] {
            std::this_thread::sleep_for(50ms);
            byToken ? token.cancel() : m_device->requestCancel();
        });
        const auto start = std::chrono::steady_clock::now();
        Page page;
        bool end = false;
        EXPECT_EQ(m_device->nextPage(page, end, token).code(), orva::kCancelled);
        EXPECT_LT(std::chrono::steady_clock::now() - start, 5s);
        canceller.join();
        m_device->endBatch();
    }
}

TEST_F(VirtualScanner, StateIsSharedBetweenUsersAndSurvivesNonsense)
{
    ASSERT_EQ(m_device->setTimes(45, -1).code(), orva::kOk);
    ASSERT_EQ(m_device->setTimes(-1, 3).code(), orva::kOk);
    EXPECT_EQ(store().read().sleepMinutes, 45);
    const auto modeOf = [&](const char* name) {
        struct stat facts
        {
        };
        ::stat((m_paths.virtualScanner / name).c_str(), &facts);
        return facts.st_mode & 0777U;
    };
    EXPECT_EQ(modeOf(""), 0777U);
    EXPECT_EQ(modeOf("tray"), 0777U);
    EXPECT_EQ(modeOf("state"), 0666U);
    EXPECT_EQ(modeOf("lock"), 0666U);
    writeFile(m_paths.virtualScanner / "state",
        "sleep_minutes 99999999999999999999\nauto_off_hours -7\nnonsense\n\xff\xfe\npress x\n"
        "prefeed_seconds nan\nopen_page 5\n");
    const ScannerState state = store().read();
    EXPECT_EQ(state.sleepMinutes, 15);
    EXPECT_EQ(state.autoOffHours, 0);
    EXPECT_TRUE(state.presses.empty());
    put("a.png", 10);
    EXPECT_THAT(runJob(kFeeder), ElementsAre(10, 1000));
}

TEST_F(VirtualScanner, AnOldPressStartsNothing)
{
    ASSERT_EQ(store()
                  .update([](ScannerState& state) {
                      state.presses.push_back({ 1, orva::nowMs() - 60'000 });
                      state.presses.push_back({ 2, orva::nowMs() });
                  })
                  .code(),
        orva::kOk);
    int value = -1;
    ASSERT_EQ(m_device->pressedButton(value).code(), orva::kOk);
    EXPECT_EQ(value, 2);
    ASSERT_EQ(m_device->pressedButton(value).code(), orva::kOk);
    EXPECT_EQ(value, 0);
}

TEST_F(VirtualScanner, AutomaticPaperHasTheSizeOfTheSheet)
{
    put("a.png", 10); // 10 x 10 mm
    orva::AcquireSettings settings;
    settings.source = kFeeder;
    settings.area = m_device->sources()[kFeeder].papers.back();
    settings.dpiX = settings.dpiY = 254;
    ASSERT_EQ(m_device->configure(settings).code(), orva::kOk);
    Page page;
    bool end = false;
    ASSERT_EQ(m_device->nextPage(page, end, m_token).code(), orva::kOk);
    EXPECT_EQ(page.width, 100);
    EXPECT_EQ(page.format, orva::PixelFormat::kRgb);
}

/// The command in a process of its own.
class VirtualScannerCommand : public VirtualScanner
{
protected:
    int command(const std::string& arguments, std::string* output = nullptr) const
    {
        const std::string line = std::string(VIRTUAL_SCANNER_COMMAND) + " --folder '"
            + m_paths.virtualScanner.string() + "' " + arguments + " 2>&1";
        std::FILE* const pipe = ::popen(line.c_str(), "r");
        std::array<char, 4096> buffer {};
        std::string text;
        while (const std::size_t count = std::fread(buffer.data(), 1, buffer.size(), pipe)) {
            text.append(buffer.data(), count);
        }
        if (output != nullptr) {
            *output = text;
        }
        return WEXITSTATUS(::pclose(pipe));
    }
    std::string source(const std::string& name, std::uint8_t gray) const
    {
        writePng(m_folder.path() / name, plain(50, 50, gray, 127));
        return " '" + (m_folder.path() / name).string() + "'";
    }
};

TEST_F(VirtualScannerCommand, LoadsFilesAndFoldersInOrderAndTakesOut)
{
    const std::string files =
        source("z-front.png", 1) + source("z-back.png", 2) + source("a.png", 3);
    ASSERT_EQ(command("load" + files), 0);
    ASSERT_EQ(command("load" + source("0.png", 4)), 0);
    EXPECT_THAT(runJob(kDuplex), ElementsAre(1, 2, 3, 255, 4, 255, 1000));
    ASSERT_EQ(command("load --again"), 0);
    EXPECT_THAT(runJob(kFeeder), ElementsAre(1, 3, 4, 1000));
    ASSERT_EQ(command("load --again"), 0);
    ASSERT_EQ(command("unload"), 0);
    EXPECT_THAT(runJob(kFeeder), ElementsAre(orva::kNoPaper));

    const auto folder = m_folder.path() / "sheets"; // stands for its images
    fs::create_directories(folder);
    writePng(folder / "b.png", plain(50, 50, 2, 127));
    writePng(folder / "a.png", plain(50, 50, 1, 127));
    writeFile(folder / "notes.txt", "notes");
    writeFile(tray(".999999999-0.new"), "of a command that was stopped");
    ASSERT_EQ(command("load '" + folder.string() + "'"), 0);
    EXPECT_FALSE(fs::exists(tray(".999999999-0.new")));
    EXPECT_THAT(runJob(kFeeder), ElementsAre(1, 2, 1000));
}

TEST_F(VirtualScannerCommand, WrongWordsPutNoSheetInAndSayWhy)
{
    const std::string good = source("a.png", 3);
    writeFile(m_folder.path() / "notes.txt", "notes");
    const std::string notes = "'" + (m_folder.path() / "notes.txt").string() + "'";
    const auto bare = m_folder.path() / "bare";
    fs::create_directories(bare);
    struct Row
    {
        std::string arguments;
        int code;
        const char* text;
    };
    for (const Row& row : { Row { "load" + good + " /no/such/file.png", 1, "no such file" },
             Row { "load" + good + " " + notes, 1, "the feeder takes" },
             Row { "load '" + bare.string() + "'", 1, "no images in this folder" },
             Row { "load", 2, "load what?" }, Row { "press nothing", 2, "no button 'nothing'" },
             Row { "fault jam --sheet 0", 2, "--sheet" }, Row { "tidy", 2, "subcommand" } }) {
        SCOPED_TRACE(row.arguments);
        std::string text;
        EXPECT_EQ(command(row.arguments, &text), row.code);
        EXPECT_THAT(text, testing::HasSubstr(row.text));
    }
    EXPECT_TRUE(fs::is_empty(store().tray()));
}

/// Each press and each change must survive: none is overwritten by the other process.
TEST_F(VirtualScannerCommand, TwoProcessesAtOnceLoseNothing)
{
    constexpr int kPresses = 8;
    std::thread other([&] {
        for (int i = 0; i < kPresses; ++i) {
            EXPECT_EQ(command("press scan"), 0);
        }
    });
    for (int i = 0; i < 100; ++i) {
        ASSERT_EQ(m_device->setTimes(1 + i, -1).code(), orva::kOk);
    }
    other.join();
    EXPECT_EQ(store().read().sleepMinutes, 100);
    EXPECT_EQ(store().read().presses.size(), static_cast<std::size_t>(kPresses));
}

} // namespace
