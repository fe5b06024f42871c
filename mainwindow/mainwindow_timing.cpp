// The scanner's own times: the dialogs' other ends, and clearing the library's temporary data.
#include "dialogs/setdevprefeed.h"
#include "dialogs/setdevsleeptime.h"
#include "log/Log.h"
#include "mainwindow/mainwindow.h"
#include "sdk/result_codes.h"

#include <QMessageBox>
#include <QPushButton>

namespace {

constexpr float kSmallestPrefeed = 0.5F;
/// The time that the dialog offers after the device refused one.
constexpr float kPrefeedAfterFailure = 2.0F;
/// A time that SetScannerTime is to leave alone.
constexpr int kUnchanged = -1;

void tell(QWidget* parent, const QString& text)
{
    QMessageBox box(
        QMessageBox::Information, QStringLiteral("提示"), text, QMessageBox::Ok, parent);
    box.button(QMessageBox::Ok)->setText(QStringLiteral("确 定"));
    box.exec();
}

} // namespace

void MainWindow::slot_ClearTmpData()
{
    const int result = m_OrvaSdk->ClearTmpData();
    runLog("[func:%s]m_OrvaSdk->ClearTmpData() = %d", __func__, result);
    dynamic_state_msg_box(QStringLiteral("手动清除"),
        result == orva::kOk ? QStringLiteral("手动清除文件成功!")
                            : QStringLiteral("手动清除文件失败!"));
}

void MainWindow::onOpenDevSleepTime()
{
    if (m_job.active) {
        return;
    }
    const Busy busy(*this);
    if (!m_stSleep.nEnable && !m_stAutoOff.nEnable) {
        tell(this, QStringLiteral("该设备不支持设置休眠/关机时间"));
        return;
    }
    if (!pauseForDevice()) {
        return;
    }
    // where the device does not tell its present times, those that it told when it was chosen
    int sleepTime = m_stSleep.value;
    int autoOffTime = m_stAutoOff.value;
    m_OrvaSdk->GetScannerSleepTime(sleepTime, autoOffTime);
    SetDevSleepTime dialog(sleepTime, autoOffTime, m_stSleep, m_stAutoOff, this);
    connect(&dialog, &SetDevSleepTime::SendTimeValueToMain, this, &MainWindow::slotUpdateTimeValue);
    dialog.exec();
    emit SignalThreadKeyStart();
}

void MainWindow::slotUpdateTimeValue(int sleepTime, int autoOffTime)
{
    runLog("[func:%s]sleepTime = %d, shutdownTime = %d", __func__, sleepTime, autoOffTime);
    const int sleepValue = m_stSleep.nEnable ? sleepTime : kUnchanged;
    const int autoOffValue = m_stAutoOff.nEnable ? autoOffTime : kUnchanged;
    const int result = m_OrvaSdk->SetScannerTime(sleepValue, autoOffValue);
    if (result != orva::kOk) {
        runLog("[func:%s] SetScannerTimerRet = %d", __func__, result);
    }
    dynamic_state_msg_box(QStringLiteral("设置扫描仪时间"),
        result == orva::kOk ? QStringLiteral("设置扫描仪时间\n成功!")
                            : QStringLiteral("设置扫描仪时间\n失败!"));
}

void MainWindow::onOpenDevPrefeed()
{
    if (m_job.active) {
        return;
    }
    const Busy busy(*this);
    if (!pauseForDevice()) {
        return;
    }
    setDevPrefeed dialog(m_prefeedTime, this);
    connect(&dialog, &setDevPrefeed::SendPrefeedTimeValueToMain, this,
        &MainWindow::slotUpdatePrefeedTimeValue);
    dialog.exec();
    emit SignalThreadKeyStart();
}

void MainWindow::slotUpdatePrefeedTimeValue(float time)
{
    const int result = m_OrvaSdk->SetPreFeed(time >= kSmallestPrefeed, time);
    m_prefeedTime = result == orva::kOk ? time : kPrefeedAfterFailure;
    dynamic_state_msg_box(QStringLiteral("设置预进纸功能"),
        result == orva::kOk ? QStringLiteral("设置预进纸\n成功！")
                            : QStringLiteral("设置预进纸\n失败!"));
}
