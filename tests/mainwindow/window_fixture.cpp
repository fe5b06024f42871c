#include "tests/mainwindow/window_fixture.h"

#include <QApplication>
#include <QComboBox>
#include <QDesktopServices>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QTimer>

#include <new>

namespace {

/// Longer than any closing may take.
constexpr int kStuckMs = 20000;
constexpr int kStuckStatus = 97;
constexpr int kFadeMs = 250;

} // namespace

OpenedUrls::OpenedUrls()
{
    QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "open");
    QDesktopServices::setUrlHandler(QStringLiteral("https"), this, "open");
}

OpenedUrls::~OpenedUrls()
{
    QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
    QDesktopServices::unsetUrlHandler(QStringLiteral("https"));
}

WindowTest::WindowTest(FakeSdk::Variant variant)
    : fake(variant)
{
    fake.install();
}

WindowTest::~WindowTest()
{
    if (m_window != nullptr) {
        fake.release();
        EXPECT_EQ(closeWindow(), 0);
    }
}

MainWindow& WindowTest::window()
{
    if (m_window == nullptr) {
        m_window = new MainWindow;
    }
    return *m_window;
}

void WindowTest::choose(const QString& device)
{
    std::vector<_tagdevicesInfomationItem> devices;
    window().getOnLineScanDevices(devices);
    window().onSelScanDeviceSig(device);
    control<QLineEdit>("filePathEdit")->setText(QString::fromStdString(outputFolder()));
}

int WindowTest::closeWindow(const std::function<void(MainWindow&)>& close)
{
    // The prefix's clear button fades in and out; Qt loses the animation of a button that is
    // destroyed meanwhile, which the leak check would put on the window.
    if (!control<QLineEdit>("fileNamePreEdit")->text().isEmpty()) {
        QTest::qWait(kFadeMs);
    }
    const QPointer<MainWindow> alive(m_window);
    QTimer::singleShot(0, [this, close] { close(*m_window); });
    QTimer stuck;
    QObject::connect(&stuck, &QTimer::timeout, [] { QApplication::exit(kStuckStatus); });
    stuck.start(kStuckMs);
    const int status = QApplication::exec();
    EXPECT_TRUE(alive.isNull()) << "the event loop ended, but the window was not destroyed";
    ::operator delete(m_window); // destroyed in place by its closing
    m_window = nullptr;
    return status;
}

QString WindowTest::text(const char* combo)
{
    return control<QComboBox>(combo)->currentText();
}

void WindowTest::select(const char* combo, const char* text)
{
    auto* list = control<QComboBox>(combo);
    const int index = list->findText(QString::fromUtf8(text));
    ASSERT_GE(index, 0) << combo << " has no " << text;
    list->setCurrentIndex(index);
}

void WindowTest::click(const char* button)
{
    auto* found = control<QAbstractButton>(button);
    ASSERT_TRUE(found->isEnabled()) << button;
    found->click();
}

bool WindowTest::waitIdle()
{
    auto* button = control<QPushButton>("scanMainBtn");
    return QTest::qWaitFor(
        [this, button] { return button->isEnabled() && !fake.scanning(); }, 10000);
}

bool WindowTest::waitCount(const char* entry, int count)
{
    return QTest::qWaitFor([this, entry, count] { return fake.count(entry) >= count; }, 10000);
}

bool WindowTest::logHas(const std::string& text)
{
    return Sandbox::runLog().find(text) != std::string::npos;
}

int WindowTest::logCount(const std::string& text)
{
    const std::string log = Sandbox::runLog();
    int count = 0;
    for (std::size_t at = log.find(text); at != std::string::npos; at = log.find(text, at + 1)) {
        ++count;
    }
    return count;
}

std::vector<std::string> WindowTest::callsSince(std::size_t start) const
{
    std::vector<std::string> calls = fake.callOrder();
    calls.erase(calls.begin(), calls.begin() + static_cast<std::ptrdiff_t>(start));
    calls.erase(std::remove(calls.begin(), calls.end(), "GetButtonStatus"), calls.end());
    return calls;
}
