// Calls the application's callbacks from one thread of their own, in order, with no lock held: a
// slow callback never holds up a page, and a callback may call any entry point.
#pragma once

#include "sdk/records.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <string>
#include <thread>

namespace orva {

struct Callbacks
{
    OrvaStateCallback state = nullptr; ///< may be null
    OrvaErrorCallback error = nullptr; ///< may be null
};

/// One job. Members may be called by any thread.
class CallbackDispatcher
{
public:
    using Clock = std::chrono::steady_clock;

    explicit CallbackDispatcher(Callbacks callbacks);
    ~CallbackDispatcher();
    CallbackDispatcher(const CallbackDispatcher&) = delete;
    CallbackDispatcher& operator=(const CallbackDispatcher&) = delete;

    void postState(int state, int page, std::string fileName);
    /// The error comes after everything that was posted before the end, but not later than this;
    /// the first one counts, others are dropped.
    void postError(int code, Clock::time_point latest);
    /// Posts the last call, state -1. What is posted afterwards is dropped.
    void postEnd(int page);
    /// Waits until all calls have been made (or muted) and the thread has ended.
    void finish();
    /// No further call begins; a running one is not interrupted.
    void mute();
    bool isOwnThread() const { return std::this_thread::get_id() == m_thread.get_id(); }

private:
    struct StateCall
    {
        int state;
        int page;
        std::string fileName;
    };

    void run();
    bool errorIsDue() const;

    const Callbacks m_callbacks;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<StateCall> m_queue;
    bool m_ended = false;
    bool m_muted = false;
    bool m_errorPending = false;
    bool m_errorPosted = false;
    int m_errorCode = 0;
    Clock::time_point m_errorLatest;
    std::thread m_thread; ///< last: runs with all of the above
};

} // namespace orva
