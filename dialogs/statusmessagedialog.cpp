#include "dialogs/statusmessagedialog.h"

#include "dialogs/look.h"
#include "dialogs/work_status.h"

#include <QAbstractButton>
#include <QCloseEvent>
#include <QIcon>
#include <QLayout>

namespace {

/// The size of the box. A text that does not fit makes it larger: a name is never cut.
constexpr QSize kBoxSize(200, 105);
/// Narrow enough for two lines and a button to fit into that size.
constexpr QMargins kBoxMargins(11, 8, 11, 7);

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
        if (code == work_status::kAskDelete) {
            setDefaultButton(QMessageBox::No); // what is deleted does not come back
        }
    }
    setIcon(boxIcon(notice.icon));
    layout()->setContentsMargins(kBoxMargins); // of the layout that the icon has made anew
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
    forceSize();
}

void statusMessageDialog::resizeEvent(QResizeEvent* event)
{
    QMessageBox::resizeEvent(event);
    forceSize();
}

void statusMessageDialog::forceSize()
{
    // The base class has just fixed the size that the text needs.
    setFixedSize(size().expandedTo(kBoxSize));
    update();
}
