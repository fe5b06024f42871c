// A job from the click to its record: start, worker thread, buttons, cancel, end.
#include "app/timing.h"
#include "log/Log.h"
#include "log/itprojectlog.h"
#include "mainwindow/main_window_ui.h"
#include "mainwindow/mainwindow.h"
#include "mainwindow/rules/naming_rules.h"
#include "sdk/result_codes.h"

#include <QCoreApplication>

#include <algorithm>
#include <cstdio>
#include <cstring>

/// How a preview and a normal scan differ before the worker runs.
struct MainWindow::JobKind
{
    const char* name; ///< of the slot, for the run log
    int isPreview;
    bool needsPaper; ///< asks HavePaper before the start
    bool logsRefusal; ///< tells the run log when the settings are refused
    OrvaStateCallback onState;
    OrvaErrorCallback onError;
};

const MainWindow::JobKind MainWindow::kScanJob { "onStartScan", 0, false, true,
    &MainWindow::SdkScanCallBack, &MainWindow::SdkScanErrorCodeCallBack };
const MainWindow::JobKind MainWindow::kPreviewJob { "onStartPreViewScan", 1, true, false,
    &MainWindow::SdkScanPreviewCallBack, &MainWindow::SdkScanPreviewErrorCodeCallBack };

namespace {

/// How long the worker waits for an end that the library reports after Scan has returned.
constexpr std::chrono::milliseconds kEndGrace { 300 / TARVEX_TIME_DIVISOR };

/// How long the start of a job waits for callbacks of the one before. They are short.
constexpr std::chrono::milliseconds kCallbackLimit { 1000 };

/// A field of the job record holds less than the buffer that the text comes in; a name that is too
/// long for it is cut there.
template <std::size_t size>
void copyField(char (&field)[size], const char* text)
{
    std::snprintf(field, size, "%.*s", static_cast<int>(size) - 1, text);
}

} // namespace

void MainWindow::onStartScan()
{
    startJob(kScanJob);
}

void MainWindow::onStartPreViewScan()
{
    startJob(kPreviewJob);
}

void MainWindow::startJob(const JobKind& kind)
{
    if (m_job.active || m_closing) {
        // A scanner's button, pressed while the job before is ending, is not lost. One pressed
        // together with the button of the window is the same wish.
        m_job.startAgain = !m_closing && kind.isPreview == 0 && m_job.ending;
        runLog("[func:%s]a job is running, start %s", kind.name,
            m_job.startAgain ? "follows" : "ignored");
        return;
    }
    m_job.active = true;
    m_job.ending = false;
    if (kind.isPreview == 0) {
        runLog("[func:%s]normal scan, set KeyPress stop", kind.name);
    }
    takeNextJobNumber();
    ThreadKeyPause();
    if (m_closing) {
        m_job.active = false;
        return;
    }
    if (m_keys.running != 0) {
        onShowScanError(orva::kDeviceTimeout); // a poll of the buttons does not return
        abandonStart();
        return;
    }
    resetJob(kind.isPreview != 0);
    m_OrvaSdk->SetStateCallback(kind.onState, nullptr);
    m_OrvaSdk->SetErrorCallback(kind.onError, nullptr);
    if (onSetScanConfig(kind.isPreview) != 0) {
        if (kind.logsRefusal) {
            runLog("[func:%s]扫描参数设置失败", kind.name);
        }
        abandonStart();
        return;
    }
    if (kind.needsPaper && m_OrvaSdk->HavePaper() != 1) {
        emit scanStatusError(orva::kNoPaper);
        runLog("[func:%s]扫描仪无纸", kind.name);
        abandonStart();
        return;
    }
    emit scanStatusOccur(-1, -1, -1, -1);
    onDisableScanButton();
    std::memset(m_startTime, 0, sizeof m_startTime);
    IOFLog.GetCurDayTime(m_startTime);
    runLog("starttime =  %s", m_startTime);
    if (!startWorker()) {
        // KEPT: the buttons stay as they are; the scanner's own button can try again
        runLog("[%s][%d]开启扫描线程失败", kind.name, __LINE__);
        onShowScanError(orva::kNoMemory);
        hideProgress();
        abandonStart();
    }
}

