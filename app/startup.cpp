#include "app/startup.h"

#include "app/common.h"
#include "app/install_paths.h"
#include "app/timing.h"
#include "dialogs/look.h"
#include "dialogs/onlinescanners.h"
#include "dialogs/splashscreen.h"
#include "dialogs/statusmesbox.h"
#include "log/Log.h"
#include "log/itprojectlog.h"
#include "mainwindow/mainwindow.h"

#include <QEventLoop>
#include <QIcon>
#include <QPushButton>
#include <QScreen>
#include <QTextCodec>
#include <QTranslator>

#include <libintl.h>
#include <unistd.h>

#include <array>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <exception>
#include <string>
#include <thread>
#include <vector>

MainWindow* g_MainWindow = nullptr;
splashScreen* g_waitingDlg = nullptr;

namespace {

using PathBuffer = std::array<char, 256>;

constexpr char kEntry[] = "main"; // the function that the run log names
constexpr char kModuleTag[] = "tarvex-base-ui";
constexpr char kPidFile[] = "TarvexBaseUI.pid";
constexpr char kDriverTexts[] = "sane-backends";

void loadTranslation(QTranslator& translator)
{
    // Installed also when there is nothing to load: the texts then stay as they are.
    static_cast<void>(translator.load(QString::fromLatin1(install_paths::kTranslationFile),
        QString::fromUtf8(install_paths::kTranslationFolder)));
    QCoreApplication::installTranslator(&translator);
}

void makeFolders(const std::string& user)
{
    PathBuffer folder {};
    std::snprintf(
        folder.data(), folder.size(), "%s%s/OrvaLog/", g_strCommonPath.c_str(), user.c_str());
    if (createfolder(folder.data()) != 0) {
        runLog("chHomePath:%s create error", folder.data());
    }
    runLog("[%s][%d]程序启动", kEntry, __LINE__);
    if (createfolder(install_paths::kConfigFolder) != 0) {
        runLog("%s create error", install_paths::kConfigFolder);
    }
    std::snprintf(chHomePath, sizeof chHomePath, "%s%s", install_paths::kConfigFolder, kPidFile);
}

int showAlreadyRunning()
{
    StatusMessageBox box;
    box.setWindowTitle(QStringLiteral("Velmar安全采集系统"));
    box.setText(QStringLiteral("程序已经打开，\n请勿重复打开!"));
    box.setWindowIcon(QIcon(QStringLiteral(":/icons/appicon.png")));
    box.setIcon(QMessageBox::Warning);
    box.setStandardButtons(QMessageBox::Ok);
    box.button(QMessageBox::Ok)->setText(QStringLiteral("确 定"));
    const QRect screen = QGuiApplication::primaryScreen()->geometry();
    box.move((screen.width() - 170) / 2, (screen.height() - 105) / 2 - 60);
    return box.exec();
}

void bindDriverTexts()
{
    ::bindtextdomain(kDriverTexts, "/usr/share/locale");
    ::textdomain(kDriverTexts);
    ::bind_textdomain_codeset(kDriverTexts, "UTF-8");
}

void nameRunLog(const std::string& user)
{
    PathBuffer file {};
    std::snprintf(file.data(), file.size(), "%s%s/OrvaLog/%s.log", g_strCommonPath.c_str(),
        user.c_str(), kModuleTag);
    Log.SetLogFileName(file.data());
}

void deleteSplash()
{
    delete g_waitingDlg;
    g_waitingDlg = nullptr;
}

/// The library may search for seconds before it has its list. That wait is on another thread, so
/// that the splash goes on; what follows finds the list ready.
void waitForDeviceList()
{
    COrva_SDK* const library = g_MainWindow->m_OrvaSdk;
    QEventLoop loop;
    std::thread search([library, &loop] {
        library->GetScannerCount();
        QMetaObject::invokeMethod(&loop, &QEventLoop::quit, Qt::QueuedConnection);
    });
    loop.exec();
    search.join();
}

void armSearch()
{
    runLog("[%s][%d]开始获取在线Velmar扫描仪", kEntry, __LINE__);
    std::puts("signal(SIGALRM, getOnLineScanDevice); ");
    std::signal(SIGALRM, getOnLineScanDevice);
    std::puts("signal(SIGALRM, getOnLineScanDevice); end");
    ::alarm(timing::kSearchAlarmSeconds);
    std::puts("alarm(1);   end");
}

} // namespace

Application::Application(int& argc, char** argv)
    : QApplication(argc, argv)
{
    // The main window ends the application. A splash that the user closes must not.
    setQuitOnLastWindowClosed(false);
    // Qt takes the locale of the environment; numbers in files keep their point, and paths and the
    // library's texts are UTF-8 also where the environment has no locale.
    std::setlocale(LC_NUMERIC, "C");
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
}

bool Application::notify(QObject* receiver, QEvent* event)
{
    try {
        return QApplication::notify(receiver, event);
    } catch (const std::exception& error) {
        runLog("[func:%s]%s", __func__, error.what());
    } catch (...) {
        runLog("[func:%s]unknown exception", __func__);
    }
    return true;
}

int runApplication()
{
    QTranslator translator;
    loadTranslation(translator);
    look::install();
    const std::string user = getAppOwnUsr().toStdString();
    makeFolders(user);
    const int alreadyRunning = process_already_running();
    if (alreadyRunning != 0) {
        return showAlreadyRunning();
    }
    process_control_uninstall();
    bindDriverTexts();
    IOFLog.startWriter();

    g_MainWindow = new MainWindow(nullptr);
    nameRunLog(user);
    std::puts("g_MainWindow = new MainWindow; end");

    runLog("[%s][%d]开启刷屏界面", kEntry, __LINE__);
    g_waitingDlg = new splashScreen(nullptr);
    g_waitingDlg->show();
    std::puts("g_waitingDlg->show(); ");

    const SearchAlarm alarm(searchScanners);
    armSearch();
    const int status = QCoreApplication::exec();
    deleteSplash();
    return status;
}

// The first trace line, "getOnLineScanDevice--", is the signal handler's.
void searchScanners()
{
    auto* dialog = new onlineScanners(nullptr);
    g_MainWindow->m_onlineScanners = dialog;
    waitForDeviceList();
    std::vector<_tagdevicesInfomationItem> devices;
    g_MainWindow->getOnLineScanDevices(devices);
    std::puts("getOnLineScanDevice--1");
    std::puts("getOnLineScanDevice--2");
    for (const _tagdevicesInfomationItem& device : devices) {
        QString name = QString::fromStdString(device.name);
        dialog->addNewDeviceItem(name);
    }
    if (!devices.empty()) {
        dialog->setCurScanner(0);
    }
    QObject::connect(
        dialog, &onlineScanners::selScanDeviceSig, g_MainWindow, &MainWindow::onSelScanDeviceSig);
    QObject::connect(dialog, &onlineScanners::unInitmainWindow, g_MainWindow,
        &MainWindow::slot_onlinescanners_quit);
    dialog->show();
    deleteSplash();
    std::puts("getOnLineScanDevice-- end ");
}

int IsSDKInitSuccess()
{
    if (g_MainWindow->m_SDKInit != 0) {
        deleteSplash();
        runLog("Main[%s][%d]SDK Init Fail", __func__, __LINE__);
        g_MainWindow->dynamic_state_msg_box(
            QStringLiteral("程序退出"), QStringLiteral("初始化SDK失败"));
        g_MainWindow->close();
        return -1;
    }
    runLog("Main [%s][%d]SDK Init success", __func__, __LINE__);
    return 0;
}
