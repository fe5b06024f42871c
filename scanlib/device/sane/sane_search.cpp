#include "scanlib/device/sane/sane_search.h"

#include "scanlib/base/library_log.h"

#include <poll.h>

#include <algorithm>

namespace orva {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

long long msSince(Clock::time_point since)
{
    return std::chrono::duration_cast<milliseconds>(Clock::now() - since).count();
}

} // namespace

SaneSearch::SaneSearch(HostLauncher launcher, std::function<std::vector<BackendGroup>()> groups,
    const SaneLimits& limits)
    : m_launcher(std::move(launcher))
    , m_groups(std::move(groups))
    , m_limits(limits)
{
}

SaneSearch::~SaneSearch()
{
    for (const Running& running : m_running) {
        running.link->kill("the search is over");
    }
}

SaneSearch::Turn::Turn(SaneSearch& search, milliseconds limit)
    : m_search(search)
{
    std::unique_lock<std::mutex> lock(search.m_turnMutex);
    m_mine = search.m_turnFree.wait_for(lock, limit, [&] { return !search.m_taken; });
    search.m_taken = true;
}

SaneSearch::Turn::~Turn()
{
    if (m_mine) {
        const std::lock_guard<std::mutex> lock(m_search.m_turnMutex);
        m_search.m_taken = false;
        m_search.m_turnFree.notify_one();
    }
}

void SaneSearch::run(milliseconds limit, const std::atomic<bool>* stop)
{
    const Clock::time_point deadline = Clock::now() + limit;
    const Turn turn(*this, limit);
    if (!turn.isMine()) {
        return; // another search has used the time up
    }
    if (m_running.empty() && m_openDevices == 0) {
        begin();
    }
    collect(std::chrono::duration_cast<milliseconds>(deadline - Clock::now()), stop);
    for (const Running& running : m_running) {
        libraryLog("sane: the search by %s takes long: %lld ms so far; it goes on",
            running.group.name.c_str(), msSince(running.since));
    }
}

void SaneSearch::begin()
{
    const std::vector<BackendGroup> groups = m_groups();
    {
        const std::lock_guard<std::mutex> lock(m_foundMutex);
        m_order.clear();
        for (const BackendGroup& group : groups) {
            m_order.push_back(group.name);
        }
    }
    for (const BackendGroup& group : groups) {
        Running running { group, nullptr, Clock::now() };
        Status status = HostLink::start(
            m_launcher, "the search by " + group.name, group.backends, running.link);
        if (!status.ok()) {
            libraryLog("sane: %s", status.detail().c_str());
            continue;
        }
        running.link->hurry();
        running.link->request(HostMessage::kSearch);
        m_running.push_back(std::move(running));
    }
}

void SaneSearch::collect(milliseconds limit, const std::atomic<bool>* stop)
{
    constexpr milliseconds kLook(20); // for helpers whose children hold the socket open
    const Clock::time_point deadline = Clock::now() + limit;
    for (;;) {
        m_running.erase(std::remove_if(m_running.begin(), m_running.end(),
                            [this](Running& running) { return isDone(running); }),
            m_running.end());
        const auto left = std::chrono::duration_cast<milliseconds>(deadline - Clock::now());
        if (m_running.empty() || left.count() <= 0 || (stop != nullptr && stop->load())) {
            return;
        }
        std::vector<pollfd> sockets;
        for (const Running& running : m_running) {
            sockets.push_back({ running.link->socket(), POLLIN, 0 });
        }
        ::poll(sockets.data(), sockets.size(), static_cast<int>(std::min(kLook, left).count() + 1));
    }
}

bool SaneSearch::isDone(Running& running)
{
    constexpr long long kSlow = 1000;
    WireMessage message;
    const WireResult result = running.link->receive(message, milliseconds(0));
    const long long age = msSince(running.since);
    const char* const name = running.group.name.c_str();
    if (result == WireResult::kNothing) {
        if (age > m_limits.searchHung.count()) {
            running.link->kill("no answer for " + std::to_string(age) + " ms");
        }
        return age > m_limits.searchHung.count();
    }
    if (result != WireResult::kMessage) {
        libraryLog("sane: the search by %s broke off after %lld ms: %s", name, age,
            running.link->epitaph().c_str());
        return true;
    }
    WireReader reader(message.body);
    const Status status = getStatus(reader);
    if (!status.ok()) {
        libraryLog("sane: the search by %s: %s", name, status.detail().c_str());
        return true;
    }
    std::vector<FoundDevice> devices = getFoundDevices(reader);
    libraryLog("sane: the search by %s took %lld ms%s, %zu scanners", name, age,
        age >= kSlow ? " (slow)" : "", devices.size());
    keep(running.group.name, std::move(devices));
    return true;
}

void SaneSearch::keep(const std::string& group, std::vector<FoundDevice> devices)
{
    for (FoundDevice& device : devices) {
        addUsbFacts(device);
        libraryLog("sane: found %s (%s %s, %s)", device.key.c_str(), device.vendor.c_str(),
            device.model.c_str(), device.type.c_str());
    }
    const std::lock_guard<std::mutex> lock(m_foundMutex);
    m_found[group] = std::move(devices);
}

std::vector<FoundDevice> SaneSearch::found() const
{
    const std::lock_guard<std::mutex> lock(m_foundMutex);
    std::vector<FoundDevice> all;
    for (const std::string& group : m_order) {
        const auto found = m_found.find(group);
        if (found != m_found.end()) {
            all.insert(all.end(), found->second.begin(), found->second.end());
        }
    }
    return withoutDuplicates(all);
}

void SaneSearch::giveWay(milliseconds limit)
{
    const Turn turn(*this, limit);
    if (!turn.isMine()) {
        return;
    }
    collect(limit, nullptr);
    for (const Running& running : m_running) {
        running.link->kill("a scanner is to be opened");
    }
    m_running.clear();
}

} // namespace orva
