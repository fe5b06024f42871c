// The search for scanners: a helper for each group of drivers, all at the same time. A group that
// takes long goes on while the others' scanners are listed; the log says which and how long.
#pragma once

#include "scanlib/device/sane/backend_list.h"
#include "scanlib/device/sane/host_link.h"
#include "scanlib/device/sane/sane_limits.h"

#include <atomic>
#include <condition_variable>
#include <map>
#include <mutex>

namespace orva {

/// Any thread.
class SaneSearch
{
public:
    /// groups are asked for at each search.
    SaneSearch(HostLauncher launcher, std::function<std::vector<BackendGroup>()> groups,
        const SaneLimits& limits);
    ~SaneSearch();
    SaneSearch(const SaneSearch&) = delete;
    SaneSearch& operator=(const SaneSearch&) = delete;

    /// Searches, or goes on with what has not ended; returns at the limit at the latest, or once
    /// stop is set. Does not begin while a scanner is open: searching then disturbs it.
    void run(std::chrono::milliseconds limit, const std::atomic<bool>* stop = nullptr);
    /// What the last searches found, in the order of the drivers.
    std::vector<FoundDevice> found() const;

    /// Before a scanner is opened: lets a search end within the limit, breaks it off after that.
    void giveWay(std::chrono::milliseconds limit);
    void deviceOpened() { ++m_openDevices; }
    void deviceClosed() { --m_openDevices; }

private:
    struct Running
    {
        BackendGroup group;
        std::unique_ptr<HostLink> link;
        std::chrono::steady_clock::time_point since;
    };

    /// One search at a time.
    class Turn
    {
    public:
        Turn(SaneSearch& search, std::chrono::milliseconds limit);
        ~Turn();
        Turn(const Turn&) = delete;
        Turn& operator=(const Turn&) = delete;
        bool isMine() const { return m_mine; }

    private:
        SaneSearch& m_search;
        bool m_mine = false;
    };

    void begin();
    void collect(std::chrono::milliseconds limit, const std::atomic<bool>* stop);
    bool isDone(Running& running);
    void keep(const std::string& group, std::vector<FoundDevice> devices);

    const HostLauncher m_launcher;
    const std::function<std::vector<BackendGroup>()> m_groups;
    const SaneLimits m_limits;
    std::atomic<int> m_openDevices { 0 };
    std::mutex m_turnMutex; ///< m_taken
    std::condition_variable m_turnFree;
    bool m_taken = false; ///< somebody searches
    std::vector<Running> m_running; ///< of whoever has the turn
    mutable std::mutex m_foundMutex;
    std::vector<std::string> m_order; ///< of the groups
    std::map<std::string, std::vector<FoundDevice>> m_found; ///< by group
};

} // namespace orva
