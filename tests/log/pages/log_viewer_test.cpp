// The log viewer: the right file of a day, and files that no one would like to open.
#include "log/log_file_reader.h"
#include "log/logcontroller.h"
#include "tests/support/sandbox.h"
#include "tests/support/screenshot.h"

#include <QDateEdit>
#include <QElapsedTimer>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <string>

namespace {

using ::testing::HasSubstr;

const QString kNothing = QStringLiteral("未找到所选日期日志！");

class LogViewer : public ::testing::Test
{
protected:
    /// Writes the file of that day where the job log puts it.
    std::string write(const QDate& date, const std::string& bytes)
    {
        const std::string year = std::to_string(date.year());
        const std::string month = std::to_string(date.month());
        const std::string file = folder + "/" + year + "-" + month + "/tarvex-base-pro-" + year
            + "_" + month + "_" + std::to_string(date.day()) + ".log";
        writeBytes(file, bytes);
        return file;
    }
    static QString text(logcontroller& viewer)
    {
        return viewer.findChild<QPlainTextEdit*>()->toPlainText();
    }
    static bool isReading(logcontroller& viewer)
    {
        return !viewer.findChild<QLabel*>(QStringLiteral("progressLabel"))->text().isEmpty();
    }

    Sandbox sandbox;
    std::string folder = Sandbox::path("日志 folder");
    const QDate today = QDate::currentDate();
};

TEST_F(LogViewer, opens_on_today_and_shows_the_chosen_day)
{
    const std::string file = write(today, "开始时间: 10:00:00:001\n生成的文件：\n/a/b.pdf\n");
    write(QDate(2024, 3, 7), "an old job\n");
    logcontroller viewer(QString::fromStdString(folder));
    viewer.show();
    QCoreApplication::processEvents();
    saveScreenshot(viewer, QStringLiteral("log_viewer"));
    EXPECT_EQ(QStringLiteral("日志管理模块"), viewer.windowTitle());
    EXPECT_TRUE(text(viewer).startsWith(QStringLiteral("开始时间: 10:00:00:001\n")));
    EXPECT_TRUE(viewer.findChild<QPlainTextEdit*>()->isReadOnly());
    EXPECT_THAT(Sandbox::runLog(), HasSubstr("destLogPath = " + file));

    auto* date = viewer.findChild<QDateEdit*>(QStringLiteral("dateEdit"));
    date->setDate(QDate(2024, 3, 7));
    EXPECT_EQ(QStringLiteral("an old job\n"), text(viewer));
    EXPECT_THAT(
        Sandbox::runLog(), HasSubstr("[func:onDateChanged]year = 2024, month = 3, day = 7"));
    date->setDate(QDate(2023, 1, 1)); // no such month
    EXPECT_EQ(kNothing, text(viewer));

    auto* back = viewer.findChild<QPushButton*>(QStringLiteral("todayBtn"));
    back->click();
    EXPECT_EQ(today, date->date());
    EXPECT_TRUE(text(viewer).startsWith(QStringLiteral("开始时间")));
    write(today, "one more job\n");
    back->click();
    EXPECT_EQ(QStringLiteral("one more job\n"), text(viewer));
    viewer.findChild<QPushButton*>(QStringLiteral("exitBtn"))->click();
    EXPECT_FALSE(viewer.isVisible());
}

TEST_F(LogViewer, an_empty_file_is_empty_and_what_is_no_file_is_not_found)
{
    const std::string file = write(today, "");
    logcontroller empty(QString::fromStdString(folder));
    EXPECT_EQ(QString(), text(empty));
    std::remove(file.c_str());
    ASSERT_EQ(0, ::mkfifo(file.c_str(), 0666)); // would wait for a writer for ever
    logcontroller pipe(QString::fromStdString(folder));
    EXPECT_EQ(kNothing, text(pipe));
    std::remove(file.c_str());
    ASSERT_EQ(0, ::mkdir(file.c_str(), 0777));
    logcontroller directory(QString::fromStdString(folder));
    EXPECT_EQ(kNothing, text(directory));
}

TEST_F(LogViewer, fifty_megabytes_are_on_the_screen_at_once_and_the_window_answers)
{
    std::string bytes;
    while (bytes.size() < 50 * 1024 * 1024) {
        bytes += "/data/扫描文件/2024/合同-" + std::to_string(bytes.size()) + ".pdf\n";
    }
    write(today, bytes);
    QElapsedTimer timer;
    timer.start();
    logcontroller viewer(QString::fromStdString(folder));
    viewer.show();
    EXPECT_TRUE(text(viewer).startsWith(QStringLiteral("/data/扫描文件/2024/合同-0.pdf\n")));
    EXPECT_LT(timer.elapsed(), 1000);
    // a clock that ticks as long as the event loop runs
    qint64 longest = 0;
    QElapsedTimer sinceTick;
    sinceTick.start();
    QTimer tick;
    QObject::connect(
        &tick, &QTimer::timeout, [&] { longest = std::max(longest, sinceTick.restart()); });
    tick.start(5);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !isReading(viewer); }, 60000));
    RecordProperty("all_ms", std::to_string(timer.elapsed()));
    RecordProperty("longest_gap_ms", std::to_string(longest));
    EXPECT_LT(longest, 500);
    EXPECT_EQ(QString::fromStdString(bytes), text(viewer));
}

