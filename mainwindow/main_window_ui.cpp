// Joins the forms of the main window. Rules, wiring and texts that change are not here.
#include "mainwindow/main_window_ui.h"

#include "dialogs/look.h"
#include "mainwindow/rules/naming_rules.h"

#include <QAbstractSpinBox>
#include <QEvent>
#include <QGuiApplication>
#include <QKeySequence>
#include <QRegularExpressionValidator>
#include <QScreen>
#include <QScrollArea>
#include <QShortcut>
#include <QStyledItemDelegate>
#include <QTabBar>

namespace {

constexpr QSize kFirstSize(960, 664); ///< fits a screen of 1366 x 768
constexpr QSize kWindowFrame(16, 40); ///< room for borders and title bar
constexpr QSize kTabIconSize(20, 20);
constexpr QSize kButtonIconSize(24, 20);
constexpr int kProductIconSize = 64;

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
void addPage(QTabWidget* tabs, Form* form, WheelGuard* guard, const char* iconName)
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
    for (QComboBox* list : page->findChildren<QComboBox*>()) {
        // its own kind of delegate would not follow the style sheet
        list->setItemDelegate(new QStyledItemDelegate(list));
    }
    const int index =
        tabs->addTab(scroll, look::icon(QLatin1String(iconName)), page->windowTitle());

    auto* shortcut = new QShortcut(QKeySequence(Qt::CTRL + Qt::Key_1 + index), tabs);
    QObject::connect(
        shortcut, &QShortcut::activated, tabs, [tabs, index] { tabs->setCurrentIndex(index); });
    tabs->setTabToolTip(index, shortcut->key().toString(QKeySequence::NativeText));
}

void setValidator(QLineEdit* edit, const char* pattern)
{
    edit->setValidator(
        new QRegularExpressionValidator(QRegularExpression(QLatin1String(pattern)), edit));
}

/// Keys that press a button while it is visible and enabled. Not the shortcut property of the
/// button: that one is lost whenever its text is set.
void setKeys(const MainWindowUi& ui)
{
    const std::initializer_list<std::pair<QPushButton*, QKeySequence>> keys {
        { ui.scanMainBtn, Qt::Key_F5 },
        { ui.preViewBtn, Qt::Key_F6 },
        { ui.templateBtn, Qt::CTRL + Qt::Key_T },
        { ui.exitMainBtn, Qt::CTRL + Qt::Key_Q },
    };
    for (const auto& [button, key] : keys) {
        auto* shortcut = new QShortcut(key, button);
        QObject::connect(shortcut, &QShortcut::activated, button, &QPushButton::click);
    }
}

void setIcons(const MainWindowUi& ui)
{
    const std::initializer_list<std::pair<QPushButton*, const char*>> icons {
        { ui.scanMainBtn, "button-scan" },
        { ui.templateBtn, "button-template" },
        { ui.exitMainBtn, "button-exit" },
        { ui.preViewBtn, "button-preview" },
        { ui.selPathBtn, "button-folder" },
        { ui.baseSetDefaultBtn, "button-reset" },
        { ui.btn_Login, "button-login" },
        { ui.btn_Logout, "button-exit" },
        { ui.btn_ChangePwd, "button-password" },
        { ui.btn_Log_Management, "button-log" },
        { ui.button_SetSleepTime, "button-sleep" },
        { ui.button_setPrefeed, "button-feed" },
        { ui.button_log_controller, "button-log" },
        { ui.SetLogSavePathBth, "button-folder" },
        { ui.button_clear_tmpdata, "button-clean" },
    };
    for (const auto& [button, name] : icons) {
        button->setIcon(look::icon(QLatin1String(name)));
        button->setIconSize(kButtonIconSize);
    }
    ui.appIconLabel->setPixmap(look::pixmap(look::appIcon(), kProductIconSize, ui.appIconLabel));
}

} // namespace

void MainWindowUi::setupUi(QMainWindow* window)
{
    Ui::MainFrame::setupUi(window);
    look::install();
    window->setWindowIcon(look::appIcon());
    tabWidget->tabBar()->setDrawBase(false);
    tabWidget->setIconSize(kTabIconSize);

    auto* guard = new WheelGuard(window);
    addPage<Ui::SettingsPage>(tabWidget, this, guard, "settings");
    addPage<Ui::ParametersPage>(tabWidget, this, guard, "parameters");
    addPage<Ui::PreviewPage>(tabWidget, this, guard, "preview");
    addPage<Ui::UserPage>(tabWidget, this, guard, "user");
    addPage<Ui::AboutPage>(tabWidget, this, guard, "about");
    tabWidget->setCurrentIndex(0);
    setIcons(*this);
    setKeys(*this);

    setValidator(fileNamePreEdit, rules::kPrefixPattern);
    fileNamePreEdit->setMaxLength(rules::kPrefixMaxLength);
    setValidator(nameNoSerialEdit, rules::kSerialPattern);
    nameNoSerialEdit->setMaxLength(rules::kSerialMaxLength);

    for (QLineEdit* path : { filePathEdit, LogFilePathEdit }) {
        QObject::connect(path, &QLineEdit::textChanged, path, &QLineEdit::setToolTip);
    }

    // From the pages on to the buttons below them, from left to right.
    QWidget::setTabOrder(button_clear_tmpdata, templateBtn);
    QWidget::setTabOrder(templateBtn, scanMainBtn);
    QWidget::setTabOrder(scanMainBtn, exitMainBtn);

    const QSize free = QGuiApplication::primaryScreen()->availableSize() - kWindowFrame;
    window->resize(kFirstSize.boundedTo(free));
}
