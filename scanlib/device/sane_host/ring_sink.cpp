#include "scanlib/device/sane_host/ring_sink.h"

namespace orva {

void RingSink::beginFrame(const FrameShape& shape)
{
    WireWriter body;
    put(body, shape);
    m_send(HostMessage::kFrame, body.take());
}

SideSink::Room RingSink::room()
{
    if (m_filled == 0) {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait(lock, [this] { return m_closed || m_sent - m_freed < kSlots; });
        if (m_closed) {
            return { nullptr, 0 };
        }
    }
    return { slot() + m_filled, kSlotBytes - m_filled };
}

void RingSink::add(std::size_t bytes)
{
    constexpr std::chrono::milliseconds kMoment(50);
    constexpr std::size_t kTooLittle = 4096; // for another read
    const auto now = std::chrono::steady_clock::now();
    m_filledSince = m_filled == 0 ? now : m_filledSince;
    m_filled += bytes;
    if (m_filled + kTooLittle > kSlotBytes || now - m_filledSince >= kMoment) {
        flush();
    }
}

void RingSink::endFrame()
{
    flush();
    m_send(HostMessage::kFrameEnd, {});
}

void RingSink::flush()
{
    if (m_filled == 0) {
        return;
    }
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        ++m_sent;
    }
    WireWriter body;
    body.put(static_cast<std::uint32_t>(m_filled));
    m_filled = 0;
    m_send(HostMessage::kLines, body.take());
}

void RingSink::slotFreed()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    ++m_freed;
    m_changed.notify_all();
}

void RingSink::close()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_closed = true;
    m_changed.notify_all();
}

} // namespace orva
