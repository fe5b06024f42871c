#include "scanlib/session/scan_job.h"

#include "scanlib/base/library_log.h"
#include "scanlib/base/units.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <thread>
#include <utility>

namespace orva {

namespace {

/// The error reaches the operator behind the sides that were scanned before it, but not later.
/// Leaves room within the two seconds that an operator will wait.
constexpr std::chrono::milliseconds kErrorDelay { 1500 };
/// Pixel buffers that wait to be used again, beyond those in the queue.
constexpr std::size_t kSpareBuffers = 4;
/// After a cancellation: how much longer pages are read. Those that are not are kept as pictures.
constexpr std::chrono::milliseconds kReadingAfterCancel { 400 };

unsigned workerCount(const PipelineLimits& limits)
{
    return limits.workers != 0 ? limits.workers : std::max(1U, std::thread::hardware_concurrency());
}

/// Threads that are waited for, also when one of them could not be started.
class JoinedThreads
{
public:
    ~JoinedThreads() { join(); }
    template <typename Body>
    void start(Body body)
    {
        m_threads.emplace_back(std::move(body));
    }
    void join()
    {
        for (std::thread& thread : m_threads) {
            thread.join();
        }
        m_threads.clear();
    }

private:
    std::vector<std::thread> m_threads;
};

template <typename Body>
class AtExit
{
public:
    explicit AtExit(Body body)
        : m_body(std::move(body))
    {
    }
    ~AtExit() { m_body(); }
    AtExit(const AtExit&) = delete;
    AtExit& operator=(const AtExit&) = delete;

private:
    Body m_body;
};

/// Makes a failed status of whatever is thrown.
template <typename Body>
Status guardedStatus(Body body)
{
    try {
        return body();
    } catch (const std::bad_alloc&) {
        return { kNoMemory, "out of memory" };
    } catch (const std::exception& error) {
        return { kInternal, error.what() };
    } catch (...) {
        return { kInternal, "unknown exception" };
    }
}

/// Before a driver is asked for it: some would take the memory, and the machine with it.
Status checkArea(const AcquireSettings& settings)
{
    constexpr double kMaxBytes = 2e9;
    const double columns = settings.area.widthMm / units::kMillimetresPerInch * settings.dpiX;
    const double rows = settings.area.heightMm / units::kMillimetresPerInch * settings.dpiY;
    const bool color =
        settings.mode == ColorMode::kColor || settings.mode == ColorMode::kMultiStream;
    if (columns * rows * (color ? 3 : 1) < kMaxBytes) {
        return {};
    }
    return { kPageTooLarge,
        std::to_string(std::llround(columns)) + " x " + std::to_string(std::llround(rows))
            + " pixels" };
}

_tagPageParameter geometryOf(const Page& page)
{
    _tagPageParameter side {};
    side.nPage = page.number;
    side.nWidth = page.width;
    side.nHeight = page.height;
    side.nBitsPerPixel = bitsPerPixel(page.format);
    side.nResolutionX = static_cast<int>(std::lround(page.dpiX));
    side.nResolutionY = static_cast<int>(std::lround(page.dpiY));
    return side;
}

} // namespace

ScanJob::ScanJob(const JobSettings& settings, const PageTools& tools, const PipelineLimits& limits,
    const std::filesystem::path& spoolRoot, Callbacks callbacks, TimedRecognition* recognition)
    : m_settings(settings)
    , m_tools(tools)
    , m_recognition(recognition)
    , m_spoolRoot(spoolRoot)
    , m_workers(workerCount(limits))
    , m_readingEnd(std::make_shared<ReadingEnd>())
    , m_buffers(m_workers + kSpareBuffers, limits.queueBytes)
    , m_queue(limits.queueBytes)
    , m_toWrite(0)
    , m_dispatcher(callbacks)
{
    if (m_recognition != nullptr) {
        m_settings.image.uprightTurn = [this](const Page& page) { return uprightTurn(page); };
    }
}

ResultCode ScanJob::run(Device& device)
{
    const Status status = guardedStatus([&]() -> Status {
        const OutputFormat* const format = m_tools.findOutputFormat(m_settings.output.format);
        if (format == nullptr) {
            return { kFormatNotSupported, "no writer for the format" };
        }
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_feeding = &device;
        }
        const AtExit leave([this] {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_feeding = nullptr;
        });
        if (Status prepared = prepare(device, *format); !prepared.ok()) {
            return prepared;
        }
        runPipeline(device, *format);
        return {};
    });
    if (!status.ok()) {
        fault(status);
    }
    m_journal.close();
    return end();
}

ResultCode ScanJob::refuse(const Status& why)
{
    fault(why);
    return end();
}

ResultCode ScanJob::end()
{
    int sides = 0;
    Status result;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        sides = m_sides;
        if (m_fault.ok() && !m_unread.ok()) {
            m_fault = m_unread;
            m_dispatcher.postError(m_fault.code(), CallbackDispatcher::Clock::now());
        }
        result = m_fault;
    }
    m_dispatcher.postEnd(sides);
    m_dispatcher.finish();
    if (!result.ok()) {
        return result.code();
    }
    return m_cancelled ? kCancelled : kOk;
}

