// The log controls of the about page: job log on or off, its folder, the viewer.
#include "app/common.h"
#include "dialogs/folder_choice.h"
#include "log/itprojectlog.h"
#include "log/logcontroller.h"
#include "mainwindow/main_window_ui.h"
#include "mainwindow/mainwindow.h"

#include <QDir>
#include <QSignalBlocker>

namespace {

const QString kLogOn = QStringLiteral("开启日志");
const QString kSettingsTitle = QStringLiteral("日志配置设置");

} // namespace

int MainWindow::SetOutLogLevel()
{
    return ui->comboSetLogLevel->currentText() == kLogOn ? 1 : 0;
}

void MainWindow::onSetLogConfig()
{
    const int level = SetOutLogLevel();
    IOFLog.setEnabledValue(static_cast<unsigned char>(level > 0 ? level : 0));
    const QByteArray folder = QFile::encodeName(ui->LogFilePathEdit->text());
    if (!folder.isEmpty() && checkWritable(folder.constData()) == 0) {
        IOFLog.GetDestSavePath(folder.constData());
    }
}

void MainWindow::onGetLogSavePath()
{
    const Busy busy(*this);
    const QString folder = chosenFolder(this, qEnvironmentVariable("HOME"));
    if (folder.isEmpty()) {
        return;
    }
    if (checkWritable(QFile::encodeName(folder).constData()) != 0) {
        dynamic_state_msg_box(kSettingsTitle, QStringLiteral("日志路径设置失败!"));
        return;
    }
    ui->LogFilePathEdit->setText(folder);
    onSetLogConfig();
    writeSetting();
    dynamic_state_msg_box(kSettingsTitle, QStringLiteral("日志路径设置成功!"));
}

/// The administrator's page has applied other settings: the controls show what is in force.
void MainWindow::followLogConfig(int levelIndex, const QString& folder)
{
    const QSignalBlocker blocked(ui->comboSetLogLevel);
    ui->comboSetLogLevel->setCurrentIndex(levelIndex);
    ui->LogFilePathEdit->setText(folder);
}

void MainWindow::onOpenLogController()
{
    const QString shown = ui->LogFilePathEdit->text();
    auto* viewer = new logcontroller(
        shown.isEmpty() ? QString::fromLocal8Bit(IOFLog.destination()) : shown, this);
    viewer->setAttribute(Qt::WA_DeleteOnClose);
    viewer->show();
}
