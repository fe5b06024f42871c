// What the operator is told: progress of a job, errors by their code, plain notices.
#include "dialogs/statusdialog.h"
#include "dialogs/statusmesbox.h"
#include "mainwindow/mainwindow.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWindow>

namespace {

/// Upper left corner of a box, from that of the window.
constexpr QPoint kBoxOffset { 230, 230 };
constexpr QSize kBoxSize { 200, 120 };
/// Without a window: where a box of 170 by 105 would be centred, a little higher.
constexpr QSize kFreeBoxSize { 170, 105 };
constexpr int kFreeBoxRaise = 60;
constexpr int kFreeBoxEdge = 200;

QPoint freePosition()
{
    const QScreen* screen = QGuiApplication::primaryScreen();
    const QSize size = screen != nullptr ? screen->geometry().size() : QSize();
    return { (size.width() - kFreeBoxSize.width()) / 2,
        (size.height() - kFreeBoxSize.height()) / 2 - kFreeBoxRaise };
}

} // namespace

StatusMessageBox& MainWindow::messageBox()
{
    if (m_statusMessageBox == nullptr) {
        m_statusMessageBox = new StatusMessageBox;
    }
    m_statusMessageBox->getErrorCode(m_ErrorCodePath);
    return *m_statusMessageBox;
}

void MainWindow::onShowScanError(int code)
{
    StatusMessageBox& box = messageBox();
    if (!box.ShowStatusError(code)) {
        return; // a hidden code leaves the progress dialog as it is
    }
    if (isVisible()) {
        box.setGeometry(QRect(pos() + kBoxOffset, kBoxSize));
    } else {
        box.setGeometry(QRect(freePosition(), QSize(kFreeBoxEdge, kFreeBoxEdge)));
    }
    hideProgress();
    box.show();
}

/// A modal dialog asks for the keys once the window manager has shown it, also when it is hidden by
/// then; the message that came in between would get none. So one that is still on its way goes
/// altogether.
void MainWindow::hideProgress()
{
    if (m_statusDialog == nullptr) {
        return;
    }
    const bool isOnItsWay =
        m_statusDialog->isVisible() && !m_statusDialog->windowHandle()->isExposed();
    m_statusDialog->hide();
    if (isOnItsWay) {
        delete m_statusDialog;
        m_statusDialog = nullptr;
    }
}

void MainWindow::dynamic_state_msg_box(QString title, QString text)
{
    const Busy busy(*this);
    StatusMessageBox& first = messageBox();
    if (m_noticeShown) {
        StatusMessageBox second; // a scanner's button was pressed under a notice: on top of it
        runNotice(second, title, text);
        return;
    }
    first.hide(); // an error that still stands there has been read or is replaced
    m_noticeShown = true;
    runNotice(first, title, text);
    m_noticeShown = false;
}

void MainWindow::runNotice(StatusMessageBox& box, const QString& title, const QString& text)
{
    box.move(isVisible() ? pos() + kBoxOffset : freePosition());
    box.CustomMsgBox(title, text);
    box.exec();
}

void MainWindow::onShowScanStatus(int code, int scanPage, int dealPage, int ocrPage)
{
    if (m_job.queuedReports > 0) {
        --m_job.queuedReports;
    }
    if (m_statusDialog == nullptr) {
        m_statusDialog = new StatusDialog;
    }
    connect(m_statusDialog, &StatusDialog::SignalsInformCancelScan, this,
        &MainWindow::slotCancelScan, Qt::UniqueConnection);
    m_statusDialog->ShowStatusInfo(code, scanPage, dealPage, ocrPage);
    m_statusDialog->move(pos() + kBoxOffset);
    m_statusDialog->show();
}

void MainWindow::UpdateUserName(QString) { }
