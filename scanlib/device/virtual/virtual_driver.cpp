#include "scanlib/device/virtual/virtual_driver.h"

#include "scanlib/device/virtual/virtual_device.h"

namespace orva {

namespace {

class VirtualDriver : public Driver
{
public:
    explicit VirtualDriver(LibraryPaths paths)
        : m_paths(std::move(paths))
    {
    }

    const char* name() const override { return "virtual"; }

    std::vector<DeviceIdentity> enumerate(std::chrono::milliseconds) override
    {
        if (StateStore(m_paths.virtualScanner).read().faults.unplugged) {
            return {};
        }
        return { virtualScannerIdentity() };
    }

    std::unique_ptr<Device> create(const DeviceIdentity&) override
    {
        return std::make_unique<VirtualDevice>(m_paths);
    }

private:
    const LibraryPaths m_paths;
};

} // namespace

std::unique_ptr<Driver> makeVirtualDriver(const LibraryPaths& paths)
{
    return std::make_unique<VirtualDriver>(paths);
}

} // namespace orva
