#include "mainwindow/rules/scan_progress.h"

#include "mainwindow/rules/source_lists.h"
#include "sdk/codes.h"

namespace rules {

namespace {

constexpr int kSideScanned = static_cast<int>(orva::JobState::kSideScanned);
constexpr int kFileSaved = static_cast<int>(orva::JobState::kFileSaved);
constexpr int kEnded = static_cast<int>(orva::JobState::kEnded);

ScanEmissions failedJobState(int state)
{
    ScanEmissions out;
    out.jobRecord = state == kEnded;
    return out;
}

void count(int state, JobCounters& job)
{
    if (state == kSideScanned) {
        ++job.scanned;
        ++job.pages;
    } else if (state == kFileSaved) {
        ++job.saved;
        ++job.serial;
    }
}

/// What scan and preview have in common.
ScanEmissions soundJobState(int state, JobCounters& job)
{
    count(state, job);
    ScanEmissions out;
    out.status = true;
    if (state == kEnded) {
        out.isEnd = 1;
        out.jobRecord = true;
        out.resumeKeys = true;
        out.ended = true;
    }
    return out;
}

} // namespace

void JobCounters::begin()
{
    scanned = 0;
    saved = 0;
    pages = 0;
    serialAtStart = serial.load();
}

ScanEmissions onScanState(int state, bool errorSeen, JobCounters& job)
{
    if (errorSeen) {
        return failedJobState(state);
    }
    ScanEmissions out = soundJobState(state, job);
    out.serial = state == kEnded;
    return out;
}

ScanEmissions onPreviewState(int state, bool errorSeen, bool hasFileName, JobCounters& job)
{
    // KEPT: three differences from a scan. A failed preview resumes the button monitor here, a file
    // name goes to the preview with every state but the end, and the serial start stays as it is.
    if (errorSeen) {
        ScanEmissions out = failedJobState(state);
        out.resumeKeys = state == kEnded;
        return out;
    }
    ScanEmissions out = soundJobState(state, job);
    out.previewFile = state != kEnded && hasFileName;
    return out;
}

ErrorSteps onScanError(bool preview)
{
    return { !preview, !preview };
}

int pagesForJobRecord(int pages, const QString& sourceText)
{
    return isDuplexSource(sourceText) ? pages / 2 : pages;
}

int resultForJobRecord(bool errorSeen)
{
    return errorSeen ? -1 : 0;
}

} // namespace rules
