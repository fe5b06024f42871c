// What every journey begins with: the installed application in a fresh prefix, a display, an empty
// home folder, settings written beforehand, and the steps that an operator does again and again.
#pragma once

#include "tests/journeys/display.h"
#include "tests/support/sandbox.h"

#include <QByteArray>
#include <QString>
#include <QVariant>

#include <gtest/gtest.h>

#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace titles {

inline constexpr char kSplash[] = "Velmar扫描软件";
inline constexpr char kDevices[] = "Velmar数字化安全采集系统";
inline constexpr char kMain[] = "Velmar数字化安全采集系统 - .*";
inline constexpr char kAlreadyRunning[] = "Velmar安全采集系统";
inline constexpr char kScanning[] = "扫描中\\.\\.\\.";
inline constexpr char kFinished[] = "扫描完成";
inline constexpr char kError[] = "错 误";
inline constexpr char kNotice[] = "提示";
inline constexpr char kPathFault[] = "路径异常";

} // namespace titles

inline constexpr char kVirtualScanner[] = "Orvascan Virtual Scanner";

/// Keys of the group "appValue".
using Settings = std::map<QString, QVariant>;

class Journey : public ::testing::Test
{
protected:
    Journey();
    ~Journey() override;
    void TearDown() override;

    // ---- before the start

    /// Permissions of folders hold for the application even when the test runs as root.
    void obeyPermissions() { m_obeysPermissions = true; }

    /// The application finds its output folder on a disk of kSmallDiskKb; see Process::inside.
    void writeToSmallDisk() { m_smallDisk = true; }
    /// The programs of the desktop are looked for in this folder first.
    void preferPrograms(const std::string& folder) { m_programs = folder; }

    /// Of the application, beside what every journey sets.
    void setEnvironment(const std::string& name, const std::string& value)
    {
        m_environment[name] = value;
    }
    /// The application loads the operator plugin; returns the socket that it listens at.
    std::string letOperatorIn();
    /// Settings of a device as the application itself leaves them, so that it finds itself used
    /// before: two-sided feeder, colour, business card, 100 dpi, no image operation, files
    /// "Card-007.jpg" and on in folder(). The given ones replace some.
    void writeSettings(const Settings& changes = {}, const QString& device = kVirtualScanner);
    /// Runs virtual-scanner with these words; a refusal fails the test.
    void scanner(const std::vector<std::string>& words);
    /// Draws sheets with known pages and puts them into the tray.
    void loadSheets(int sheets, int dpi = 100);
    /// Puts another library into the place of the scanner library; none takes it away.
    void replaceLibrary(const std::optional<std::string>& file);
    /// Drivers that SANE may use; none at first, so that no test looks for scanners elsewhere.
    void allowSaneDrivers(const std::string& list);

    // ---- the application

    /// Starts it and returns at once.
    Process& start();
    Process& application() { return *m_application; }
    /// Starts it, takes the device that is chosen already and waits for the window.
    void openMainWindow();
    /// Accepts what is chosen in the device dialog.
    void acceptDevice(WindowId deviceDialog);
    WindowId mainWindow() const { return m_mainWindow; }
    void pressScan() { display().key(m_mainWindow, "F5"); }
    /// Waits for the end of the job, the message included, and takes the message away.
    void waitForFinishedJob(int job = 1);
    /// True when the buttons have come back for the job of this number.
    bool waitForIdle(int job, std::chrono::milliseconds limit = std::chrono::seconds(30));
    /// Waits for a message box with this title and takes it away.
    void dismiss(const std::string& title);
    /// Ctrl+Q, and status 0 within five seconds.
    void closeByKey();
    /// The application must end by itself, with status 0 and within five seconds.
    void expectCleanEnd();

    // ---- what came out

    const VirtualDisplay& display() const { return *m_display; }
    /// Output folder of the settings.
    std::string folder() const { return Sandbox::home() + "/scans"; }
    /// Names in a folder, in order, hidden ones too.
    static std::vector<std::string> namesIn(const std::string& folder);
    static std::string dataRoot();
    static std::string settingsFile(const QString& device = kVirtualScanner);
    static QVariant setting(const QString& key, const QString& device = kVirtualScanner);
    /// The last block of the job log, from its page count on; the log is on when the settings say
    /// "LogLevel" 1.
    std::string lastRecord();
    /// Neither hidden files beside the results nor pages in the spool.
    void expectNoLeftovers() const;
    Command installed(const std::string& program, std::vector<std::string> arguments = {}) const;

private:
    void stage();

    Sandbox m_sandbox;
    bool m_obeysPermissions = false;
    bool m_smallDisk = false;
    std::string m_programs;
    std::map<std::string, std::string> m_environment;
    std::unique_ptr<VirtualDisplay> m_display;
    std::vector<std::unique_ptr<Process>> m_started;
    Process* m_application = nullptr;
    WindowId m_mainWindow = 0;
};
