// Reading sides: start, parameters, data until the end of each frame; one cancel a batch.
#include "scanlib/base/library_log.h"
#include "scanlib/device/sane_host/sane_scanner.h"

#include <algorithm>
#include <cstring>
#include <thread>

namespace orva {

namespace {

/// Drivers that never tell the end of the paper would fill the disk. No feeder holds a tenth of
/// this, and who tops one up all day starts a new job now and then.
constexpr int kMostSides = 20'000;

std::int64_t steadyMs()
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

} // namespace

class SaneScanner::Call
{
public:
    explicit Call(SaneScanner& scanner)
        : m_scanner(scanner)
    {
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

void SaneScanner::sendCancelLocked()
{
    if (m_batchBegun && !m_cancelSent) {
        m_cancelSent = true;
        m_api.cancel(m_handle);
    }
}

void SaneScanner::cancelFromOutside(unsigned batch)
{
    const std::lock_guard<std::mutex> lock(m_cancelMutex);
    if (batch == m_batch.load()) {
        sendCancelLocked();
    }
}

void SaneScanner::finishBatch()
{
    const std::lock_guard<std::mutex> lock(m_cancelMutex);
    sendCancelLocked();
    m_batchBegun = false;
    m_cancelSent = false;
    m_batch.store(0);
    m_configured = false;
}

void SaneScanner::endBatch()
{
    finishBatch();
    if (m_distrusted) {
        close();
    }
}

/// Some drivers report a double feed as a jam and tell the difference in a sensor.
Status SaneScanner::faultOf(SANE_Status status, const char* call)
{
    Status fault = saneFailure(status, call);
    if (status == SANE_STATUS_JAMMED) {
        const SaneOption* sensor = m_options->find("double-feed");
        if (sensor != nullptr && !sensor->settable()
            && m_options->number(*sensor).value_or(0) != 0) {
            return { kDoubleFeed, std::string(call) + ": double feed" };
        }
        if (const SaneOption* code = m_options->find("error-code"); code != nullptr) {
            const int number = static_cast<int>(m_options->number(*code).value_or(0));
            fault = { kPaperJam, fault.detail() + ", error code " + std::to_string(number) };
        }
    }
    m_distrusted = m_distrusted || status == SANE_STATUS_IO_ERROR;
    return fault;
}

Status SaneScanner::startFrame()
{
    constexpr int kBusyTries = 5;
    bool reloaded = false;
    for (int tries = 0;;) {
        SANE_Status status = SANE_STATUS_GOOD;
        {
            {
                const std::lock_guard<std::mutex> lock(m_cancelMutex);
                if (cancelAsked() || m_cancelSent) {
                    return { kCancelled, "cancelled" };
                }
                m_batchBegun = true;
            }
            const Call call(*this);
            status = m_api.start(m_handle);
        }
        if (status == SANE_STATUS_INVAL && !reloaded && m_sides == 0) {
            // the options changed behind our back: read them again and set everything once more
            reloaded = true;
            if (Status again = m_options->reload(); !again.ok()) {
                return again;
            }
            if (Status again = configure(m_settings, m_batch.load()); !again.ok()) {
                return again;
            }
            continue;
        }
        if (status == SANE_STATUS_DEVICE_BUSY && ++tries < kBusyTries) {
            std::this_thread::sleep_for(m_pauses.busy);
            continue;
        }
        return faultOf(status, "sane_start");
    }
}

/// Exact only once the scan was started.
Status SaneScanner::shapeOfFrame(FrameShape& shape)
{
    SANE_Parameters parameters {};
    const SANE_Status got = m_api.getParameters(m_handle, &parameters);
    if (got != SANE_STATUS_GOOD) {
        return faultOf(got, "sane_get_parameters");
    }
    int format = 0; // newer drivers may give kinds that SANE_Frame has no name for
    std::memcpy(&format, &parameters.format, sizeof format);
    shape = { static_cast<FrameFormat>(format), parameters.bytes_per_line,
        parameters.pixels_per_line, parameters.lines, parameters.depth };
    return {};
}

/// noDocuments: the feeder turned out to be empty before the first byte.
Status SaneScanner::readFrame(SideSink& sink, bool& noDocuments)
{
    constexpr auto kNothingYet = std::chrono::milliseconds(5);
    std::int64_t lastData = steadyMs();
    bool hasData = false;
    for (;;) {
        const SideSink::Room room = sink.room();
        if (room.data == nullptr || cancelAsked()) {
            return { kCancelled, "cancelled" };
        }
        SANE_Int length = 0;
        SANE_Status status = SANE_STATUS_GOOD;
        {
            const Call call(*this);
            status = m_api.read(m_handle, room.data, static_cast<SANE_Int>(room.size), &length);
        }
        if (status == SANE_STATUS_EOF) {
            return {};
        }
        if (status == SANE_STATUS_NO_DOCS) {
            noDocuments = !hasData;
            return noDocuments
                ? Status()
                : Status(kDeviceIo, "sane_read: out of documents in the middle of a page");
        }
        if (status != SANE_STATUS_GOOD) {
            return faultOf(status, "sane_read");
        }
        if (length < 0 || static_cast<std::size_t>(length) > room.size) {
            return { kDeviceIo, "sane_read: impossible length" };
        }
        if (length == 0) { // legal, but not for ever
            if (steadyMs() - lastData > m_pauses.noData.count()) {
                return { kDeviceTimeout, "sane_read: no data" };
            }
            std::this_thread::sleep_for(kNothingYet);
            continue;
        }
        lastData = steadyMs();
        hasData = true;
        sink.add(static_cast<std::size_t>(length));
    }
}

Status SaneScanner::nextSide(SideSink& sink, SideReport& report)
{
    report = {};
    if (!isOpen() || !m_configured) {
        return { kDeviceBadParameter, "no settings" };
    }
    const SourceKind kind = m_sources[m_settings.source].kind;
    if (kind == SourceKind::kFlatbed && m_sides > 0) {
        report.endOfFeed = true; // the same sheet would be scanned for ever
        return {};
    }
    if (m_sides >= kMostSides) {
        return { kDeviceIo, "the feeder does not run empty" };
    }
    PassSet passes;
    FrameShape shape;
    bool first = true;
    do {
        Status status = startFrame();
        bool noDocuments = first && status.code() == kNoPaper;
        if (status.ok()) {
            status = shapeOfFrame(shape);
        }
        if (status.ok()) {
            sink.beginFrame(shape);
            status = readFrame(sink, noDocuments);
        }
        if (noDocuments) {
            report.endOfFeed = m_sides > 0;
            return report.endOfFeed ? Status() : Status(kNoPaper, "the feeder is empty");
        }
        if (!status.ok()) {
            return status;
        }
        sink.endFrame();
        first = false;
    } while (passes.wantsMoreAfter(shape.format));
    const bool duplex = kind == SourceKind::kDuplex;
    report.makeGray = m_wantGray;
    report.dpiX = m_dpiX;
    report.dpiY = m_dpiY;
    report.sheet = duplex ? m_sides / 2 + 1 : m_sides + 1;
    report.side = duplex && m_sides % 2 == 1 ? Side::kBack : Side::kFront;
    ++m_sides;
    return {};
}

} // namespace orva
