// Opening and finding again; what is asked of an open scanner. How answers are waited for:
// sane_device_ask.cpp. How sides come: sane_device_read.cpp.
#include "scanlib/device/sane/sane_device.h"

#include "scanlib/base/library_log.h"
#include "scanlib/device/sane/model_overrides.h"

namespace orva {

SaneDevice::SaneDevice(
    const SaneParts& parts, std::shared_ptr<SaneSearch> search, DeviceIdentity identity)
    : m_identity(std::move(identity))
    , m_parts(parts)
    , m_search(std::move(search))
    , m_key(m_identity.key)
{
    for (const FoundDevice& device : m_search->found()) {
        m_others.insert(device.key);
    }
    m_others.erase(m_key);
}

SaneDevice::~SaneDevice()
{
    drop();
}

/// Ends the helper, in order where nothing hangs.
void SaneDevice::drop()
{
    if (m_link == nullptr) {
        return;
    }
    if (m_pending != 0) {
        constexpr Limit kForWhatHangs(100);
        m_link->setPatience(kForWhatHangs);
    }
    m_link.reset();
    m_search->deviceClosed();
    m_pending = 0;
    m_batch = 0;
}

Status SaneDevice::startHost()
{
    constexpr Limit kForTheSearch(1000);
    m_search->giveWay(kForTheSearch); // two programs must not talk to one scanner
    if (Status status = HostLink::start(m_parts.launcher, m_identity.name, {}, m_link);
        !status.ok()) {
        libraryLog("sane: %s", status.detail().c_str());
        return status;
    }
    m_link->setPatience(m_parts.limits.stop);
    m_search->deviceOpened();
    return {};
}

/// An earlier request that has not been answered yet is waited for, but not for ever.
Status SaneDevice::finishPending()
{
    const auto age = std::chrono::duration_cast<Limit>(Clock::now() - m_pendingSince);
    const Limit left = std::max(Limit(0), m_parts.limits.hung - age);
    if (Status status = settle(left); status.code() == kCancelled) {
        return status;
    }
    if (m_pending != 0) {
        m_link->kill("an earlier request hangs");
        drop();
    }
    return {};
}

Status SaneDevice::openKey(const std::string& key)
{
    if (m_link != nullptr && m_pending != 0) {
        if (Status status = finishPending(); !status.ok()) {
            return status;
        }
    }
    if (m_link == nullptr) {
        if (Status status = startHost(); !status.ok()) {
            return status;
        }
    }
    std::string type;
    for (const FoundDevice& device : m_search->found()) {
        type = device.key == key ? device.type : type;
    }
    WireWriter body;
    put(body, OpenRequest { key, type, modelOverrides(m_parts.models, m_identity.name) });
    WireMessage answer;
    Status status = ask(HostMessage::kOpen, std::move(body), m_parts.limits.open, answer);
    if (status.ok()) {
        WireReader reader(answer.body);
        status = getStatus(reader);
        if (std::vector<PaperSource> sources = getSources(reader); status.ok()) {
            m_sources = std::move(sources);
            m_key = key;
        }
    }
    return status;
}

/// true when the scanner is attached elsewhere now. A key names the bus address and may be another
/// one after replugging: then the device of the same name, and serial number if known, is taken.
bool SaneDevice::findAgain()
{
    const Clock::time_point now = Clock::now();
    if (m_searchedAt != Clock::time_point() && now - m_searchedAt < m_parts.limits.searchPause) {
        return false;
    }
    m_searchedAt = now;
    drop();
    m_search->run(m_parts.limits.search, &m_cancelRequested);
    for (const FoundDevice& device : m_search->found()) {
        const DeviceIdentity other = identityOf(device);
        const bool equal = other.name == m_identity.name && other.serial == m_identity.serial;
        // without serial numbers, one that was there all the time is another scanner
        const bool another = m_identity.serial.empty() && m_others.count(other.key) != 0;
        if (equal && !another && other.key != m_key) {
            libraryLog("sane: %s is now %s", m_key.c_str(), other.key.c_str());
            m_key = other.key;
            m_searchedAt = {};
            return true;
        }
    }
    return false;
}

/// Sees to it that the scanner is open; quick when it is.
Status SaneDevice::reach()
{
    if (m_link != nullptr && (m_link->ended() || isUnplugged(m_key, m_parts.usbFolder))) {
        drop();
    }
    Status status = openKey(m_key);
    const bool away = status.code() == kDeviceNotFound || status.code() == kDeviceIo;
    if (away && findAgain()) {
        status = openKey(m_key);
    }
    if (!status.ok() && m_pending == 0) {
        drop(); // no process for a scanner that is away
    }
    if (status.code() == kCancelled) {
        m_cancelRequested.store(false); // served
    }
    return status;
}

Status SaneDevice::open()
{
    m_cancelRequested.store(false);
    Status status = reach();
    if (status.ok() && m_sources.empty()) {
        return { kDeviceIo, "the device offers no paper source" };
    }
    return status;
}

Status SaneDevice::configure(const AcquireSettings& settings)
{
    m_batch = 0;
    WireMessage answer;
    Status status = askOpened(
        HostMessage::kConfigure, [&](WireWriter& body) { put(body, settings); }, answer);
    m_batch = status.ok() ? answer.id : 0;
    return status;
}

void SaneDevice::endBatch()
{
    if (m_link != nullptr && m_batch != 0) {
        WireMessage answer;
        const Status status = ask(HostMessage::kEndBatch, {}, m_parts.limits.endBatch, answer);
        if (!status.ok()) {
            libraryLog("sane: end of the batch: %s", status.detail().c_str());
        }
    }
    m_batch = 0;
}

Status SaneDevice::hasPaper(bool& result)
{
    m_cancelRequested.store(false);
    WireMessage answer;
    Status status = ask(HostMessage::kHasPaper, {}, m_parts.limits.poll, answer);
    if (status.ok()) {
        WireReader reader(answer.body);
        status = getStatus(reader);
        result = reader.flag();
    }
    return status;
}

/// Never opens the scanner, and never waits for a request that hangs.
Status SaneDevice::pressedButton(int& value)
{
    value = 0;
    WireMessage answer;
    Status status = ask(HostMessage::kButton, {}, m_parts.limits.poll, answer);
    if (status.ok()) {
        WireReader reader(answer.body);
        status = getStatus(reader);
        value = reader.get<int>();
    }
    return status;
}

Status SaneDevice::timing(DeviceTiming& result)
{
    WireMessage answer;
    Status status = askOpened(HostMessage::kTiming, {}, answer);
    if (status.ok()) {
        WireReader reader(answer.body);
        status = getStatus(reader);
        result = getTiming(reader);
    }
    return status;
}

Status SaneDevice::setTimes(int sleep, int autoOff)
{
    WireMessage answer;
    return askOpened(
        HostMessage::kSetTimes, [=](WireWriter& body) { body.put(sleep).put(autoOff); }, answer);
}

Status SaneDevice::setPrefeed(bool, float)
{
    return { kNotSupported, "SANE knows no pre-feed time" };
}

} // namespace orva
