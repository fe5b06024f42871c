// Recognisers that were loaded once: each call takes a free one, or makes one more.
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace orva {

/// Any thread. Holds as many as were ever in use at the same time, to its end.
template <typename Recogniser>
class RecogniserPool
{
public:
    using Item = std::unique_ptr<Recogniser>;

    /// A free one; nullptr when all are in use.
    Item take()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_free.empty()) {
            return nullptr;
        }
        Item item = std::move(m_free.back());
        m_free.pop_back();
        return item;
    }
    void give(Item item)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_free.push_back(std::move(item));
    }
    bool hasFree() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return !m_free.empty();
    }

private:
    mutable std::mutex m_mutex;
    std::vector<Item> m_free;
};

} // namespace orva
