// The helper that SANE runs in: started, watched and ended. Whatever its drivers do, it never
// outlives the library, and nobody waits for it without a limit.
#pragma once

#include "scanlib/base/status.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

namespace orva {

/// A file descriptor of ours.
class OwnedFd
{
public:
    OwnedFd() = default;
    explicit OwnedFd(int fd)
        : m_fd(fd)
    {
    }
    ~OwnedFd() { reset(); }
    OwnedFd(OwnedFd&& other) noexcept
        : m_fd(other.release())
    {
    }
    OwnedFd& operator=(OwnedFd&& other) noexcept
    {
        reset(other.release());
        return *this;
    }
    int get() const { return m_fd; }
    int release();
    void reset(int fd = -1);

private:
    int m_fd = -1;
};

/// What library and helper share: a socket pair and the memory that lines are handed over in.
struct HostChannel
{
    OwnedFd ours;
    OwnedFd theirs;
    OwnedFd ring;
};
Status makeChannel(HostChannel& channel);

/// The shared memory as one process sees it; nullptr when it cannot be mapped.
class RingMapping
{
public:
    explicit RingMapping(int fd);
    ~RingMapping();
    RingMapping(const RingMapping&) = delete;
    RingMapping& operator=(const RingMapping&) = delete;
    std::uint8_t* data() const { return m_data; }

private:
    std::uint8_t* m_data = nullptr;
};

/// A helper that was started: a process, or what stands for one in a test. One thread.
class SaneHost
{
public:
    virtual ~SaneHost() = default;
    virtual bool ended() = 0;
    /// true when it has ended within the limit.
    virtual bool waitEnded(std::chrono::milliseconds limit) = 0;
    virtual void kill() = 0;
    /// "signal 11 (Segmentation fault)" or "exit status 1"; empty when it ended in order.
    virtual std::string fault() const = 0;
};

/// Starts a helper on its end of the channel. backends limits SANE to these, separated by commas;
/// empty: to what the system's configuration lists.
using HostLauncher = std::function<Status(
    const HostChannel& channel, const std::string& backends, std::unique_ptr<SaneHost>& host)>;

HostLauncher processLauncher(std::filesystem::path program);

} // namespace orva
