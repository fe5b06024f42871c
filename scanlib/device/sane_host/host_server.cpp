#include "scanlib/device/sane_host/host_server.h"

#include "scanlib/base/library_log.h"

namespace orva {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

std::string textOrEmpty(SANE_String_Const text)
{
    return text != nullptr ? text : "";
}

} // namespace

HostServer::HostServer(const SaneApi& api, const HostPauses& pauses, int socket, std::uint8_t* ring)
    : m_api(api)
    , m_pauses(pauses)
    , m_socket(socket)
    , m_sink(ring,
          [this](HostMessage kind, std::vector<std::uint8_t> body) {
              send(kind, m_side, std::move(body));
          })
    , m_scanner(m_api, pauses.scanner)
{
    m_thread = std::thread([this] { work(); });
}

HostServer::~HostServer()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_ending = true;
        m_changed.notify_all();
    }
    m_sink.close();
    m_thread.join();
}

bool HostServer::run()
{
    receiveAll();
    m_sink.close();
    std::unique_lock<std::mutex> lock(m_mutex);
    m_ending = true;
    m_requests.clear();
    m_changed.notify_all();
    const auto ended = [this] { return m_ended; };
    if (m_changed.wait_for(lock, m_pauses.cancelPatience, ended)) {
        return true;
    }
    lock.unlock();
    m_scanner.cancelFromOutside(m_scanner.batch()); // wakes a read that waits
    lock.lock();
    return m_changed.wait_for(lock, m_pauses.ending, ended);
}

void HostServer::receiveAll()
{
    constexpr milliseconds kIdle(60'000);
    constexpr milliseconds kCancelling(10);
    // One for all messages: a driver that forks while this thread is within the allocator would
    // leave its child with a lock that nobody opens, where the allocator has no handler for forks.
    WireMessage message;
    for (;;) {
        waitReadable(m_socket, m_cancelBatch != 0 ? kCancelling : kIdle);
        const WireResult result = receiveWire(m_socket, message);
        if (result == WireResult::kMessage) {
            take(message);
        } else if (result != WireResult::kNothing) {
            return;
        }
        if (m_cancelBatch != 0 && cancelIsDue()) {
            m_scanner.cancelFromOutside(m_cancelBatch);
            m_cancelBatch = 0;
        }
    }
}

/// A driver that is within a call gets some time to come back by itself: not all of them take a
/// cancel from another thread well.
bool HostServer::cancelIsDue() const
{
    const auto age = m_scanner.callAge();
    return age.has_value() && *age > m_pauses.cancelPatience
        && Clock::now() - m_cancelSince > m_pauses.cancelPatience;
}

void HostServer::take(const WireMessage& message)
{
    switch (static_cast<HostMessage>(message.kind)) {
    case HostMessage::kCancel:
        m_scanner.askToCancel(message.id);
        m_cancelBatch = message.id;
        m_cancelSince = Clock::now();
        return;
    case HostMessage::kSlotFreed:
        m_sink.slotFreed();
        return;
    case HostMessage::kEndBatch:
        m_cancelBatch = 0; // ends with a cancel anyway
        break;
    default:
        break;
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_requests.push_back(message);
    m_changed.notify_all();
}

void HostServer::log(const std::string& text)
{
    WireWriter body;
    body.put(std::string_view(text).substr(0, 2000));
    sendWire(m_socket, { static_cast<std::uint16_t>(HostMessage::kLog), 0, body.take() },
        milliseconds(0));
}

void HostServer::send(HostMessage kind, std::uint32_t id, std::vector<std::uint8_t> body)
{
    constexpr milliseconds kLibraryBusy(10'000); // it reads all the time while it waits for a side
    sendWire(m_socket, { static_cast<std::uint16_t>(kind), id, std::move(body) }, kLibraryBusy);
}

void HostServer::answer(std::uint32_t id, const Status& status, WireWriter details)
{
    WireWriter body;
    put(body, status);
    std::vector<std::uint8_t> bytes = body.take();
    const std::vector<std::uint8_t> rest = details.take();
    bytes.insert(bytes.end(), rest.begin(), rest.end());
    send(HostMessage::kAnswer, id, std::move(bytes));
}

void HostServer::work()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [this] { return m_ending || !m_requests.empty(); });
        if (m_ending) {
            break;
        }
        const WireMessage request = std::move(m_requests.front());
        m_requests.pop_front();
        lock.unlock();
        serve(request);
        lock.lock();
    }
    lock.unlock();
    m_scanner.close();
    if (m_initialised) {
        m_api.exit();
    }
    lock.lock();
    m_ended = true;
    m_changed.notify_all();
}

Status HostServer::initialise()
{
    if (m_initialised) {
        return {};
    }
    SANE_Int version = 0;
    const SANE_Status status = m_api.init(&version, nullptr);
    if (status == SANE_STATUS_GOOD && SANE_VERSION_MAJOR(version) != SANE_CURRENT_MAJOR) {
        return { kNotSupported, "SANE of another major version" };
    }
    m_initialised = status == SANE_STATUS_GOOD;
    return saneFailure(status, "sane_init");
}

void HostServer::search(std::uint32_t id)
{
    std::vector<FoundDevice> devices;
    Status status = initialise();
    const SANE_Device** list = nullptr;
    if (status.ok()) {
        status = saneFailure(m_api.getDevices(&list, SANE_FALSE), "sane_get_devices");
    }
    for (; status.ok() && list != nullptr && *list != nullptr; ++list) {
        devices.push_back({ textOrEmpty((*list)->name), textOrEmpty((*list)->vendor),
            textOrEmpty((*list)->model), textOrEmpty((*list)->type), {}, {} });
    }
    WireWriter details;
    put(details, devices);
    answer(id, status, std::move(details));
}

void HostServer::open(const WireMessage& request)
{
    WireReader reader(request.body);
    const OpenRequest wanted = getOpenRequest(reader);
    Status status = initialise();
    if (status.ok()) {
        status = m_scanner.open(wanted);
    }
    WireWriter details;
    put(details, m_scanner.sources());
    answer(request.id, status, std::move(details));
}

void HostServer::nextSide(std::uint32_t id)
{
    m_side = id;
    SideReport report;
    const Status status = m_scanner.nextSide(m_sink, report);
    m_sink.drop();
    WireWriter details;
    put(details, report);
    answer(id, status, std::move(details));
}

void HostServer::serve(const WireMessage& request)
{
    WireReader reader(request.body);
    WireWriter details;
    Status status;
    switch (static_cast<HostMessage>(request.kind)) {
    case HostMessage::kSearch:
        return search(request.id);
    case HostMessage::kOpen:
        return open(request);
    case HostMessage::kNextSide:
        return nextSide(request.id);
    case HostMessage::kConfigure:
        status = m_scanner.configure(getSettings(reader), request.id);
        break;
    case HostMessage::kEndBatch:
        m_scanner.endBatch();
        break;
    case HostMessage::kHasPaper: {
        bool paper = false;
        status = m_scanner.hasPaper(paper);
        details.put(paper);
        break;
    }
    case HostMessage::kButton: {
        int value = 0;
        status = m_scanner.pressedButton(value);
        details.put(value);
        break;
    }
    case HostMessage::kTiming: {
        DeviceTiming timing;
        status = m_scanner.timing(timing);
        put(details, timing);
        break;
    }
    case HostMessage::kSetTimes: {
        const int sleep = reader.get<int>();
        status = m_scanner.setTimes(sleep, reader.get<int>());
        break;
    }
    default:
        status = { kNotSupported, "unknown request" };
        break;
    }
    answer(request.id, status, std::move(details));
}

} // namespace orva
