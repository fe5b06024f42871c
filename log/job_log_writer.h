// Puts the blocks of the job log into their files: at once, or from a thread of its own, so that a
// folder in a slow network holds nobody up.
#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <thread>

/// One piece of text that is not to be mixed with others, and where it goes.
struct JobLogBlock
{
    std::string destination; ///< the chosen folder; its permissions are those of what is made in it
    std::string folder; ///< of the month
    std::string file;
    std::string text;
};

/// Any thread. Blocks reach their files whole and in the order of the calls. What cannot be written
/// is told to the run log.
class JobLogWriter
{
public:
    JobLogWriter() = default;
    /// Waits for blocks that are still to be written, at most kLastWait; the run log is told of
    /// those that are lost.
    ~JobLogWriter();
    JobLogWriter(const JobLogWriter&) = delete;
    JobLogWriter& operator=(const JobLogWriter&) = delete;

    /// From now on a thread writes. Before, and where there can be no thread, write() does.
    void start();
    void write(JobLogBlock block);
    /// True as soon as everything is written, false when that takes longer than the limit.
    [[nodiscard]] bool flush(std::chrono::milliseconds limit);

    static constexpr std::chrono::milliseconds kLastWait { 2000 };

private:
    struct Queue;
    static void run(const std::shared_ptr<Queue>& queue);

    std::shared_ptr<Queue> m_queue; ///< shared with the thread, which may have to be left behind
    std::thread m_thread;
};
