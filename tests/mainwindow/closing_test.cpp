// Closing, in every way: exit status 0, nothing lost, nothing left running, the library released
// last.
#include "dialogs/onlinescanners.h"
#include "tests/mainwindow/window_fixture.h"

#include <QAbstractButton>

#include <gmock/gmock.h>

using ::testing::HasSubstr;

class Closing : public WindowTest
{
protected:
    /// Closes, and tells the exit status of a closing that is in time.
    int closeInTime(const std::function<void(MainWindow&)>& close)
    {
        QElapsedTimer timer;
        timer.start();
        const int status = closeWindow(close);
        EXPECT_LT(timer.elapsed(), 5000);
        EXPECT_EQ(fake.callOrder().back(), "UnInit");
        EXPECT_TRUE(logHas("应用窗口关闭"));
        return status;
    }
};

TEST_F(Closing, EveryWay)
{
    struct Way
    {
        const char* name;
        std::function<void()> before;
        std::function<void(MainWindow&)> close;
    };
    const auto titleBar = [](MainWindow& w) { w.close(); };
    const Way ways[] = {
        { "exit button", [] {},
            [](MainWindow& w) { w.findChild<QAbstractButton*>("exitMainBtn")->click(); } },
        { "end of the application", [] {}, [](MainWindow&) { QApplication::quit(); } },
        { "parked monitor", [this] { window().ThreadKeyPause(); }, titleBar },
        { "a poll of the buttons hangs",
            [this] {
                fake.script("delay|GetButtonStatus|1500\n");
                ASSERT_TRUE(polls());
            },
            titleBar },
        { "an error that still holds its thread",
            [this] {
                const Heard errors(window(), &MainWindow::scanStatusError);
                startJob("step|error|-41\nstep|wait\n");
                ASSERT_TRUE(QTest::qWaitFor([&] { return errors.size() == 1; }));
            },
            titleBar },
        { "under a dialog of the window", [] {},
            [](MainWindow& w) {
                QTimer::singleShot(100, &w, [&w] { w.close(); });
                w.dynamic_state_msg_box("标题", "文字");
            } },
    };
    for (const Way& way : ways) {
        SCOPED_TRACE(way.name);
        fake.script("reset");
        choose();
        way.before();
        EXPECT_EQ(closeInTime(way.close), 0);
    }
    EXPECT_TRUE(logHas("硬按键线程结束！"));
    EXPECT_TRUE(logHas("destroy mutex and cond !"));
}

TEST_F(Closing, ByTheDeviceDialogWithoutAChoice)
{
    auto* dialog = new onlineScanners;
    window().m_onlineScanners = dialog;
    QObject::connect(dialog, &onlineScanners::unInitmainWindow, &window(),
        &MainWindow::slot_onlinescanners_quit);
    dialog->show();
    EXPECT_EQ(closeInTime([dialog](MainWindow&) { dialog->onPrecessCancelBtn(); }), 0);
    EXPECT_TRUE(logHas("print ----> unInit this word"));
    EXPECT_FALSE(fileExists(Sandbox::userFolder() + "/Orvascan A300")) << "no device, no settings";
}

TEST_F(Closing, WhileAJobRunsCancelsItAndKeepsItsRecord)
{
    choose();
    logJobs();
    startJob("step|image|kept.jpg|4|4\nstep|wait\n");
    ASSERT_TRUE(QTest::qWaitFor([this] { return fileExists(outputFolder() + "/kept.jpg"); }));
    EXPECT_EQ(closeInTime([](MainWindow& w) { w.close(); }), 0);
    EXPECT_EQ(fake.count("CancelScan"), 1);
    EXPECT_TRUE(fileExists(outputFolder() + "/kept.jpg"));
    EXPECT_THAT(jobLog(), HasSubstr("kept.jpg"));
}
