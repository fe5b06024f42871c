#include "scanlib/device/sane/sane_driver.h"

#include "scanlib/device/sane/sane_device.h"
#include "scanlib/device/sane/sane_driver_parts.h"

namespace orva {

namespace {

class SaneDriver : public Driver
{
public:
    explicit SaneDriver(std::shared_ptr<SaneLease> lease)
        : m_lease(std::move(lease))
    {
    }

    const char* name() const override { return "sane"; }

    std::vector<DeviceIdentity> enumerate(std::chrono::milliseconds limit) override
    {
        const std::shared_ptr<SaneRuntime> runtime = m_lease->runtime;
        // A search that takes longer goes on; the next call finds what it found.
        if (!runtime->searchRunning.exchange(true)) {
            m_search = runtime->thread().post([runtime] {
                runtime->search();
                runtime->searchRunning.store(false);
            });
        }
        if (m_search != nullptr) {
            runtime->thread().wait(m_search, limit);
        }
        std::vector<DeviceIdentity> identities;
        for (const FoundDevice& device : runtime->found()) {
            identities.push_back(identityOf(device));
        }
        return identities;
    }

    std::unique_ptr<Device> create(const DeviceIdentity& identity) override
    {
        return std::make_unique<SaneDevice>(m_lease, identity);
    }

private:
    const std::shared_ptr<SaneLease> m_lease;
    std::shared_ptr<SaneThread::Ticket> m_search;
};

} // namespace

std::unique_ptr<Driver> makeSaneDriver(std::shared_ptr<SaneRuntime> runtime)
{
    return std::make_unique<SaneDriver>(std::make_shared<SaneLease>(std::move(runtime)));
}

std::unique_ptr<Driver> makeSaneDriver()
{
    // Never destroyed: a thread that was left behind may still use it while the process ends.
    static std::mutex mutex;
    static const auto* const runtime = new std::shared_ptr<SaneRuntime>(
        std::make_shared<SaneRuntime>(realSaneApi(), SaneLimits()));
    static auto* const lease = new std::weak_ptr<SaneLease>();
    const std::lock_guard<std::mutex> lock(mutex);
    std::shared_ptr<SaneLease> current = lease->lock();
    if (current == nullptr) {
        current = std::make_shared<SaneLease>(*runtime);
        *lease = current;
    }
    return std::make_unique<SaneDriver>(std::move(current));
}

} // namespace orva