TEST_F(LogViewer, another_day_ends_the_reading_of_a_long_one)
{
    write(today, std::string(20 * 1024 * 1024, '\n'));
    write(QDate(2024, 3, 7), "short\n");
    logcontroller viewer(QString::fromStdString(folder));
    EXPECT_TRUE(isReading(viewer));
    viewer.findChild<QDateEdit*>(QStringLiteral("dateEdit"))->setDate(QDate(2024, 3, 7));
    QTest::qWait(50);
    EXPECT_FALSE(isReading(viewer));
    EXPECT_EQ(QStringLiteral("short\n"), text(viewer));
}

TEST_F(LogViewer, bytes_that_are_no_text_do_no_harm)
{
    std::string bytes(3 * 1024 * 1024, '\0');
    unsigned value = 1;
    for (char& byte : bytes) {
        value = value * 1103515245U + 12345U;
        byte = static_cast<char>(value >> 16U);
        byte = byte == '\n' ? 'n' : byte; // one line
    }
    write(today, bytes);
    logcontroller viewer(QString::fromStdString(folder));
    viewer.show();
    QElapsedTimer timer;
    timer.start();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !isReading(viewer); }, 30000));
    viewer.grab();
    EXPECT_LT(timer.elapsed(), 20000);
    EXPECT_GT(text(viewer).size(), 1024 * 1024);
    EXPECT_FALSE(text(viewer).contains(QChar(0)));
}

QString readAll(LogFileReader& reader)
{
    QString text;
    while (!reader.atEnd()) {
        text += reader.next();
    }
    return text;
}

TEST_F(LogViewer, characters_survive_the_borders_of_portions)
{
    for (int shift = 0; shift < 4; ++shift) {
        std::string bytes(static_cast<std::size_t>(shift), 'x');
        QString expected(shift, QLatin1Char('x'));
        while (bytes.size() < 2 * LogFileReader::kPortionBytes + 10) {
            bytes += "合同😀\r\n";
            expected += QStringLiteral("合同😀\n");
        }
        LogFileReader reader(QString::fromStdString(write(today, bytes)));
        EXPECT_EQ(expected, readAll(reader)) << shift;
    }
}

TEST_F(LogViewer, broken_text_is_marked_and_long_lines_are_cut)
{
    LogFileReader broken(QString::fromStdString(write(today,
        "a\xff"
        "b\x01"
        "c\td\xe5\x90")));
    EXPECT_EQ(QStringLiteral("a\ufffdb\ufffdc\td\ufffd"), readAll(broken));
    LogFileReader longLine(QString::fromStdString(write(today, std::string(10000, 'x'))));
    const QStringList lines = readAll(longLine).split(QLatin1Char('\n'));
    ASSERT_EQ(3, lines.size());
    EXPECT_EQ(LogFileReader::kMaxLine, lines.at(0).size());
    EXPECT_EQ(10000, lines.join(QString()).size());
}

TEST_F(LogViewer, of_a_giant_file_the_newest_part_is_read_from_a_whole_line)
{
    const std::string file = write(today, "first line\n");
    ASSERT_EQ(0, ::truncate(file.c_str(), LogFileReader::kMaxBytes + 100)); // zeros, no disk space
    const std::string end = "\nlast line\n";
    std::string tail = readBytes(file);
    tail.replace(200, 1, "\n");
    tail += end;
    writeBytes(file, tail);
    LogFileReader reader(QString::fromStdString(file));
    EXPECT_EQ(static_cast<qint64>(100 + end.size()), reader.skippedBytes());
    const QString text = readAll(reader);
    EXPECT_FALSE(text.contains(QStringLiteral("first line")));
    EXPECT_TRUE(text.endsWith(QStringLiteral("\nlast line\n")));
}

} // namespace