void ScanJob::cancel() noexcept
{
    m_cancelled = true;
    m_readingEnd->limit(kReadingAfterCancel);
    m_stop.cancel();
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_feeding != nullptr) {
        m_feeding->requestCancel();
    }
}

void ScanJob::mute()
{
    m_dispatcher.mute();
    m_readingEnd->limit({});
}

_tagPageParameter ScanJob::lastSide() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_lastSide;
}

void ScanJob::fault(const Status& status)
{
    if (status.code() == kCancelled) {
        m_cancelled = true;
        m_stop.cancel();
        return;
    }
    libraryLog("fault %d: %s", status.code(), status.detail().c_str());
    m_stop.cancel();
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_fault.ok()) {
        m_fault = status;
        m_dispatcher.postError(status.code(), CallbackDispatcher::Clock::now() + kErrorDelay);
    }
    if (m_feeding != nullptr) {
        m_feeding->requestCancel();
    }
}

/// Everything that can be found wrong before paper is moved.
Status ScanJob::prepare(Device& device, const OutputFormat& format)
{
    const OutputStore store(m_settings.output.folder, m_settings.output.sameName);
    Status status = checkArea(m_settings.acquire);
    if (status.ok()) {
        status = store.check();
    }
    if (status.ok()) {
        status = prepareRecognition(format);
    }
    if (status.ok()) {
        status = device.open();
    }
    if (status.ok()) {
        status = device.configure(m_settings.acquire);
    }
    if (status.ok()) {
        status = m_journal.begin(m_spoolRoot, m_settings.output);
    }
    return status;
}

Status ScanJob::prepareRecognition(const OutputFormat& format)
{
    RecognitionNeeds needs;
    needs.text = format.needsText;
    needs.orientation = m_settings.image.textOrientation != TextOrientation::kOff;
    if (!needs.text && !needs.orientation) {
        return {};
    }
    return m_recognition != nullptr ? m_recognition->prepare(needs)
                                    : Status(kNotSupported, "no text recognition");
}

void ScanJob::runPipeline(Device& device, const OutputFormat& format)
{
    // Each queue is closed before the threads that read it are waited for, whatever happens.
    JoinedThreads writer;
    const AtExit closeWriting([this] { m_toWrite.close(); });
    writer.start([&] { write(format); });

    JoinedThreads workers;
    const AtExit closeQueue([this] { m_queue.close(); });
    for (unsigned i = 0; i < m_workers; ++i) {
        workers.start([&] { work(format); });
    }
    if (const Status status = guardedStatus([&] { return feed(device); }); !status.ok()) {
        fault(status);
    }
}

Status ScanJob::feed(Device& device)
{
    bool batchBegun = false;
    const Status status = guardedStatus([&] { return feedSides(device, batchBegun); });
    if (batchBegun) {
        device.endBatch();
    }
    if (m_cancelled && !status.ok()) {
        libraryLog("cancelled; the device says %d: %s", status.code(), status.detail().c_str());
        return { kCancelled, status.detail() };
    }
    // The stop of a job that failed elsewhere comes back from the device as a cancellation.
    return m_stop.cancelled() && status.code() == kCancelled ? Status() : status;
}

Status ScanJob::feedSides(Device& device, bool& batchBegun)
{
    const bool wholeSheets = m_tools.needsWholeSheet(m_settings.image);
    Status status;
    int sides = 0;
    std::size_t sideBytes = 0; // most batches are of one size
    PageGroup group;
    while (status.ok() && !m_stop.cancelled()) {
        Page page;
        page.pixels = m_buffers.take(sideBytes);
        bool endOfFeed = false;
        batchBegun = true;
        status = guardedStatus([&] { return device.nextPage(page, endOfFeed, m_stop); });
        // Some devices call an emptied feeder "no paper"; after a first side that is the end.
        endOfFeed = endOfFeed || (status.code() == kNoPaper && sides > 0);
        if (endOfFeed) {
            status = sides > 0 ? Status() : Status(kNoPaper, "the feeder is empty");
            break;
        }
        if (!status.ok()) {
            break;
        }
        page.number = ++sides;
        sideBytes = page.bytes();
        if (!group.empty() && (!wholeSheets || group.front().sheet != page.sheet)) {
            enqueue(group);
        }
        group.push_back(std::move(page));
        if (!wholeSheets) {
            enqueue(group);
        }
    }
    enqueue(group);
    return status;
}

void ScanJob::enqueue(PageGroup& pages)
{
    if (pages.empty()) {
        return;
    }
    std::size_t bytes = 0;
    for (const Page& page : pages) {
        bytes += page.bytes();
    }
    m_queue.push({ m_sequences++, std::move(pages) }, bytes);
    pages.clear();
}

