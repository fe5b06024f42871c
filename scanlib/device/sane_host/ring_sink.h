// Lines into the memory that is shared with the library: the driver reads straight into a slot, a
// slot goes over when it is full or has waited a moment, and comes back when it was taken.
#pragma once

#include "scanlib/device/sane/host_messages.h"
#include "scanlib/device/sane_host/side_sink.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>

namespace orva {

/// SANE thread, but for slotFreed and close.
class RingSink : public SideSink
{
public:
    using Send = std::function<void(HostMessage, std::vector<std::uint8_t>)>;
    RingSink(std::uint8_t* ring, Send send)
        : m_ring(ring)
        , m_send(std::move(send))
    {
    }

    void beginFrame(const FrameShape& shape) override;
    Room room() override;
    void add(std::size_t bytes) override;
    void endFrame() override;
    /// What is left of a side that broke off is not sent.
    void drop() { m_filled = 0; }

    void slotFreed();
    /// Nobody frees slots any more.
    void close();

private:
    void flush();
    std::uint8_t* slot() const { return m_ring + m_sent % kSlots * kSlotBytes; }

    std::uint8_t* const m_ring;
    const Send m_send;
    std::size_t m_filled = 0; ///< bytes in the slot at hand
    std::chrono::steady_clock::time_point m_filledSince;
    std::mutex m_mutex; ///< the rest
    std::condition_variable m_changed;
    std::size_t m_sent = 0;
    std::size_t m_freed = 0;
    bool m_closed = false;
};

} // namespace orva
