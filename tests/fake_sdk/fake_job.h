// A scan job of the fake library: plays the scripted steps on a thread of its own.
#pragma once

#include "sdk/records.h"
#include "tests/fake_sdk/fake_script.h"

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace fake {

/// One job at a time. Callbacks come one at a time, with no lock held that the entry points need.
class Jobs
{
public:
    ~Jobs() { finishAll(); }

    std::atomic<OrvaStateCallback> onState { nullptr };
    std::atomic<OrvaErrorCallback> onError { nullptr };

    /// Blocks until the job has ended. `ends` is how often state -1 is reported. 0, -44 after a
    /// cancel, -14 while another job runs.
    int run(const std::vector<Line>& steps, int ends, const std::string& folder);
    void cancel();
    void release();
    bool running();
    /// Cancels what runs and waits until it and every fired callback have come to their end.
    void finishAll();
    /// One callback from another thread.
    void fire(const Line& step);

private:
    void perform(const Line& step, const std::string& folder);
    void report(int state, int page, const std::string& file);
    void waitForRelease();

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::mutex m_callbackMutex;
    std::atomic<bool> m_cancelled { false };
    bool m_running = false;
    int m_releases = 0;
    std::vector<std::thread> m_fired;
};

} // namespace fake
