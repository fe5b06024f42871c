#include "tests/journeys/journey.h"

#include "app/install_paths.h"
#include "tests/journeys/cards.h"
#include "tests/support/wait.h"

#include <QSettings>

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <stdexcept>

namespace fs = std::filesystem;
using namespace std::chrono_literals;

namespace {

constexpr auto kStartLimit = 60s; // a sanitized program on a busy machine
#ifdef __SANITIZE_ADDRESS__
constexpr auto kCloseLimit = 15s; // the search for leaks at the end is not the application's time
#else
constexpr auto kCloseLimit = 5s;
#endif

std::string installedFolder()
{
    return std::string(TARVEX_APPS) + "/orvascan/scanner";
}

/// Of the staged copy in the build folder: hard links, so that a stage costs nothing.
void linkTree(const fs::path& from, const fs::path& to)
{
    fs::create_directories(to);
    fs::permissions(to, fs::status(from).permissions());
    for (const fs::directory_entry& entry : fs::directory_iterator(from)) {
        const fs::path target = to / entry.path().filename();
        if (entry.is_directory()) {
            linkTree(entry.path(), target);
        } else {
            fs::create_hard_link(entry.path(), target);
        }
    }
}

} // namespace

Journey::Journey()
{
    stage();
    m_display = std::make_unique<VirtualDisplay>();
}

Journey::~Journey() = default;

/// The prefix as the installation leaves it, and nothing else.
void Journey::stage()
{
    const fs::path staged = JOURNEY_STAGE TARVEX_APPS;
    if (!fs::exists(staged / "orvascan/scanner/bin/TarvexBaseUI")) {
        throw std::runtime_error("not staged: " + staged.string());
    }
    fs::remove_all(TARVEX_APPS);
    linkTree(staged, TARVEX_APPS);
    writeBytes(Sandbox::path("sane/dll.conf"), "");
    fs::create_directories(Sandbox::path("runtime"));
    fs::permissions(Sandbox::path("runtime"), fs::perms::owner_all);
}

void Journey::TearDown()
{
    if (!HasFailure() || !m_display) {
        return;
    }
    const auto* test = ::testing::UnitTest::GetInstance()->current_test_info();
    std::string name = std::string(test->test_suite_name()) + "-" + test->name();
    std::replace(name.begin(), name.end(), '/', '-');
    const std::string picture = m_display->screenshot(name);
    std::cout << "the display: " << picture << '\n';
    for (const auto& process : m_started) {
        std::cout << "---- output of process " << process->id() << '\n' << process->output();
    }
    std::cout << "---- run log\n" << Sandbox::runLog() << "---- end\n";
}

std::string Journey::letOperatorIn()
{
    std::string socket = Sandbox::path("op");
    setEnvironment("QT_PLUGIN_PATH", JOURNEY_PLUGINS);
    setEnvironment("QT_QPA_GENERIC_PLUGINS", "operator");
    setEnvironment("JOURNEY_OPERATOR", socket);
    return socket;
}

void Journey::writeSettings(const Settings& changes, const QString& device)
{
    Settings settings {
        { "firstStart", 1 },
        { "ScanDeviceName", device },
        { "FileSavePath", QString::fromStdString(folder()) },
        { "ScanSource", 2 }, // ADF双面
        { "ScanColorMode", 0 }, // 彩色
        { "ScanPaperSize", 6 }, // 名片, behind A3 to Legal
        { "ScanDPI", 1 }, // 100, behind 75
        { "autoCropChkBox", false },
        { "logicBoxAutoLevel", false },
        { "logicBoxSetLigh", 0 },
        { "logicBoxSetComp", 0 },
        { "logicBoxSetyuzhi", 128 },
        { "logicBoxSethSliderGAMMA", 10 },
        { "logicBoxSetdoublespinBox_gamma", 1.0 },
        { "IsTimeSave", false },
        { "IsCoverSameNameFile", true },
        { "FileNameHead", "Card" },
        { "IsDefineFileCut", 1 }, // "-"
        { "FileStartBit", "7" },
        { "onspinBoxvalue", 3 },
    };
    for (const auto& [key, value] : changes) {
        settings[key] = value;
    }
    const QString file = QString::fromStdString(settingsFile(device));
    fs::create_directories(fs::path(file.toStdString()).parent_path());
    QSettings store(file, QSettings::IniFormat);
    store.setIniCodec("UTF-8");
    for (const auto& [key, value] : settings) {
        store.setValue("appValue/" + key, value);
    }
    store.sync();
    ASSERT_EQ(store.status(), QSettings::NoError) << file.toStdString();
}

Command Journey::installed(const std::string& program, std::vector<std::string> arguments) const
{
    Command command;
    command.words = { installedFolder() + "/bin/" + program };
    command.words.insert(command.words.end(), arguments.begin(), arguments.end());
    command.environment = {
        { "DISPLAY", m_display->name() },
        { "QT_QPA_PLATFORM", "xcb" },
        // nothing here is drawn by it, and the software driver leaks what it allocates at loading
        { "QT_XCB_GL_INTEGRATION", "none" },
        { "WAYLAND_DISPLAY", {} },
        { "DBUS_SESSION_BUS_ADDRESS", "disabled:" },
        { "SANE_CONFIG_DIR", Sandbox::path("sane") },
        { "XDG_RUNTIME_DIR", Sandbox::path("runtime") },
        { "LC_ALL", "C.UTF-8" },
        { "TZ", "UTC" },
    };
    return command;
}

