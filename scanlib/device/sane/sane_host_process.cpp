#include "scanlib/device/sane/sane_host_process.h"

#include "scanlib/base/library_log.h"
#include "scanlib/device/sane/host_messages.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <thread>

namespace orva {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

class HostProcess final : public SaneHost
{
public:
    explicit HostProcess(pid_t pid)
        : m_pid(pid)
        , m_exit(static_cast<int>(::syscall(SYS_pidfd_open, pid, 0)))
    {
    }
    ~HostProcess() override
    {
        kill();
        // a process inside the kernel may be out of reach even so
        if (!waitEnded(std::chrono::seconds(1))) {
            libraryLog("sane: helper %d cannot be ended", static_cast<int>(m_pid));
        }
    }
    HostProcess(const HostProcess&) = delete;
    HostProcess& operator=(const HostProcess&) = delete;

    bool ended() override
    {
        int status = 0;
        if (!m_ended) {
            const pid_t pid = ::waitpid(m_pid, &status, WNOHANG);
            m_ended = pid == m_pid || (pid < 0 && errno == ECHILD); // the latter: reaped by others
            m_status = pid == m_pid ? status : 0;
        }
        return m_ended;
    }

    bool waitEnded(milliseconds limit) override
    {
        const Clock::time_point deadline = Clock::now() + limit;
        while (!ended()) {
            const auto left =
                std::chrono::duration_cast<milliseconds>(deadline - Clock::now()).count();
            if (left <= 0) {
                return false;
            }
            constexpr long kLook = 10; // where the kernel has no descriptor of a process
            pollfd poll { m_exit.get(), POLLIN, 0 };
            ::poll(&poll, m_exit.get() >= 0 ? 1 : 0,
                static_cast<int>(m_exit.get() >= 0 ? left : std::min(left, kLook)));
        }
        return true;
    }

    void kill() override
    {
        if (!ended()) {
            ::kill(-m_pid, SIGKILL); // with the readers that drivers fork
            ::kill(m_pid, SIGKILL);
        }
    }

    std::string fault() const override
    {
        if (m_ended && WIFSIGNALED(m_status)) {
            const int number = WTERMSIG(m_status);
            return "signal " + std::to_string(number) + " (" + ::strsignal(number) + ")";
        }
        return m_ended && WEXITSTATUS(m_status) != 0
            ? "exit status " + std::to_string(WEXITSTATUS(m_status))
            : "";
    }

private:
    const pid_t m_pid;
    const OwnedFd m_exit;
    bool m_ended = false;
    int m_status = 0;
};

/// Signals as a program expects them; a group of its own, so that its children can be ended too.
class SpawnAttributes
{
public:
    SpawnAttributes()
    {
        ::posix_spawnattr_init(&m_attributes);
        sigset_t none;
        sigset_t all;
        ::sigemptyset(&none);
        ::sigfillset(&all);
        ::posix_spawnattr_setsigmask(&m_attributes, &none);
        ::posix_spawnattr_setsigdefault(&m_attributes, &all);
        ::posix_spawnattr_setpgroup(&m_attributes, 0);
        ::posix_spawnattr_setflags(
            &m_attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP);
    }
    ~SpawnAttributes() { ::posix_spawnattr_destroy(&m_attributes); }
    SpawnAttributes(const SpawnAttributes&) = delete;
    SpawnAttributes& operator=(const SpawnAttributes&) = delete;
    const posix_spawnattr_t* get() const { return &m_attributes; }

private:
    posix_spawnattr_t m_attributes {};
};

class SpawnFiles
{
public:
    SpawnFiles(int socket, int ring)
    {
        ::posix_spawn_file_actions_init(&m_actions);
        ::posix_spawn_file_actions_addopen(&m_actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        ::posix_spawn_file_actions_adddup2(&m_actions, socket, kHostSocketFd);
        ::posix_spawn_file_actions_adddup2(&m_actions, ring, kHostRingFd);
        ::posix_spawn_file_actions_addclosefrom_np(&m_actions, kHostRingFd + 1);
    }
    ~SpawnFiles() { ::posix_spawn_file_actions_destroy(&m_actions); }
    SpawnFiles(const SpawnFiles&) = delete;
    SpawnFiles& operator=(const SpawnFiles&) = delete;
    const posix_spawn_file_actions_t* get() const { return &m_actions; }

private:
    posix_spawn_file_actions_t m_actions {};
};

Status failure(const char* what, int error)
{
    return { kDriverCrashed, std::string(what) + ": " + std::strerror(error) };
}

} // namespace

int OwnedFd::release()
{
    const int fd = m_fd;
    m_fd = -1;
    return fd;
}

void OwnedFd::reset(int fd)
{
    if (m_fd >= 0) {
        ::close(m_fd);
    }
    m_fd = fd;
}

Status makeChannel(HostChannel& channel)
{
    std::array<int, 2> ends {};
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0) {
        return failure("socket pair of the SANE helper", errno);
    }
    channel.ours.reset(ends[0]);
    channel.theirs.reset(ends[1]);
    channel.ring.reset(::memfd_create("orva-sane-lines", MFD_CLOEXEC));
    if (channel.ring.get() < 0
        || ::ftruncate(channel.ring.get(), static_cast<off_t>(kRingBytes)) != 0) {
        return failure("shared memory of the SANE helper", errno);
    }
    return {};
}

RingMapping::RingMapping(int fd)
{
    void* const data = ::mmap(nullptr, kRingBytes, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    m_data = data != MAP_FAILED ? static_cast<std::uint8_t*>(data) : nullptr;
}

RingMapping::~RingMapping()
{
    if (m_data != nullptr) {
        ::munmap(m_data, kRingBytes);
    }
}

HostLauncher processLauncher(std::filesystem::path program)
{
    return [program = std::move(program)](const HostChannel& channel, const std::string& backends,
               std::unique_ptr<SaneHost>& host) -> Status {
        // beyond the numbers that they are given, so that one does not overwrite the other
        const OwnedFd socket(::fcntl(channel.theirs.get(), F_DUPFD_CLOEXEC, kHostRingFd + 1));
        const OwnedFd ring(::fcntl(channel.ring.get(), F_DUPFD_CLOEXEC, kHostRingFd + 1));
        if (socket.get() < 0 || ring.get() < 0) {
            return failure("start of the SANE helper", errno);
        }
        std::array<std::string, 3> words { program.string(), std::to_string(::getpid()), backends };
        std::array<char*, 4> arguments { words[0].data(), words[1].data(), words[2].data(),
            nullptr };
        const SpawnAttributes attributes;
        const SpawnFiles files(socket.get(), ring.get());
        pid_t pid = 0;
        const int error = ::posix_spawn(
            &pid, program.c_str(), files.get(), attributes.get(), arguments.data(), environ);
        if (error != 0) {
            return failure(("start of " + program.string()).c_str(), error);
        }
        host = std::make_unique<HostProcess>(pid);
        return {};
    };
}

} // namespace orva
