// The four callbacks that the scanner library calls, side by side. They run on threads of the
// library: counters, the file list and signals only, no widget.
#include "app/timing.h"
#include "log/Log.h"
#include "mainwindow/mainwindow.h"
#include "sdk/codes.h"

namespace {

/// A library that reports faster than the window can draw must not keep it from hearing a cancel.
/// Counts run on, so the next report tells what was left out.
constexpr int kMostQueuedReports = 64;

std::mutex calledMutex;
std::shared_ptr<WindowGate> calledGate; ///< of g_mainWindow; null without one

std::shared_ptr<WindowGate> gateOfCallbacks()
{
    const std::lock_guard<std::mutex> lock(calledMutex);
    return calledGate;
}

} // namespace

void MainWindow::acceptCallbacks()
{
    const std::lock_guard<std::mutex> lock(calledMutex);
    g_mainWindow = this;
    calledGate = m_gate;
}

/// The end of the window: threads that come now find none, those that are inside leave first.
void MainWindow::refuseCallbacks()
{
    {
        const std::lock_guard<std::mutex> lock(calledMutex);
        if (g_mainWindow == this) {
            g_mainWindow = nullptr;
            calledGate.reset();
        }
    }
    if (!m_gate->shut(timing::kCloseLimit)) {
        runLog("[func:%s]a callback does not return", __func__);
    }
}

void MainWindow::SdkScanCallBack(int nState, int nPage, std::string FileName)
{
    runLog("[func:%s]nPage = %d, nState = %d, FileName = %s", "SdkScanCallBack", nPage, nState,
        FileName.c_str());
    const WindowUse window(gateOfCallbacks());
    if (!window) {
        runLog("gmainWindow = NULL");
    } else if (window->takeState(FileName)) {
        window->applyEmissions(
            rules::onScanState(nState, window->m_IsOccurError == 0, window->m_job.counters),
            QString(), nState, window.job());
    }
}

void MainWindow::SdkScanPreviewCallBack(int nState, int nPage, std::string FileName)
{
    const WindowUse window(gateOfCallbacks());
    if (!window) {
        runLog("gmainWindow = NULL");
        return;
    }
    if (window->takeState(FileName)) {
        window->applyEmissions(rules::onPreviewState(nState, window->m_IsOccurError == 0,
                                   !FileName.empty(), window->m_job.counters),
            QString::fromStdString(FileName), nState, window.job());
    }
    runLog("[func:%s]nPage = %d, nState = %d, FileName = %s", "SdkScanPreviewCallBack", nPage,
        nState, FileName.c_str());
}

int MainWindow::SdkScanErrorCodeCallBack(int nErrorCode)
{
    return reportError(nErrorCode, rules::onScanError(false));
}

int MainWindow::SdkScanPreviewErrorCodeCallBack(int nErrorCode)
{
    return reportError(nErrorCode, rules::onScanError(true));
}

/// Takes the file's name. False for what a library says of a job before when the next one has not
/// reached it yet.
bool MainWindow::takeState(const std::string& fileName)
{
    if (!m_job.atWork) {
        runLog("[func:%s]of no job", __func__);
        return false;
    }
    if (!fileName.empty()) {
        const std::lock_guard<std::mutex> lock(m_filesMutex);
        m_scannedFiles.push_back(fileName);
    }
    return true;
}

void MainWindow::applyEmissions(
    const rules::ScanEmissions& out, const QString& previewFile, int nState, unsigned job)
{
    if (job != m_job.number) {
        return;
    }
    const bool ends = nState == static_cast<int>(orva::JobState::kEnded);
    if (ends) {
        m_job.ending = true;
        if (m_job.endTaken.exchange(true)) {
            return; // told already, here or by the worker
        }
    }
    if (out.status && (out.isEnd != 0 || m_job.queuedReports < kMostQueuedReports)) {
        ++m_job.queuedReports;
        emit scanStatusOccur(out.isEnd, m_job.counters.scanned, m_job.counters.saved, -1);
    }
    if (out.previewFile) {
        emit scanFileAccept(previewFile, nState);
    }
    if (out.serial) {
        emit FinalChangeNameNoSerial(m_job.counters.serial);
    }
    if (out.jobRecord) {
        emit final_signal_iof_batch();
    }
    // before the monitor goes on, so that its first idle poll opens the result
    if (out.ended) {
        m_keys.scanFinished = 1;
    }
    if (out.resumeKeys) {
        m_job.keysResumed = true;
        emit SignalThreadKeyStart();
    }
    if (ends) {
        m_job.endTold = true; // only now: the worker gives the buttons back, and a job may begin
        m_gate->notify();
    }
}

/// Error callback of both kinds of job.
int MainWindow::reportError(int code, const rules::ErrorSteps& steps)
{
    if (steps.logCode) {
        runLog("[func:%s] nErrorCode = %d", "SdkScanErrorCodeCallBack", code);
    }
    const std::shared_ptr<WindowGate> gate = gateOfCallbacks();
    WindowUse window(gate);
    if (!window) {
        runLog("gmainWindow = NULL");
        return -1;
    }
    JobRun& job = window->m_job;
    window->m_IsOccurError = 0;
    job.lastError = code;
    job.ending = true;
    job.keysResumed = true; // promised: the worker need not
    if (!job.endTaken) {
        // Now, not at the job's end: a button that is pressed in between asks for the next result.
        window->m_keys.openResult = 0;
    }
    emit window->scanStatusError(code);
    const unsigned number = window.job();
    window.leave();
    if (steps.hold) {
        std::unique_lock<std::mutex> lock(gate->mutex);
        gate->changed.wait_for(lock, timing::kErrorHold, [&gate] { return gate->closing; });
    }
    if (const WindowUse again(gate); again && again.job() == number) {
        emit again->SignalThreadKeyStart();
    }
    return 0;
}
