// The box that tells the operator what went wrong: by code, as a notice, and as a progress report.
#include "dialogs/statusmesbox.h"
#include "tests/support/answer_modal.h"
#include "tests/support/sandbox.h"

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
    /// Their captions.
    QString buttons() const
    {
        QStringList texts;
        for (const QAbstractButton* button : box.buttons()) {
            texts << button->text();
        }
        return texts.join('|');
    }

    Sandbox sandbox;
    StatusMessageBox box;
};

} // namespace

TEST_F(MessageBoxTest, TellsACodeByItsEntry)
{
    struct Case
    {
        int code;
        bool shown;
        QString title, text;
        QMessageBox::Icon icon;
        const char* logged;
    };
    const Case cases[] = {
        { 1, true, "错 误", "卡纸", QMessageBox::Critical, "isShow = 1, contents = 卡纸" },
        { 2, true, "提示", "无纸 <b>1</b>", QMessageBox::Information, "contents = 无纸" },
        { 404, true, "提示", "未找到的错误定义", QMessageBox::Information,
            "The error code is not exist!" },
        { 3, false, "提示", "隐藏", QMessageBox::Information,
            "[isShow:0]error MsgBox is not show!" },
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.code);
        EXPECT_EQ(box.ShowStatusError(c.code), c.shown);
        EXPECT_EQ(box.windowTitle(), c.title);
        EXPECT_EQ(box.text(), c.text);
        EXPECT_EQ(box.icon(), c.icon);
        EXPECT_EQ(buttons(), "确 定");
        EXPECT_FALSE(box.isVisible()) << "preparing does not show";
        EXPECT_THAT(Sandbox::runLog(), HasSubstr(c.logged));
    }
    EXPECT_EQ(box.textFormat(), Qt::PlainText) << "a text is never taken for markup";
}

TEST_F(MessageBoxTest, AnErrorLeavesTheOtherWindowsUsableANoticeIsToBeAnswered)
{
    QPushButton other("扫描");
    int clicks = 0;
    QObject::connect(&other, &QPushButton::clicked, [&clicks] { ++clicks; });
    other.show();
    ASSERT_TRUE(box.ShowStatusError(1));
    box.show();
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
    QTest::mouseClick(other.windowHandle(), Qt::LeftButton, {}, other.rect().center());
    EXPECT_EQ(clicks, 1);
    box.hide();

    box.CustomMsgBox("路径异常", "当前目录无写权限\n请重新选择路径!");
    {
        const AnswerModal answer("确 定");
        EXPECT_EQ(box.exec(), int(QMessageBox::Yes));
        EXPECT_EQ(answer.title(), "路径异常");
        EXPECT_EQ(answer.text(), "当前目录无写权限\n请重新选择路径!");
    }
    const AnswerModal titleBar([](QDialog& dialog) { dialog.close(); });
    EXPECT_NE(box.exec(), int(QMessageBox::Yes));
    EXPECT_FALSE(box.isVisible());
}

TEST_F(MessageBoxTest, ShortTextKeepsTheGivenSizeAndLongTextIsReadable)
{
    const auto tell = [this](const QString& text) {
        box.CustomMsgBox("提示", text);
        box.show();
        QCoreApplication::processEvents();
    };
    tell("成功!");
    EXPECT_EQ(box.size(), QSize(200, 120));
    tell(QString("请打开上盖取出纸张，从卡住的一页开始继续扫描。").repeated(12));
    const auto* label = box.findChild<QLabel*>("qt_msgbox_label");
    ASSERT_NE(label, nullptr);
    EXPECT_GE(label->height(), label->heightForWidth(label->width()));
    EXPECT_TRUE(box.rect().contains(label->geometry()));
    EXPECT_LT(box.width(), 800);
    tell("成功!");
    EXPECT_EQ(box.size(), QSize(200, 120)) << "shrinks again";
}
