// One job from the first sheet to the last file:
//
//   device (caller's thread) -> bounded queue -> image workers -> spool -> page order -> writer
//   thread
//                                                                     \-> dispatcher: the callbacks
//
// A side is reported when its pages are on disk in the spool, a file when it is complete under its
// name. Whatever goes wrong, what was scanned before is written, the error is told once, the end
// last. The sides that are reported are the first ones of the batch, without a gap.
#pragma once

#include "scanlib/base/bounded_queue.h"
#include "scanlib/base/buffer_pool.h"
#include "scanlib/base/cancel_token.h"
#include "scanlib/device/device.h"
#include "scanlib/session/callback_dispatcher.h"
#include "scanlib/session/document_assembler.h"
#include "scanlib/session/job_journal.h"
#include "scanlib/session/job_settings.h"
#include "scanlib/session/page_tools.h"
#include "scanlib/session/timed_recognition.h"

#include <atomic>
#include <chrono>
#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace orva {

class ScanJob
{
public:
    /// `recognition` may be missing; formats of text are then refused.
    ScanJob(const JobSettings& settings, const PageTools& tools, const PipelineLimits& limits,
        const std::filesystem::path& spoolRoot, Callbacks callbacks,
        TimedRecognition* recognition = nullptr);

    /// Blocks until the last callback has returned. The device is used by the calling thread only,
    /// except for requestCancel. Returns the code of the first fault, kCancelled or kOk. Once.
    ResultCode run(Device& device);
    /// The end without a job: tells the error and the end, as every job does.
    ResultCode refuse(const Status& why);

    /// Any thread, any time, never blocks. What the device has delivered is still written.
    void cancel() noexcept;
    /// No callback begins after this, and no page is read any more.
    void mute();
    bool isCallbackThread() const { return m_dispatcher.isOwnThread(); }
    /// The last side that was reported; all zero before the first.
    _tagPageParameter lastSide() const;

private:
    struct Group
    {
        int sequence = 0; ///< from 0, without gaps
        PageGroup pages;
    };
    struct Finished
    {
        std::vector<_tagPageParameter> sides;
        std::vector<EncodedPage> pages;
        bool failed = false; ///< could not be processed
    };

    Status prepare(Device& device, const OutputFormat& format);
    Status prepareRecognition(const OutputFormat& format);
    void runPipeline(Device& device, const OutputFormat& format);
    Status feed(Device& device);
    Status feedSides(Device& device, bool& batchBegun);
    void enqueue(PageGroup& pages);
    void work(const OutputFormat& format);
    Status process(Group& group, const OutputFormat& format, const PageEncoder& encoder,
        std::vector<std::uint8_t>& payload, Finished& finished);
    std::optional<std::string> textOf(Page& page);
    RotateAngle uprightTurn(const Page& page);
    void deliver(int sequence, Finished finished);
    void write(const OutputFormat& format);
    void fault(const Status& status);
    ResultCode end();

    JobSettings m_settings; ///< as they are once the job is made
    const PageTools& m_tools;
    TimedRecognition* const m_recognition;
    const std::filesystem::path m_spoolRoot;
    const unsigned m_workers;

    CancelToken m_stop; ///< the device is to stop, whoever wants it
    std::atomic<bool> m_cancelled { false }; ///< the operator or the device wants it
    const std::shared_ptr<ReadingEnd> m_readingEnd; ///< only a cancellation sets it
    BufferPool m_buffers;
    BoundedQueue<Group> m_queue;
    BoundedQueue<EncodedPage> m_toWrite; ///< payloads are on disk, so nothing bounds it
    JobJournal m_journal;
    int m_sequences = 0; ///< groups given to the workers

    mutable std::mutex m_mutex; ///< guards what follows
    Device* m_feeding = nullptr; ///< while requestCancel makes sense
    Status m_fault; ///< the first one
    Status m_unread; ///< why the first page without text has none; told at the end
    std::map<int, Finished> m_early; ///< groups that wait for an earlier one
    int m_nextSequence = 0;
    bool m_broken = false; ///< a group that failed has had its turn
    int m_sides = 0; ///< reported
    _tagPageParameter m_lastSide {};

    CallbackDispatcher m_dispatcher;
};

} // namespace orva