void ScanJob::work(const OutputFormat& format)
{
    std::unique_ptr<PageEncoder> encoder;
    std::vector<std::uint8_t> payload;
    Group group;
    while (m_queue.pop(group)) {
        const int first = group.pages.front().number;
        Finished finished;
        Status status = guardedStatus([&] {
            encoder = encoder ? std::move(encoder) : format.makeEncoder();
            return process(group, format, *encoder, payload, finished);
        });
        finished.failed = !status.ok();
        // A group that failed still takes its place, or those behind it would wait for ever.
        const Status delivered = guardedStatus([&] {
            deliver(group.sequence, std::move(finished));
            return Status();
        });
        status = status.ok() ? delivered : status;
        if (!status.ok()) {
            fault({ status.code(), "side " + std::to_string(first) + ": " + status.detail() });
        }
        group = {};
    }
}

/// `payload` is memory from the page before, for the next.
Status ScanJob::process(Group& group, const OutputFormat& format, const PageEncoder& encoder,
    std::vector<std::uint8_t>& payload, Finished& finished)
{
    std::vector<_tagPageParameter> sides;
    std::transform(group.pages.begin(), group.pages.end(), std::back_inserter(sides), geometryOf);
    if (Status status = m_tools.runOperations(group.pages, m_settings.image); !status.ok()) {
        return status;
    }
    if (group.pages.empty()) {
        libraryLog("side %d: blank, no file", sides.front().nPage);
    }
    std::optional<std::string> text;
    for (Page& page : group.pages) {
        EncodedPage encoded;
        encoded.bytes = std::move(payload);
        if (Status status = encoder.encode(page, m_settings.encode, encoded); !status.ok()) {
            return status;
        }
        if (Status status = m_journal.store(encoded); !status.ok()) {
            return status;
        }
        payload = std::move(encoded.bytes);
        encoded.bytes = {};
        finished.pages.push_back(std::move(encoded));
        if (format.needsText) {
            // The streams of a side show one text; the first has the most of the picture.
            const bool sameText = !page.stream.empty() && page.stream != kColorStream;
            text = sameText ? text : textOf(page);
            if (text) {
                finished.pages.back().text = *text;
                if (Status status = m_journal.storeText(finished.pages.back()); !status.ok()) {
                    return status;
                }
                finished.pages.back().text = {};
            }
        }
        m_buffers.give(std::move(page.pixels));
    }
    finished.sides = std::move(sides);
    return {};
}

/// What is recognised, in the form for the spool; none of a page that was not read to its end. Such
/// a page is kept as a picture and holds nothing up; the log names it, and the job ends with the
/// error.
std::optional<std::string> ScanJob::textOf(Page& page)
{
    const int number = page.number;
    PageText text;
    const Status status =
        guardedStatus([&] { return m_recognition->read(page, m_readingEnd, text); });
    if (!status.ok()) {
        libraryLog("side %d has no text: %d, %s", number, status.code(), status.detail().c_str());
        if (status.code() != kCancelled) {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_unread = m_unread.ok() ? status : m_unread;
        }
        return std::nullopt;
    }
    return serialised(text);
}

RotateAngle ScanJob::uprightTurn(const Page& page)
{
    RotateAngle turn = RotateAngle::kNone;
    const Status status = guardedStatus([&] {
        return m_recognition->findTurn(page, m_settings.image.textOrientation, m_readingEnd, turn);
    });
    if (!status.ok()) {
        libraryLog(
            "side %d is not turned: %d, %s", page.number, status.code(), status.detail().c_str());
    }
    return turn;
}

/// Lets the groups out in the order of scanning: the sides to the callbacks, the pages to the
/// writer. Nothing is let out behind a group that failed: a hole in the middle would not be seen,
/// while the number of sides tells where to go on after a job that broke off.
void ScanJob::deliver(int sequence, Finished finished)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_early.emplace(sequence, std::move(finished));
    for (auto next = m_early.begin(); next != m_early.end() && next->first == m_nextSequence;
         next = m_early.erase(next), ++m_nextSequence) {
        m_broken = m_broken || next->second.failed;
        if (m_broken) {
            m_journal.pagesDropped(next->second.pages);
            continue;
        }
        for (const _tagPageParameter& side : next->second.sides) {
            m_lastSide = side;
            m_dispatcher.postState(static_cast<int>(JobState::kSideScanned), ++m_sides, {});
        }
        for (EncodedPage& page : next->second.pages) {
            m_toWrite.push(std::move(page), 0);
        }
    }
}

void ScanJob::write(const OutputFormat& format)
{
    const Status status = guardedStatus([&] {
        DocumentAssembler assembler(
            m_settings.output, format, m_journal, [this](const std::string& file) {
                const std::lock_guard<std::mutex> lock(m_mutex);
                m_dispatcher.postState(static_cast<int>(JobState::kFileSaved), m_sides, file);
            });
        Status first;
        EncodedPage page;
        while (m_toWrite.pop(page)) {
            if (!first.ok()) {
                continue; // stays in the spool
            }
            first = guardedStatus([&] { return assembler.add(std::move(page)); });
            if (!first.ok()) {
                fault(first);
            }
        }
        return assembler.finish();
    });
    if (!status.ok()) {
        fault(status);
    }
    m_toWrite.cancel();
}

} // namespace orva
