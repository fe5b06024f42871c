// States, errors and buttons of the scanner, and what they make the window do.
#include "mainwindow/rules/key_actions.h"
#include "mainwindow/rules/scan_progress.h"

#include <gtest/gtest.h>

#include <map>

using namespace rules;

namespace {

/// The emissions as letters in their order: Status, Preview file, serial Number, job Record, Keys.
std::string letters(const ScanEmissions& e)
{
    std::string out;
    out += e.status ? (e.isEnd == 1 ? "S1" : "S0") : "";
    out += e.previewFile ? "P" : "";
    out += e.serial ? "N" : "";
    out += e.jobRecord ? "R" : "";
    out += e.resumeKeys ? "K" : "";
    out += e.ended ? "!" : "";
    return out;
}

const std::function<bool(const std::string&)> kExists = [](const std::string&) { return true; };

} // namespace

TEST(ScanProgress, StatesOfASoundAndOfAFailedScan)
{
    JobCounters job;
    EXPECT_EQ(letters(onScanState(1, false, job)), "S0");
    EXPECT_EQ(letters(onScanState(2, false, job)), "S0");
    EXPECT_EQ(letters(onScanState(7, false, job)), "S0");
    EXPECT_EQ(letters(onScanState(-1, false, job)), "S1NRK!");
    EXPECT_EQ(letters(onScanState(1, true, job)), "");
    EXPECT_EQ(letters(onScanState(2, true, job)), "");
    EXPECT_EQ(letters(onScanState(-1, true, job)), "R");
    EXPECT_EQ(job.scanned, 1) << "pages after an error are not counted";
    EXPECT_EQ(job.saved, 1);
}

TEST(ScanProgress, APreviewDiffersInThreeWays)
{
    JobCounters job;
    EXPECT_EQ(letters(onPreviewState(1, false, false, job)), "S0");
    EXPECT_EQ(letters(onPreviewState(2, false, true, job)), "S0P");
    EXPECT_EQ(letters(onPreviewState(9, false, true, job)), "S0P");
    EXPECT_EQ(letters(onPreviewState(-1, false, true, job)), "S1RK!");
    EXPECT_EQ(letters(onPreviewState(2, true, true, job)), "");
    EXPECT_EQ(letters(onPreviewState(-1, true, false, job)), "RK");
}

TEST(ScanProgress, CountersOfOneJobStartAnewAndTheSerialCounterRunsOn)
{
    JobCounters job;
    for (int n = 0; n < 6; ++n) {
        static_cast<void>(onScanState(1, false, job));
    }
    static_cast<void>(onScanState(2, false, job));
    EXPECT_EQ(pagesForJobRecord(job.pages, "ADF双面"), 3);
    EXPECT_EQ(pagesForJobRecord(job.pages, "ADF单面"), 6);
    EXPECT_EQ(pagesForJobRecord(7, "双面"), 3);
    job.begin();
    EXPECT_EQ(job.scanned, 0);
    EXPECT_EQ(job.pages, 0);
    static_cast<void>(onScanState(2, false, job));
    static_cast<void>(onScanState(2, false, job));
    EXPECT_EQ(job.serial, 3);
    EXPECT_EQ(job.filesOfJob(job.serial), 2);
}

TEST(ScanProgress, OnlyAScanLogsItsErrorAndHoldsTheMonitor)
{
    EXPECT_TRUE(onScanError(false).logCode);
    EXPECT_TRUE(onScanError(false).hold);
    EXPECT_FALSE(onScanError(true).logCode);
    EXPECT_FALSE(onScanError(true).hold);
    EXPECT_EQ(resultForJobRecord(true), -1);
    EXPECT_EQ(resultForJobRecord(false), 0);
}

TEST(Buttons, EveryValueHasItsActionAndTheRestIsIgnored)
{
    const std::map<int, KeyAction> known { { 0, KeyAction::kOpenResult },
        { 1, KeyAction::kStartScan }, { 2, KeyAction::kStartScanAndOpen },
        { 4, KeyAction::kToggleWindow }, { 8, KeyAction::kNoteCancel } };
    for (int value = -500; value <= 500; ++value) {
        const auto row = known.find(value);
        EXPECT_EQ(keyAction(value), row == known.end() ? KeyAction::kIgnore : row->second) << value;
    }
    EXPECT_EQ(toggleLabel(false), "显示主界面");
    EXPECT_EQ(toggleLabel(true), "隐藏主界面");
}

TEST(Buttons, TheResultIsOpenedOnceAndOnlyWhenBothFlagsAreSet)
{
    for (const bool finished : { false, true }) {
        for (const bool requested : { false, true }) {
            const OpenResult result =
                openResult(finished, requested, { "/a.pdf", "/b.pdf" }, kExists);
            EXPECT_EQ(result.open, finished && requested);
            EXPECT_EQ(result.clearFlags, finished && requested);
        }
    }
    const OpenResult result = openResult(true, true, { "/a.pdf", "/b.pdf" }, kExists);
    EXPECT_EQ(result.file, "/b.pdf");
    EXPECT_EQ(result.logLine, "[func:onVal0KeyPress]open file :/b.pdf success!");
}

TEST(Buttons, AMissingResultIsLoggedAndTheRequestIsDone)
{
    const OpenResult none = openResult(true, true, {}, kExists);
    EXPECT_TRUE(none.clearFlags);
    EXPECT_FALSE(none.open);
    EXPECT_EQ(none.logLine, "[func:onVal0KeyPress]iof_file_name is empty!");
    const OpenResult gone =
        openResult(true, true, { "/b.pdf" }, [](const std::string&) { return false; });
    EXPECT_TRUE(gone.clearFlags);
    EXPECT_FALSE(gone.open);
    EXPECT_EQ(gone.logLine, "[func:onVal0KeyPress]the file:/b.pdf is not exist!");
}
