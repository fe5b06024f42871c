// A main window with the library of the tests under it: make it, choose a device, look at its
// controls by their names, close it the way the application does.
#pragma once

#include "mainwindow/mainwindow.h"
#include "tests/fake_sdk/fake_sdk_control.h"
#include "tests/support/sandbox.h"

#include <QElapsedTimer>
#include <QList>
#include <QUrl>
#include <QtTest>

#include <gtest/gtest.h>

#include <functional>
#include <string>
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

class WindowTest : public ::testing::Test
{
protected:
    static constexpr char kDevice[] = "Orvascan A300";

    explicit WindowTest(FakeSdk::Variant variant = FakeSdk::Variant::kComplete);
    ~WindowTest() override;

    /// The window; made on first use.
    MainWindow& window();
    /// Lists the devices and chooses one, as the device dialog does. Output goes to outputFolder().
    void choose(const QString& device = QString::fromUtf8(kDevice));
    /// Runs the application's event loop, closes the window in the given way and tells the exit
    /// status. The window is destroyed afterwards.
    int closeWindow(
        const std::function<void(MainWindow&)>& close = [](MainWindow& w) { w.close(); });
    bool isOpen() const { return m_window != nullptr; }

    template <class Widget>
    Widget* control(const char* name)
    {
        auto* found = window().findChild<Widget*>(QString::fromUtf8(name));
        EXPECT_NE(found, nullptr) << name;
        return found;
    }
    QString text(const char* combo);
    void select(const char* combo, const char* text);
    void click(const char* button);

    /// A job is through and the buttons are back.
    bool waitIdle();
    bool waitCount(const char* entry, int count);
    std::string outputFolder() const { return Sandbox::path("out"); }
    static bool logHas(const std::string& text);
    static int logCount(const std::string& text);
    /// Library calls since this number of calls, without the polls of the button monitor.
    std::vector<std::string> callsSince(std::size_t start) const;

    Sandbox sandbox;
    FakeSdk fake;

private:
    MainWindow* m_window = nullptr;
};
