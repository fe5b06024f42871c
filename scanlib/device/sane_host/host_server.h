// The helper itself: one thread that makes every SANE call, and the one that called run, which
// reads what the library asks. Only sane_cancel is called from the latter.
#pragma once

#include "scanlib/device/sane_host/ring_sink.h"
#include "scanlib/device/sane_host/sane_scanner.h"

#include <condition_variable>
#include <deque>
#include <thread>

namespace orva {

struct HostPauses
{
    ScannerPauses scanner;
    /// A call that runs when the batch is cancelled may end by itself for so long.
    std::chrono::milliseconds cancelPatience { 300 };
    /// At the end, for the call that runs and for closing.
    std::chrono::milliseconds ending { 1'500 };
};

class HostServer
{
public:
    /// The socket and the ring stay the caller's.
    HostServer(const SaneApi& api, const HostPauses& pauses, int socket, std::uint8_t* ring);
    /// Waits for the SANE thread.
    ~HostServer();
    HostServer(const HostServer&) = delete;
    HostServer& operator=(const HostServer&) = delete;

    /// Serves until the library closes its end; then the scanner is closed. false when a driver
    /// does not return in time: whoever called must end the process.
    bool run();
    /// Any thread: a line for the library's log; lost when the library does not read.
    void log(const std::string& text);

private:
    void receiveAll();
    void take(const WireMessage& message);
    bool cancelIsDue() const;

    // SANE thread
    void work();
    void serve(const WireMessage& request);
    void answer(std::uint32_t id, const Status& status, WireWriter details = {});
    void send(HostMessage kind, std::uint32_t id, std::vector<std::uint8_t> body);
    Status initialise();
    void search(std::uint32_t id);
    void open(const WireMessage& request);
    void nextSide(std::uint32_t id);

    const SaneApi m_api;
    const HostPauses m_pauses;
    const int m_socket;
    bool m_initialised = false;
    std::uint32_t m_side = 0; ///< the request that lines belong to
    RingSink m_sink;
    SaneScanner m_scanner;

    unsigned m_cancelBatch = 0; ///< receiving thread: 0 none wanted
    std::chrono::steady_clock::time_point m_cancelSince;

    std::mutex m_mutex; ///< the rest
    std::condition_variable m_changed;
    std::deque<WireMessage> m_requests;
    bool m_ending = false;
    bool m_ended = false;
    std::thread m_thread;
};

} // namespace orva
