#include "log/logmanagement.h"

#include "app/common.h"
#include "dialogs/folder_choice.h"
#include "dialogs/look.h"
#include "dialogs/statusmesbox.h"
#include "log/Log.h"
#include "log/itprojectlog.h"
#include "log/logcontroller.h"
#include "mainwindow/backupsetting.h"
#include "ui_logmanagement.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSignalBlocker>

namespace {

constexpr int kOffIndex = 0;
constexpr int kOnIndex = 1;

QString group()
{
    return QStringLiteral("appValue");
}
QString levelKey()
{
    return QStringLiteral("LogLevel");
}
QString folderKey()
{
    return QStringLiteral("LogSavePath");
}

QString folderInForce()
{
    return QDir::cleanPath(QFile::decodeName(IOFLog.destination()));
}

bool isWritable(const QString& folder)
{
    return checkWritable(QFile::encodeName(folder).constData()) == 0;
}

void tell(const QWidget& page, const QString& text)
{
    StatusMessageBox box;
    box.CustomMsgBox(QStringLiteral("日志配置设置"), text);
    box.placeOver(page);
    box.exec();
}

} // namespace

logmanagement::logmanagement(QWidget* parent)
    : QDialog(parent)
    , m_ui(std::make_unique<Ui::logmanagement>())
    , m_CurrentSelectDevName(QStringLiteral("ManagementLog"))
{
    applyDialogLook(this);
    m_ui->setupUi(this);
    setModal(true);
    m_ui->startDateEdit->setDate(QDate::currentDate());
    m_ui->endDateEdit->setDate(QDate::currentDate());
    readSetting();
    showState();
    connect(m_ui->comboSetLogLevel, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
        &logmanagement::onLevelChosen);
    connect(m_ui->closeBtn, &QPushButton::clicked, this, &logmanagement::close);
}

logmanagement::~logmanagement() = default;

QString logmanagement::settingsFile() const
{
    return QString::fromStdString(g_strCommonPath) + getAppOwnUsr() + QLatin1Char('/')
        + m_CurrentSelectDevName + QLatin1Char('/') + m_CurrentSelectDevName
        + QStringLiteral(".ini");
}

int logmanagement::SetOutLogLevel() const
{
    return m_ui->comboSetLogLevel->currentText() == QStringLiteral("开启日志") ? 1 : 0;
}

void logmanagement::onSetLogConfig()
{
    const int level = SetOutLogLevel();
    IOFLog.setEnabledValue(static_cast<unsigned char>(level > 0 ? level : 0));
    const QString folder = m_ui->LogFilePathEdit->text();
    if (isWritable(folder)) {
        IOFLog.GetDestSavePath(QFile::encodeName(folder).constData());
    }
    showState();
    emit logConfigChanged(m_ui->comboSetLogLevel->currentIndex(), folder);
}

void logmanagement::readSetting()
{
    const QSignalBlocker blocker(m_ui->comboSetLogLevel);
    m_ui->comboSetLogLevel->setCurrentIndex(IOFLog.enabledValue() > 0 ? kOnIndex : kOffIndex);
    m_ui->LogFilePathEdit->setText(folderInForce());
    if (m_CurrentSelectDevName.isEmpty()) {
        runLog("[func:%s] m_CurrentSelectDevName is not exist!", __func__);
        return;
    }
    const backupSetting settings(settingsFile());
    if (settings.containts(group(), levelKey())) {
        const int index = settings.value(group(), levelKey()).toInt();
        m_ui->comboSetLogLevel->setCurrentIndex(index == kOnIndex ? kOnIndex : kOffIndex);
    }
    const QString folder = settings.value(group(), folderKey()).toString();
    if (!folder.isEmpty()) {
        m_ui->LogFilePathEdit->setText(folder);
    }
}

void logmanagement::writeSetting()
{
    if (m_CurrentSelectDevName.isEmpty()) {
        runLog("[func:%s] m_CurrentSelectDevName is not exist!", __func__);
        return;
    }
    const QString file = settingsFile();
    createfolder(QFile::encodeName(QFileInfo(file).path()).constData());
    backupSetting settings(file);
    settings.setValue(group(), levelKey(), m_ui->comboSetLogLevel->currentIndex());
    settings.setValue(group(), folderKey(), m_ui->LogFilePathEdit->text());
}

void logmanagement::onLevelChosen()
{
    onSetLogConfig();
    writeSetting();
}

void logmanagement::showState()
{
    m_ui->stateLabel->setText(QStringLiteral("当前：%1，%2")
                                  .arg(IOFLog.enabledValue() > 0 ? QStringLiteral("日志已开启")
                                                                 : QStringLiteral("日志已关闭"),
                                      folderInForce()));
}

void logmanagement::on_SetLogSavePathBth_clicked()
{
    const QString folder = chosenFolder(this, qEnvironmentVariable("HOME"));
    if (folder.isEmpty()) {
        return;
    }
    if (!isWritable(folder)) {
        tell(*this, QStringLiteral("日志路径设置失败!"));
        return;
    }
    m_ui->LogFilePathEdit->setText(folder);
    writeSetting();
    onSetLogConfig();
    tell(*this, QStringLiteral("日志路径设置成功!"));
}

void logmanagement::on_button_log_controller_clicked()
{
    onOpenLogController();
}

void logmanagement::onOpenLogController()
{
    logcontroller(m_ui->LogFilePathEdit->text(), this).exec();
}

// KEPT: deletion by date range is not offered; the button looks at its fields and leaves every
// file.
void logmanagement::on_deletelog_clicked()
{
    const QDate start = m_ui->startDateEdit->date();
    const QDate end = m_ui->endDateEdit->date();
    const QString folder = m_ui->LogFilePathEdit->text();
    Q_UNUSED(start)
    Q_UNUSED(end)
    Q_UNUSED(folder)
}

void logmanagement::done(int result)
{
    writeSetting();
    QDialog::done(result);
}
