// Waiting for a condition, for tests without an event loop (with one: QTest::qWaitFor).
#pragma once

#include <chrono>
#include <thread>

/// Asks every 2 ms until the condition holds; false when the limit passes first.
template <typename Condition>
bool waitUntil(Condition condition, std::chrono::milliseconds limit = std::chrono::seconds(5))
{
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= end) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}
