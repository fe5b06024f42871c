// The SANE library of this process: its thread, initialised once, and what was found attached.
#pragma once

#include "scanlib/device/device.h"
#include "scanlib/device/sane/sane_api.h"
#include "scanlib/device/sane/sane_thread.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace orva {

/// How long a call may take before the scanner counts as gone.
struct SaneLimits
{
    /// A driver that needs longer goes on; the next call finds the scanner open.
    std::chrono::milliseconds open { 10'000 };
    std::chrono::milliseconds configure { 15'000 };
    std::chrono::milliseconds start { 90'000 }; ///< lamps warm up in here
    std::chrono::milliseconds read { 30'000 }; ///< without a single byte
    std::chrono::milliseconds poll { 3'000 };
    /// For a scan to end after it was cancelled. Short, since somebody may be closing the window; a
    /// driver that needs longer is served again as soon as it returns.
    std::chrono::milliseconds cancel { 2'500 };
    std::chrono::milliseconds cancelPatience {
        300
    }; ///< before a call that runs is cancelled from outside
    std::chrono::milliseconds busyPause { 500 };
    std::chrono::milliseconds searchPause { 5'000 }; ///< while a scanner is away
    std::chrono::milliseconds stop { 2'000 }; ///< for the thread at the end
};

struct FoundDevice
{
    std::string key;
    std::string vendor;
    std::string model;
    std::string type;
    std::string serial;
    std::string vidPid;
};

class SaneRuntime
{
public:
    SaneRuntime(const SaneApi& api, const SaneLimits& limits)
        : m_api(api)
        , m_limits(limits)
    {
    }

    const SaneApi& api() const { return m_api; }
    const SaneLimits& limits() const { return m_limits; }
    SaneThread& thread() { return m_thread; }
    /// For sane_cancel alone, the one call that may be made while another runs.
    SaneThread& cancelThread() { return m_cancelThread; }

    /// SANE thread. sane_exit is never called: several drivers do not survive being initialised
    /// again, and the end of the process releases whatever they hold once their devices are closed.
    Status initialise();
    /// SANE thread. Asks for the attached devices, unless one is open: searching then disturbs it.
    void search();
    /// SANE thread.
    void deviceOpened() { ++m_openDevices; }
    void deviceClosed() { --m_openDevices; }

    /// Any thread: the result of the last search.
    std::vector<FoundDevice> found() const;
    std::atomic<bool> searchRunning { false };

private:
    const SaneApi m_api;
    const SaneLimits m_limits;
    bool m_initialised = false;
    int m_openDevices = 0;
    mutable std::mutex m_mutex; ///< m_found
    std::vector<FoundDevice> m_found;
    SaneThread m_cancelThread;
    SaneThread m_thread;
};

/// Held by a driver and its devices; the last one to go ends the thread.
struct SaneLease
{
    explicit SaneLease(std::shared_ptr<SaneRuntime> used)
        : runtime(std::move(used))
    {
    }
    ~SaneLease();
    SaneLease(const SaneLease&) = delete;
    SaneLease& operator=(const SaneLease&) = delete;

    const std::shared_ptr<SaneRuntime> runtime;
};

/// Vendor and model, the vendor once. Network drivers put the vendor in front of the model or give
/// their protocol for it.
std::string fullName(const FoundDevice& device);

/// One scanner found by several drivers is listed once; the list keeps its order.
std::vector<FoundDevice> withoutDuplicates(const std::vector<FoundDevice>& devices);

inline constexpr char kUsbFolder[] = "/sys/bus/usb/devices";

/// Adds serial number and vendor:product of a device whose key names its USB bus and address.
void addUsbFacts(FoundDevice& device, const std::string& usbFolder = kUsbFolder);

/// true when the key names a USB bus and address where nothing is any more: plugging in again gives
/// a new address, and a handle from before is dead. false when that cannot be told.
bool isUnplugged(const std::string& key, const std::string& usbFolder = kUsbFolder);

} // namespace orva
