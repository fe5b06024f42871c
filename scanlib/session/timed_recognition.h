// The recognition with an end to every wait. A recogniser can be asked to stop between two lines of
// text, but not while it takes a page apart, which lasts long on some pictures; and it may hang.
// So each call runs on a thread of its own, and one that does not come back in time is left behind
// with what it works on.
#pragma once

#include "scanlib/ocr/text_recognition.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>

namespace orva {

/// When the reading of a job ends; only ever moves nearer. Any thread.
class ReadingEnd
{
public:
    using Clock = std::chrono::steady_clock;

    void limit(std::chrono::milliseconds fromNow) noexcept;
    Clock::time_point time() const { return m_time; }
    bool isOver() const { return Clock::now() >= time(); }

private:
    std::atomic<Clock::time_point> m_time { Clock::time_point::max() };
};

/// Any thread, all functions.
class TimedRecognition
{
public:
    /// A call ends by itself, or when `limit` or the job's end of reading has come; then it has
    /// half a second to stop before it is left behind.
    TimedRecognition(std::shared_ptr<TextRecognition> recognition, std::chrono::milliseconds limit);
    /// Waits a moment for calls that were left behind. What still runs then does so on its own: it
    /// holds all that it needs.
    ~TimedRecognition();
    TimedRecognition(const TimedRecognition&) = delete;
    TimedRecognition& operator=(const TimedRecognition&) = delete;

    void warmUp() { m_recognition->warmUp(); }
    Status prepare(const RecognitionNeeds& needs) { return m_recognition->prepare(needs); }
    /// As TextRecognition, with kCancelled at the end of reading and kRecognitionFailed when the
    /// page has had its time. `page` is taken over, and given back unless it was left behind.
    Status read(Page& page, const std::shared_ptr<const ReadingEnd>& end, PageText& out);
    Status findTurn(const Page& page, TextOrientation mode,
        const std::shared_ptr<const ReadingEnd>& end, RotateAngle& out);

private:
    struct LeftBehind;
    struct Call;
    using Body = std::function<Status(const StopWish&)>;

    /// `isBack` tells whether the body has returned.
    Status run(const std::shared_ptr<const ReadingEnd>& end, Body body, bool& isBack);

    const std::shared_ptr<TextRecognition> m_recognition;
    const std::chrono::milliseconds m_limit;
    const std::shared_ptr<LeftBehind> m_left;
};

} // namespace orva
