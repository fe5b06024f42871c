// The scanner's own buttons: what each value does, and pause and resume against each other.
#include "app/timing.h"
#include "tests/mainwindow/window_fixture.h"

#include <QPushButton>

#include <atomic>
#include <thread>

class Keys : public WindowTest
{
protected:
    void SetUp() override
    {
        choose();
        ASSERT_TRUE(waitCount("GetButtonStatus", 1));
    }
    /// The monitor goes on polling.
    bool polls() { return waitCount("GetButtonStatus", fake.count("GetButtonStatus") + 2); }
};

TEST_F(Keys, ButtonOneScansWithinAPollAndTheTimeOfAStart)
{
    QElapsedTimer sincePress;
    sincePress.start();
    fake.press(1);
    while (fake.count("Scan") == 0 && sincePress.elapsed() < 5000) {
        QTest::qWait(1);
    }
    EXPECT_LE(sincePress.elapsed(), timing::kButtonPoll.count() + kClickToScanMs);
    ASSERT_TRUE(waitIdle());
    EXPECT_TRUE(polls());
    EXPECT_EQ(fake.count("Scan"), 1);
    EXPECT_TRUE(logHas("[func:onStartScan]normal scan, set KeyPress stop"));
}

TEST_F(Keys, ButtonTwoOpensTheLastFileOnce)
{
    OpenedUrls opened;
    fake.script("job|clear\nstep|image|first.jpg|4|4\nstep|image|最后.jpg|4|4\n");
    fake.press(2);
    ASSERT_TRUE(QTest::qWaitFor([&] { return opened.urls.size() == 1; }, 10000));
    EXPECT_EQ(opened.urls.first().toLocalFile().toStdString(), outputFolder() + "/最后.jpg");
    EXPECT_TRUE(polls());
    EXPECT_EQ(opened.urls.size(), 1);
}

TEST_F(Keys, ButtonTwoOfAFailedJobOpensNothingLater)
{
    OpenedUrls opened;
    fake.script("job|clear\nstep|error|-41\n");
    fake.press(2);
    ASSERT_TRUE(waitCount("Scan", 1));
    ASSERT_TRUE(waitIdle());
    fake.script("job|clear\nstep|image|later.jpg|4|4\n");
    click("scanMainBtn");
    ASSERT_TRUE(waitIdle());
    EXPECT_TRUE(polls());
    EXPECT_TRUE(opened.urls.isEmpty());
}

TEST_F(Keys, ButtonFourMinimisesAndRestores)
{
    fake.press(4);
    EXPECT_TRUE(QTest::qWaitFor([this] { return window().isMinimized(); }));
    fake.press(4);
    EXPECT_TRUE(
        QTest::qWaitFor([this] { return !window().isMinimized() && window().isVisible(); }));
}

TEST_F(Keys, APressedButtonIsNotPolledWhileAJobRuns)
{
    fake.script("job|clear\nstep|wait\n");
    click("scanMainBtn");
    ASSERT_TRUE(waitCount("Scan", 1));
    const int polls = fake.count("GetButtonStatus");
    QTest::qWait(500); // two poll intervals of this build
    EXPECT_EQ(fake.count("GetButtonStatus"), polls);
    fake.release();
    ASSERT_TRUE(waitIdle());
}

TEST_F(Keys, PauseReturnsOnlyWhenThePollIsThroughAndTheWindowAnswersMeanwhile)
{
    fake.script("delay|GetButtonStatus|600\n");
    ASSERT_TRUE(waitCount("GetButtonStatus", fake.count("GetButtonStatus") + 1));
    int ticks = 0;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] { ++ticks; });
    timer.start(10);
    QElapsedTimer waited;
    waited.start();
    window().ThreadKeyPause();
    fake.script("delay|GetButtonStatus|0\n");
    EXPECT_GT(ticks, 5) << "timers run while the pause waits";
    EXPECT_LT(waited.elapsed(), 3000);
    const int polls = fake.count("GetButtonStatus");
    QTest::qWait(300);
    EXPECT_EQ(fake.count("GetButtonStatus"), polls);
    EXPECT_TRUE(logHas("[func:ThreadKeyPause]JudgeSet KeyPress is ok! next set scanner"));
    emit window().SignalThreadKeyStart();
    EXPECT_TRUE(this->polls());
}

TEST_F(Keys, APauseOfAParkedMonitorWaitsForTheResumeOnItsWay)
{
    window().ThreadKeyPause();
    std::thread late([this] {
        std::this_thread::sleep_for(std::chrono::milliseconds(350));
        emit window().SignalThreadKeyStart();
    });
    const int before = logCount("JudgeSet KeyPress is Not ok!");
    QElapsedTimer waited;
    waited.start();
    window().ThreadKeyPause();
    EXPECT_LT(waited.elapsed(), 2000) << "a resume that is taken back at once is acknowledged";
    late.join();
    EXPECT_GE(logCount("JudgeSet KeyPress is Not ok!") - before, 3) << "a line each retry time";
    EXPECT_TRUE(logHas("keyPress thread pause already"));
    const int polls = fake.count("GetButtonStatus");
    QTest::qWait(300);
    EXPECT_EQ(fake.count("GetButtonStatus"), polls) << "asked again, and parked";
    emit window().SignalThreadKeyStart();
}

TEST_F(Keys, PausesAndResumesFromSeveralThreadsAlwaysEnd)
{
    std::atomic<bool> stop { false };
    std::thread resumer([&] {
        while (!stop) {
            emit window().SignalThreadKeyStart();
            std::this_thread::sleep_for(std::chrono::microseconds(300));
        }
    });
    QElapsedTimer all;
    all.start();
    qint64 longest = 0;
    for (int i = 0; i < 200; ++i) {
        QElapsedTimer one;
        one.start();
        window().ThreadKeyPause();
        longest = std::max(longest, one.elapsed());
    }
    EXPECT_LT(longest, 2000);
    stop = true;
    resumer.join();
    EXPECT_LT(all.elapsed(), 20000);
    emit window().SignalThreadKeyStart();
    EXPECT_TRUE(polls());
}
