// The user page: login and logout, password change, the administrator's log settings.
#include "account/changepwd.h"
#include "account/login.h"
#include "log/logmanagement.h"
#include "mainwindow/main_window_ui.h"
#include "mainwindow/mainwindow.h"

#include <QGuiApplication>
#include <QScreen>

namespace {

constexpr QPoint kDialogOffset { 100, 100 };

/// Upper left corner of a window of that size in the middle of the screen.
QPoint centred(const QSize& window)
{
    const QScreen* screen = QGuiApplication::primaryScreen();
    const QSize size = screen != nullptr ? screen->geometry().size() : window;
    return { (size.width() - window.width()) / 2, (size.height() - window.height()) / 2 };
}

/// Dialogs without a parent would outlive the window, so they get one; they go when they close.
template <class Dialog>
void showDialog(Dialog* dialog, const QPoint& position)
{
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->move(position);
    dialog->show();
}

} // namespace

void MainWindow::slot_Login()
{
    auto* dialog = new login(this);
    showDialog(dialog, centred(size()) + kDialogOffset);
    connect(dialog, &login::SignalsLoginStatus, this, &MainWindow::slotProcessLogin);
}

void MainWindow::slotProcessLogin()
{
    ui->btn_Login->setEnabled(false);
    ui->btn_Logout->setEnabled(true);
    ui->btn_ChangePwd->setEnabled(true);
    ui->btn_Log_Management->setEnabled(true);
}

void MainWindow::slot_Logout()
{
    ui->btn_Login->setEnabled(true);
    ui->btn_Logout->setEnabled(false);
    ui->btn_ChangePwd->setEnabled(false);
    ui->btn_Log_Management->setEnabled(false);
}

void MainWindow::slot_ChangePwd()
{
    showDialog(new changepwd(this), centred(size()));
}

void MainWindow::slot_Log_Management()
{
    auto* page = new logmanagement(this);
    connect(page, &logmanagement::logConfigChanged, this, &MainWindow::followLogConfig);
    showDialog(page, centred(size()) + kDialogOffset);
}
