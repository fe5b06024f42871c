// The monitor of the scanner's buttons: a thread that polls while the scanner is idle, and its
// pause, resume and end. Both its sleep and the pause can be interrupted, so that a click on scan
// never waits for a sleeping thread.
#include "app/timing.h"
#include "log/Log.h"
#include "mainwindow/mainwindow.h"
#include "mainwindow/rules/key_actions.h"
#include "sdk/result_codes.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QThread>

#include <cerrno>
#include <cstdio>
#include <ctime>
#include <thread>

pthread_mutex_t KeyPressMutex;
pthread_cond_t KeyPressCond;

namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

constexpr milliseconds kMutexRetry { 1 };

/// The condition's time-outs are not moved by a change of the system time.
int makeCondition()
{
    pthread_condattr_t attributes;
    ::pthread_condattr_init(&attributes);
    ::pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC);
    const int result = ::pthread_cond_init(&KeyPressCond, &attributes);
    ::pthread_condattr_destroy(&attributes);
    return result;
}

timespec deadlineAfter(milliseconds time)
{
    timespec at {};
    ::clock_gettime(CLOCK_MONOTONIC, &at);
    const long long nanoseconds = at.tv_nsec + std::chrono::nanoseconds(time).count();
    at.tv_sec += static_cast<time_t>(nanoseconds / 1000000000);
    at.tv_nsec = static_cast<long>(nanoseconds % 1000000000);
    return at;
}

class KeyPressLock
{
public:
    KeyPressLock() { ::pthread_mutex_lock(&KeyPressMutex); }
    ~KeyPressLock() { ::pthread_mutex_unlock(&KeyPressMutex); }
    KeyPressLock(const KeyPressLock&) = delete;
    KeyPressLock& operator=(const KeyPressLock&) = delete;
};

} // namespace

void MainWindow::Thread2GetScannerKeyStatus()
{
    if (m_keys.made || m_closing) {
        return;
    }
    const auto direct =
        static_cast<Qt::ConnectionType>(Qt::DirectConnection | Qt::UniqueConnection);
    const auto queued =
        static_cast<Qt::ConnectionType>(Qt::QueuedConnection | Qt::UniqueConnection);
    connect(this, &MainWindow::SignalThreadKeyStart, this, &MainWindow::ThreadKeyStart, direct);
    connect(this, &MainWindow::SignalThreadKeyPause, this, &MainWindow::ThreadKeyPause, direct);
    connect(this, &MainWindow::SignalThreadKeyOver, this, &MainWindow::ThreadKeyOver, direct);
    connect(this, &MainWindow::SignalThreadStartScan, this, &MainWindow::onStartScan, queued);
    if (::pthread_mutex_init(&KeyPressMutex, nullptr) != 0) {
        runLog("KeyPress mutex init error");
    }
    if (makeCondition() != 0) {
        runLog("KeyPress cond init error");
    }
    m_keys.exit = 0;
    m_keys.ended = 0;
    m_keys.ready = true;
    if (::pthread_create(&m_keys.thread, nullptr, &MainWindow::GetScannerKeyStatus, this) != 0) {
        runLog("[%s][%d]硬按键开启扫描线程失败", __func__, __LINE__);
        return;
    }
    m_keys.made = true;
    emit SignalThreadKeyStart();
}

/// The thread may outlive the window when a poll does not return: from here on it holds the gate,
/// and enters the window only for what a button does.
void* MainWindow::GetScannerKeyStatus(void* mainWindow)
{
    const std::shared_ptr<WindowGate> gate = static_cast<MainWindow*>(mainWindow)->m_gate;
    KeyThreadState& keys = gate->keys;
    while (keys.exit == 0) {
        int button = 0;
        {
            const KeyPressLock lock;
            if (!parkWhilePaused(*gate)) {
                break;
            }
            runLog("+++++++++++KeyPressStatus = stop 3 ++++++++++++++++");
            button = gate->library->GetButtonStatus();
            runLog("+++++++++++KeyPressStatus = stop 3 end++++++++++++++++");
        }
        std::printf("MainWindow::GetScannerKeyStatus() curButton=%d\n", button);
        dispatchButton(gate, button);
        sleepBetweenPolls(keys);
    }
    runLog("[func:%s]硬按键线程结束！", "GetScannerKeyStatus");
    keys.ended = 1;
    gate->notify();
    return nullptr;
}

/// Button thread, KeyPressMutex held. False when the thread is to end.
bool MainWindow::parkWhilePaused(WindowGate& gate)
{
    KeyThreadState& keys = gate.keys;
    while (keys.running == 0 && keys.exit == 0) {
        runLog("+++++++++++KeyPressStatus = stop 1  ++++++++++++++++");
        runLog("[1:func:%s] cond_wait ", "GetScannerKeyStatus");
        runLog("+++++++++++KeyPressStatus = stop 1 end++++++++++++++++");
        keys.parked = 1;
        keys.paused = 1;
        gate.notify();
        // once: a resume that was taken back before this thread woke up is acknowledged anew
        ::pthread_cond_wait(&KeyPressCond, &KeyPressMutex);
        keys.parked = 0;
        runLog("+++++++++++KeyPressStatus = stop 2 ++++++++++++++++");
        runLog("[2:func:%s] cond_wait ", "GetScannerKeyStatus");
        runLog("+++++++++++KeyPressStatus = stop 2 end++++++++++++++++");
    }
    return keys.exit == 0;
}

