// The one thread that makes SANE calls. Whoever gives it work waits with a limit: a driver that
// never returns costs that thread, not the caller.
#pragma once

#include <chrono>
#include <functional>
#include <memory>

namespace orva {

class SaneThread
{
public:
    struct Core;
    struct Ticket;

    SaneThread();
    /// Like stop with 2 s.
    ~SaneThread();
    SaneThread(const SaneThread&) = delete;
    SaneThread& operator=(const SaneThread&) = delete;

    /// Any thread. The task must own everything that it touches: it may outlive its caller.
    std::shared_ptr<Ticket> post(std::function<void()> task);
    /// true when the task has run. Waits in vain no longer than a moment while an earlier task is
    /// stuck.
    bool wait(const std::shared_ptr<Ticket>& ticket, std::chrono::milliseconds limit);
    /// Gives a task up: one that has not begun never will, one that runs marks the thread as stuck.
    void abandon(const std::shared_ptr<Ticket>& ticket);
    /// post and wait; abandons the task when it takes too long.
    bool run(std::function<void()> task, std::chrono::milliseconds limit);

    /// Marks what runs now as stuck: nobody waits long for this thread until it returns.
    void giveUp();

    /// Ends the thread after what is queued; the next post starts a new one. A stuck thread is left
    /// behind (false): then the library stays mapped, so that it returns into code that still
    /// exists.
    bool stop(std::chrono::milliseconds limit);

private:
    std::shared_ptr<Core> m_core;
};

/// Keeps this shared object mapped until the process ends, whatever dlclose is called.
void keepLibraryMapped();

} // namespace orva
