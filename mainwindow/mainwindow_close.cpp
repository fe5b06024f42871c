// Closing, in every way: what runs is ended first, then the window is destroyed in place and the
// application quits.
#include "app/timing.h"
#include "dialogs/onlinescanners.h"
#include "dialogs/statusdialog.h"
#include "dialogs/statusmesbox.h"
#include "log/Log.h"
#include "mainwindow/blocked_close.h"
#include "mainwindow/main_window_ui.h"
#include "mainwindow/mainwindow.h"

#include <QApplication>
#include <QCloseEvent>
#include <QFile>
#include <QPointer>
#include <QThread>

namespace {

/// Dialogs on top of one another that closing takes down; one that is closing itself stays active.
constexpr int kMostDialogs = 8;

constexpr std::chrono::milliseconds kCancelAgain { 500 };

} // namespace

MainWindow::Busy::Busy(MainWindow& window)
    : m_window(window)
{
    if (QThread::currentThread() == m_window.thread()) {
        ++m_window.m_busy;
    }
}

MainWindow::Busy::~Busy()
{
    if (QThread::currentThread() != m_window.thread()) {
        return;
    }
    --m_window.m_busy;
    if (m_window.m_finishRequested) {
        m_window.requestFinish();
    }
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    event->accept();
    if (m_closing) {
        return;
    }
    m_closing = true;
    {
        const Busy busy(*this);
        endRunningJob();
        if (!m_libraryHeld) {
            m_SDKClear = m_OrvaSdk->ClearTmpData();
        }
        runLog("[func:%s][m_SDKClear = %d]", __func__, m_SDKClear);
        runLog("[%s][%d]应用窗口关闭", __func__, __LINE__);
        writeSetting();
        deletePreviewFiles();
        if (QFile::exists(tmp_preview)) {
            QFile::remove(tmp_preview);
        }
        ThreadKeyOver();
        hideProgress();
        // dialogs that are still open must not keep the event loop, or speak to a window that is
        // gone
        for (int i = 0; i < kMostDialogs && QApplication::activeModalWidget() != nullptr; ++i) {
            QApplication::activeModalWidget()->close();
        }
    }
    // Running the destructor inside Qt's own close handling would pull the object from under it.
    requestFinish();
}

/// The close button is meant also while the progress of a scan is in front.
void MainWindow::hearBlockedClose()
{
    m_blockedClose = std::make_unique<BlockedClose>(*this, [this] {
        if (m_statusDialog != nullptr && QApplication::activeModalWidget() == m_statusDialog) {
            QMetaObject::invokeMethod(this, &QWidget::close, Qt::QueuedConnection);
        }
    });
}

/// Cancels a running job and waits until its worker is through; what it had to say is heard. False
/// when it does not end in time.
bool MainWindow::endRunningJob()
{
    const auto idle = [this] {
        const std::lock_guard<std::mutex> lock(m_gate->mutex);
        return m_gate->workers == 0;
    };
    {
        const std::lock_guard<std::mutex> lock(m_gate->mutex);
        m_gate->closing = true;
        m_gate->changed.notify_all();
    }
    if (!idle() && !m_libraryHeld) { // once: closing and the destructor ask, the limit is for both
        runLog("[func:%s]the running job is cancelled", __func__);
        // again and again: a worker that has not yet reached Scan would not hear the first one
        const auto end = std::chrono::steady_clock::now() + timing::kCloseLimit * 3 / 5;
        do {
            m_OrvaSdk->CancelScan();
        } while (!waitAnswering(kCancelAgain, idle) && std::chrono::steady_clock::now() < end);
        if (!idle()) {
            m_libraryHeld = true;
            runLog("[func:%s]the job does not end", __func__);
        }
    }
    // the record of the job and the serial start, queued by its last callbacks
    QCoreApplication::sendPostedEvents(this, QEvent::MetaCall);
    return !m_libraryHeld;
}

void MainWindow::requestFinish()
{
    m_finishRequested = m_busy > 0;
    if (!m_finishRequested) {
        // posted before Qt's own reaction to the last window, so that it is handled first
        QMetaObject::invokeMethod(
            qApp,
            [window = QPointer<MainWindow>(this)] {
                if (window) {
                    window->finishClosing();
                }
            },
            Qt::QueuedConnection);
    }
}

void MainWindow::finishClosing()
{
    if (m_busy > 0) {
        m_finishRequested = true;
        return;
    }
    m_finishRequested = false;
    // KEPT: destroyed in place, not freed: start-up keeps its pointer to the window until it ends.
    this->~MainWindow();
    QCoreApplication::quit();
}

/// The event loop is over. A window that nobody closed, or whose closing waited for a dialog, must
/// release the library all the same.
void MainWindow::onApplicationQuit()
{
    if (!m_closing) {
        QCloseEvent event;
        closeEvent(&event);
    }
    finishClosing();
}

void MainWindow::releaseDialogs()
{
    delete m_statusMessageBox;
    m_statusMessageBox = nullptr;
    delete m_statusDialog;
    m_statusDialog = nullptr;
    delete m_onlineScanners;
    m_onlineScanners = nullptr;
}
