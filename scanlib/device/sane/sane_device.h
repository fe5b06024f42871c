// A SANE scanner behind the device interface: asks the helper that the scanner is open in, and
// waits no longer than its limits. A helper that died or hangs costs the call; the next one starts
// afresh.
#pragma once

#include "scanlib/device/sane/sane_search.h"

#include <set>

namespace orva {

/// What a driver's devices share.
struct SaneParts
{
    HostLauncher launcher;
    SaneLimits limits;
    std::function<std::vector<BackendGroup>()> groups;
    std::filesystem::path models; ///< orva-sane-models.conf
    std::string usbFolder = kUsbFolder;
};

class SaneDevice : public Device
{
public:
    SaneDevice(const SaneParts& parts, std::shared_ptr<SaneSearch> search, DeviceIdentity identity);
    ~SaneDevice() override;
    SaneDevice(const SaneDevice&) = delete;
    SaneDevice& operator=(const SaneDevice&) = delete;

    const DeviceIdentity& identity() const override { return m_identity; }
    Status open() override;
    const std::vector<PaperSource>& sources() const override { return m_sources; }
    Status configure(const AcquireSettings& settings) override;
    Status nextPage(Page& page, bool& endOfFeed, const CancelToken& cancel) override;
    void endBatch() override;
    void requestCancel() noexcept override { m_cancelRequested.store(true); }
    Status hasPaper(bool& result) override;
    Status pressedButton(int& value) override;
    Status timing(DeviceTiming& result) override;
    Status setTimes(int sleep, int autoOff) override;
    Status setPrefeed(bool enable, float seconds) override;

private:
    using Clock = std::chrono::steady_clock;
    using Limit = std::chrono::milliseconds;
    struct SideReading;

    // sane_device.cpp: opening
    Status reach();
    Status startHost();
    Status finishPending();
    Status openKey(const std::string& key);
    bool findAgain();
    void drop();

    // sane_device_ask.cpp: one request, its answer, and what becomes of it without one
    Status ask(HostMessage kind, WireWriter body, Limit limit, WireMessage& answer);
    Status settle(Limit limit);
    Status await(Limit limit, WireMessage& answer);
    Status died();
    Status askOpened(
        HostMessage kind, const std::function<void(WireWriter&)>& body, WireMessage& answer);

    // sane_device_read.cpp
    void follow(SideReading& reading, const CancelToken& cancel);
    void take(SideReading& reading, const WireMessage& message);
    void stop(SideReading& reading, Status why);

    const DeviceIdentity m_identity;
    const SaneParts m_parts;
    const std::shared_ptr<SaneSearch> m_search;
    std::unique_ptr<HostLink> m_link;
    std::string m_key; ///< where the scanner is now
    std::set<std::string> m_others; ///< keys of what was attached beside it
    Clock::time_point m_searchedAt {}; ///< in vain
    std::vector<PaperSource> m_sources;
    std::uint32_t m_pending = 0; ///< the request that has not been answered; 0: none
    HostMessage m_pendingKind = HostMessage::kOpen;
    Clock::time_point m_pendingSince {};
    std::uint32_t m_batch = 0; ///< 0: not configured
    std::atomic<bool> m_cancelRequested { false };
};

} // namespace orva
