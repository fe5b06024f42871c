#include "scanlib/device/sane/sane_device.h"

#include "scanlib/base/library_log.h"

#include <algorithm>

namespace orva {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

Status noAnswer(const char* what)
{
    return { kDeviceTimeout, std::string(what) + ": the device does not answer" };
}

/// Runs on the SANE thread. A key names the bus address and may be another one after replugging:
/// then the device of the same name, and serial number if known, is taken.
Status openAgain(SaneRuntime& runtime, SaneScanner& scanner, const DeviceIdentity& identity)
{
    const auto typeOf = [&](const std::string& key) {
        for (const FoundDevice& device : runtime.found()) {
            if (device.key == key) {
                return device.type;
            }
        }
        return std::string();
    };
    const Status status = scanner.open(identity.key, typeOf(identity.key));
    if (status.code() != kDeviceNotFound && status.code() != kDeviceIo) {
        return status;
    }
    runtime.search();
    for (const FoundDevice& device : runtime.found()) {
        const DeviceIdentity other = identityOf(device);
        if (other.key != identity.key && other.name == identity.name
            && other.serial == identity.serial) {
            libraryLog("sane: %s is now %s", identity.key.c_str(), other.key.c_str());
            return scanner.open(other.key, device.type);
        }
    }
    return status;
}

} // namespace

DeviceIdentity identityOf(const FoundDevice& device)
{
    DeviceIdentity identity;
    identity.key = device.key;
    const bool repeated = device.model.compare(0, device.vendor.size(), device.vendor) == 0;
    identity.name = repeated ? device.model : device.vendor + " " + device.model;
    if (identity.name.find_first_not_of(' ') == std::string::npos) {
        identity.name = device.key;
    }
    identity.serial = device.serial;
    identity.vidPid = device.vidPid;
    identity.driverVersion = device.key.substr(0, device.key.find(':'));
    return identity;
}

SaneDevice::SaneDevice(std::shared_ptr<SaneLease> lease, DeviceIdentity identity)
    : m_identity(std::move(identity))
    , m_lease(std::move(lease))
    , m_scanner(std::make_shared<SaneScanner>(m_lease->runtime))
{
}

SaneDevice::~SaneDevice()
{
    // Not given up when it takes long: the device is to be closed in any case.
    SaneThread& thread = m_lease->runtime->thread();
    const auto ticket = thread.post([scanner = m_scanner] { scanner->close(); });
    thread.wait(ticket, m_lease->runtime->limits().stop);
}

Status SaneDevice::tell(milliseconds limit, std::function<Status(SaneScanner&)> task)
{
    const auto result = std::make_shared<Status>();
    const auto body = [scanner = m_scanner, task = std::move(task), result] {
        *result = task(*scanner);
    };
    return m_lease->runtime->thread().run(body, limit) ? *result : noAnswer("request");
}

template <typename Result>
Status SaneDevice::ask(milliseconds limit, Result& result, Status (SaneScanner::*question)(Result&))
{
    const auto answer = std::make_shared<Result>();
    const Status status = tell(
        limit, [answer, question](SaneScanner& scanner) { return (scanner.*question)(*answer); });
    if (status.code() != kDeviceTimeout) { // else the thread may still write to it
        result = *answer;
    }
    return status;
}

Status SaneDevice::open()
{
    const auto sources = std::make_shared<std::vector<PaperSource>>();
    const auto task = [runtime = m_lease->runtime, identity = m_identity, sources](
                          SaneScanner& scanner) {
        Status status = openAgain(*runtime, scanner, identity);
        *sources = scanner.sources();
        return status;
    };
    Status status = tell(m_lease->runtime->limits().open, task);
    if (status.ok()) {
        m_sources = *sources;
        if (m_sources.empty()) {
            return { kDeviceIo, "the device offers no paper source" };
        }
    }
    return status;
}

Status SaneDevice::configure(const AcquireSettings& settings)
{
    m_cancelRequested.store(false);
    m_scanner->clearCancel();
    return tell(m_lease->runtime->limits().configure,
        [settings](SaneScanner& scanner) { return scanner.configure(settings); });
}

