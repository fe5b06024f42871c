// A library that comes back late: polls and scans that do not return in time, callbacks that still
// run when the next job begins. Nothing reaches a window that is gone, nothing waits for ever, and
// every job keeps what is its own.
#include "app/timing.h"
#include "dialogs/statusmesbox.h"
#include "log/itprojectlog.h"
#include "tests/mainwindow/window_fixture.h"

#include <QApplication>
#include <QDate>
#include <QPushButton>

#include <thread>

namespace {

constexpr int kPollLimitMs = static_cast<int>(timing::kPollLimit.count());

int shownErrors()
{
    int count = 0;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        count += widget->isVisible() && qobject_cast<StatusMessageBox*>(widget) != nullptr ? 1 : 0;
    }
    return count;
}

std::string delay(const char* entry, int ms)
{
    return std::string("delay|") + entry + '|' + std::to_string(ms) + '\n';
}

} // namespace

class LateLibrary : public WindowTest
{
protected:
    void SetUp() override
    {
        choose();
        ASSERT_TRUE(waitCount("GetButtonStatus", 1));
    }
    /// A poll that takes so long is under way.
    void hangPoll(int ms)
    {
        fake.script(delay("GetButtonStatus", ms));
        ASSERT_TRUE(waitCount("GetButtonStatus", fake.count("GetButtonStatus") + 1));
        fake.script(delay("GetButtonStatus", 0));
    }
    /// Closes while that lasts, and waits until the thread is heard of again.
    void closeAndWaitFor(const char* logged)
    {
        QElapsedTimer closing;
        closing.start();
        EXPECT_EQ(closeWindow(), 0);
        EXPECT_LT(closing.elapsed(), timing::kCloseLimit.count());
        EXPECT_FALSE(logHas(logged)) << "the thread was to be late";
        EXPECT_EQ(fake.count("UnInit"), 0) << "a thread is inside the library";
        EXPECT_TRUE(QTest::qWaitFor([logged] { return logHas(logged); }, 10000));
        QTest::qWait(100); // what it may do after that line
    }
};

TEST_F(LateLibrary, APollThatReturnsWhenTheWindowIsGoneStartsNothing)
{
    fake.press(1);
    ASSERT_NO_FATAL_FAILURE(hangPoll(4500));
    closeAndWaitFor("硬按键线程结束！");
    EXPECT_EQ(fake.count("Scan"), 0);
}

TEST_F(LateLibrary, AScanThatReturnsWhenTheWindowIsGoneSpeaksToNobody)
{
    fake.script("job|clear\nstep|state|2|1|/out/late.jpg\n" + delay("Scan", 5500));
    click("scanMainBtn");
    ASSERT_TRUE(waitCount("Scan", 1));
    const int cleared = fake.count("ClearTmpData");
    closeAndWaitFor("# MainWindow::doScanner # scan end return");
    EXPECT_TRUE(logHas("gmainWindow = NULL"));
    EXPECT_EQ(fake.count("ClearTmpData"), cleared);
}

TEST_F(LateLibrary, AStartMeetsAPollThatHangsAndIsRefusedInTime)
{
    ASSERT_NO_FATAL_FAILURE(hangPoll(3 * kPollLimitMs));
    QElapsedTimer waited;
    waited.start();
    click("scanMainBtn");
    EXPECT_GE(waited.elapsed(), kPollLimitMs);
    EXPECT_LT(waited.elapsed(), 2 * kPollLimitMs);
    EXPECT_EQ(shownErrors(), 1);
    EXPECT_EQ(fake.count("Scan"), 0);
    // as soon as the library answers again, so does the button
    ASSERT_TRUE(waitCount("GetButtonStatus", fake.count("GetButtonStatus") + 1));
    click("scanMainBtn");
    EXPECT_TRUE(waitCount("Scan", 1));
    EXPECT_TRUE(waitIdle());
}

TEST_F(LateLibrary, AStartDoesNotWaitForEverForWhatAButtonDoes)
{
    QObject::connect(
        &window(), &MainWindow::SignalThreadStartScan, &window(),
        [] { std::this_thread::sleep_for(3 * timing::kPollLimit); }, Qt::DirectConnection);
    QElapsedTimer waited;
    waited.start();
    fake.press(1);
    ASSERT_TRUE(waitCount("Scan", 1));
    EXPECT_LT(waited.elapsed(), 2 * kPollLimitMs);
    ASSERT_TRUE(waitIdle());
    const int polls = fake.count("GetButtonStatus");
    EXPECT_TRUE(waitCount("GetButtonStatus", polls + 1)) << "the monitor goes on afterwards";
}

TEST_F(LateLibrary, AnEndThatStillRunsBelongsToItsOwnJob)
{
    writeBytes(Sandbox::path("joblog/keep"), "");
    IOFLog.setEnabledValue(1);
    IOFLog.GetDestSavePath(Sandbox::path("joblog").c_str());
    bool slow = true;
    QObject::connect(
        &window(), &MainWindow::scanStatusOccur, &window(),
        [&slow](int isEnd) {
            if (isEnd == 1 && slow) {
                slow = false;
                std::this_thread::sleep_for(std::chrono::milliseconds(500));
            }
        },
        Qt::DirectConnection);
    const Heard records(window(), &MainWindow::final_signal_iof_batch);
    fake.script("job|clear\njob|no-end\nstep|state|1|1|\nstep|state|2|1|/out/one.jpg\nstep|wait\n");
    click("scanMainBtn");
    ASSERT_TRUE(QTest::qWaitFor([] { return logHas("/out/one.jpg"); }));
    fake.script("fire|state|-1|0|\nrelease\njob|clear\n"
                "step|state|1|1|\nstep|state|1|2|\nstep|state|2|1|/out/two.jpg\n");
    ASSERT_TRUE(waitIdle());
    EXPECT_EQ(records.size(), 0) << "the end was to be late";
    click("scanMainBtn");
    ASSERT_TRUE(waitCount("Scan", 2));
    ASSERT_TRUE(waitIdle());
    IOFLog.setEnabledValue(0);
    EXPECT_EQ(records.size(), 2);
    const QDate today = QDate::currentDate();
    const std::string log =
        readBytes(Sandbox::path("joblog") + today.toString("/yyyy-M/").toStdString()
            + "tarvex-base-pro-" + today.toString("yyyy_M_d").toStdString() + ".log");
    const std::string success = "\n扫描结果: 成功!\n生成的文件：\n";
    EXPECT_NE(log.find("作业页数: 1" + success + "/out/one.jpg\n---"), std::string::npos) << log;
    EXPECT_NE(log.find("作业页数: 2" + success + "/out/two.jpg\n"), std::string::npos) << log;
}

TEST_F(LateLibrary, ButtonTwoBetweenAnErrorAndTheEndOpensTheNextResult)
{
    OpenedUrls opened;
    fake.script("job|clear\nstep|error|-41\nstep|wait\n");
    click("scanMainBtn");
    ASSERT_TRUE(waitCount("Scan", 1));
    fake.script("result|GetButtonStatus|2|1\n"); // also while a job runs
    ASSERT_TRUE(QTest::qWaitFor([] { return logHas("a job is running, start follows"); }, 10000));
    fake.script("job|clear\nstep|image|wanted.jpg|4|4\nrelease\n");
    ASSERT_TRUE(QTest::qWaitFor([&] { return opened.urls.size() == 1; }, 10000));
    EXPECT_EQ(opened.urls.first().toLocalFile().toStdString(), outputFolder() + "/wanted.jpg");
}
