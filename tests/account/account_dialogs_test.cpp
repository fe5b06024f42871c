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
#include <gtest/gtest.h>

namespace {

using ::testing::HasSubstr;
using ::testing::Not;

QLineEdit& field(QDialog& dialog, const char* name)
{
    return *dialog.findChild<QLineEdit*>(QLatin1String(name));
}

void press(QDialog& dialog, const char* name)
{
    dialog.findChild<QPushButton*>(QLatin1String(name))->click();
}

class AccountDialogs : public ::testing::Test
{
protected:
    std::string stored() const { return readBytes(install_paths::kAccountFile); }
    Sandbox sandbox;
    const QString ok = QStringLiteral("确 定");
};

TEST_F(AccountDialogs, a_wrong_password_keeps_the_login_open_and_is_told_nowhere)
{
    login dialog;
    dialog.show();
    EXPECT_EQ(QLineEdit::Password, field(dialog, "lineEdit_pwd").echoMode());
    QSignalSpy success(&dialog, &login::SignalsLoginStatus);
    field(dialog, "lineEdit_pwd").setText(QStringLiteral("Zq81-guess"));
    testing::internal::CaptureStdout();
    const AnswerModal answer(ok);
    press(dialog, "ptn_ok");
    const std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_EQ(QStringLiteral("错误"), answer.title());
    EXPECT_EQ(QStringLiteral("输入密码错误!"), answer.text());
    EXPECT_TRUE(dialog.isVisible());
    EXPECT_EQ(0, success.count());
    EXPECT_THAT(printed, HasSubstr("User input passwd is Error"));
    EXPECT_THAT(printed + Sandbox::runLog(), Not(HasSubstr("Zq81-guess")));
}

TEST_F(AccountDialogs, the_right_password_closes_the_login_and_reports_once)
{
    login dialog;
    dialog.show();
    QSignalSpy success(&dialog, &login::SignalsLoginStatus);
    QTest::keyClicks(&field(dialog, "lineEdit_pwd"), QStringLiteral("572918"));
    testing::internal::CaptureStdout();
    QTest::keyClick(&field(dialog, "lineEdit_pwd"), Qt::Key_Return);
    EXPECT_EQ(1, success.count());
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_THAT(
        testing::internal::GetCapturedStdout() + Sandbox::runLog(), Not(HasSubstr("572918")));
}

TEST_F(AccountDialogs, changing_the_password_tells_what_is_wrong)
{
    writeBytes(install_paths::kAccountFile, "5ebe2294ecd0e0f08eab7690d2a6ee69"); // secret
    changepwd dialog;
    dialog.show();
    const auto attempt = [&](const char* before, const char* now, const char* again) {
        field(dialog, "lineEdit_old").setText(QLatin1String(before));
        field(dialog, "lineEdit_new").setText(QLatin1String(now));
        field(dialog, "lineEdit_confirm").setText(QLatin1String(again));
        const AnswerModal answer(ok);
        press(dialog, "btn_ok");
        return answer.title() + QLatin1Char('|') + answer.text();
    };
    EXPECT_EQ(QStringLiteral("错误|原密码输入错误!"), attempt("Secret", "n", "n"));
    EXPECT_EQ(QStringLiteral("错误|新密码与确认密码\n不相同!"), attempt("secret", "n", "N"));
    EXPECT_EQ("5ebe2294ecd0e0f08eab7690d2a6ee69", stored());
    EXPECT_TRUE(dialog.isVisible());
    EXPECT_EQ(QStringLiteral("正确|新密码设置成功!"), attempt("secret", "n", "n"));
    EXPECT_EQ("7b8b965ad4bca0e41ab51de7b31363a1", stored()); // printf n | md5sum
    EXPECT_TRUE(field(dialog, "lineEdit_new").text().isEmpty());
}

} // namespace
