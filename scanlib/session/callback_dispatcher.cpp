#include "scanlib/session/callback_dispatcher.h"

#include "scanlib/base/library_log.h"
#include "sdk/codes.h"

#include <utility>

namespace orva {

namespace {

constexpr int kEnded = static_cast<int>(JobState::kEnded);

/// The application's function must not throw; if it does, the job goes on.
template <typename Call>
void guardedCall(Call call)
{
    try {
        call();
    } catch (...) {
        libraryLog("a callback of the application threw an exception");
    }
}

} // namespace

CallbackDispatcher::CallbackDispatcher(Callbacks callbacks)
    : m_callbacks(callbacks)
    , m_thread([this] { run(); })
{
}

CallbackDispatcher::~CallbackDispatcher()
{
    postEnd(0);
    finish();
}

void CallbackDispatcher::postState(int state, int page, std::string fileName)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_ended) {
        m_queue.push_back({ state, page, std::move(fileName) });
        m_changed.notify_all();
    }
}

void CallbackDispatcher::postError(int code, Clock::time_point latest)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_ended && !m_errorPosted) {
        m_errorPosted = true;
        m_errorPending = true;
        m_errorCode = code;
        m_errorLatest = latest;
        m_changed.notify_all();
    }
}

void CallbackDispatcher::postEnd(int page)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_ended) {
        m_ended = true;
        m_queue.push_back({ kEnded, page, {} });
        m_changed.notify_all();
    }
}

void CallbackDispatcher::finish()
{
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

void CallbackDispatcher::mute()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_muted = true;
    m_changed.notify_all();
}

/// With the lock held.
bool CallbackDispatcher::errorIsDue() const
{
    return m_errorPending
        && (Clock::now() >= m_errorLatest || (!m_queue.empty() && m_queue.front().state == kEnded));
}

void CallbackDispatcher::run()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    while (true) {
        if (errorIsDue()) {
            m_errorPending = false;
            if (m_callbacks.error != nullptr && !m_muted) {
                lock.unlock();
                guardedCall([&] { m_callbacks.error(m_errorCode); });
                lock.lock();
            }
        } else if (!m_queue.empty()) {
            StateCall call = std::move(m_queue.front());
            m_queue.pop_front();
            if (m_callbacks.state != nullptr && !m_muted) {
                lock.unlock();
                guardedCall([&] { m_callbacks.state(call.state, call.page, call.fileName); });
                lock.lock();
            }
            if (call.state == kEnded) {
                return;
            }
        } else if (m_errorPending) {
            m_changed.wait_until(lock, m_errorLatest);
        } else {
            m_changed.wait(lock);
        }
    }
}

} // namespace orva
