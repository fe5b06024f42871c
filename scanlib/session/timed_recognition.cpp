#include "scanlib/session/timed_recognition.h"

#include "scanlib/base/library_log.h"

#include <malloc.h>

#include <algorithm>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <new>
#include <thread>
#include <utility>

namespace orva {

namespace {

using Clock = ReadingEnd::Clock;

/// From the wish to stop to being left behind.
constexpr std::chrono::milliseconds kStopping { 500 };
/// How soon an end that has moved nearer is seen.
constexpr std::chrono::milliseconds kLook { 20 };
/// A job that leaves so many behind has a recogniser that hangs; more would only take the memory.
constexpr int kMostLeftBehind = 4;
constexpr std::chrono::milliseconds kWaitAtEnd { 2000 };

} // namespace

void ReadingEnd::limit(std::chrono::milliseconds fromNow) noexcept
{
    const Clock::time_point wanted = Clock::now() + fromNow;
    Clock::time_point set = m_time;
    while (wanted < set && !m_time.compare_exchange_weak(set, wanted)) { }
}

/// Of all calls: how many run without anybody waiting for them.
struct TimedRecognition::LeftBehind
{
    std::mutex mutex;
    std::condition_variable changed;
    int count = 0;
};

struct TimedRecognition::Call
{
    std::mutex mutex;
    std::condition_variable ended;
    bool hasEnded = false;
    bool isLeftBehind = false;
    Status status;
};

TimedRecognition::TimedRecognition(
    std::shared_ptr<TextRecognition> recognition, std::chrono::milliseconds limit)
    : m_recognition(std::move(recognition))
    , m_limit(limit)
    , m_left(std::make_shared<LeftBehind>())
{
}

TimedRecognition::~TimedRecognition()
{
    std::unique_lock<std::mutex> lock(m_left->mutex);
    if (!m_left->changed.wait_for(lock, kWaitAtEnd, [this] { return m_left->count == 0; })) {
        libraryLog("%d pages are still being read and are left to it", m_left->count);
    }
}

Status TimedRecognition::run(const std::shared_ptr<const ReadingEnd>& end, Body body, bool& isBack)
{
    isBack = true;
    {
        const std::lock_guard<std::mutex> lock(m_left->mutex);
        if (m_left->count >= kMostLeftBehind) {
            return { kRecognitionFailed, "the recognition does not come back" };
        }
    }
    const auto call = std::make_shared<Call>();
    const Clock::time_point late = Clock::now() + m_limit;
    std::thread thread([call, body = std::move(body), end, late, left = m_left]() mutable {
        Status status;
        try {
            status = body([&] { return end->isOver() || Clock::now() >= late; });
        } catch (const std::bad_alloc&) {
            status = { kNoMemory, "no memory for the recognition" };
        } catch (const std::exception& error) {
            status = { kRecognitionFailed, error.what() };
        } catch (...) {
            status = { kRecognitionFailed, "unknown exception" };
        }
        body = {}; // what it held is free before it counts as gone
        // A page takes some 60 MB in small pieces, on whichever heap its thread was given; they
        // would stay with every heap that was ever used. Costs some 30 ms of processor time.
        malloc_trim(0);
        bool isLeftBehind = false;
        {
            const std::lock_guard<std::mutex> lock(call->mutex);
            call->status = std::move(status);
            call->hasEnded = true;
            isLeftBehind = call->isLeftBehind;
            call->ended.notify_one();
        }
        if (isLeftBehind) {
            const std::lock_guard<std::mutex> lock(left->mutex);
            --left->count;
            left->changed.notify_all();
        }
    });
    std::unique_lock<std::mutex> lock(call->mutex);
    while (!call->hasEnded && Clock::now() < std::min(end->time(), late) + kStopping) {
        call->ended.wait_for(lock, kLook, [&] { return call->hasEnded; });
    }
    if (call->hasEnded) {
        lock.unlock();
        thread.join();
        const bool wasLate = call->status.code() == kCancelled && !end->isOver();
        return wasLate ? Status(kRecognitionFailed, "recognition took too long") : call->status;
    }
    isBack = false;
    call->isLeftBehind = true;
    const std::lock_guard<std::mutex> leftLock(m_left->mutex);
    ++m_left->count;
    thread.detach();
    return { end->isOver() ? kCancelled : kRecognitionFailed, "the recognition does not stop" };
}

Status TimedRecognition::read(
    Page& page, const std::shared_ptr<const ReadingEnd>& end, PageText& out)
{
    out = {};
    if (end->isOver()) {
        return { kCancelled, "the job is ending" };
    }
    const auto held = std::make_shared<Page>(std::move(page));
    const auto text = std::make_shared<PageText>();
    bool isBack = false;
    Status status = run(
        end,
        [recognition = m_recognition, held, text](
            const StopWish& stop) { return recognition->read(*held, stop, *text); },
        isBack);
    if (isBack) {
        page = std::move(*held);
        out = std::move(*text);
    }
    return status;
}

Status TimedRecognition::findTurn(const Page& page, TextOrientation mode,
    const std::shared_ptr<const ReadingEnd>& end, RotateAngle& out)
{
    out = RotateAngle::kNone;
    if (end->isOver()) {
        return { kCancelled, "the job is ending" };
    }
    const auto held = std::make_shared<const Page>(page);
    const auto turn = std::make_shared<RotateAngle>(RotateAngle::kNone);
    bool isBack = false;
    Status status = run(
        end,
        [recognition = m_recognition, held, mode, turn](
            const StopWish& stop) { return recognition->findTurn(*held, mode, stop, *turn); },
        isBack);
    out = isBack ? *turn : RotateAngle::kNone;
    return status;
}

} // namespace orva