void Journey::scanner(const std::vector<std::string>& words)
{
    const Finished done = run(installed("virtual-scanner", words));
    ASSERT_EQ(done.status, 0) << done.output;
}

void Journey::loadSheets(int sheets, int dpi)
{
    std::vector<std::string> words { "load" };
    for (int side = 1; side <= 2 * sheets; ++side) {
        words.push_back(Sandbox::path(cards::fileName(side)));
        ASSERT_TRUE(cards::draw(side, dpi, words.back())) << words.back();
    }
    scanner(words);
}

void Journey::replaceLibrary(const std::optional<std::string>& file)
{
    fs::remove(install_paths::kScannerLibrary);
    if (file) {
        fs::create_symlink(*file, install_paths::kScannerLibrary);
    }
}

void Journey::allowSaneDrivers(const std::string& list)
{
    writeBytes(Sandbox::path("sane/dll.conf"), list);
}

Process& Journey::start()
{
    Command command = installed("TarvexBaseUI");
    for (const auto& [name, value] : m_environment) {
        command.environment[name] = value;
    }
    command.obeysPermissions = m_obeysPermissions;
    if (m_smallDisk) {
        fs::create_directories(folder());
        command.smallDisk = folder();
    }
    if (!m_programs.empty()) {
        command.environment["PATH"] = m_programs + ":/usr/local/bin:/usr/bin:/bin";
    }
    const std::string file =
        Sandbox::path("application-" + std::to_string(m_started.size() + 1) + ".out");
    m_started.push_back(std::make_unique<Process>(command, file));
    m_application = m_started.back().get();
    return *m_application;
}

void Journey::openMainWindow()
{
    start();
    const WindowId devices = display().wait(titles::kDevices, kStartLimit);
    ASSERT_NE(devices, 0U);
    acceptDevice(devices);
}

void Journey::acceptDevice(WindowId deviceDialog)
{
    display().key(deviceDialog, "Return");
    m_mainWindow = display().wait(titles::kMain, kStartLimit);
    ASSERT_NE(m_mainWindow, 0U);
}

bool Journey::waitForIdle(int job, std::chrono::milliseconds limit)
{
    return waitUntil(
        [&] { return application().countInOutput("MainWindow::onEnableScanBtn() end\n") >= job; },
        limit);
}

void Journey::waitForFinishedJob(int job)
{
    const WindowId finished = display().wait(titles::kFinished, 30s);
    ASSERT_NE(finished, 0U);
    ASSERT_TRUE(waitForIdle(job));
    dismiss(titles::kFinished);
}

void Journey::dismiss(const std::string& title)
{
    const WindowId box = display().wait(title);
    ASSERT_NE(box, 0U) << title;
    display().key(box, "Return");
    EXPECT_TRUE(display().waitGone(title))
        << title << " stays; keys go to \"" << display().focused() << '"';
}

void Journey::closeByKey()
{
    display().key(m_mainWindow, "ctrl+q");
    expectCleanEnd();
}

void Journey::expectCleanEnd()
{
    EXPECT_EQ(application().waitForEnd(kCloseLimit), 0);
}

std::vector<std::string> Journey::namesIn(const std::string& folder)
{
    std::vector<std::string> names;
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::string Journey::dataRoot()
{
    return install_paths::kDataRoot;
}

std::string Journey::settingsFile(const QString& device)
{
    const std::string name = device.toStdString();
    return Sandbox::userFolder() + "/" + name + "/" + name + ".ini";
}

QVariant Journey::setting(const QString& key, const QString& device)
{
    QSettings store(QString::fromStdString(settingsFile(device)), QSettings::IniFormat);
    store.setIniCodec("UTF-8");
    return store.value("appValue/" + key);
}

std::string Journey::lastRecord()
{
    const std::string start = "作业页数: ";
    const int jobs = application().countInOutput("[func:AddBatch] destHome = ");
    std::string log;
    // a thread of the application writes them
    const auto read = [&] {
        log.clear();
        std::error_code none;
        for (const auto& entry :
            fs::recursive_directory_iterator(Sandbox::home() + "/.ORVA/TarvexBaseUI", none)) {
            log += entry.is_regular_file() ? readBytes(entry.path()) : std::string();
        }
        int blocks = 0;
        for (std::size_t at = 0; (at = log.find(start, at)) != std::string::npos; ++at) {
            ++blocks;
        }
        return blocks >= jobs;
    };
    EXPECT_TRUE(waitUntil(read)) << jobs << " jobs, but in the log:\n" << log;
    const std::size_t at = log.rfind(start);
    return at == std::string::npos ? log : log.substr(at);
}

void Journey::expectNoLeftovers() const
{
    for (const std::string& name : namesIn(folder())) {
        EXPECT_NE(name.front(), '.') << "in the output folder";
    }
    EXPECT_THAT(namesIn(dataRoot() + ".spool"), ::testing::IsEmpty());
}
