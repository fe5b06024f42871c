// What outlives the window for the sake of threads that cannot be joined: the button monitor, the
// worker of a job and the library's callbacks each keep a share of the gate, and reach the window
// through it only.
#pragma once

#include "sdk/COrva_SDK.h"

#include <pthread.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>

class MainWindow;

/// State of the button monitor. The flags are read without KeyPressMutex, so all are atomic.
struct KeyThreadState
{
    pthread_t thread {}; ///< GUI thread; valid while made
    bool made = false; ///< GUI thread
    std::atomic<bool> ready { false }; ///< the mutex and the condition exist
    std::atomic<int> running { 0 }; ///< 1: may poll
    std::atomic<int> paused { 0 }; ///< acknowledgement: 1 when the thread went into its wait
    std::atomic<int> parked { 0 }; ///< 1 for as long as the thread is in that wait
    std::atomic<int> ended { 0 }; ///< the thread is past its last look at the library
    std::atomic<unsigned char> exit { 0 };
    std::atomic<unsigned char> scanFinished { 0 };
    std::atomic<unsigned char> openResult { 0 };
    std::atomic<unsigned char> label { 0 };
};

struct WindowGate
{
    std::mutex mutex;
    std::condition_variable changed; ///< any of these, or an acknowledgement of the monitor
    MainWindow* window = nullptr; ///< null once it is being destroyed
    int users = 0; ///< threads inside the window, see WindowUse
    int workers = 0; ///< worker threads that are not through with their job
    bool closing = false; ///< nobody is to wait any longer
    KeyThreadState keys;
    /// A thread may be inside the library when the window goes.
    std::unique_ptr<COrva_SDK> library;

    /// Wakes everybody who waits for a change.
    void notify();
    /// From now on nobody enters; waits for those that are inside. False when they take too long.
    bool shut(std::chrono::milliseconds limit);
};

/// A stay inside the window: it is not destroyed while one lives. Any thread. Short: whoever calls
/// the library, waits for long or asks a disk that may hang leaves the window meanwhile.
class WindowUse
{
public:
    /// Empty without a gate and when the window is gone.
    explicit WindowUse(std::shared_ptr<WindowGate> gate);
    ~WindowUse() { leave(); }
    WindowUse(const WindowUse&) = delete;
    WindowUse& operator=(const WindowUse&) = delete;

    explicit operator bool() const { return m_window != nullptr; }
    MainWindow* operator->() const { return m_window; }
    MainWindow* get() const { return m_window; }
    /// Number of the job that was the latest one on entering.
    unsigned job() const { return m_job; }
    void leave();

private:
    std::shared_ptr<WindowGate> m_gate;
    MainWindow* m_window = nullptr;
    unsigned m_job = 0;
};
