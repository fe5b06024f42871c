// A scan job of the fake library: plays the scripted steps on a thread of its own.
#pragma once

#include "sdk/records.h"

#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace fake {

struct Step
{
    enum class Kind
    {
        kState,
        kImage,
        kError,
        kSleep,
        kWait
    };
    Kind kind = Kind::kWait;
    int number = 0; ///< state, error code or milliseconds
    int page = 0;
    std::string name; ///< file name
    int width = 0;
    int height = 0;
};

struct JobScript
{
    std::vector<Step> steps;
    int ends = 1; ///< how often state -1 is reported
};

/// One job at a time. Callbacks come one at a time, with no lock held that the entry points need.
class Jobs
{
public:
    ~Jobs();

    void setStateCallback(OrvaStateCallback callback);
    void setErrorCallback(OrvaErrorCallback callback);

    /// Blocks until the job has ended. 0, -44 after a cancel, -14 while another job runs.
    int run(const JobScript& script, const std::string& folder);
    void cancel();
    void release();
    bool running();
    /// Cancels what runs and waits until it and every fired callback have come to their end.
    void finishAll();
    /// One callback from another thread.
    void fire(const Step& step);

private:
    void play(const JobScript& script, const std::string& folder);
    void perform(const Step& step, const std::string& folder);
    void reportState(int state, int page, const std::string& file);
    void reportError(int code);
    void pauseFor(int milliseconds);
    void waitForRelease();
    bool cancelled();

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::mutex m_callbackMutex;
    OrvaStateCallback m_stateCallback = nullptr;
    OrvaErrorCallback m_errorCallback = nullptr;
    bool m_running = false;
    bool m_cancelled = false;
    int m_releases = 0;
    std::vector<std::thread> m_fired;
};

} // namespace fake
