#include "scanlib/session/device_registry.h"

#include "scanlib/base/library_log.h"
#include "scanlib/base/text.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace orva {

namespace {

constexpr std::size_t kMaxNameBytes = 63; ///< callers hand out buffers of 64

} // namespace

DeviceRegistry::DeviceRegistry(
    std::vector<std::unique_ptr<Driver>> drivers, std::chrono::milliseconds limit)
    : m_drivers(std::move(drivers))
    , m_limit(limit)
{
}

DeviceRegistry::~DeviceRegistry()
{
    for (const std::unique_ptr<Driver>& driver : m_drivers) {
        driver->stopEnumerating();
    }
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

void DeviceRegistry::startListing()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_listing) {
        return;
    }
    if (m_thread.joinable()) {
        m_thread.join(); // over: it cleared the flag last
    }
    m_listing = true;
    m_thread = std::thread([this] { list(); });
}

void DeviceRegistry::refresh(std::chrono::milliseconds maxAge)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_listing || std::chrono::steady_clock::now() - m_lastListing < maxAge) {
            return;
        }
    }
    startListing();
}

void DeviceRegistry::list()
{
    const auto deadline = std::chrono::steady_clock::now() + m_limit;
    for (const std::unique_ptr<Driver>& driver : m_drivers) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        std::vector<DeviceIdentity> found;
        try {
            found = driver->enumerate(std::max(left, std::chrono::milliseconds(100)));
        } catch (const std::exception& error) {
            libraryLog("listing by %s: %s", driver->name(), error.what());
        }
        libraryLog("%s: %zu scanners", driver->name(), found.size());
        const std::lock_guard<std::mutex> lock(m_mutex);
        for (const DeviceIdentity& identity : found) {
            add(*driver, identity);
        }
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_lastListing = std::chrono::steady_clock::now();
    m_listing = false;
    m_listed.notify_all();
}

void DeviceRegistry::add(Driver& driver, const DeviceIdentity& identity)
{
    const auto known = std::find_if(m_entries.begin(), m_entries.end(), [&](const Entry& entry) {
        return entry.driver == &driver && entry.identity.key == identity.key;
    });
    if (known == m_entries.end()) {
        m_entries.push_back({ &driver, identity, uniqueName(identity.name) });
    }
}

/// The second equal model gets " #2"; the name is shortened so that the number fits into a name.
std::string DeviceRegistry::uniqueName(const std::string& wanted) const
{
    const std::string base = wanted.empty() ? "Scanner" : wanted;
    const auto isUsed = [this](const std::string& name) {
        return std::any_of(m_entries.begin(), m_entries.end(),
            [&](const Entry& entry) { return entry.uniqueName == name; });
    };
    std::string name(utf8Prefix(base, kMaxNameBytes));
    for (int number = 2; isUsed(name); ++number) {
        const std::string suffix = " #" + std::to_string(number);
        name = std::string(utf8Prefix(base, kMaxNameBytes - suffix.size())) + suffix;
    }
    return name;
}

void DeviceRegistry::waitListed(std::unique_lock<std::mutex>& lock)
{
    m_listed.wait(lock, [this] { return !m_listing; });
}

int DeviceRegistry::count()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    waitListed(lock);
    return static_cast<int>(m_entries.size());
}

bool DeviceRegistry::identity(int index, DeviceIdentity& result)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    waitListed(lock);
    if (index < 0 || static_cast<std::size_t>(index) >= m_entries.size()) {
        return false;
    }
    const Entry& entry = m_entries[static_cast<std::size_t>(index)];
    result = entry.identity;
    result.name = entry.uniqueName;
    return true;
}

std::unique_ptr<Device> DeviceRegistry::create(int index)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    waitListed(lock);
    if (index < 0 || static_cast<std::size_t>(index) >= m_entries.size()) {
        return nullptr;
    }
    const Entry& entry = m_entries[static_cast<std::size_t>(index)];
    return entry.driver->create(entry.identity);
}

} // namespace orva
