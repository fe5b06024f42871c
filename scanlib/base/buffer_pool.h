// Keeps pixel buffers for the next side. Fresh memory for an A4 page in colour costs some 6,000
// page faults, which is dearer than copying it; a buffer that has been used before costs nothing,
// and a fresh one is asked for in huge pages.
#pragma once

#include <sys/mman.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace orva {

/// Any thread.
class BufferPool
{
public:
    /// Holds at most this many buffers and bytes; what comes back beyond that is freed.
    BufferPool(std::size_t maxBuffers, std::size_t maxBytes)
        : m_maxBuffers(maxBuffers)
        , m_maxBytes(maxBytes)
    {
    }

    /// A buffer with the size and content of its last use, or an empty one with room for this many
    /// bytes.
    std::vector<std::uint8_t> take(std::size_t bytes)
    {
        std::vector<std::uint8_t> buffer;
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            if (!m_buffers.empty()) {
                buffer = std::move(m_buffers.back());
                m_buffers.pop_back();
                m_bytes -= buffer.capacity();
                return buffer;
            }
        }
        buffer.reserve(bytes);
        adviseHugePages(buffer);
        return buffer;
    }

    void give(std::vector<std::uint8_t>&& buffer)
    {
        std::vector<std::uint8_t> dropped; // freed after the lock
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_buffers.size() < m_maxBuffers && m_bytes + buffer.capacity() <= m_maxBytes) {
            m_bytes += buffer.capacity();
            m_buffers.push_back(std::move(buffer));
        } else {
            dropped = std::move(buffer);
        }
    }

private:
    /// A wish only: where the system has none, the memory comes in small pages as ever.
    static void adviseHugePages(std::vector<std::uint8_t>& buffer)
    {
        constexpr std::size_t kHugePage = std::size_t { 2 } << 20U;
        void* first = buffer.data();
        std::size_t room = buffer.capacity();
        if (first != nullptr && std::align(kHugePage, kHugePage, first, room) != nullptr) {
            madvise(first, room / kHugePage * kHugePage, MADV_HUGEPAGE);
        }
    }

    const std::size_t m_maxBuffers;
    const std::size_t m_maxBytes;
    std::mutex m_mutex;
    std::vector<std::vector<std::uint8_t>> m_buffers;
    std::size_t m_bytes = 0;
};

} // namespace orva