/// Two seconds, or until the monitor is paused or ended.
void MainWindow::sleepBetweenPolls(const KeyThreadState& keys)
{
    const timespec until = deadlineAfter(timing::kButtonPoll);
    const KeyPressLock lock;
    int result = 0;
    while (result != ETIMEDOUT && keys.running != 0 && keys.exit == 0) {
        result = ::pthread_cond_timedwait(&KeyPressCond, &KeyPressMutex, &until);
    }
}

void MainWindow::ThreadKeyStart()
{
    if (!m_keys.ready || m_keys.exit != 0) {
        return;
    }
    // Somebody else may set the flag first, and then a poll holds the mutex for as long as the
    // library takes.
    while (m_keys.running == 0 && m_keys.exit == 0) {
        if (::pthread_mutex_trylock(&KeyPressMutex) == 0) {
            m_keys.running = 1;
            ::pthread_cond_broadcast(&KeyPressCond);
            runLog("keyPress thread run!");
            ::pthread_mutex_unlock(&KeyPressMutex);
            m_gate->notify();
            return;
        }
        std::this_thread::sleep_for(kMutexRetry);
    }
    runLog("keyPress thread run already ");
}

void MainWindow::ThreadKeyPause()
{
    // The acknowledgement goes first: a thread that has just parked for another reason must say so
    // again, or a resume that is on its way would meet a scanner in use.
    m_keys.paused = 0;
    if (m_keys.running == 0) {
        runLog("keyPress thread pause already");
    }
    const Busy busy(*this);
    const auto start = Clock::now();
    const auto wantsAgain = [this] {
        return m_keys.paused != 0 || m_keys.running != 0 || m_keys.ended != 0;
    };
    while (true) {
        if (m_keys.running != 0 && !stopPolling()) {
            runLog("[func:%s]a poll of the buttons does not return", "ThreadKeyPause");
            return;
        }
        if (m_keys.paused != 0 || !m_keys.made || m_keys.ended != 0 || m_closing) {
            break;
        }
        // No poll is under way and none begins. It is parked all the same and nobody resumes it, or
        // what a button does takes its time.
        if (Clock::now() - start
            >= (m_keys.parked != 0 ? timing::kCloseLimit : timing::kPollLimit)) {
            break;
        }
        runLog("[func:%s]JudgeSet KeyPress is Not ok! can not set scanner!", "ThreadKeyPause");
        waitAnswering(timing::kPauseRetry, wantsAgain);
    }
    runLog("[func:%s]JudgeSet KeyPress is ok! next set scanner", "ThreadKeyPause");
}

/// Sets the running flag to 0. A poll holds the mutex for as long as the library takes, so that the
/// window answers in the meantime. False when the poll takes too long.
bool MainWindow::stopPolling()
{
    if (!m_keys.ready || m_keys.exit != 0) {
        m_keys.running = 0;
        return true;
    }
    return waitAnswering(timing::kPollLimit, [this] {
        if (m_closing || !m_keys.ready) {
            return true;
        }
        if (::pthread_mutex_trylock(&KeyPressMutex) != 0) {
            return false;
        }
        m_keys.running = 0;
        ::pthread_cond_broadcast(&KeyPressCond);
        runLog("keyPress thread stop!");
        ::pthread_mutex_unlock(&KeyPressMutex);
        return true;
    });
}

/// Pauses the monitor for a talk with the device. False, and told, when that cannot be: the library
/// hangs in a poll, or the window is closing.
bool MainWindow::pauseForDevice()
{
    emit SignalThreadKeyPause();
    if (m_closing) {
        return false;
    }
    if (m_keys.running != 0) {
        onShowScanError(orva::kDeviceTimeout);
        return false;
    }
    return true;
}

void MainWindow::ThreadKeyOver()
{
    if (!m_keys.ready || m_keys.exit != 0) {
        return;
    }
    const auto end = Clock::now() + timing::kCloseLimit;
    m_keys.exit = 1;
    // a parked or sleeping thread has to see the flag; one that polls sees it after its poll
    const bool told = waitAnswering(timing::kCloseLimit / 2, [] {
        if (::pthread_mutex_trylock(&KeyPressMutex) != 0) {
            return false;
        }
        ::pthread_cond_broadcast(&KeyPressCond);
        ::pthread_mutex_unlock(&KeyPressMutex);
        return true;
    });
    m_keys.ready = false;
    if (m_keys.made) {
        const auto left = std::chrono::duration_cast<milliseconds>(end - Clock::now());
        if (!told || !waitAnswering(left / 2, [this] { return m_keys.ended != 0; })) {
            m_libraryHeld = true;
            ::pthread_detach(m_keys.thread);
            runLog("[func:%s]the last poll of the buttons does not return", "ThreadKeyOver");
            return;
        }
        ::pthread_join(m_keys.thread, nullptr);
        m_keys.made = false;
        runLog("[func:%s] pthread_join KeyStatusID = %d", "ThreadKeyOver",
            static_cast<int>(m_keys.thread));
    }
    ::pthread_mutex_destroy(&KeyPressMutex);
    ::pthread_cond_destroy(&KeyPressCond);
    runLog("[func:%s] keyPress thread over !", "ThreadKeyOver");
    runLog("[func:%s] destroy mutex and cond !", "ThreadKeyOver");
}

