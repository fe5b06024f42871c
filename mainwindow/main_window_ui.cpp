// Joins the forms of the main window. Rules, wiring and texts that change are not here.
#include "mainwindow/main_window_ui.h"

#include <QAbstractSpinBox>
#include <QEvent>
#include <QKeySequence>
#include <QRegularExpressionValidator>
#include <QScrollArea>
#include <QShortcut>

namespace {

/// Turning the wheel over a page must scroll it, not change a setting that the pointer happens to
/// cross: lists, sliders and number fields answer to the wheel only while they have the focus.
class WheelGuard : public QObject
{
public:
    using QObject::QObject;

    void watch(QWidget* page)
    {
        const auto guard = [this](QWidget* control) {
            control->setFocusPolicy(Qt::StrongFocus);
            control->installEventFilter(this);
        };
        for (QComboBox* control : page->findChildren<QComboBox*>()) {
            guard(control);
        }
        for (QSlider* control : page->findChildren<QSlider*>()) {
            guard(control);
        }
        for (QAbstractSpinBox* control : page->findChildren<QAbstractSpinBox*>()) {
            guard(control);
        }
    }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Wheel && !static_cast<QWidget*>(watched)->hasFocus()) {
            event->ignore();
            return true;
        }
        return QObject::eventFilter(watched, event);
    }
};

template <class Form>
QWidget* addPage(QTabWidget* tabs, Form* form, WheelGuard* guard)
{
    auto* page = new QWidget;
    form->setupUi(page);
    guard->watch(page);

    // On a small screen, or at a high scale, a page scrolls instead of being cut.
    auto* scroll = new QScrollArea;
    scroll->setObjectName(page->objectName() + "Scroll");
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setWidgetResizable(true);
    scroll->setFocusPolicy(Qt::NoFocus);
    scroll->setWidget(page);
    const int index = tabs->addTab(scroll, page->windowTitle());

    auto* shortcut = new QShortcut(QKeySequence(Qt::CTRL + Qt::Key_1 + index), tabs);
    QObject::connect(
        shortcut, &QShortcut::activated, tabs, [tabs, index] { tabs->setCurrentIndex(index); });
    tabs->setTabToolTip(index, shortcut->key().toString(QKeySequence::NativeText));
    return page;
}

void setValidator(QLineEdit* edit, const char* pattern)
{
    edit->setValidator(
        new QRegularExpressionValidator(QRegularExpression(QLatin1String(pattern)), edit));
}

} // namespace

void MainWindowUi::setupUi(QMainWindow* window)
{
    Ui::MainFrame::setupUi(window);
    window->setWindowIcon(QIcon(QStringLiteral(":/icons/appicon.png")));

    auto* guard = new WheelGuard(window);
    addPage<Ui::SettingsPage>(tabWidget, this, guard);
    addPage<Ui::ParametersPage>(tabWidget, this, guard);
    addPage<Ui::PreviewPage>(tabWidget, this, guard);
    addPage<Ui::UserPage>(tabWidget, this, guard);
    addPage<Ui::AboutPage>(tabWidget, this, guard);
    tabWidget->setCurrentIndex(0);

    setValidator(fileNamePreEdit, "[a-zA-Z0-9]*");
    setValidator(nameNoSerialEdit, "[a-zA-Z0-9]+$");

    window->resize(960, 640);
}
