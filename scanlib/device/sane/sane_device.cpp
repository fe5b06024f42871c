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

/// Text that is fit for a list, a line of a log and the name of a folder.
std::string tidyName(const std::string& text)
{
    std::string name;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        const bool blank = byte <= ' ' || byte == 0x7f;
        if (name.empty() && (blank || c == '.')) {
            continue; // a folder that begins with a dot is hidden
        }
        if (!blank) {
            name += c == '/' || c == '\\' ? '-' : c;
        } else if (name.back() != ' ') {
            name += ' ';
        }
    }
    return name.substr(0, name.find_last_not_of(' ') + 1);
}

} // namespace

/// SANE thread. A key names the bus address and may be another one after replugging: then the
/// device of the same name, and serial number if known, is taken.
Status SaneDevice::openAgain(Finder& finder, SaneRuntime& runtime, SaneScanner& scanner)
{
    const DeviceIdentity& identity = finder.identity;
    const auto typeOf = [&](const std::string& key) {
        for (const FoundDevice& device : runtime.found()) {
            if (device.key == key) {
                return device.type;
            }
        }
        return std::string();
    };
    Status status = scanner.open(finder.key, typeOf(finder.key));
    if (status.code() != kDeviceNotFound && status.code() != kDeviceIo) {
        return status;
    }
    if (finder.searchedAt != Clock::time_point()
        && Clock::now() - finder.searchedAt < runtime.limits().searchPause) {
        return status;
    }
    finder.searchedAt = Clock::now();
    runtime.search();
    for (const FoundDevice& device : runtime.found()) {
        const DeviceIdentity other = identityOf(device);
        const bool equal = other.name == identity.name && other.serial == identity.serial;
        // without serial numbers, one that was there all the time is another scanner
        const bool another = identity.serial.empty() && finder.others.count(other.key) != 0;
        if (equal && !another && other.key != finder.key) {
            libraryLog("sane: %s is now %s", finder.key.c_str(), other.key.c_str());
            finder.key = other.key;
            finder.searchedAt = {};
            return scanner.open(other.key, device.type);
        }
    }
    return status;
}

DeviceIdentity identityOf(const FoundDevice& device)
{
    DeviceIdentity identity;
    identity.key = device.key;
    identity.name = tidyName(fullName(device));
    if (identity.name.empty()) {
        identity.name = tidyName(device.key);
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
    , m_finder(std::make_shared<Finder>())
{
    m_finder->identity = m_identity;
    m_finder->key = m_identity.key;
    for (const FoundDevice& device : m_lease->runtime->found()) {
        m_finder->others.insert(device.key);
    }
    m_finder->others.erase(m_identity.key);
}

SaneDevice::~SaneDevice()
{
    // Not given up when it takes long: the device is to be closed in any case.
    SaneThread& thread = m_lease->runtime->thread();
    const auto ticket = thread.post([scanner = m_scanner] { scanner->close(); });
    if (!thread.wait(ticket, m_lease->runtime->limits().stop)) {
        thread.giveUp();
    }
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
    Status status = tell(
        limit, [answer, question](SaneScanner& scanner) { return (scanner.*question)(*answer); });
    if (status.code() != kDeviceTimeout) { // else the thread may still write to it
        result = *answer;
    }
    return status;
}

/// A scanner that was closed after a fault is opened again; one that was never opened is not.
Status SaneDevice::tellOpened(std::function<Status(SaneScanner&)> task)
{
    if (m_sources.empty()) {
        return { kNotInitialised, "not open" };
    }
    const auto body = [runtime = m_lease->runtime, finder = m_finder, task = std::move(task)](
                          SaneScanner& scanner) {
        const bool wasOpen = scanner.isOpen();
        Status status = openAgain(*finder, *runtime, scanner);
        status = status.ok() ? task(scanner) : status;
        if (wasOpen && status.code() == kDeviceIo) { // that handle was dead
            status = openAgain(*finder, *runtime, scanner);
            status = status.ok() ? task(scanner) : status;
        }
        return status;
    };
    const SaneLimits& limits = m_lease->runtime->limits();
    return tell(std::max(limits.open, limits.configure), body);
}

Status SaneDevice::open()
{
    const auto sources = std::make_shared<std::vector<PaperSource>>();
    const auto task = [runtime = m_lease->runtime, finder = m_finder, sources](
                          SaneScanner& scanner) {
        Status status = openAgain(*finder, *runtime, scanner);
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
    return tellOpened([settings](SaneScanner& scanner) { return scanner.configure(settings); });
}

Status SaneDevice::nextPage(Page& page, bool& endOfFeed, const CancelToken& cancel)
{
    struct Delivery
    {
        Page page;
        bool endOfFeed = false;
        Status status;
        std::atomic<bool> begun { false }; // else an earlier call that hangs is in front of it
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
    side->page.pixels = std::move(page.pixels);
    const auto ticket = thread.post([scanner = m_scanner, side] {
        side->begun.store(true);
        side->status = scanner->nextSide(side->page, side->endOfFeed);
    });
    bool cancelPosted = false;
    const auto cancelOutside = [&] {
        if (!cancelPosted) {
            cancelPosted = true;
            runtime->cancelThread().post([scanner = m_scanner, batch = m_scanner->batch()] {
                scanner->cancelFromOutside(batch);
            });
        }
    };
    Clock::time_point cancelledAt {};
    Clock::time_point overdueAt {};
    const Clock::time_point posted = Clock::now();
    while (!thread.wait(ticket, kLook)) {
        const Clock::time_point now = Clock::now();
        const auto age = m_scanner->callAge();
        if (cancelWanted() && cancelledAt == Clock::time_point()) {
            cancelledAt = now;
            m_scanner->askToCancel();
        }
        if (cancelledAt != Clock::time_point()) {
            if (age.has_value() && *age > limits.cancelPatience
                && now - cancelledAt > limits.cancelPatience) {
                cancelOutside();
            }
            if (now - cancelledAt > limits.cancel) {
                thread.abandon(ticket);
                m_scanner->distrust();
                libraryLog("sane: the scan does not end after it was cancelled");
                return { kCancelled, "cancelled; the device does not answer" };
            }
            continue;
        }
        const milliseconds callLimit = m_scanner->callIsStart() ? limits.start : limits.read;
        const bool overdue = (age.has_value() && *age > callLimit)
            || (!side->begun.load() && now - posted > limits.poll);
        if (overdue && overdueAt == Clock::time_point()) {
            overdueAt = now;
            m_scanner->askToCancel();
            m_scanner->distrust();
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
    const auto answer = std::make_shared<DeviceTiming>();
    Status status = tellOpened([answer](SaneScanner& scanner) { return scanner.timing(*answer); });
    if (status.ok()) {
        result = *answer;
    }
    return status;
}

Status SaneDevice::setTimes(int sleep, int autoOff)
{
    return tellOpened([=](SaneScanner& scanner) { return scanner.setTimes(sleep, autoOff); });
}

Status SaneDevice::setPrefeed(bool, float)
{
    return { kNotSupported, "SANE knows no pre-feed time" };
}

} // namespace orva
