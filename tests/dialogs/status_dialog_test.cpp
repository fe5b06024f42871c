// The progress dialog through a scan: what it says, and what its button does.
#include "dialogs/statusdialog.h"
#include "tests/support/sandbox.h"

#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QWindow>

#include <gtest/gtest.h>

namespace {

class StatusDialogTest : public testing::Test
{
protected:
    void report(int code) { dialog.ShowStatusInfo(code, 1, 1, -1); }

    Sandbox sandbox;
    StatusDialog dialog;
    QPushButton* button = dialog.findChild<QPushButton*>("pushButton");
    QLabel* label = dialog.findChild<QLabel*>("label");
    QSignalSpy cancelled { &dialog, &StatusDialog::SignalsInformCancelScan };
};

} // namespace

TEST_F(StatusDialogTest, TextsByCodeWithAndWithoutRecognition)
{
    struct Case
    {
        int code, ocrPage;
        const char *title, *text;
    };
    const Case cases[] = {
        { -1, 3, "扫描中...", "\n扫描开始" },
        { 0, 0, "扫描中...", "已扫描页数:12\n已处理页数:11\n已识别页数:0\n" },
        { 0, -1, "扫描中...", "已扫描页数:12\n已处理页数:11" },
        { 1, 9, "扫描完成", "共扫描页数:12\n共处理页数:11\n共识别页数:9\n" },
        { 1, -1, "扫描完成", "一共扫描页数:12\n一共处理页数:11" },
        { 5, 9, "", "" },
    };
    for (const Case& c : cases) {
        dialog.ShowStatusInfo(c.code, 12, 11, c.ocrPage);
        EXPECT_EQ(dialog.windowTitle(), c.title);
        EXPECT_EQ(label->text(), c.text);
    }
}

TEST_F(StatusDialogTest, ButtonFollowsTheScanAndCancelIsSentOnce)
{
    report(-1);
    dialog.show();
    EXPECT_FALSE(button->isVisible());
    for (const int code : { 0, 5 }) {
        report(code);
        EXPECT_TRUE(button->isVisible() && button->isEnabled());
        EXPECT_EQ(button->text(), "取消扫描");
    }
    report(1);
    EXPECT_EQ(button->text(), "确 定");
    QTest::mouseClick(button, Qt::LeftButton);
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_EQ(cancelled.count(), 0) << "closing the totals cancels nothing";

    for (const int scan : { 1, 2 }) {
        report(-1);
        report(5);
        report(0);
        EXPECT_TRUE(button->isEnabled()) << "starts afresh";
        dialog.show();
        QTest::mouseClick(button, Qt::LeftButton);
        EXPECT_EQ(cancelled.count(), scan);
        EXPECT_FALSE(dialog.isVisible());
        report(5);
        EXPECT_FALSE(button->isEnabled()) << "a late report of a cancelled scan";
    }
}

TEST_F(StatusDialogTest, EnterClosesTheTotalsButNeverCancelsARunningScan)
{
    report(-1);
    dialog.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog));
    report(0);
    for (const Qt::Key key : { Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space }) {
        QTest::keyClick(dialog.windowHandle(), key);
    }
    EXPECT_EQ(cancelled.count(), 0) << "the key that started the scan, held too long";
    EXPECT_TRUE(dialog.isVisible());
    QTest::keyClick(dialog.windowHandle(), Qt::Key_Tab);
    EXPECT_TRUE(button->hasFocus()) << "the button is in reach of the keyboard";

    report(1);
    QTest::keyClick(dialog.windowHandle(), Qt::Key_Return);
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_EQ(cancelled.count(), 0);
}

TEST_F(StatusDialogTest, EscapeAndTheTitleBarDoWhatTheButtonDoes)
{
    report(-1);
    dialog.show();
    QTest::keyClick(&dialog, Qt::Key_Escape);
    dialog.close();
    EXPECT_TRUE(dialog.isVisible()) << "no button, nothing to do";
    report(0);
    QTest::keyClick(&dialog, Qt::Key_Escape);
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_EQ(cancelled.count(), 1);
    report(1);
    dialog.show();
    dialog.close();
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_EQ(cancelled.count(), 1);
}

TEST_F(StatusDialogTest, LargeCountsAreNotCut)
{
    dialog.ShowStatusInfo(1, 1234567890, 1234567890, 1234567890);
    dialog.show();
    for (const QWidget* part : { static_cast<QWidget*>(label), static_cast<QWidget*>(button) }) {
        EXPECT_GE(part->width(), part->sizeHint().width());
        EXPECT_GE(part->height(), part->sizeHint().height());
        EXPECT_TRUE(dialog.rect().contains(part->geometry()));
    }
    EXPECT_FALSE(button->geometry().intersects(label->geometry()));
}
