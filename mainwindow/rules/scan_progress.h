// What a state or an error that the library reports means for the window: counters and the signals
// to emit, as values. No widgets, no Qt signals here.
#pragma once

#include <QString>

#include <atomic>

namespace rules {

/// Counters of a job. Written by the library's callback thread, read by the GUI thread.
struct JobCounters
{
    std::atomic<int> scanned { 0 }; ///< sides of this job
    std::atomic<int> saved { 0 }; ///< files of this job
    std::atomic<int> pages { 0 }; ///< sides for the job log
    std::atomic<int> serial { 0 }; ///< files since the window was made; never reset
    std::atomic<int> serialAtStart { 0 }; ///< value of `serial` when this job started

    /// Before a job, GUI thread.
    void begin();
    /// Files of this job, from the counter that FinalChangeNameNoSerial brings.
    [[nodiscard]] int filesOfJob(int serialCounter) const { return serialCounter - serialAtStart; }
};

/// Emit in the order of the members. scanStatusOccur gets (isEnd, scanned, saved, -1).
struct ScanEmissions
{
    bool status = false; ///< scanStatusOccur
    int isEnd = 0;
    bool previewFile = false; ///< scanFileAccept(file name, state)
    bool serial = false; ///< FinalChangeNameNoSerial(job.serial)
    bool jobRecord = false; ///< final_signal_iof_batch
    bool resumeKeys = false; ///< SignalThreadKeyStart
    bool ended = false; ///< set the job-ended (scan-finished) flag; see the note below
};
// `ended` is for the button monitor, which may open the result at once: set the flag after the file
// list of the job has been handed over.

/// State callback of a normal scan. state: orva::JobState or any other progress value. Counts.
[[nodiscard]] ScanEmissions onScanState(int state, bool errorSeen, JobCounters& job);

/// State callback of a preview. Differs on purpose in three ways: a failed preview resumes the
/// button monitor; every state but the end hands a file name over (and logs after the emissions);
/// the end does not change the serial start.
[[nodiscard]] ScanEmissions onPreviewState(
    int state, bool errorSeen, bool hasFileName, JobCounters& job);

/// Error callback, after the error flag was set and with a main window: what surrounds the
/// emissions scanStatusError(code) and SignalThreadKeyStart.
struct ErrorSteps
{
    bool logCode = false; ///< before: "[func:%s] nErrorCode = %d"
    bool hold = false; ///< between the two: wait timing::kErrorHold
};
[[nodiscard]] ErrorSteps onScanError(bool preview);

/// Pages for the job record: a source whose name holds 双 reports two sides a sheet (integer half).
[[nodiscard]] int pagesForJobRecord(int pages, const QString& sourceText);
/// Result for the job record: 0, or -1 when an error was reported.
[[nodiscard]] int resultForJobRecord(bool errorSeen);

} // namespace rules
