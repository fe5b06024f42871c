// The box that tells the operator what went wrong: by code, as a notice, and as a progress report.
#include "dialogs/statusmesbox.h"
#include "tests/support/answer_modal.h"
#include "tests/support/sandbox.h"

#include <QAbstractButton>
#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <QWindow>

#include <gmock/gmock.h>

using testing::HasSubstr;

namespace {

class MessageBoxTest : public testing::Test
{
protected:
    MessageBoxTest()
    {
        const std::string path = Sandbox::path("ErrorCode.xml");
        writeBytes(path,
            "<r><e id=\"1\" ishow=\"1\" ierror=\"2\">卡纸</e>"
            "<e id=\"2\" ishow=\"1\" ierror=\"0\">无纸 &lt;b&gt;1&lt;/b&gt;</e>"
            "<e id=\"3\" ishow=\"0\" ierror=\"1\">隐藏</e></r>");
        box.getErrorCode(QString::fromStdString(path));
    }

    QStringList buttons() const
    {
        QStringList texts;
        for (const QAbstractButton* button : box.buttons()) {
            texts << button->text();
        }
        return texts;
    }

    Sandbox sandbox;
    StatusMessageBox box;
};

} // namespace

TEST_F(MessageBoxTest, ErrorsAndNoticesLookDifferent)
{
    EXPECT_TRUE(box.ShowStatusError(1));
    EXPECT_EQ(box.windowTitle(), QStringLiteral("错 误"));
    EXPECT_EQ(box.text(), QStringLiteral("卡纸"));
    EXPECT_EQ(box.icon(), QMessageBox::Critical);
    EXPECT_EQ(box.standardButtons(), QMessageBox::Yes);
    EXPECT_EQ(buttons(), QStringList { QStringLiteral("确 定") });
    EXPECT_FALSE(box.isVisible()) << "preparing does not show";
    EXPECT_THAT(Sandbox::runLog(), HasSubstr("[func:ShowStatusError]isShow = 1, contents = 卡纸"));

    EXPECT_TRUE(box.ShowStatusError(2));
    EXPECT_EQ(box.windowTitle(), QStringLiteral("提示"));
    EXPECT_EQ(box.icon(), QMessageBox::Information);
    EXPECT_EQ(box.text(), QStringLiteral("无纸 <b>1</b>"));
    EXPECT_EQ(box.textFormat(), Qt::PlainText) << "a text is never taken for markup";
}

TEST_F(MessageBoxTest, ShownErrorLeavesTheOtherWindowsUsable)
{
    QPushButton other(QStringLiteral("扫描"));
    int clicks = 0;
    QObject::connect(&other, &QPushButton::clicked, [&clicks] { ++clicks; });
    other.show();
    ASSERT_TRUE(box.ShowStatusError(1));
    box.show();
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
    QTest::mouseClick(other.windowHandle(), Qt::LeftButton, {}, other.rect().center());
    EXPECT_EQ(clicks, 1);

    box.hide();
    AnswerModal answer([](QDialog& dialog) {
        EXPECT_TRUE(dialog.isModal()) << "a notice is to be answered first";
        dialog.close();
    });
    box.CustomMsgBox(QStringLiteral("提示"), QStringLiteral("成功!"));
    box.exec();
    EXPECT_EQ(answer.count(), 1);
}

TEST_F(MessageBoxTest, HiddenCodeIsNotToBeShownAndUnknownCodeAlwaysIs)
{
    ASSERT_TRUE(box.ShowStatusError(1));
    EXPECT_FALSE(box.ShowStatusError(3));
    EXPECT_EQ(box.windowTitle(), QStringLiteral("错 误"));
    EXPECT_THAT(
        Sandbox::runLog(), HasSubstr("[func:ShowStatusError][isShow:0]error MsgBox is not show!"));

    EXPECT_TRUE(box.ShowStatusError(404));
    EXPECT_EQ(box.text(), QStringLiteral("未找到的错误定义"));
    EXPECT_EQ(box.windowTitle(), QStringLiteral("提示"));
    EXPECT_EQ(box.icon(), QMessageBox::Information);
    EXPECT_THAT(Sandbox::runLog(), HasSubstr("[func:ShowStatusError]The error code is not exist!"));
}

