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
    Sandbox sandbox;
    StatusDialog dialog;
    QPushButton* button = dialog.findChild<QPushButton*>(QStringLiteral("pushButton"));
    QLabel* label = dialog.findChild<QLabel*>(QStringLiteral("label"));
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
        { -1, -1, "扫描中...", "\n扫描开始" },
        { 0, 0, "扫描中...", "已扫描页数:12\n已处理页数:11\n已识别页数:0\n" },
        { 0, -1, "扫描中...", "已扫描页数:12\n已处理页数:11" },
        { 1, 9, "扫描完成", "共扫描页数:12\n共处理页数:11\n共识别页数:9\n" },
        { 1, -1, "扫描完成", "一共扫描页数:12\n一共处理页数:11" },
        { 5, 9, "", "" },
    };
    for (const Case& report : cases) {
        SCOPED_TRACE(testing::Message() << "code " << report.code << ", ocr " << report.ocrPage);
        dialog.ShowStatusInfo(report.code, 12, 11, report.ocrPage);
        EXPECT_EQ(dialog.windowTitle(), QString::fromUtf8(report.title));
        EXPECT_EQ(label->text(), QString::fromUtf8(report.text));
    }
}

TEST_F(StatusDialogTest, ButtonFollowsTheScan)
{
    dialog.ShowStatusInfo(-1, 0, 0, -1);
    dialog.show();
    EXPECT_FALSE(button->isVisible());

    dialog.ShowStatusInfo(0, 1, 1, -1);
    EXPECT_TRUE(button->isVisible());
    EXPECT_TRUE(button->isEnabled());
    EXPECT_EQ(button->text(), QStringLiteral("取消扫描"));

    dialog.ShowStatusInfo(5, 1, 1, -1);
    EXPECT_EQ(button->text(), QStringLiteral("取消扫描"));
    EXPECT_TRUE(button->isEnabled());

    dialog.ShowStatusInfo(1, 1, 1, -1);
    EXPECT_EQ(button->text(), QStringLiteral("确 定"));
    QTest::mouseClick(button, Qt::LeftButton);
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_EQ(cancelled.count(), 0) << "closing the totals cancels nothing";
}

TEST_F(StatusDialogTest, CancelIsSentOnceAndTheNextScanStartsAfresh)
{
    dialog.ShowStatusInfo(0, 1, 1, -1);
    dialog.show();
    QTest::mouseClick(button, Qt::LeftButton);
    EXPECT_EQ(cancelled.count(), 1);
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_EQ(button->text(), QStringLiteral("确 定"));

    dialog.ShowStatusInfo(5, 1, 1, -1);
    EXPECT_FALSE(button->isEnabled()) << "a late report of a cancelled scan";
    dialog.ShowStatusInfo(-1, 0, 0, -1);
    dialog.ShowStatusInfo(5, 0, 0, -1);
    dialog.ShowStatusInfo(0, 1, 1, -1);
    EXPECT_TRUE(button->isEnabled());
    dialog.show();
    QTest::mouseClick(button, Qt::LeftButton);
    EXPECT_EQ(cancelled.count(), 2);
}

TEST_F(StatusDialogTest, EnterClosesTheTotalsButNeverCancelsARunningScan)
{
    dialog.ShowStatusInfo(-1, 0, 0, -1);
    dialog.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog));
    dialog.ShowStatusInfo(0, 1, 1, -1);
    for (const Qt::Key key : { Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space }) {
        QTest::keyClick(dialog.windowHandle(), key);
    }
    EXPECT_EQ(cancelled.count(), 0) << "the key that started the scan, held too long";
    EXPECT_TRUE(dialog.isVisible());

    QTest::keyClick(dialog.windowHandle(), Qt::Key_Tab);
    EXPECT_TRUE(button->hasFocus()) << "the button is in reach of the keyboard";

    dialog.ShowStatusInfo(1, 1, 1, -1);
    QTest::keyClick(dialog.windowHandle(), Qt::Key_Return);
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_EQ(cancelled.count(), 0);
}

TEST_F(StatusDialogTest, EscapeAndTheTitleBarDoWhatTheButtonDoes)
{
    dialog.ShowStatusInfo(-1, 0, 0, -1);
    dialog.show();
    QTest::keyClick(&dialog, Qt::Key_Escape);
    dialog.close();
    EXPECT_TRUE(dialog.isVisible()) << "no button, nothing to do";

    dialog.ShowStatusInfo(0, 1, 1, -1);
    QTest::keyClick(&dialog, Qt::Key_Escape);
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_EQ(cancelled.count(), 1);

    dialog.ShowStatusInfo(1, 1, 1, -1);
    dialog.show();
    dialog.close();
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_EQ(cancelled.count(), 1);
}

TEST_F(StatusDialogTest, LargeCountsAreNotCut)
{
    for (const int code : { 0, 1 }) {
        dialog.ShowStatusInfo(code, 1234567890, 1234567890, 1234567890);
        dialog.show();
        EXPECT_GE(label->width(), label->sizeHint().width());
        EXPECT_GE(label->height(), label->sizeHint().height());
        EXPECT_GE(button->width(), button->sizeHint().width());
        EXPECT_GE(button->height(), button->sizeHint().height());
        EXPECT_TRUE(dialog.rect().contains(button->geometry()));
        EXPECT_FALSE(button->geometry().intersects(label->geometry()));
        dialog.hide();
    }
}
