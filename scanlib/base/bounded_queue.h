// Hands items from one stage to the next. The bound counts bytes, since sides differ a hundredfold
// in size. Every wait ends: a closed queue runs empty, a cancelled one gives up at once.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>
#include <utility>

namespace orva {

/// Any number of threads at both ends. Items leave in the order in which they came.
template <typename Item>
class BoundedQueue
{
public:
    explicit BoundedQueue(std::size_t maxBytes)
        : m_maxBytes(maxBytes)
    {
    }

    /// Waits for room. An item larger than the bound is let in when the queue is empty. false, with
    /// the item dropped, when the queue is closed or cancelled.
    bool push(Item item, std::size_t bytes)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_roomOrEnd.wait(lock, [&] {
            return m_closed || m_cancelled || m_items.empty() || m_bytes + bytes <= m_maxBytes;
        });
        if (m_closed || m_cancelled) {
            return false;
        }
        m_items.push_back({ std::move(item), bytes });
        m_bytes += bytes;
        m_itemOrEnd.notify_one();
        return true;
    }

    /// Waits for an item. false when there will be none any more.
    bool pop(Item& item)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_itemOrEnd.wait(lock, [&] { return m_closed || m_cancelled || !m_items.empty(); });
        if (m_cancelled || m_items.empty()) {
            return false;
        }
        item = std::move(m_items.front().item);
        m_bytes -= m_items.front().bytes;
        m_items.pop_front();
        m_roomOrEnd.notify_all();
        return true;
    }

    /// No more items come; what is queued is still handed out.
    void close()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_closed = true;
        m_roomOrEnd.notify_all();
        m_itemOrEnd.notify_all();
    }

    /// Drops what is queued and wakes everybody.
    void cancel()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_cancelled = true;
        m_items.clear();
        m_bytes = 0;
        m_roomOrEnd.notify_all();
        m_itemOrEnd.notify_all();
    }

private:
    struct Entry
    {
        Item item;
        std::size_t bytes;
    };

    const std::size_t m_maxBytes;
    std::mutex m_mutex;
    std::condition_variable m_roomOrEnd;
    std::condition_variable m_itemOrEnd;
    std::deque<Entry> m_items;
    std::size_t m_bytes = 0;
    bool m_closed = false;
    bool m_cancelled = false;
};

} // namespace orva
