#include "dialogs/statusmessagedialog.h"

#include "dialogs/look.h"
#include "dialogs/work_status.h"

#include <QAbstractButton>
#include <QCloseEvent>
#include <QIcon>

namespace {

constexpr QSize kBoxSize(200, 105);

QMessageBox::Icon boxIcon(WorkStatusIcon icon)
{
    switch (icon) {
    case WorkStatusIcon::kCritical:
        return QMessageBox::Critical;
    case WorkStatusIcon::kWarning:
        return QMessageBox::Warning;
    case WorkStatusIcon::kInformation:
        break;
    }
    return QMessageBox::Information;
}

QMessageBox::StandardButtons boxButtons(WorkStatusButtons buttons)
{
    switch (buttons) {
    case WorkStatusButtons::kNone:
        return QMessageBox::NoButton;
    case WorkStatusButtons::kYesNo:
        return QMessageBox::Yes | QMessageBox::No;
    case WorkStatusButtons::kYes:
        break;
    }
    return QMessageBox::Yes;
}

} // namespace

statusMessageDialog::statusMessageDialog(QWidget* parent)
    : QMessageBox(parent)
{
    applyDialogLook(this);
    setTextFormat(Qt::PlainText);
}

void statusMessageDialog::SetStatusInfo(int code, int value, const QString& name)
{
    const WorkStatusNotice notice = workStatusNotice(code, value, name);
    setStandardButtons(boxButtons(notice.buttons));
    if (QAbstractButton* yes = button(QMessageBox::Yes)) {
        yes->setText(QStringLiteral("确 定"));
        setDefaultButton(QMessageBox::Yes);
    }
    if (QAbstractButton* no = button(QMessageBox::No)) {
        no->setText(QStringLiteral("取 消"));
        setEscapeButton(QMessageBox::No);
    }
    setIcon(boxIcon(notice.icon));
    setWindowTitle(notice.title);
    setText(notice.text);
    setWindowIcon(QIcon(QStringLiteral(":/icons/appicon.png")));
}

// The base class would keep a box without a reject button open; here every box can be closed, and
// a question that is closed was not answered with Yes.
void statusMessageDialog::closeEvent(QCloseEvent* /*event*/) { }

void statusMessageDialog::hideEvent(QHideEvent* /*event*/) { }

void statusMessageDialog::showEvent(QShowEvent* event)
{
    QMessageBox::showEvent(event); // finds the button that Escape presses
    setFixedSize(kBoxSize);
    update();
}

void statusMessageDialog::resizeEvent(QResizeEvent* event)
{
    QMessageBox::resizeEvent(event);
    setFixedSize(kBoxSize);
    update();
}