Status SaneDevice::nextPage(Page& page, bool& endOfFeed, const CancelToken& cancel)
{
    struct Delivery
    {
        Page page;
        bool endOfFeed = false;
        Status status;
    };
    constexpr milliseconds kLook(20); // at the token and at the age of the call
    endOfFeed = false;
    const auto cancelWanted = [&] { return m_cancelRequested.load() || cancel.cancelled(); };
    if (cancelWanted()) {
        return { kCancelled, "cancelled" };
    }
    const std::shared_ptr<SaneRuntime> runtime = m_lease->runtime;
    const SaneLimits& limits = runtime->limits();
    SaneThread& thread = runtime->thread();
    const auto side = std::make_shared<Delivery>();
    const auto ticket = thread.post([scanner = m_scanner, side] {
        side->status = scanner->nextSide(side->page, side->endOfFeed);
    });
    const auto cancelOutside = [&] {
        runtime->cancelThread().post([scanner = m_scanner] { scanner->cancelFromOutside(); });
    };
    Clock::time_point cancelledAt {};
    Clock::time_point overdueAt {};
    const Clock::time_point posted = Clock::now();
    bool begun = false; // an earlier call that hangs is in front of this one
    while (!thread.wait(ticket, kLook)) {
        const Clock::time_point now = Clock::now();
        const auto age = m_scanner->callAge();
        begun = begun || age.has_value();
        if (cancelWanted() && cancelledAt == Clock::time_point()) {
            cancelledAt = now;
            m_scanner->askToCancel();
        }
        if (cancelledAt != Clock::time_point()) {
            if (age.has_value() && *age > limits.cancelPatience
                && now - cancelledAt > limits.cancelPatience) {
                cancelOutside(); // does nothing the second time
            }
            if (now - cancelledAt > limits.cancel) {
                thread.abandon(ticket);
                libraryLog("sane: the scan does not end after it was cancelled");
                return { kCancelled, "cancelled; the device does not answer" };
            }
            continue;
        }
        const milliseconds callLimit = m_scanner->callIsStart() ? limits.start : limits.read;
        const bool overdue =
            (age.has_value() && *age > callLimit) || (!begun && now - posted > limits.poll);
        if (overdue && overdueAt == Clock::time_point()) {
            overdueAt = now;
            m_scanner->askToCancel();
            cancelOutside(); // wakes most drivers up
        }
        if (overdueAt != Clock::time_point() && now - overdueAt > limits.stop) {
            thread.abandon(ticket);
            return noAnswer("scan");
        }
    }
    if (overdueAt != Clock::time_point()) {
        return noAnswer("scan");
    }
    if (cancelledAt != Clock::time_point() && !side->status.ok()) {
        return { kCancelled, side->status.detail() };
    }
    endOfFeed = side->endOfFeed;
    if (side->status.ok() && !endOfFeed) {
        side->page.number = page.number;
        page = std::move(side->page);
    }
    return side->status;
}

void SaneDevice::endBatch()
{
    SaneThread& thread = m_lease->runtime->thread();
    const auto ticket = thread.post([scanner = m_scanner] { scanner->endBatch(); });
    thread.wait(
        ticket, m_lease->runtime->limits().configure); // never dropped: the device must stop
}

void SaneDevice::requestCancel() noexcept
{
    m_cancelRequested.store(true); // nextPage looks every 20 ms
}

Status SaneDevice::hasPaper(bool& result)
{
    return ask(m_lease->runtime->limits().poll, result, &SaneScanner::hasPaper);
}

Status SaneDevice::pressedButton(int& value)
{
    value = 0;
    return ask(m_lease->runtime->limits().poll, value, &SaneScanner::pressedButton);
}

Status SaneDevice::timing(DeviceTiming& result)
{
    return ask(m_lease->runtime->limits().poll, result, &SaneScanner::timing);
}

Status SaneDevice::setTimes(int sleep, int autoOff)
{
    return tell(m_lease->runtime->limits().configure,
        [=](SaneScanner& scanner) { return scanner.setTimes(sleep, autoOff); });
}

Status SaneDevice::setPrefeed(bool, float)
{
    return { kNotSupported, "SANE knows no pre-feed time" };
}

} // namespace orva
