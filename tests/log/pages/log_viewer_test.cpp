// The log viewer: the right file of a day, and files that no one would like to open.
#include "log/log_file_reader.h"
#include "log/logcontroller.h"
#include "tests/support/sandbox.h"

#include <QDateEdit>
#include <QElapsedTimer>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <gmock/gmock.h>
#include <sys/stat.h>

namespace {

class LogViewer : public ::testing::Test
{
protected:
    /// Writes the file of that day where the job log puts it.
    std::string write(const QDate& date, const std::string& bytes)
    {
        const std::string file =
            folder + date.toString("/yyyy-M/'tarvex-base-pro-'yyyy_M_d'.log'").toStdString();
        writeBytes(file, bytes);
        return file;
    }
    struct Viewer
    {
        explicit Viewer(const std::string& folder)
            : dialog(QString::fromStdString(folder))
        {
            dialog.show();
        }
        QString text() { return dialog.findChild<QPlainTextEdit*>()->toPlainText(); }
        bool isReading() { return !dialog.findChild<QLabel*>("progressLabel")->text().isEmpty(); }
        void press(const char* name) { dialog.findChild<QPushButton*>(name)->click(); }

        logcontroller dialog;
        QDateEdit& date { *dialog.findChild<QDateEdit*>("dateEdit") };
    };
    static QString readAll(const std::string& file)
    {
        LogFileReader reader(QString::fromStdString(file));
        QString text;
        while (!reader.atEnd()) {
            text += reader.next();
        }
        return text;
    }

    Sandbox sandbox;
    std::string folder = Sandbox::path("日志 folder");
    const QDate today = QDate::currentDate();
    const QDate oldDay { 2024, 3, 7 };
    const QString kNothing = "未找到所选日期日志！";
};

} // namespace

TEST_F(LogViewer, OpensOnTodayAndShowsTheChosenDay)
{
    const std::string file = write(today, "开始时间: 10:00:00:001\n生成的文件：\n/a/b.pdf\n");
    write(oldDay, "an old job\n");
    Viewer viewer(folder);
    EXPECT_TRUE(viewer.text().startsWith("开始时间: 10:00:00:001\n"));
    EXPECT_TRUE(viewer.dialog.findChild<QPlainTextEdit*>()->isReadOnly());
    EXPECT_THAT(Sandbox::runLog(), ::testing::HasSubstr("destLogPath = " + file));
    viewer.date.setDate(oldDay);
    EXPECT_EQ(viewer.text(), "an old job\n");
    viewer.date.setDate(QDate(2023, 1, 1)); // no such month
    EXPECT_EQ(viewer.text(), kNothing);
    viewer.press("todayBtn");
    EXPECT_EQ(viewer.date.date(), today);
    EXPECT_TRUE(viewer.text().startsWith("开始时间"));
    write(today, "one more job\n");
    viewer.press("todayBtn");
    EXPECT_EQ(viewer.text(), "one more job\n");
}

TEST_F(LogViewer, AnEmptyFileIsEmptyAndWhatIsNoFileIsNotFound)
{
    const std::string file = write(today, "");
    EXPECT_EQ(Viewer(folder).text(), "");
    std::remove(file.c_str());
    ASSERT_EQ(0, ::mkfifo(file.c_str(), 0666)); // would wait for a writer for ever
    EXPECT_EQ(Viewer(folder).text(), kNothing);
    std::remove(file.c_str());
    ASSERT_EQ(0, ::mkdir(file.c_str(), 0777));
    EXPECT_EQ(Viewer(folder).text(), kNothing);
}

