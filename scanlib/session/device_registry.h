// The list of scanners. An index that was handed out means the same scanner until the library is
// released: a later listing adds what is new and moves nothing.
#pragma once

#include "scanlib/device/device.h"

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace orva {

/// Any thread.
class DeviceRegistry
{
public:
    DeviceRegistry(std::vector<std::unique_ptr<Driver>> drivers, std::chrono::milliseconds limit);
    ~DeviceRegistry();
    DeviceRegistry(const DeviceRegistry&) = delete;
    DeviceRegistry& operator=(const DeviceRegistry&) = delete;

    /// Starts to look for scanners in the background; does nothing while that runs.
    void startListing();
    /// Starts again when the last listing is older than this.
    void refresh(std::chrono::milliseconds maxAge);
    /// Number of scanners; waits for a running listing, which ends by itself within the limit.
    int count();
    /// false when there is no such index.
    bool identity(int index, DeviceIdentity& result);
    /// nullptr when there is no such index.
    std::unique_ptr<Device> create(int index);

private:
    struct Entry
    {
        Driver* driver;
        DeviceIdentity identity; ///< with the driver's own name
        std::string uniqueName;
    };

    void list();
    void add(Driver& driver, const DeviceIdentity& identity);
    std::string uniqueName(const std::string& wanted) const;
    void waitListed(std::unique_lock<std::mutex>& lock);

    const std::vector<std::unique_ptr<Driver>> m_drivers;
    const std::chrono::milliseconds m_limit;
    std::mutex m_mutex;
    std::condition_variable m_listed;
    bool m_listing = false;
    std::chrono::steady_clock::time_point m_lastListing;
    std::vector<Entry> m_entries;
    std::thread m_thread;
};

} // namespace orva
