// A SANE scanner behind the device interface: hands everything to the SANE thread and waits no
// longer than its limits.
#pragma once

#include "scanlib/device/sane/sane_scanner.h"

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <set>

namespace orva {

class SaneDevice : public Device
{
public:
    SaneDevice(std::shared_ptr<SaneLease> lease, DeviceIdentity identity);
    ~SaneDevice() override;
    SaneDevice(const SaneDevice&) = delete;
    SaneDevice& operator=(const SaneDevice&) = delete;

    const DeviceIdentity& identity() const override { return m_identity; }
    Status open() override;
    const std::vector<PaperSource>& sources() const override { return m_sources; }
    Status configure(const AcquireSettings& settings) override;
    Status nextPage(Page& page, bool& endOfFeed, const CancelToken& cancel) override;
    void endBatch() override;
    void requestCancel() noexcept override;
    Status hasPaper(bool& result) override;
    Status pressedButton(int& value) override;
    Status timing(DeviceTiming& result) override;
    Status setTimes(int sleep, int autoOff) override;
    Status setPrefeed(bool enable, float seconds) override;

private:
    /// Where the scanner is now. SANE thread only.
    struct Finder
    {
        DeviceIdentity identity;
        std::string key;
        std::set<std::string> others; ///< keys of what was attached beside it
        std::chrono::steady_clock::time_point searchedAt {}; ///< in vain
    };
    static Status openAgain(Finder& finder, SaneRuntime& runtime, SaneScanner& scanner);

    template <typename Result>
    Status ask(
        std::chrono::milliseconds limit, Result& result, Status (SaneScanner::*question)(Result&));
    Status tell(std::chrono::milliseconds limit, std::function<Status(SaneScanner&)> task);
    Status tellOpened(std::function<Status(SaneScanner&)> task);

    const DeviceIdentity m_identity;
    const std::shared_ptr<SaneLease> m_lease;
    const std::shared_ptr<SaneScanner> m_scanner; ///< tasks hold it too
    const std::shared_ptr<Finder> m_finder; ///< likewise
    std::vector<PaperSource> m_sources;
    std::atomic<bool> m_cancelRequested { false };
};

/// Names a device for the operator.
DeviceIdentity identityOf(const FoundDevice& device);

} // namespace orva
