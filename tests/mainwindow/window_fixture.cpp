#include "tests/mainwindow/window_fixture.h"

#include "log/itprojectlog.h"

#include <QDate>
#include <QDesktopServices>
#include <QLineEdit>
#include <QMetaProperty>
#include <QPointer>
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
    IOFLog.setEnabledValue(0);
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

void WindowTest::chooseDevice(const QString& device)
{
    std::vector<_tagdevicesInfomationItem> devices;
    window().getOnLineScanDevices(devices);
    window().onSelScanDeviceSig(device);
}

void WindowTest::choose(const QString& device)
{
    chooseDevice(device);
    set("filePathEdit", QString::fromStdString(outputFolder()));
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

QString WindowTest::text(const char* name)
{
    const auto* widget = control<QWidget>(name);
    const QMetaProperty value = widget->metaObject()->userProperty();
    return value.isValid() ? value.read(widget).toString() : widget->property("text").toString();
}

void WindowTest::expect(const Values& values)
{
    for (const auto& [name, value] : values) {
        EXPECT_EQ(text(name).toStdString(), value) << name;
    }
}

void WindowTest::set(const char* name, const QString& value)
{
    auto* widget = control<QWidget>(name);
    widget->metaObject()->userProperty().write(widget, value);
    EXPECT_EQ(text(name).toStdString(), value.toStdString()) << name;
}

void WindowTest::set(const Values& values)
{
    for (const auto& [name, value] : values) {
        set(name, QString::fromUtf8(value));
    }
}

void WindowTest::click(const char* button)
{
    auto* found = control<QAbstractButton>(button);
    ASSERT_TRUE(found->isEnabled()) << button;
    found->click();
}

void WindowTest::startJob(const std::string& steps, const char* button)
{
    fake.script("job|clear\n" + steps);
    click(button);
}

void WindowTest::runJob(const std::string& steps, const char* button)
{
    startJob(steps, button);
    ASSERT_TRUE(waitIdle());
}

bool WindowTest::waitIdle()
{
    return QTest::qWaitFor([this] { return enabled("scanMainBtn") && !fake.scanning(); }, 10000);
}

bool WindowTest::waitCount(const char* entry, int count)
{
    return QTest::qWaitFor([this, entry, count] { return fake.count(entry) >= count; }, 10000);
}

bool WindowTest::polls(int more)
{
    return waitCount("GetButtonStatus", fake.count("GetButtonStatus") + more);
}

void WindowTest::logJobs()
{
    writeBytes(Sandbox::path("joblog/keep"), "");
    IOFLog.setEnabledValue(1);
    IOFLog.GetDestSavePath(Sandbox::path("joblog").c_str());
}

std::string WindowTest::jobLog()
{
    const QDate today = QDate::currentDate();
    return readBytes(Sandbox::path("joblog") + today.toString("/yyyy-M/").toStdString()
        + "tarvex-base-pro-" + today.toString("yyyy_M_d").toStdString() + ".log");
}

SeenModal WindowTest::told(const std::function<void()>& call)
{
    const AnswerModal answer(QStringLiteral("确 定"));
    call();
    return answer.count() == 1 ? answer.seen().front() : SeenModal();
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
