// The scanner's own buttons: what each value does, and pause and resume against each other.
#include "app/timing.h"
#include "tests/mainwindow/window_fixture.h"

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
    /// For more than a poll interval of this build.
    bool rests()
    {
        const int polls = fake.count("GetButtonStatus");
        QTest::qWait(300);
        return fake.count("GetButtonStatus") == polls;
    }
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
    EXPECT_TRUE(polls(2));
    EXPECT_EQ(fake.count("Scan"), 1);
    EXPECT_TRUE(logHas("[func:onStartScan]normal scan, set KeyPress stop"));
}

TEST_F(Keys, ButtonTwoOpensTheLastFileOnceAndNeverThatOfAnotherJob)
{
    const OpenedUrls opened;
    fake.script("job|clear\nstep|image|first.jpg|4|4\nstep|image|最后.jpg|4|4\n");
    fake.press(2);
    ASSERT_TRUE(QTest::qWaitFor([&] { return opened.urls.size() == 1; }, 10000));
    EXPECT_EQ(opened.urls.first().toLocalFile().toStdString(), outputFolder() + "/最后.jpg");
    ASSERT_TRUE(polls(2));

    for (const char* fault : { "step|error|-41\n", "result|SetScanSource|-16|1\n" }) {
        const int refused = fake.count("SetScanSource");
        fake.script(std::string("job|clear\n") + fault);
        fake.press(2);
        ASSERT_TRUE(waitCount("SetScanSource", refused + 1));
        ASSERT_TRUE(polls(2));
        ASSERT_TRUE(waitIdle());
        runJob("step|image|later.jpg|4|4\n");
        EXPECT_TRUE(polls(2));
        EXPECT_EQ(opened.urls.size(), 1) << fault;
    }
}

TEST_F(Keys, ButtonFourMinimisesAndRestores)
{
    fake.press(4);
    EXPECT_TRUE(QTest::qWaitFor([this] { return window().isMinimized(); }));
    fake.press(4);
    EXPECT_TRUE(
        QTest::qWaitFor([this] { return !window().isMinimized() && window().isVisible(); }));
}

TEST_F(Keys, ThereIsNoPollWhileAJobRuns)
{
    startJob("step|wait\n");
    ASSERT_TRUE(waitCount("Scan", 1));
    EXPECT_TRUE(rests());
    fake.release();
    ASSERT_TRUE(waitIdle());
}

TEST_F(Keys, PauseReturnsOnlyWhenThePollIsThroughAndTheWindowAnswersMeanwhile)
{
    fake.script("delay|GetButtonStatus|600\n");
    ASSERT_TRUE(polls());
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
    EXPECT_TRUE(rests());
    EXPECT_TRUE(logHas("[func:ThreadKeyPause]JudgeSet KeyPress is ok! next set scanner"));
    emit window().SignalThreadKeyStart();
    EXPECT_TRUE(polls(2));
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
    EXPECT_TRUE(rests()) << "asked again, and parked";
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
    emit window().SignalThreadKeyStart();
    EXPECT_TRUE(polls(2));
}
