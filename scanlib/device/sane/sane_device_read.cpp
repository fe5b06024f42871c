// Sides: lines come through the ring of the helper and are put together here. What arrives counts
// as a sign of life; silence and a cancel that has no effect end the helper.
#include "scanlib/base/library_log.h"
#include "scanlib/device/sane/frame_assembler.h"
#include "scanlib/device/sane/sane_device.h"

namespace orva {

namespace {

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

struct SaneDevice::SideReading
{
    FrameAssembler assembler;
    SideReport report;
    Status status; ///< of the side as the helper tells it
    bool answered = false;
    Status fault; ///< of the frames: not what was promised
    Status stopped; ///< why the side was broken off from here; ok: it was not
    Clock::time_point stoppedAt {};
    Clock::time_point news; ///< the last message
    Limit limit {}; ///< for the next one
};

/// Breaks the side off: the driver is asked to stop, and the answer still waited for.
void SaneDevice::stop(SideReading& reading, Status why)
{
    if (reading.stopped.ok()) {
        reading.stopped = std::move(why);
        reading.stoppedAt = Clock::now();
        m_link->tell(HostMessage::kCancel, m_batch);
    }
}

void SaneDevice::take(SideReading& reading, const WireMessage& message)
{
    WireReader reader(message.body);
    Status status;
    // a side may be complete before the driver sees the wish to cancel
    const bool wanted = reading.fault.ok();
    switch (static_cast<HostMessage>(message.kind)) {
    case HostMessage::kFrame:
        reading.limit = m_parts.limits.read;
        status = wanted ? reading.assembler.begin(getFrameShape(reader)) : status;
        break;
    case HostMessage::kLines: {
        const auto bytes = std::min<std::size_t>(reader.get<std::uint32_t>(), kSlotBytes);
        status = wanted ? reading.assembler.add(m_link->slot(), bytes) : status;
        m_link->freeSlot();
        break;
    }
    case HostMessage::kFrameEnd:
        reading.limit = m_parts.limits.start;
        status = wanted ? reading.assembler.end() : status;
        break;
    case HostMessage::kAnswer:
        reading.status = getStatus(reader);
        reading.report = getSideReport(reader);
        reading.answered = message.id == m_pending;
        m_pending = reading.answered ? 0 : m_pending;
        break;
    default:
        break;
    }
    if (!status.ok()) {
        reading.fault = status;
        stop(reading, std::move(status));
    }
}

/// Until the helper has answered, or is gone (then m_link is, too).
void SaneDevice::follow(SideReading& reading, const CancelToken& cancel)
{
    constexpr Limit kLook(20); // at the token and the clock
    WireMessage message;
    while (!reading.answered) {
        const WireResult result = m_link->receive(message, kLook);
        const Clock::time_point now = Clock::now();
        if (result == WireResult::kMessage) {
            reading.news = now;
            take(reading, message);
        } else if (result != WireResult::kNothing) {
            reading.status = died();
            return;
        }
        if (m_cancelRequested.load() || cancel.cancelled()) {
            stop(reading, { kCancelled, "cancelled" });
        }
        if (now - reading.news > reading.limit) {
            const std::string silence =
                m_key + ": no data for " + std::to_string(reading.limit.count()) + " ms";
            libraryLog("sane: %s", silence.c_str());
            stop(reading, { kDeviceTimeout, silence });
        }
        if (!reading.stopped.ok() && now - reading.stoppedAt > m_parts.limits.cancel
            && !reading.answered) {
            m_link->kill("the driver does not stop");
            drop();
            return;
        }
    }
}

Status SaneDevice::nextPage(Page& page, bool& endOfFeed, const CancelToken& cancel)
{
    endOfFeed = false;
    if (m_cancelRequested.load() || cancel.cancelled()) {
        return { kCancelled, "cancelled" };
    }
    if (m_link == nullptr || m_batch == 0) {
        return { kDeviceBadParameter, "no settings" };
    }
    if (Status status = settle(m_parts.limits.poll); !status.ok()) {
        return status;
    }
    SideReading reading { FrameAssembler(std::move(page.pixels)), {}, {}, false, {}, {}, {},
        Clock::now(), m_parts.limits.start };
    m_pending = m_link->request(HostMessage::kNextSide);
    m_pendingKind = HostMessage::kNextSide;
    m_pendingSince = Clock::now();
    follow(reading, cancel);
    // a side that was complete when the wish to cancel came is delivered
    const bool complete = reading.answered && reading.status.ok() && reading.fault.ok();
    if (!reading.stopped.ok() && !(complete && reading.stopped.code() == kCancelled)) {
        return reading.stopped;
    }
    if (reading.status.code() == kDeviceIo && isUnplugged(m_key, m_parts.usbFolder)) {
        return { kDeviceLost, reading.status.detail() + ", unplugged" };
    }
    if (!reading.status.ok()) {
        return reading.status;
    }
    if (!reading.report.endOfFeed && reading.assembler.wantsFrame()) {
        return { kDeviceIo, "a side without its frames" };
    }
    endOfFeed = reading.report.endOfFeed;
    if (!endOfFeed) {
        reading.assembler.finish(page);
        if (reading.report.makeGray && page.format == PixelFormat::kRgb) {
            makeGray(page);
        }
        page.dpiX = reading.report.dpiX;
        page.dpiY = reading.report.dpiY;
        page.sheet = reading.report.sheet;
        page.side = reading.report.side;
        page.stream.clear();
    }
    return {};
}

} // namespace orva
