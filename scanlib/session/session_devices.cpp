// Session: the list of scanners, the selected one and what is known of it.
#include "scanlib/base/library_log.h"
#include "scanlib/session/session.h"

namespace orva {

namespace {

constexpr std::chrono::milliseconds kListFreshness { 3000 };

} // namespace

int Session::scannerCount()
{
    return with(Need::kOpen, [&] {
        // Searching while a scanner is open or in use upsets some drivers.
        if (m_state == SessionState::kIdle) {
            m_registry->refresh(kListFreshness);
        }
        return m_registry->count();
    });
}

int Session::scannerName(int index, std::string& name)
{
    return with(Need::kOpen, [&]() -> int {
        DeviceIdentity identity;
        if (!m_registry->identity(index, identity)) {
            return kIndexOutOfRange;
        }
        name = identity.name;
        return kOk;
    });
}

int Session::selectScanner(int index)
{
    return with(Need::kNoJob, [&]() -> int {
        DeviceIdentity identity;
        if (!m_registry->identity(index, identity)) {
            return kIndexOutOfRange;
        }
        if (index == m_deviceIndex) {
            return kOk;
        }
        std::unique_ptr<Device> device = m_registry->create(index);
        if (!device) {
            return kDeviceNotFound;
        }
        // Opened when it is first asked something: going through a list must not wait for each.
        m_device = std::move(device);
        m_deviceIndex = index;
        m_identity = identity;
        m_sources.clear();
        m_acquire = {};
        m_state = SessionState::kConfigured;
        libraryLog("selected %d: %s", index, identity.name.c_str());
        return kOk;
    });
}

int Session::currentScanner(DeviceIdentity& identity)
{
    return with(Need::kScanner, [&] {
        identity = m_identity;
        return kOk;
    });
}

int Session::scannerState() const
{
    const SessionState state = m_state;
    const ResultCode refusal = permitted(state, Need::kScanner);
    return refusal != kOk ? refusal : hasJob(state) ? 1 : 0;
}

} // namespace orva
