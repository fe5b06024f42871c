// Tells every stage of a running job that it is to stop. Set once, never cleared; any thread.
#pragma once

#include <atomic>

namespace orva {

class CancelToken
{
public:
    void cancel() noexcept { m_cancelled.store(true); }
    bool cancelled() const noexcept { return m_cancelled.load(); }

private:
    std::atomic<bool> m_cancelled { false };
};

} // namespace orva