void MainWindow::abandonStart()
{
    m_job.active = false;
    m_keys.openResult = 0; // a later job is not the one whose result was to be opened
    emit SignalThreadKeyStart();
}

/// What callbacks of the job before still do or have queued is told of that one; those that come
/// later find the new number. Before the monitor is paused, which they may resume.
void MainWindow::takeNextJobNumber()
{
    m_job.atWork = false;
    const auto taken = [this] {
        const std::lock_guard<std::mutex> lock(m_gate->mutex);
        m_job.number += m_gate->users == 0 ? 1 : 0;
        return m_gate->users == 0;
    };
    if (!waitAnswering(kCallbackLimit, taken)) {
        runLog("[func:%s]a callback of the job before does not return", __func__);
        ++m_job.number;
    }
    QCoreApplication::sendPostedEvents(this, QEvent::MetaCall);
}

void MainWindow::resetJob(bool preview)
{
    deletePreviewFiles();
    m_job.counters.begin();
    m_job.isPreview = preview;
    m_job.namedBySerial = NamedIsTimeOrNumber() == 0;
    m_job.serialText = ui->nameNoSerialEdit->text();
    m_job.endTaken = false;
    m_job.endTold = false;
    m_job.keysResumed = false;
    m_job.lastError = 0;
    m_job.queuedReports = 0;
    m_job.startAgain = false;
    m_IsOccurError = 1;
    m_keys.scanFinished = 0;
    const std::lock_guard<std::mutex> lock(m_filesMutex);
    m_scannedFiles.clear();
}

bool MainWindow::startWorker()
{
    {
        const std::lock_guard<std::mutex> lock(m_gate->mutex);
        ++m_gate->workers;
    }
    pthread_t thread {};
    if (::pthread_create(&thread, nullptr, &MainWindow::doScanner, this) == 0) {
        ::pthread_detach(thread);
        return true;
    }
    const std::lock_guard<std::mutex> lock(m_gate->mutex);
    --m_gate->workers;
    return false;
}

/// Worker thread. It may outlive the window when Scan does not return: it holds the gate, and
/// enters the window only between its calls.
void* MainWindow::doScanner(void* mainWindow)
{
    const std::shared_ptr<WindowGate> gate = static_cast<MainWindow*>(mainWindow)->m_gate;
    if (const WindowUse window(gate); window) {
        window->m_job.atWork = true;
    }
    const int result = gate->library->Scan();
    runLog("# MainWindow::doScanner # scan end return %d", result);
    WindowUse window(gate);
    if (window) {
        window->closeUnreportedJob(result);
        window.leave();
        const int cleared = gate->library->ClearTmpData();
        runLog("[func:%s][m_SDKClear = %d]", "doScanner", cleared);
        if (const WindowUse again(gate); again) {
            again->m_SDKClear = cleared;
            emit again->scanBtnEnable();
            runLog("# MainWindow::onEnableScanBtn # ");
        }
    }
    const std::lock_guard<std::mutex> lock(gate->mutex);
    --gate->workers;
    gate->changed.notify_all();
    return nullptr;
}

