// Reading sides: start, parameters, data until the end of each frame; one cancel a batch.
#include "scanlib/base/library_log.h"
#include "scanlib/device/sane/sane_scanner.h"

#include <thread>

namespace orva {

namespace {

constexpr SANE_Int kBufferBytes = 256 * 1024; // stays in the second-level cache

/// Drivers that never tell the end of the paper would fill the disk. No feeder holds a tenth of
/// this, and who tops one up all day starts a new job now and then.
constexpr int kMostSides = 20'000;

std::int64_t steadyMs()
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

/// Weights of ITU-R BT.601 in 1/256.
void makeGray(Page& page)
{
    const std::uint8_t* from = page.pixels.data();
    std::uint8_t* to = page.pixels.data();
    const std::size_t count =
        static_cast<std::size_t>(page.width) * static_cast<std::size_t>(page.height);
    for (std::size_t i = 0; i < count; ++i, from += 3) {
        *to++ = static_cast<std::uint8_t>((from[0] * 77 + from[1] * 150 + from[2] * 29 + 128) >> 8);
    }
    page.pixels.resize(count);
    page.format = PixelFormat::kGray;
}

} // namespace

class SaneScanner::Call
{
public:
    Call(SaneScanner& scanner, bool isStart)
        : m_scanner(scanner)
    {
        m_scanner.m_callIsStart.store(isStart);
        m_scanner.m_callSince.store(steadyMs());
    }
    ~Call() { m_scanner.m_callSince.store(0); }
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

private:
    SaneScanner& m_scanner;
};

std::optional<std::chrono::milliseconds> SaneScanner::callAge() const
{
    const std::int64_t since = m_callSince.load();
    if (since == 0) {
        return std::nullopt;
    }
    return std::chrono::milliseconds(steadyMs() - since);
}

void SaneScanner::sendCancel()
{
    const std::lock_guard<std::mutex> lock(m_cancelMutex);
    sendCancelLocked();
}

void SaneScanner::sendCancelLocked()
{
    if (m_batchBegun.load() && !m_cancelSent.exchange(true)) {
        m_runtime->api().cancel(m_handle);
    }
}

void SaneScanner::cancelFromOutside(unsigned batch)
{
    const std::lock_guard<std::mutex> lock(m_cancelMutex);
    if (batch == m_batch.load()) {
        sendCancelLocked();
    }
}

Status SaneScanner::cancelled()
{
    sendCancel();
    return { kCancelled, "cancelled" };
}

void SaneScanner::finishBatch()
{
    const std::lock_guard<std::mutex> lock(m_cancelMutex);
    sendCancelLocked();
    m_batchBegun.store(false);
    m_cancelSent.store(false);
    ++m_batch;
    m_configured = false;
}

void SaneScanner::endBatch()
{
    finishBatch();
    if (m_distrusted.load()) {
        close();
    }
}

/// Some drivers report a double feed as a jam and tell the difference in a sensor.
Status SaneScanner::faultOf(SANE_Status status, const char* call)
{
    if (status == SANE_STATUS_JAMMED) {
        const SaneOption* sensor = m_options->find("double-feed");
        if (sensor != nullptr && !sensor->settable()
            && m_options->number(*sensor).value_or(0) != 0) {
            return { kDoubleFeed, std::string(call) + ": double feed" };
        }
    }
    if (status == SANE_STATUS_IO_ERROR) {
        distrust();
    }
    return saneFailure(status, call);
}

Status SaneScanner::startFrame()
{
    constexpr int kBusyTries = 5;
    bool reloaded = false;
    for (int tries = 0;;) {
        if (m_cancelAsked.load() || m_cancelSent.load()) {
            return cancelled();
        }
        SANE_Status status = SANE_STATUS_GOOD;
        {
            const Call call(*this, true);
            m_batchBegun.store(true);
            status = m_runtime->api().start(m_handle);
        }
        if (status == SANE_STATUS_INVAL && !reloaded && m_sides == 0) {
            // the options changed behind our back: read them again and set everything once more
            reloaded = true;
            const Call call(*this, true);
            if (Status again = m_options->reload(); !again.ok()) {
                return again;
            }
            if (Status again = configure(m_settings); !again.ok()) {
                return again;
            }
            continue;
        }
        if (status == SANE_STATUS_DEVICE_BUSY && ++tries < kBusyTries) {
            std::this_thread::sleep_for(m_runtime->limits().busyPause);
            continue;
        }
        return faultOf(status, "sane_start");
    }
}

/// noDocuments: the feeder turned out to be empty before the first byte.
Status SaneScanner::readFrame(FrameAssembler& assembler, bool& noDocuments)
{
    constexpr auto kNothingYet = std::chrono::milliseconds(5);
    m_buffer.resize(kBufferBytes);
    std::int64_t lastData = steadyMs();
    for (;;) {
        if (m_cancelAsked.load() || m_cancelSent.load()) {
            return cancelled();
        }
        SANE_Int length = 0;
        SANE_Status status = SANE_STATUS_GOOD;
        {
            const Call call(*this, false);
            status = m_runtime->api().read(m_handle, m_buffer.data(), kBufferBytes, &length);
        }
        if (status == SANE_STATUS_EOF) {
            return {};
        }
        if (status == SANE_STATUS_NO_DOCS && !assembler.hasData()) {
            noDocuments = true;
            return {};
        }
        if (status == SANE_STATUS_NO_DOCS) {
            return { kDeviceIo, "sane_read: out of documents in the middle of a page" };
        }
        if (status != SANE_STATUS_GOOD) {
            return faultOf(status, "sane_read");
        }
        if (length < 0 || length > kBufferBytes) {
            return { kDeviceIo, "sane_read: impossible length" };
        }
        if (length == 0) { // legal, but not for ever
            if (steadyMs() - lastData > m_runtime->limits().read.count()) {
                return { kDeviceTimeout, "sane_read: no data" };
            }
            std::this_thread::sleep_for(kNothingYet);
            continue;
        }
        lastData = steadyMs();
        if (Status status2 = assembler.add(m_buffer.data(), static_cast<std::size_t>(length));
            !status2.ok()) {
            return status2;
        }
    }
}

Status SaneScanner::nextSide(Page& page, bool& endOfFeed)
{
    endOfFeed = false;
    if (!m_configured) {
        return { kDeviceBadParameter, "no settings" };
    }
    const SourceKind kind = m_sources[m_settings.source].kind;
    if (kind == SourceKind::kFlatbed && m_sides > 0) {
        endOfFeed = true; // the same sheet would be scanned for ever
        return {};
    }
    if (m_sides >= kMostSides) {
        return { kDeviceIo, "the feeder does not run empty" };
    }
    FrameAssembler assembler(std::move(page.pixels));
    for (bool first = true; assembler.wantsFrame(); first = false) {
        Status status = startFrame();
        bool noDocuments = first && status.code() == kNoPaper;
        if (!status.ok() && !noDocuments) {
            return status;
        }
        if (!noDocuments) {
            SANE_Parameters parameters {};
            const SANE_Status got = m_runtime->api().getParameters(m_handle, &parameters);
            if (got != SANE_STATUS_GOOD) {
                return faultOf(got, "sane_get_parameters");
            }
            if (status = assembler.begin(parameters); !status.ok()) {
                return status;
            }
            if (status = readFrame(assembler, noDocuments); !status.ok()) {
                return status;
            }
        }
        if (noDocuments) {
            endOfFeed = m_sides > 0;
            return endOfFeed ? Status() : Status(kNoPaper, "the feeder is empty");
        }
        if (status = assembler.end(); !status.ok()) {
            return status;
        }
    }
    assembler.finish(page);
    if (m_wantGray && page.format == PixelFormat::kRgb) {
        makeGray(page);
    }
    page.dpiX = m_dpiX;
    page.dpiY = m_dpiY;
    const bool duplex = kind == SourceKind::kDuplex;
    page.sheet = duplex ? m_sides / 2 + 1 : m_sides + 1;
    page.side = duplex && m_sides % 2 == 1 ? Side::kBack : Side::kFront;
    page.stream.clear();
    ++m_sides;
    return {};
}

} // namespace orva
