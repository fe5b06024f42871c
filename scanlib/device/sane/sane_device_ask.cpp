// One request at a time. An answer that does not come within its limit is waited for by the next
// request, until the helper counts as hung and is killed.
#include "scanlib/base/library_log.h"
#include "scanlib/device/sane/sane_device.h"

namespace orva {

namespace {

const char* nameOf(HostMessage kind)
{
    switch (kind) {
    case HostMessage::kOpen:
        return "opening";
    case HostMessage::kConfigure:
        return "settings";
    case HostMessage::kNextSide:
        return "scan";
    case HostMessage::kEndBatch:
        return "end of the batch";
    case HostMessage::kButton:
        return "look at the buttons";
    default:
        return "request";
    }
}

} // namespace

/// The helper is gone.
Status SaneDevice::died()
{
    const std::string how = m_link->epitaph();
    libraryLog("sane: helper of %s died during the %s: %s", m_identity.name.c_str(),
        nameOf(m_pendingKind), how.c_str());
    m_link->hurry();
    drop();
    return { kDriverCrashed, "the driver of " + m_key + " crashed: " + how };
}

/// Waits for the request that is pending. kDeviceTimeout leaves it pending, unless the helper was
/// killed for it; so does kCancelled.
Status SaneDevice::await(Limit limit, WireMessage& answer)
{
    constexpr Limit kLook(20); // at the wish to cancel
    const Clock::time_point deadline = Clock::now() + limit;
    for (;;) {
        const auto left = std::chrono::duration_cast<Limit>(deadline - Clock::now());
        const WireResult result = m_link->receive(answer, std::min(kLook, left));
        if (result == WireResult::kMessage) {
            const auto kind = static_cast<HostMessage>(answer.kind);
            if (kind == HostMessage::kLines) { // of a side that was given up
                m_link->freeSlot();
            }
            if (kind == HostMessage::kAnswer && answer.id == m_pending) {
                m_pending = 0;
                return {};
            }
            continue;
        }
        if (result != WireResult::kNothing) {
            return died();
        }
        const bool interruptible = m_pendingKind != HostMessage::kNextSide
            && m_pendingKind != HostMessage::kEndBatch && m_pendingKind != HostMessage::kButton;
        if (interruptible && m_cancelRequested.load()) {
            return { kCancelled, std::string(nameOf(m_pendingKind)) + ": cancelled" };
        }
        if (left.count() <= 0) {
            break;
        }
    }
    const std::string what = std::string(nameOf(m_pendingKind)) + ": the driver does not answer";
    libraryLog("sane: %s: %s", m_key.c_str(), what.c_str());
    if (Clock::now() - m_pendingSince >= m_parts.limits.hung) {
        m_link->kill(what);
        drop();
    }
    return { kDeviceTimeout, what };
}

Status SaneDevice::settle(Limit limit)
{
    WireMessage late;
    return m_pending == 0 ? Status() : await(limit, late);
}

Status SaneDevice::ask(HostMessage kind, WireWriter body, Limit limit, WireMessage& answer)
{
    if (m_link == nullptr) {
        return { kNotInitialised, "not open" };
    }
    const Clock::time_point begin = Clock::now();
    if (Status status = settle(kind == HostMessage::kButton ? Limit(0) : limit); !status.ok()) {
        return status;
    }
    m_pending = m_link->request(kind, std::move(body));
    m_pendingKind = kind;
    m_pendingSince = Clock::now();
    return await(
        std::max(Limit(0), limit - std::chrono::duration_cast<Limit>(Clock::now() - begin)),
        answer);
}

/// Of a scanner that was open before. One that was closed after a fault is opened again; one that
/// was never opened is not.
Status SaneDevice::askOpened(
    HostMessage kind, const std::function<void(WireWriter&)>& body, WireMessage& answer)
{
    if (m_sources.empty()) {
        return { kNotInitialised, "not open" };
    }
    m_cancelRequested.store(false); // of an earlier job
    Status status;
    for (int tries = 0; tries < 2; ++tries) {
        const bool wasOpen = m_link != nullptr;
        status = reach();
        if (status.ok()) {
            WireWriter writer;
            if (body) {
                body(writer);
            }
            status = ask(kind, std::move(writer), m_parts.limits.configure, answer);
        }
        if (status.ok()) {
            WireReader reader(answer.body);
            status = getStatus(reader);
        }
        if (!wasOpen || status.code() != kDeviceIo) {
            break;
        }
        drop(); // that handle was dead
    }
    return status;
}

} // namespace orva
