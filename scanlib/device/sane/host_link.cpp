#include "scanlib/device/sane/host_link.h"

#include "scanlib/base/library_log.h"

namespace orva {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

/// For a message to be taken: the helper's reading thread makes no SANE calls that block.
constexpr milliseconds kSendLimit { 500 };

} // namespace

HostLink::HostLink(HostChannel channel, std::string name)
    : m_channel(std::move(channel))
    , m_ring(m_channel.ring.get())
    , m_name(std::move(name))
{
}

Status HostLink::start(const HostLauncher& launcher, const std::string& name,
    const std::string& backends, std::unique_ptr<HostLink>& link)
{
    HostChannel channel;
    if (Status status = makeChannel(channel); !status.ok()) {
        return status;
    }
    std::unique_ptr<HostLink> made(new HostLink(std::move(channel), name));
    if (made->m_ring.data() == nullptr) {
        return { kNoMemory, "shared memory of the SANE helper" };
    }
    if (Status status = launcher(made->m_channel, backends, made->m_host); !status.ok()) {
        return status;
    }
    made->m_channel.theirs.reset(); // else the end of the helper would not be seen
    made->m_channel.ring.reset();
    link = std::move(made);
    return {};
}

HostLink::~HostLink()
{
    m_channel.ours.reset();
    if (m_host != nullptr && !m_host->waitEnded(m_patience) && m_patience.count() > 0) {
        libraryLog("sane: helper of %s does not end in time; killed", m_name.c_str());
    }
}

std::uint32_t HostLink::request(HostMessage kind, WireWriter body)
{
    sendWire(m_channel.ours.get(), { static_cast<std::uint16_t>(kind), ++m_lastId, body.take() },
        kSendLimit);
    return m_lastId; // where nobody took it, receive tells
}

void HostLink::tell(HostMessage kind, std::uint32_t id)
{
    sendWire(m_channel.ours.get(), { static_cast<std::uint16_t>(kind), id, {} }, kSendLimit);
}

WireResult HostLink::receive(WireMessage& message, milliseconds limit)
{
    constexpr milliseconds kLook(20); // a dead helper's children may hold the socket open
    const Clock::time_point deadline = Clock::now() + limit;
    for (;;) {
        const bool over = m_host->ended(); // before reading: what it sent last still counts
        const WireResult result = receiveWire(m_channel.ours.get(), message);
        if (result == WireResult::kMessage
            && message.kind == static_cast<std::uint16_t>(HostMessage::kLog)) {
            libraryLog("%s", WireReader(message.body).text().c_str());
            continue;
        }
        if (result != WireResult::kNothing) {
            return result;
        }
        const Clock::time_point now = Clock::now();
        if (over) {
            return WireResult::kClosed;
        }
        if (now >= deadline) {
            return WireResult::kNothing;
        }
        const auto left = std::chrono::duration_cast<milliseconds>(deadline - now);
        waitReadable(m_channel.ours.get(), std::min(kLook, left + milliseconds(1)));
    }
}

void HostLink::freeSlot()
{
    m_slot = (m_slot + 1) % kSlots;
    tell(HostMessage::kSlotFreed);
}

std::string HostLink::epitaph()
{
    constexpr milliseconds kMoment(500);
    if (!m_host->waitEnded(kMoment)) {
        return "it closed its end";
    }
    const std::string fault = m_host->fault();
    return fault.empty() ? "it ended" : fault;
}

void HostLink::kill(const std::string& why)
{
    libraryLog("sane: helper of %s is killed: %s", m_name.c_str(), why.c_str());
    m_host->kill();
    hurry();
}

} // namespace orva
