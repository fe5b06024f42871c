// Closing, in every way: exit status 0, nothing lost, nothing left running, the library released
// last.
#include "dialogs/onlinescanners.h"
#include "log/itprojectlog.h"
#include "tests/mainwindow/window_fixture.h"
#include "tests/support/answer_modal.h"

#include <QApplication>
#include <QDate>
#include <QFileDialog>
#include <QPushButton>
#include <QTimer>

class Closing : public WindowTest
{
protected:
    static constexpr int kLimitMs = 5000;
    /// Closes, and tells whether it took less than the limit.
    int closeInTime(const std::function<void(MainWindow&)>& close)
    {
        QElapsedTimer timer;
        timer.start();
        const int status = closeWindow(close);
        EXPECT_LT(timer.elapsed(), kLimitMs);
        EXPECT_EQ(fake.callOrder().back(), "UnInit");
        return status;
    }
};

TEST_F(Closing, ByTitleBarWithoutADevice)
{
    window().show();
    EXPECT_EQ(closeInTime([](MainWindow& w) { w.close(); }), 0);
    EXPECT_TRUE(logHas("应用窗口关闭"));
}

TEST_F(Closing, ByTheExitButtonWithADevice)
{
    choose();
    EXPECT_EQ(closeInTime([](MainWindow& w) {
        w.findChild<QPushButton*>(QStringLiteral("exitMainBtn"))->click();
    }),
        0);
    EXPECT_TRUE(logHas("硬按键线程结束！"));
    EXPECT_TRUE(logHas("destroy mutex and cond !"));
    EXPECT_TRUE(fileExists(Sandbox::userFolder() + "/Orvascan A300/Orvascan A300.ini"));
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
}

TEST_F(Closing, ByTheEndOfTheApplication)
{
    choose();
    EXPECT_EQ(closeInTime([](MainWindow&) { QApplication::quit(); }), 0);
    EXPECT_TRUE(logHas("应用窗口关闭"));
}

TEST_F(Closing, WhileTheMonitorIsParked)
{
    choose();
    window().ThreadKeyPause();
    EXPECT_EQ(closeInTime([](MainWindow& w) { w.close(); }), 0);
}

TEST_F(Closing, WhileAJobRunsCancelsItAndKeepsItsRecord)
{
    choose();
    writeBytes(Sandbox::path("joblog/keep"), "");
    IOFLog.setEnabledValue(1);
    IOFLog.GetDestSavePath(Sandbox::path("joblog").c_str());
    fake.script("job|clear\nstep|image|kept.jpg|4|4\nstep|wait\n");
    click("scanMainBtn");
    ASSERT_TRUE(QTest::qWaitFor([this] { return fileExists(outputFolder() + "/kept.jpg"); }));
    EXPECT_EQ(closeInTime([](MainWindow& w) { w.close(); }), 0);
    IOFLog.setEnabledValue(0);
    EXPECT_EQ(fake.count("CancelScan"), 1);
    EXPECT_TRUE(fileExists(outputFolder() + "/kept.jpg"));
    const QDate today = QDate::currentDate();
    const std::string log =
        readBytes(Sandbox::path("joblog") + today.toString("/yyyy-M/").toStdString()
            + "tarvex-base-pro-" + today.toString("yyyy_M_d").toStdString() + ".log");
    EXPECT_NE(log.find("kept.jpg"), std::string::npos) << log;
}

TEST_F(Closing, RightAfterAnErrorThatStillHoldsItsThread)
{
    choose();
    fake.script("job|clear\nstep|error|-41\nstep|wait\n");
    const Heard errors(window(), &MainWindow::scanStatusError);
    click("scanMainBtn");
    ASSERT_TRUE(QTest::qWaitFor([&] { return errors.size() == 1; }));
    EXPECT_EQ(closeInTime([](MainWindow& w) { w.close(); }), 0);
}

TEST_F(Closing, UnderAnOpenDialogOfTheWindow)
{
    choose();
    EXPECT_EQ(closeInTime([](MainWindow& w) {
        QTimer::singleShot(100, &w, [&w] { w.close(); });
        w.dynamic_state_msg_box(QStringLiteral("标题"), QStringLiteral("文字"));
    }),
        0);
}

TEST_F(Closing, WhileAPollOfTheButtonsHangs)
{
    choose();
    fake.script("delay|GetButtonStatus|1500\n");
    ASSERT_TRUE(waitCount("GetButtonStatus", fake.count("GetButtonStatus") + 1));
    EXPECT_EQ(closeInTime([](MainWindow& w) { w.close(); }), 0);
}
