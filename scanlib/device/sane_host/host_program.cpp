#include "scanlib/device/sane_host/host_program.h"

#include "scanlib/base/library_log.h"
#include "scanlib/device/sane_host/host_server.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace orva {

namespace {

constexpr unsigned kLastSeconds = 2; ///< to live without the library, whatever hangs

volatile pid_t g_library = 0;
HostServer* g_server = nullptr;

/// The signal comes when the thread that started this process ends, too; only the end of the whole
/// library counts. The alarm's default action ends the process.
void onLibraryGone(int)
{
    if (::getppid() != g_library) {
        ::alarm(kLastSeconds);
    }
}

void logToLibrary(const char* text)
{
    if (g_server != nullptr) {
        g_server->log(text);
    }
}

/// Limits SANE to the drivers named: a configuration folder of its own in front of the others. It
/// is read once, by sane_init, and does not stay any longer: this process may be killed at any
/// time.
class BackendFolder
{
public:
    explicit BackendFolder(const std::string& backends)
    {
        if (backends.empty()) {
            return;
        }
        std::error_code error;
        std::string name = (std::filesystem::temp_directory_path(error) / "orva-sane-XXXXXX");
        if (::mkdtemp(name.data()) == nullptr) {
            return;
        }
        m_folder = name;
        std::filesystem::create_directory(m_folder / "dll.d", error);
        std::ofstream list(m_folder / "dll.conf");
        for (const char c : backends) {
            list << (c == ',' ? '\n' : c);
        }
        list << '\n';
        const char* const before = std::getenv("SANE_CONFIG_DIR");
        const std::string folders = name + ":" + (before != nullptr ? before : "");
        ::setenv("SANE_CONFIG_DIR", folders.c_str(), 1);
    }
    ~BackendFolder() { remove(); }
    BackendFolder(const BackendFolder&) = delete;
    BackendFolder& operator=(const BackendFolder&) = delete;

    void remove()
    {
        std::error_code error;
        if (!m_folder.empty()) {
            std::filesystem::remove_all(m_folder, error);
        }
        m_folder.clear();
    }

private:
    std::filesystem::path m_folder;
};

const SaneApi* g_api = nullptr;
BackendFolder* g_folder = nullptr;

SANE_Status initialiseAndRemoveFolder(SANE_Int* version, SANE_Auth_Callback authorize)
{
    const SANE_Status status = g_api->init(version, authorize);
    g_folder->remove();
    return status;
}

void outliveNobody(pid_t library)
{
    g_library = library;
    struct sigaction action
    {
    };
    action.sa_handler = onLibraryGone;
    ::sigaction(SIGHUP, &action, nullptr);
    std::signal(SIGPIPE, SIG_IGN); // a network driver's connection may break
    ::prctl(PR_SET_PDEATHSIG, SIGHUP);
    if (::getppid() != library) { // already gone
        ::_exit(0);
    }
}

} // namespace

int runSaneHost(int argumentCount, char** arguments, const SaneApi& api)
{
    if (argumentCount != 3) {
        std::fprintf(stderr, "started by the scanner library only\n");
        return 2;
    }
    outliveNobody(static_cast<pid_t>(std::atoi(arguments[1])));
    // not for the programs that drivers start
    ::fcntl(kHostSocketFd, F_SETFD, FD_CLOEXEC);
    ::fcntl(kHostRingFd, F_SETFD, FD_CLOEXEC);
    void* const ring =
        ::mmap(nullptr, kRingBytes, PROT_READ | PROT_WRITE, MAP_SHARED, kHostRingFd, 0);
    if (ring == MAP_FAILED) {
        return 1;
    }
    BackendFolder folder(arguments[2]);
    g_folder = &folder;
    g_api = &api;
    SaneApi calls = api;
    calls.init = initialiseAndRemoveFolder;
    HostServer server(calls, HostPauses(), kHostSocketFd, static_cast<std::uint8_t*>(ring));
    g_server = &server;
    setLibraryLogSink(logToLibrary);
    const bool inOrder = server.run();
    ::alarm(kLastSeconds);
    if (!inOrder) {
        ::_exit(3); // with the driver still in its call
    }
    setLibraryLogSink(nullptr);
    g_server = nullptr;
    return 0;
}

} // namespace orva
