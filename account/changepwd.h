// Changes the administrator's password. Passwords go from the fields to their digests and nowhere
// else.
#pragma once

#include <QDialog>

#include <memory>

namespace Ui {
class changepwd;
}

/// Modal once shown. It does not delete itself: give it a parent or WA_DeleteOnClose. GUI thread.
class changepwd : public QDialog
{
    Q_OBJECT

public:
    explicit changepwd(QWidget* parent = nullptr);
    ~changepwd() override;

private slots:
    void on_btn_ok_clicked();
    void on_btn_cancel_clicked();

private:
    std::unique_ptr<Ui::changepwd> m_ui;
};
