#include "scanlib/device/sane/sane_driver.h"

#include "scanlib/device/sane/sane_driver_parts.h"

namespace orva {

namespace {

class SaneDriver : public Driver
{
public:
    explicit SaneDriver(const SaneParts& parts)
        : m_parts(parts)
        , m_search(std::make_shared<SaneSearch>(parts.launcher, parts.groups, parts.limits))
    {
    }

    const char* name() const override { return "sane"; }

    std::vector<DeviceIdentity> enumerate(std::chrono::milliseconds limit) override
    {
        m_search->run(limit, &m_stopped);
        std::vector<DeviceIdentity> identities;
        for (const FoundDevice& device : m_search->found()) {
            identities.push_back(identityOf(device));
        }
        return identities;
    }

    void stopEnumerating() noexcept override { m_stopped.store(true); }

    std::unique_ptr<Device> create(const DeviceIdentity& identity) override
    {
        return std::make_unique<SaneDevice>(m_parts, m_search, identity);
    }

private:
    const SaneParts m_parts;
    const std::shared_ptr<SaneSearch> m_search;
    std::atomic<bool> m_stopped { false };
};

} // namespace

std::unique_ptr<Driver> makeSaneDriver(const SaneParts& parts)
{
    return std::make_unique<SaneDriver>(parts);
}

std::unique_ptr<Driver> makeSaneDriver(
    const std::filesystem::path& host, const std::filesystem::path& models)
{
    const auto groups = [] { return backendGroups(saneConfigFolders()); };
    return makeSaneDriver(SaneParts { processLauncher(host), SaneLimits(), groups, models });
}

} // namespace orva
