#include "scanlib/base/bounded_queue.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <thread>

using orva::BoundedQueue;
using namespace std::chrono_literals;

namespace {

bool staysBlocked(std::future<bool>& call)
{
    return call.wait_for(50ms) == std::future_status::timeout;
}

} // namespace

TEST(BoundedQueue, countsBytesAndLetsALargeItemIntoAnEmptyQueueOnly)
{
    BoundedQueue<int> queue(100);
    ASSERT_TRUE(queue.push(1, 60));
    ASSERT_TRUE(queue.push(2, 40));
    auto third = std::async(std::launch::async, [&] { return queue.push(3, 500); });
    EXPECT_TRUE(staysBlocked(third));
    int item = 0;
    ASSERT_TRUE(queue.pop(item));
    EXPECT_TRUE(staysBlocked(third)) << "there is room for 60 bytes only";
    ASSERT_TRUE(queue.pop(item));
    EXPECT_TRUE(third.get());
    ASSERT_TRUE(queue.pop(item));
    EXPECT_EQ(item, 3);
}

TEST(BoundedQueue, runsEmptyAfterCloseAndGivesUpOnCancel)
{
    BoundedQueue<int> closed(10);
    closed.push(1, 5);
    closed.close();
    EXPECT_FALSE(closed.push(2, 1));
    int item = 0;
    EXPECT_TRUE(closed.pop(item));
    EXPECT_FALSE(closed.pop(item));

    BoundedQueue<int> cancelled(10);
    cancelled.push(1, 10);
    auto waiting = std::async(std::launch::async, [&] { return cancelled.push(2, 10); });
    EXPECT_TRUE(staysBlocked(waiting));
    cancelled.cancel();
    EXPECT_FALSE(waiting.get());
    EXPECT_FALSE(cancelled.pop(item));
}

TEST(BoundedQueue, losesNothingBetweenManyThreads)
{
    constexpr int kPerThread = 2000;
    BoundedQueue<int> queue(64);
    std::atomic<long> sum { 0 };
    std::atomic<int> received { 0 };
    const auto consume = [&] {
        for (int item = 0; queue.pop(item); ++received) {
            sum += item;
        }
    };
    const auto produce = [&] {
        for (int i = 1; i <= kPerThread; ++i) {
            queue.push(i, static_cast<std::size_t>(i % 40));
        }
    };
    std::thread consumers[] = { std::thread(consume), std::thread(consume) };
    std::thread producers[] = { std::thread(produce), std::thread(produce) };
    for (std::thread& thread : producers) {
        thread.join();
    }
    queue.close();
    for (std::thread& thread : consumers) {
        thread.join();
    }
    EXPECT_EQ(received, 2 * kPerThread);
    EXPECT_EQ(sum, 2L * kPerThread * (kPerThread + 1) / 2);
}