TEST_F(MessageBoxTest, NoticeIsAnsweredWithItsOneButton)
{
    AnswerModal answer(QStringLiteral("确 定"));
    box.CustomMsgBox(
        QStringLiteral("路径异常"), QStringLiteral("当前目录无写权限\n请重新选择路径!"));
    EXPECT_EQ(box.exec(), int(QMessageBox::Yes));
    EXPECT_EQ(answer.count(), 1);
    EXPECT_EQ(answer.title(), QStringLiteral("路径异常"));
    EXPECT_EQ(answer.text(), QStringLiteral("当前目录无写权限\n请重新选择路径!"));
}

TEST_F(MessageBoxTest, ShortTextKeepsTheGivenSizeAndLongTextIsReadable)
{
    box.CustomMsgBox(QStringLiteral("提示"), QStringLiteral("成功!"));
    box.show();
    EXPECT_EQ(box.size(), QSize(200, 120));

    QString longText;
    for (int sentence = 0; sentence < 12; ++sentence) {
        longText += QStringLiteral("请打开上盖取出纸张，从卡住的一页开始继续扫描。");
    }
    box.CustomMsgBox(QStringLiteral("提示"), longText);
    QCoreApplication::processEvents();
    const auto* label = box.findChild<QLabel*>(QStringLiteral("qt_msgbox_label"));
    ASSERT_NE(label, nullptr);
    EXPECT_GE(label->height(), label->heightForWidth(label->width()));
    EXPECT_TRUE(box.rect().contains(label->geometry()));
    EXPECT_LT(box.width(), 800);

    box.CustomMsgBox(QStringLiteral("提示"), QStringLiteral("成功!"));
    QCoreApplication::processEvents();
    EXPECT_EQ(box.size(), QSize(200, 120)) << "shrinks again";
}

TEST_F(MessageBoxTest, CancelButtonComesWithTheScanAndGoesWithIt)
{
    box.ShowStatusInfo(-1, 0, 0, -1);
    box.ShowStatusInfo(-1, 0, 0, -1);
    EXPECT_EQ(buttons(), QStringList { QStringLiteral("取消  扫描") });
    box.ShowStatusInfo(0, 2, 1, -1);
    EXPECT_EQ(box.text(), QStringLiteral("已扫描页数:2\n已处理页数:1"));
    EXPECT_EQ(buttons(), QStringList { QStringLiteral("取消  扫描") });
    box.ShowStatusInfo(1, 2, 2, -1);
    EXPECT_EQ(box.windowTitle(), QStringLiteral("扫描完成"));
    EXPECT_EQ(buttons(), QStringList { QStringLiteral("确 定") });

    box.ShowStatusInfo(-1, 0, 0, -1);
    EXPECT_TRUE(box.ShowStatusError(1));
    EXPECT_EQ(buttons(), QStringList { QStringLiteral("确 定") });
    EXPECT_THAT(Sandbox::runLog(),
        HasSubstr("-----------------[func:ShowStatusError]-------------removeButton"));
}

TEST_F(MessageBoxTest, ClickOnTheCancelButtonTakesItOut)
{
    box.ShowStatusInfo(-1, 0, 0, -1);
    box.onCancelScan();
    EXPECT_EQ(buttons().size(), 1) << "nothing was clicked yet";
    box.show();
    QTest::mouseClick(box.cancelButton(), Qt::LeftButton);
    EXPECT_EQ(buttons(), QStringList());
    EXPECT_FALSE(box.isVisible());
    EXPECT_THAT(Sandbox::runLog(),
        HasSubstr("-----------------[func:onCancelScan]------------click function"));
}

TEST_F(MessageBoxTest, ClosingByTheTitleBarEndsAModalBox)
{
    AnswerModal answer([](QDialog& dialog) { dialog.close(); });
    box.CustomMsgBox(QStringLiteral("提示"), QStringLiteral("成功!"));
    EXPECT_NE(box.exec(), int(QMessageBox::Yes));
    EXPECT_FALSE(box.isVisible());
}
