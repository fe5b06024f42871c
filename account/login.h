// The administrator's login. The password goes from the field to its digest and nowhere else.
#pragma once

#include <QDialog>

#include <memory>

namespace Ui {
class login;
}

/// Modal once shown. It does not delete itself: give it a parent or WA_DeleteOnClose. GUI thread.
class login : public QDialog
{
    Q_OBJECT

public:
    explicit login(QWidget* parent = nullptr);
    ~login() override;

signals:
    /// The password was right; the dialog is closed already.
    void SignalsLoginStatus();

private slots:
    void on_ptn_ok_clicked();
    void on_ptn_cancel_clicked();

private:
    std::unique_ptr<Ui::login> m_ui;
};