TEST_F(LogViewer, FiftyMegabytesAreOnTheScreenAtOnceAndTheWindowAnswers)
{
    std::string bytes;
    while (bytes.size() < 50 * 1024 * 1024) {
        bytes += "/data/扫描文件/2024/合同-" + std::to_string(bytes.size()) + ".pdf\n";
    }
    write(today, bytes);
    QElapsedTimer timer;
    timer.start();
    Viewer viewer(folder);
    EXPECT_TRUE(viewer.text().startsWith("/data/扫描文件/2024/合同-0.pdf\n"));
    EXPECT_LT(timer.elapsed(), 1000);
    // a clock that ticks as long as the event loop runs
    qint64 longest = 0;
    QElapsedTimer sinceTick;
    sinceTick.start();
    QTimer tick;
    QObject::connect(
        &tick, &QTimer::timeout, [&] { longest = std::max(longest, sinceTick.restart()); });
    tick.start(5);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !viewer.isReading(); }, 60000));
    RecordProperty("all_ms", std::to_string(timer.elapsed()));
    RecordProperty("longest_gap_ms", std::to_string(longest));
    EXPECT_LT(longest, 500);
    EXPECT_EQ(viewer.text(), QString::fromStdString(bytes));
}

TEST_F(LogViewer, AnotherDayEndsTheReadingOfALongOne)
{
    write(today, std::string(20 * 1024 * 1024, '\n'));
    write(oldDay, "short\n");
    Viewer viewer(folder);
    EXPECT_TRUE(viewer.isReading());
    viewer.date.setDate(oldDay);
    QTest::qWait(50);
    EXPECT_FALSE(viewer.isReading());
    EXPECT_EQ(viewer.text(), "short\n");
    viewer.date.setDate(today);
    viewer.date.setDate(QDate(2023, 1, 1));
    EXPECT_FALSE(viewer.isReading()) << "nothing is left to read";
}

TEST_F(LogViewer, BytesThatAreNoTextDoNoHarm)
{
    std::string bytes(3 * 1024 * 1024, '\0');
    unsigned value = 1;
    for (char& byte : bytes) {
        value = value * 1103515245U + 12345U;
        byte = static_cast<char>(value >> 16U);
        byte = byte == '\n' ? 'n' : byte; // one line
    }
    write(today, bytes);
    Viewer viewer(folder);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !viewer.isReading(); }, 20000));
    viewer.dialog.grab();
    EXPECT_GT(viewer.text().size(), 1024 * 1024);
    EXPECT_FALSE(viewer.text().contains(QChar(0)));
}

TEST_F(LogViewer, CharactersSurviveTheBordersOfPortionsAndBrokenOnesAreMarked)
{
    for (int shift = 0; shift < 4; ++shift) {
        std::string bytes(static_cast<std::size_t>(shift), 'x');
        QString expected(shift, 'x');
        while (bytes.size() < 2 * LogFileReader::kPortionBytes + 10) {
            bytes += "合同😀\r\n";
            expected += "合同😀\n";
        }
        EXPECT_EQ(expected, readAll(write(today, bytes))) << shift;
    }
    EXPECT_EQ("a\ufffdb\ufffdc\td\ufffd",
        readAll(write(today,
            "a\xff"
            "b\x01"
            "c\td\xe5\x90")));
    const QStringList lines = readAll(write(today, std::string(10000, 'x'))).split('\n');
    ASSERT_EQ(3, lines.size()) << "long lines are cut";
    EXPECT_EQ(LogFileReader::kMaxLine, lines.at(0).size());
    EXPECT_EQ(10000, lines.join(QString()).size());
}

TEST_F(LogViewer, OfAGiantFileTheNewestPartIsReadFromAWholeLine)
{
    const std::string file = write(today, "first line\n");
    ASSERT_EQ(0, ::truncate(file.c_str(), LogFileReader::kMaxBytes + 100)); // zeros, no disk space
    const std::string end = "\nlast line\n";
    std::string tail = readBytes(file);
    tail.replace(200, 1, "\n");
    writeBytes(file, tail + end);
    EXPECT_EQ(static_cast<qint64>(100 + end.size()),
        LogFileReader(QString::fromStdString(file)).skippedBytes());
    const QString text = readAll(file);
    EXPECT_FALSE(text.contains("first line"));
    EXPECT_TRUE(text.endsWith("\nlast line\n"));
    // from byte 201 on, without its two line ends
    EXPECT_EQ(text.size() - text.count('\n'), LogFileReader::kMaxBytes + 111 - 201 - 2);
}