/// Worker thread. Whatever the library left unsaid about the end of the job is said here, so that
/// no job stays open in the window: an error code, the record, the monitor's resume.
void MainWindow::closeUnreportedJob(int scanResult)
{
    m_job.ending = true;
    {
        // an error callback holds its thread for a while, and the end comes after it
        const auto grace = m_job.lastError != 0 ? kEndGrace + timing::kErrorHold : kEndGrace;
        std::unique_lock<std::mutex> lock(m_gate->mutex);
        m_gate->changed.wait_for(
            lock, grace, [this] { return m_job.endTold.load() || m_gate->closing; });
    }
    if (!m_job.endTaken.exchange(true)) {
        runLog("[func:%s]the end of the job was not reported", __func__);
        if (scanResult != orva::kOk && scanResult != orva::kCancelled && m_job.lastError == 0) {
            m_job.lastError = scanResult;
            m_IsOccurError = 0;
            m_keys.openResult = 0;
            emit scanStatusError(scanResult);
        }
        if (m_IsOccurError == 1) {
            emit scanStatusOccur(1, m_job.counters.scanned, m_job.counters.saved, -1);
            if (!m_job.isPreview) {
                emit FinalChangeNameNoSerial(m_job.counters.serial);
            }
            m_keys.scanFinished = 1;
        }
        emit final_signal_iof_batch();
    }
    if (!m_job.keysResumed) {
        emit SignalThreadKeyStart();
    }
}

int MainWindow::slotCancelScan()
{
    runLog("[func:%s] ++++++++++++20191102+++++++++++++click cancel scan+++++++++++++++++++++++!\n",
        __func__);
    return m_OrvaSdk->CancelScan();
}

void MainWindow::onDisableScanButton()
{
    for (QWidget* button : jobButtons()) {
        button->setEnabled(false);
    }
}

void MainWindow::onEnableScanBtn()
{
    m_job.active = false;
    if (m_IsOccurError == 0) {
        hideProgress(); // also when the catalogue hides the error: nothing more is reported
    }
    std::printf("MainWindow::onEnableScanBtn()  this->ui->scanMainBtn=%d\n",
        ui->scanMainBtn->isEnabled() ? 1 : 0);
    for (QWidget* button : jobButtons()) {
        if (!button->isEnabled()) {
            button->setEnabled(true);
        }
    }
    std::puts("MainWindow::onEnableScanBtn() end");
    if (m_job.startAgain) {
        m_job.startAgain = false;
        QMetaObject::invokeMethod(this, &MainWindow::onStartScan, Qt::QueuedConnection);
    }
}

std::array<QWidget*, 5> MainWindow::jobButtons() const
{
    return { ui->scanMainBtn, ui->preViewBtn, ui->templateBtn, ui->exitMainBtn,
        ui->button_clear_tmpdata };
}

void MainWindow::slot_on_iof_batch()
{
    std::puts("MainWindow::slot_on_iof_batch() ");
    std::memset(m_endTime, 0, sizeof m_endTime);
    IOFLog.GetCurDayTime(m_endTime);
    char computer[256] = {};
    char user[256] = {};
    IOFLog.GetComputerName(computer, static_cast<int>(sizeof computer));
    IOFLog.GetCurUserName(user);

    auto& counters = m_job.counters;
    counters.pages = rules::pagesForJobRecord(counters.pages, ui->scanSourceComBo->currentText());
    InstituteOfInformation record;
    copyField(record.startTime, m_startTime);
    copyField(record.endTime, m_endTime);
    copyField(record.userName, user);
    copyField(record.computerName, computer);
    record.pageCount = counters.pages;
    record.result = rules::resultForJobRecord(m_IsOccurError == 0);
    record.files = scannedFiles();
    IOFLog.AddBatch(&record);
    advanceSerialAfterError();
}

/// The files of a failed job exist as well: the next job must not write over them. No signal brings
/// the counter then.
void MainWindow::advanceSerialAfterError()
{
    if (m_IsOccurError == 0 && !m_job.isPreview) {
        const int reported = static_cast<int>(scannedFiles().size());
        const int counted = m_job.counters.saved;
        onChangeNameNoSerial(m_job.counters.serialAtStart + std::max(reported, counted));
    }
}

std::vector<std::string> MainWindow::scannedFiles()
{
    const std::lock_guard<std::mutex> lock(m_filesMutex);
    return m_scannedFiles;
}
