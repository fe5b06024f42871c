// One helper as the library talks to it. One thread at a time; no call waits longer than its limit.
#pragma once

#include "scanlib/device/sane/host_messages.h"
#include "scanlib/device/sane/sane_host_process.h"

namespace orva {

class HostLink
{
public:
    /// kDriverCrashed when it cannot be started. name is for the log: a device or a group of
    /// drivers.
    static Status start(const HostLauncher& launcher, const std::string& name,
        const std::string& backends, std::unique_ptr<HostLink>& link);
    /// Asks the helper to close its device and end; kills it when it takes longer than this.
    ~HostLink();
    HostLink(const HostLink&) = delete;
    HostLink& operator=(const HostLink&) = delete;

    /// The id of the request.
    std::uint32_t request(HostMessage kind, WireWriter body = {});
    /// In between, without an answer. id names what it is about.
    void tell(HostMessage kind, std::uint32_t id = 0);
    /// The next message; lines of the log are dealt with on the way.
    WireResult receive(WireMessage& message, std::chrono::milliseconds limit);

    /// Where the lines of the message at hand lie; freeSlot gives the memory back.
    const std::uint8_t* slot() const { return m_ring.data() + m_slot * kSlotBytes; }
    void freeSlot();

    bool ended() { return m_host->ended(); }
    int socket() const { return m_channel.ours.get(); }
    /// Why it is gone, for the log and the status. Waits a moment for the end of the process.
    std::string epitaph();
    /// At once, and in the log.
    void kill(const std::string& why);
    /// For the destructor: nothing has to be closed in order.
    void hurry() { m_patience = std::chrono::milliseconds(0); }
    void setPatience(std::chrono::milliseconds patience) { m_patience = patience; }

private:
    HostLink(HostChannel channel, std::string name);

    HostChannel m_channel;
    const RingMapping m_ring;
    const std::string m_name;
    std::unique_ptr<SaneHost> m_host;
    std::chrono::milliseconds m_patience { 2000 };
    std::uint32_t m_lastId = 0;
    std::size_t m_slot = 0;
};

} // namespace orva
