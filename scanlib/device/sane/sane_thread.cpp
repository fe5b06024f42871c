#include "scanlib/device/sane/sane_thread.h"

#include <dlfcn.h>

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

namespace orva {

/// Waited for a thread that is known to be stuck.
constexpr std::chrono::milliseconds kMoment(100);

enum class TicketState
{
    kQueued,
    kRunning,
    kDone,
    kDropped
};

struct SaneThread::Ticket
{
    std::function<void()> task;
    TicketState state = TicketState::kQueued;
    bool abandoned = false;
};

struct SaneThread::Core
{
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<std::shared_ptr<Ticket>> queue;
    std::thread thread;
    bool running = false; ///< the thread exists and has not left its loop
    bool stopping = false;
    bool stuck = false; ///< an abandoned task has not returned yet
    std::shared_ptr<Ticket> current; ///< whose task runs

    void loop()
    {
        std::unique_lock<std::mutex> lock(mutex);
        for (;;) {
            changed.wait(lock, [&] { return stopping || !queue.empty(); });
            if (queue.empty()) {
                break;
            }
            const std::shared_ptr<Ticket> ticket = queue.front();
            queue.pop_front();
            if (ticket->state == TicketState::kDropped) {
                continue;
            }
            ticket->state = TicketState::kRunning;
            current = ticket;
            std::function<void()> task = std::move(ticket->task);
            lock.unlock();
            task();
            task = nullptr; // may hold the last reference to the owner of this thread
            lock.lock();
            ticket->state = TicketState::kDone;
            current = nullptr;
            stuck = stuck && !ticket->abandoned;
            changed.notify_all();
        }
        running = false;
        changed.notify_all();
    }
};

SaneThread::SaneThread()
    : m_core(std::make_shared<Core>())
{
}

SaneThread::~SaneThread()
{
    stop(std::chrono::seconds(2));
}

std::shared_ptr<SaneThread::Ticket> SaneThread::post(std::function<void()> task)
{
    auto ticket = std::make_shared<Ticket>();
    ticket->task = std::move(task);
    const std::lock_guard<std::mutex> lock(m_core->mutex);
    m_core->queue.push_back(ticket);
    if (!m_core->running) {
        if (m_core->thread.joinable()) {
            m_core->thread.join(); // has left its loop
        }
        m_core->running = true;
        m_core->stopping = false;
        m_core->thread = std::thread([core = m_core] { core->loop(); });
    }
    m_core->changed.notify_all();
    return ticket;
}

bool SaneThread::wait(const std::shared_ptr<Ticket>& ticket, std::chrono::milliseconds limit)
{
    std::unique_lock<std::mutex> lock(m_core->mutex);
    const auto done = [&] { return ticket->state == TicketState::kDone; };
    return m_core->changed.wait_for(lock, m_core->stuck ? std::min(limit, kMoment) : limit, done);
}

void SaneThread::abandon(const std::shared_ptr<Ticket>& ticket)
{
    const std::lock_guard<std::mutex> lock(m_core->mutex);
    if (ticket->state == TicketState::kQueued) {
        ticket->state = TicketState::kDropped;
    } else if (ticket->state == TicketState::kRunning) {
        ticket->abandoned = true;
        m_core->stuck = true;
    }
}

bool SaneThread::run(std::function<void()> task, std::chrono::milliseconds limit)
{
    const std::shared_ptr<Ticket> ticket = post(std::move(task));
    if (wait(ticket, limit)) {
        return true;
    }
    abandon(ticket);
    return false;
}

void SaneThread::giveUp()
{
    const std::lock_guard<std::mutex> lock(m_core->mutex);
    if (m_core->current != nullptr) {
        m_core->current->abandoned = true;
        m_core->stuck = true;
    }
}

bool SaneThread::stop(std::chrono::milliseconds limit)
{
    std::unique_lock<std::mutex> lock(m_core->mutex);
    if (!m_core->thread.joinable()) {
        return true;
    }
    limit = m_core->stuck ? std::min(limit, kMoment) : limit;
    m_core->stopping = true;
    m_core->changed.notify_all();
    const bool onOwnThread = m_core->thread.get_id() == std::this_thread::get_id();
    const bool ended =
        !onOwnThread && m_core->changed.wait_for(lock, limit, [&] { return !m_core->running; });
    std::thread thread = std::move(m_core->thread);
    if (ended) {
        lock.unlock();
        thread.join();
        return true;
    }
    // The loop ends by itself once the task returns. Until then later tasks queue up behind it:
    // SANE must not be entered twice.
    if (m_core->current != nullptr) {
        m_core->current->abandoned = true;
        m_core->stuck = true;
    }
    lock.unlock();
    keepLibraryMapped();
    thread.detach();
    return false;
}

void keepLibraryMapped()
{
    Dl_info info {};
    if (::dladdr(reinterpret_cast<void*>(&keepLibraryMapped), &info) != 0
        && info.dli_fname != nullptr) {
        ::dlopen(info.dli_fname, RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE);
    }
}

} // namespace orva
