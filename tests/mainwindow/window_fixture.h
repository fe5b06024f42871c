// A main window with the library of the tests under it: make it, choose a device, look at its
// controls by their names, close it the way the application does.
#pragma once

#include "mainwindow/mainwindow.h"
#include "tests/fake_sdk/fake_sdk_control.h"
#include "tests/support/answer_modal.h"
#include "tests/support/sandbox.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QList>
#include <QUrl>
#include <QtTest>

#include <gtest/gtest.h>

#include <functional>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

// The sanitizers slow everything down several times; the requirement is for real builds.
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
inline constexpr int kClickToScanMs = 1000;
#else
inline constexpr int kClickToScanMs = 100;
#endif

/// Remembers what was to be opened with the desktop's applications.
class OpenedUrls : public QObject
{
    Q_OBJECT
public:
    OpenedUrls();
    ~OpenedUrls() override;
    QList<QUrl> urls;

public slots:
    void open(const QUrl& url) { urls.append(url); }
};

/// Counts a signal, and keeps its arguments, on the GUI thread: signals of the library's threads
/// arrive after the window's own slots have seen them.
class Heard : public QObject
{
    Q_OBJECT
public:
    template <class Signal>
    Heard(const MainWindow& window, Signal signal)
    {
        connect(&window, signal, this, [this](auto... values) { all.push_back({ values... }); });
    }
    int size() const { return static_cast<int>(all.size()); }
    std::vector<std::vector<int>> all;
};

/// Controls by their names, with what they hold.
using Values = std::initializer_list<std::pair<const char*, const char*>>;

class WindowTest : public ::testing::Test
{
protected:
    static constexpr char kDevice[] = "Orvascan A300";

    explicit WindowTest(FakeSdk::Variant variant = FakeSdk::Variant::kComplete);
    ~WindowTest() override;

    /// The window; made on first use.
    MainWindow& window();
    /// Lists the devices and chooses one, as the device dialog does.
    void chooseDevice(const QString& device = QString::fromUtf8(kDevice));
    /// The same, and output goes to outputFolder().
    void choose(const QString& device = QString::fromUtf8(kDevice));
    /// Runs the application's event loop, closes the window in the given way and tells the exit
    /// status. The window is destroyed afterwards.
    int closeWindow(
        const std::function<void(MainWindow&)>& close = [](MainWindow& w) { w.close(); });

    template <class Widget>
    Widget* control(const char* name)
    {
        auto* found = window().findChild<Widget*>(QString::fromUtf8(name));
        EXPECT_NE(found, nullptr) << name;
        return found;
    }
    bool enabled(const char* name) { return control<QWidget>(name)->isEnabled(); }
    /// What a control holds: a text, a number, "true" or "false".
    QString text(const char* name);
    void expect(const Values& values);
    /// A list takes an entry that it has; what a rule changes at once fails the test.
    void set(const char* name, const QString& value);
    void set(const Values& values);
    void select(const char* list, const char* entry) { set(list, QString::fromUtf8(entry)); }
    void click(const char* button);

    /// The steps are those of fake_sdk.h.
    void startJob(const std::string& steps, const char* button = "scanMainBtn");
    void runJob(const std::string& steps, const char* button = "scanMainBtn");
    /// A job is through and the buttons are back.
    bool waitIdle();
    bool waitCount(const char* entry, int count);
    /// The monitor of the scanner's buttons goes on.
    bool polls(int more = 1);
    std::string outputFolder() const { return Sandbox::path("out"); }
    /// The job log goes to a folder of the sandbox until the test ends.
    void logJobs();
    static std::string jobLog();
    static bool logHas(const std::string& text) { return logCount(text) > 0; }
    static int logCount(const std::string& text);
    /// What the one notice says that the call shows, and that is answered with its button.
    static SeenModal told(const std::function<void()>& call);
    /// The window of this kind that is on the screen; null without one.
    template <class Window>
    static Window* shown()
    {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            auto* found = qobject_cast<Window*>(widget);
            if (found != nullptr && found->isVisible()) {
                return found;
            }
        }
        return nullptr;
    }
    /// Library calls since this number of calls, without the polls of the button monitor.
    std::vector<std::string> callsSince(std::size_t start) const;

    Sandbox sandbox;
    FakeSdk fake;

private:
    MainWindow* m_window = nullptr;
};
