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

} // namespace

TEST(ScanProgress, StatesOfSoundAndOfFailedJobs)
{
    struct Case
    {
        int state;
        bool failed;
        bool hasFile;
        const char *scan, *preview;
    };
    const Case cases[] = {
        { 1, false, false, "S0", "S0" },
        { 2, false, true, "S0", "S0P" },
        { 7, false, true, "S0", "S0P" },
        { -1, false, true, "S1NRK!", "S1RK!" },
        { 1, true, false, "", "" },
        { 2, true, true, "", "" },
        { -1, true, false, "R", "RK" },
    };
    JobCounters scan;
    JobCounters preview;
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.state << (c.failed ? " failed" : ""));
        EXPECT_EQ(letters(onScanState(c.state, c.failed, scan)), c.scan);
        EXPECT_EQ(letters(onPreviewState(c.state, c.failed, c.hasFile, preview)), c.preview);
    }
    EXPECT_EQ(scan.scanned, 1) << "pages after an error are not counted";
    EXPECT_EQ(scan.saved, 1);
    EXPECT_TRUE(onScanError(false).logCode && onScanError(false).hold);
    EXPECT_FALSE(onScanError(true).logCode || onScanError(true).hold);
}

TEST(ScanProgress, CountersOfOneJobStartAnewAndTheSerialCounterRunsOn)
{
    JobCounters job;
    for (const int state : { 1, 1, 2 }) {
        static_cast<void>(onScanState(state, false, job));
    }
    EXPECT_EQ(pagesForJobRecord(7, "ADF双面"), 3);
    EXPECT_EQ(pagesForJobRecord(7, "ADF单面"), 7);
    job.begin();
    EXPECT_EQ(job.scanned + job.pages, 0);
    for (const int state : { 2, 2 }) {
        static_cast<void>(onScanState(state, false, job));
    }
    EXPECT_EQ(job.serial, 3);
    EXPECT_EQ(job.filesOfJob(job.serial), 2);
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
}

TEST(Buttons, TheResultIsOpenedOnceAndWhenThereIsOne)
{
    const auto open = [](bool finished, bool requested, const std::vector<std::string>& files) {
        return openResult(
            finished, requested, files, [](const std::string& file) { return file != "/gone"; });
    };
    const std::vector<std::string> files { "/a.pdf", "/b.pdf" };
    EXPECT_FALSE(open(false, true, files).clearFlags || open(true, false, files).clearFlags);
    EXPECT_FALSE(open(false, true, files).open || open(true, false, files).open);

    const OpenResult result = open(true, true, files);
    EXPECT_TRUE(result.open && result.clearFlags);
    EXPECT_EQ(result.file, "/b.pdf");
    EXPECT_EQ(result.logLine, "[func:onVal0KeyPress]open file :/b.pdf success!");
    for (const auto& [none, line] : { std::pair<std::vector<std::string>, const char*> {
                                          {}, "[func:onVal0KeyPress]iof_file_name is empty!" },
             { { "/gone" }, "[func:onVal0KeyPress]the file:/gone is not exist!" } }) {
        EXPECT_TRUE(open(true, true, none).clearFlags);
        EXPECT_FALSE(open(true, true, none).open);
        EXPECT_EQ(open(true, true, none).logLine, line);
    }
}
