#include "log/logcontroller.h"

#include "dialogs/look.h"
#include "log/Log.h"
#include "log/itprojectlog.h"
#include "log/log_file_reader.h"
#include "log/log_paths.h"
#include "ui_logcontroller.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTextCursor>
#include <QTimer>

namespace {

/// A portion is shown at once; more follow as long as the window has waited less than this.
constexpr qint64 kSliceMs = 15;
/// How long the viewer waits for blocks that are on their way to the file.
constexpr std::chrono::milliseconds kWriterLimit { 300 };

} // namespace

logcontroller::logcontroller(const QString& folder, QWidget* parent)
    : QDialog(parent)
    , m_ui(std::make_unique<Ui::logcontroller>())
    , m_more(new QTimer(this))
    , m_folder(folder)
{
    applyDialogLook(this);
    setWindowFlag(Qt::WindowMaximizeButtonHint); // long lines want the whole screen
    m_ui->setupUi(this);
    LogDateEditInit();
    SlotsConnect();
    onDateChanged(m_ui->dateEdit->date());
}

logcontroller::~logcontroller() = default;

void logcontroller::LogDateEditInit()
{
    m_ui->dateEdit->setDate(QDate::currentDate());
}

void logcontroller::SlotsConnect()
{
    connect(m_ui->dateEdit, &QDateEdit::dateChanged, this, &logcontroller::onDateChanged);
    connect(m_ui->todayBtn, &QPushButton::clicked, this, &logcontroller::OnBackToday);
    connect(m_ui->exitBtn, &QPushButton::clicked, this, &logcontroller::close);
    m_more->setInterval(0);
    connect(m_more, &QTimer::timeout, this, &logcontroller::showNextPortions);
}

void logcontroller::OnBackToday()
{
    const QDate today = QDate::currentDate();
    if (m_ui->dateEdit->date() == today) {
        onDateChanged(today); // jobs may have been added since
    } else {
        m_ui->dateEdit->setDate(today);
    }
}

QString logcontroller::dayFile(const QString& folder, const QDate& date)
{
    const log_paths::Day day { date.year(), date.month(), date.day() };
    const QString slash = folder.endsWith(QLatin1Char('/')) ? QString() : QString(QLatin1Char('/'));
    return QFile::decodeName(QByteArray::fromStdString(
        log_paths::dayFile(QFile::encodeName(folder + slash).toStdString(), kJobLogTag, day)));
}

void logcontroller::onDateChanged(const QDate& date)
{
    runLog("[func:%s]year = %d, month = %d, day = %d\n", __func__, date.year(), date.month(),
        date.day());
    const QString path = dayFile(m_folder, date);
    runLog("[func:%s] destLogPath = %s\n", __func__, qUtf8Printable(path));
    m_more->stop();
    m_ui->textEdit->clear();
    m_ui->progressLabel->clear();
    static_cast<void>(IOFLog.flush(kWriterLimit)); // the job that has just ended is looked for
    m_reader = std::make_unique<LogFileReader>(path);
    if (!m_reader->isOpen()) {
        m_reader.reset();
        m_ui->textEdit->setPlainText(QStringLiteral("未找到所选日期日志！"));
        return;
    }
    QString start;
    if (m_reader->skippedBytes() > 0) {
        start = QStringLiteral("（文件过大，前面 %1 MB 未显示）\n")
                    .arg(m_reader->skippedBytes() / (1024LL * 1024) + 1);
    }
    m_ui->textEdit->setPlainText(start + m_reader->next());
    showProgress();
}

void logcontroller::showNextPortions()
{
    QElapsedTimer slice;
    slice.start();
    QTextCursor end(m_ui->textEdit->document());
    end.movePosition(QTextCursor::End);
    while (!m_reader->atEnd() && slice.elapsed() < kSliceMs) {
        end.insertText(m_reader->next());
    }
    showProgress();
}

void logcontroller::showProgress()
{
    if (m_reader->atEnd()) {
        m_reader.reset();
        m_more->stop();
        m_ui->progressLabel->clear();
        return;
    }
    m_ui->progressLabel->setText(QStringLiteral("正在读取 %1%").arg(m_reader->percentRead()));
    m_more->start();
}