void MainWindow::dispatchButton(const std::shared_ptr<WindowGate>& gate, int button)
{
    const rules::KeyAction action = rules::keyAction(button);
    if (action == rules::KeyAction::kOpenResult) {
        onVal0KeyPress(gate);
        return;
    }
    const WindowUse window(gate);
    if (!window) {
        return;
    }
    switch (action) {
    case rules::KeyAction::kStartScan:
        window->onVal1KeyPress();
        break;
    case rules::KeyAction::kStartScanAndOpen:
        window->onVal2KeyPress();
        break;
    case rules::KeyAction::kToggleWindow:
        window->onVal4KeyPress();
        break;
    case rules::KeyAction::kNoteCancel:
        window->onVal8KeyPress();
        break;
    case rules::KeyAction::kOpenResult:
    case rules::KeyAction::kIgnore:
        break;
    }
}

void MainWindow::onVal0KeyPress(const std::shared_ptr<WindowGate>& gate)
{
    std::vector<std::string> files;
    WindowUse before(gate);
    if (!before || !before->takeOpenRequest(files)) {
        return;
    }
    before.leave(); // a folder in the network may not answer
    const rules::OpenResult result = rules::openResult(true, true, files,
        [](const std::string& file) { return QFileInfo::exists(QString::fromStdString(file)); });
    const WindowUse after(gate);
    if (result.open && after) {
        const QString file = QString::fromStdString(result.file);
        MainWindow* const window = after.get();
        QMetaObject::invokeMethod(
            window, [window, file] { window->openLocalFile(file); }, Qt::QueuedConnection);
    }
    runLog("%s", result.logLine.c_str());
}

/// Button thread. True once after a job whose result is to be opened.
bool MainWindow::takeOpenRequest(std::vector<std::string>& files)
{
    if (m_keys.scanFinished == 0 || m_keys.openResult == 0) {
        return false;
    }
    files = scannedFiles();
    m_keys.scanFinished = 0;
    m_keys.openResult = 0;
    return true;
}

void MainWindow::onVal1KeyPress()
{
    std::puts("onVal1KeyPress");
    emit SignalThreadStartScan();
}

void MainWindow::onVal2KeyPress()
{
    std::puts("onVal2KeyPress");
    m_keys.scanFinished = 0; // what the job before has left is not asked for
    m_keys.openResult = 1;
    emit SignalThreadStartScan();
}

void MainWindow::onVal4KeyPress()
{
    std::puts("onVal4KeyPress");
    QMetaObject::invokeMethod(this, &MainWindow::toggleWindow, Qt::QueuedConnection);
}

void MainWindow::onVal8KeyPress()
{
    std::puts("onVal8KeyPress already note the cancel scan");
}

void MainWindow::toggleWindow()
{
    if (m_closing) {
        return;
    }
    const bool wasMinimized = isMinimized();
    m_keyLabel = rules::toggleLabel(m_keys.label != 0);
    setWindowFlags(Qt::Window);
    std::puts("MainWindow::onVal4KeyPress() setWindowFlags end");
    std::printf("MainWindow::onVal4KeyPress() setWindowFlags--1 bMin=%d\n", wasMinimized ? 1 : 0);
    if (wasMinimized) {
        showNormal();
        std::puts("MainWindow::onVal4KeyPress() setWindowFlags --2");
    } else {
        showMinimized();
        std::puts("MainWindow::onVal4KeyPress() setWindowFlags --3");
    }
}

bool MainWindow::waitAnswering(milliseconds limit, const std::function<bool()>& done)
{
    // Most waits end within a few milliseconds; only a longer one lets the window work meanwhile.
    constexpr milliseconds kQuiet { 50 };
    constexpr milliseconds kSlice { 5 };
    const auto start = Clock::now();
    const bool isGui = QThread::currentThread() == thread();
    while (!done()) {
        const auto waited = Clock::now() - start;
        if (waited >= limit) {
            return false;
        }
        {
            std::unique_lock<std::mutex> lock(m_gate->mutex);
            m_gate->changed.wait_for(lock, kSlice);
        }
        if (isGui && waited > kQuiet) {
            QCoreApplication::processEvents(
                QEventLoop::AllEvents, static_cast<int>(kSlice.count()));
        }
    }
    return true;
}
