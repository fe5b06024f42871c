#include "account/login.h"

#include "account/account_file.h"
#include "dialogs/look.h"
#include "dialogs/statusmesbox.h"
#include "ui_login.h"

#include <cstdio>

login::login(QWidget* parent)
    : QDialog(parent)
    , m_ui(std::make_unique<Ui::login>())
{
    applyDialogLook(this);
    m_ui->setupUi(this);
    setModal(true);
    m_ui->lineEdit_pwd->setFocus();
}

login::~login() = default;

void login::on_ptn_ok_clicked()
{
    if (!AccountFile().verify(m_ui->lineEdit_pwd->text())) {
        std::puts("User input passwd is Error");
        std::fflush(stdout);
        StatusMessageBox box;
        box.CustomMsgBox(QStringLiteral("错误"), QStringLiteral("输入密码错误!"));
        box.placeOver(*this);
        box.exec();
        m_ui->lineEdit_pwd->selectAll();
        m_ui->lineEdit_pwd->setFocus();
        return;
    }
    m_ui->lineEdit_pwd->clear();
    close();
    emit SignalsLoginStatus();
}

void login::on_ptn_cancel_clicked()
{
    close();
}
