// Login and password change as the administrator sees them.
#include "account/changepwd.h"
#include "account/login.h"
#include "app/install_paths.h"
#include "tests/support/answer_modal.h"
#include "tests/support/sandbox.h"

#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

#include <gmock/gmock.h>

using ::testing::HasSubstr;
using ::testing::Not;

TEST(Login, OnlyTheRightPasswordClosesItAndReportsOnceAndNoneIsToldAnywhere)
{
    const Sandbox sandbox;
    login dialog;
    dialog.show();
    auto* field = dialog.findChild<QLineEdit*>("lineEdit_pwd");
    EXPECT_EQ(QLineEdit::Password, field->echoMode());
    const QSignalSpy success(&dialog, &login::SignalsLoginStatus);
    testing::internal::CaptureStdout();
    field->setText("Zq81-guess");
    {
        const AnswerModal answer("确 定");
        dialog.findChild<QPushButton*>("ptn_ok")->click();
        EXPECT_EQ(answer.title() + '|' + answer.text(), "错误|输入密码错误!");
    }
    EXPECT_TRUE(dialog.isVisible() && success.isEmpty());
    QTest::keyClicks(field, "572918"); // the wrong one is selected
    QTest::keyClick(field, Qt::Key_Return);
    EXPECT_EQ(1, success.count());
    EXPECT_FALSE(dialog.isVisible());
    const std::string told = testing::internal::GetCapturedStdout() + Sandbox::runLog();
    EXPECT_THAT(told, HasSubstr("User input passwd is Error"));
    EXPECT_THAT(told, Not(HasSubstr("Zq81-guess")));
    EXPECT_THAT(told, Not(HasSubstr("572918")));
}

TEST(ChangePassword, TellsWhatIsWrong)
{
    const Sandbox sandbox;
    const auto stored = [] { return readBytes(install_paths::kAccountFile); };
    writeBytes(install_paths::kAccountFile, "5ebe2294ecd0e0f08eab7690d2a6ee69"); // secret
    changepwd dialog;
    dialog.show();
    const auto attempt = [&](const char* before, const char* now, const char* again) {
        dialog.findChild<QLineEdit*>("lineEdit_old")->setText(before);
        dialog.findChild<QLineEdit*>("lineEdit_new")->setText(now);
        dialog.findChild<QLineEdit*>("lineEdit_confirm")->setText(again);
        const AnswerModal answer("确 定");
        dialog.findChild<QPushButton*>("btn_ok")->click();
        return answer.title() + '|' + answer.text();
    };
    EXPECT_EQ(attempt("Secret", "n", "n"), "错误|原密码输入错误!");
    EXPECT_EQ(attempt("secret", "n", "N"), "错误|新密码与确认密码\n不相同!");
    EXPECT_EQ("5ebe2294ecd0e0f08eab7690d2a6ee69", stored());
    EXPECT_TRUE(dialog.isVisible());
    EXPECT_EQ(attempt("secret", "n", "n"), "正确|新密码设置成功!");
    EXPECT_EQ("7b8b965ad4bca0e41ab51de7b31363a1", stored()); // printf n | md5sum
    EXPECT_EQ(dialog.findChild<QLineEdit*>("lineEdit_new")->text(), "");
}
