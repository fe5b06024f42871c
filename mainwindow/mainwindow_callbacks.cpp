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

std::mutex usersMutex;
std::condition_variable usersChanged;
int users = 0; ///< callbacks that are inside the window

/// The window for one callback; it is not destroyed while this lives. Null without a window.
class CalledWindow
{
public:
    CalledWindow()
    {
        const std::lock_guard<std::mutex> lock(usersMutex);
        m_window = g_mainWindow;
        users += m_window != nullptr ? 1 : 0;
    }
    ~CalledWindow()
    {
        const std::lock_guard<std::mutex> lock(usersMutex);
        users -= m_window != nullptr ? 1 : 0;
        usersChanged.notify_all();
    }
    CalledWindow(const CalledWindow&) = delete;
    CalledWindow& operator=(const CalledWindow&) = delete;

    MainWindow* get() const { return m_window; }

private:
    MainWindow* m_window = nullptr;
};

} // namespace

/// The end of the window: callbacks that come now find none, those that are inside leave first.
void MainWindow::refuseCallbacks()
{
    std::unique_lock<std::mutex> lock(usersMutex);
    if (g_mainWindow == this) {
        g_mainWindow = nullptr;
        usersChanged.wait_for(lock, timing::kCloseLimit, [] { return users == 0; });
    }
}

void MainWindow::SdkScanCallBack(int nState, int nPage, std::string FileName)
{
    runLog("[func:%s]nPage = %d, nState = %d, FileName = %s", "SdkScanCallBack", nPage, nState,
        FileName.c_str());
    const CalledWindow called;
    MainWindow* const window = called.get();
    if (window == nullptr) {
        runLog("gmainWindow = NULL");
        return;
    }
    window->takeFileName(FileName);
    window->applyEmissions(
        rules::onScanState(nState, window->m_IsOccurError == 0, window->m_job.counters), QString(),
        nState);
}

void MainWindow::SdkScanPreviewCallBack(int nState, int nPage, std::string FileName)
{
    const CalledWindow called;
    MainWindow* const window = called.get();
    if (window == nullptr) {
        runLog("gmainWindow = NULL");
        return;
    }
    window->takeFileName(FileName);
    window->applyEmissions(rules::onPreviewState(nState, window->m_IsOccurError == 0,
                               !FileName.empty(), window->m_job.counters),
        QString::fromStdString(FileName), nState);
    runLog("[func:%s]nPage = %d, nState = %d, FileName = %s", "SdkScanPreviewCallBack", nPage,
        nState, FileName.c_str());
}

int MainWindow::SdkScanErrorCodeCallBack(int nErrorCode)
{
    const rules::ErrorSteps steps = rules::onScanError(false);
    if (steps.logCode) {
        runLog("[func:%s] nErrorCode = %d", "SdkScanErrorCodeCallBack", nErrorCode);
    }
    const CalledWindow called;
    MainWindow* const window = called.get();
    if (window == nullptr) {
        runLog("gmainWindow = NULL");
        return -1;
    }
    window->reportError(nErrorCode, steps);
    return 0;
}

int MainWindow::SdkScanPreviewErrorCodeCallBack(int nErrorCode)
{
    const CalledWindow called;
    MainWindow* const window = called.get();
    if (window == nullptr) {
        runLog("gmainWindow = NULL");
        return -1;
    }
    window->reportError(nErrorCode, rules::onScanError(true));
    return 0;
}

void MainWindow::takeFileName(const std::string& fileName)
{
    if (!fileName.empty()) {
        const std::lock_guard<std::mutex> lock(m_filesMutex);
        m_scannedFiles.push_back(fileName);
    }
}

void MainWindow::applyEmissions(
    const rules::ScanEmissions& out, const QString& previewFile, int nState)
{
    if (nState == static_cast<int>(orva::JobState::kEnded)) {
        m_job.ending = true;
        if (m_job.endSeen.exchange(true)) {
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
    if (out.dropOpenRequest) {
        m_keys.openResult = 0;
    }
    if (out.resumeKeys) {
        m_job.keysResumed = true;
        emit SignalThreadKeyStart();
    }
    notifyWaiters();
}

void MainWindow::reportError(int code, const rules::ErrorSteps& steps)
{
    const std::shared_ptr<JobGate> gate = m_gate;
    m_IsOccurError = 0;
    m_job.lastError = code;
    m_job.ending = true;
    m_job.keysResumed = true; // promised: the worker need not
    emit scanStatusError(code);
    if (steps.hold) {
        std::unique_lock<std::mutex> lock(gate->mutex);
        gate->changed.wait_for(lock, timing::kErrorHold, [&gate] { return gate->closing; });
    }
    emit SignalThreadKeyStart();
}
