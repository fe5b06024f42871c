#include "account/changepwd.h"

#include "account/account_file.h"
#include "dialogs/look.h"
#include "dialogs/statusmesbox.h"
#include "ui_changepwd.h"

namespace {

void tell(const QWidget& dialog, const QString& title, const QString& text)
{
    StatusMessageBox box;
    box.CustomMsgBox(title, text);
    box.placeOver(dialog);
    box.exec();
}

void askAgain(QLineEdit& field)
{
    field.selectAll();
    field.setFocus();
}

} // namespace

changepwd::changepwd(QWidget* parent)
    : QDialog(parent)
    , m_ui(std::make_unique<Ui::changepwd>())
{
    applyDialogLook(this);
    m_ui->setupUi(this);
    setModal(true);
    m_ui->lineEdit_old->setFocus();
}

changepwd::~changepwd() = default;

void changepwd::on_btn_ok_clicked()
{
    const QString error = QStringLiteral("错误");
    switch (AccountFile().change(
        m_ui->lineEdit_old->text(), m_ui->lineEdit_new->text(), m_ui->lineEdit_confirm->text())) {
    case AccountFile::Change::kWrongOldPassword:
        tell(*this, error, QStringLiteral("原密码输入错误!"));
        askAgain(*m_ui->lineEdit_old);
        break;
    case AccountFile::Change::kNewDiffersFromConfirmation:
        tell(*this, error, QStringLiteral("新密码与确认密码\n不相同!"));
        askAgain(*m_ui->lineEdit_confirm);
        break;
    case AccountFile::Change::kNotWritten:
        tell(*this, error, QStringLiteral("新密码设置失败,\n密码没有改变!"));
        break;
    case AccountFile::Change::kDone:
        tell(*this, QStringLiteral("正确"), QStringLiteral("新密码设置成功!"));
        for (QLineEdit* field :
            { m_ui->lineEdit_old, m_ui->lineEdit_new, m_ui->lineEdit_confirm }) {
            field->clear();
        }
        close();
        break;
    }
}

void changepwd::on_btn_cancel_clicked()
{
    close();
}
