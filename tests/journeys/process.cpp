#include "tests/journeys/process.h"

#include "tests/support/sandbox.h"
#include "tests/support/wait.h"

#include <fcntl.h>
#include <linux/capability.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace {

/// What is executed next lacks root's right to pass over permissions.
void obeyPermissions()
{
    for (const int right : { CAP_DAC_OVERRIDE, CAP_DAC_READ_SEARCH }) {
        if (::geteuid() == 0 && ::prctl(PR_CAPBSET_DROP, right, 0, 0, 0) != 0) {
            ::_exit(126);
        }
    }
}

/// A name space of its own, so that the disk goes with the program; whoever is not root needs
/// to be the master of one for that.
void mountSmallDisk(const std::string& folder)
{
    const std::string user = std::to_string(::geteuid());
    const std::string map = user + ' ' + user + " 1";
    const bool isRoot = ::geteuid() == 0;
    const std::string size = "size=" + std::to_string(kSmallDiskKb) + "k";
    if (::unshare(CLONE_NEWNS | (isRoot ? 0 : CLONE_NEWUSER)) != 0
        || (!isRoot && !(std::ofstream("/proc/self/uid_map") << map << std::flush))
        || ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0
        || ::mount("none", folder.c_str(), "tmpfs", 0, size.c_str()) != 0) {
        ::_exit(126);
    }
}

[[noreturn]] void execute(const Command& command, const std::string& outputFile, pid_t parent)
{
    const int out = ::open(outputFile.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
    const int in = ::open("/dev/null", O_RDONLY);
    ::dup2(in, STDIN_FILENO);
    ::dup2(out, STDOUT_FILENO);
    ::dup2(out, STDERR_FILENO);
    for (const auto& [name, value] : command.environment) {
        value ? ::setenv(name.c_str(), value->c_str(), 1) : ::unsetenv(name.c_str());
    }
    std::vector<char*> words;
    for (const std::string& word : command.words) {
        words.push_back(const_cast<char*>(word.c_str()));
    }
    words.push_back(nullptr);
    if (!command.smallDisk.empty()) {
        mountSmallDisk(command.smallDisk);
    }
    if (command.obeysPermissions) {
        obeyPermissions();
    }
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() == parent && ::chdir(command.folder.c_str()) == 0) {
        ::execvp(words[0], words.data());
    }
    ::_exit(127);
}

} // namespace

Process::Process(const Command& command, const std::string& outputFile)
    : m_outputFile(outputFile)
{
    const pid_t parent = ::getpid();
    m_id = ::fork();
    if (m_id == 0) {
        execute(command, outputFile, parent);
    }
    if (m_id < 0) {
        throw std::system_error(errno, std::generic_category(), "fork");
    }
}

Process::~Process()
{
    if (!ended()) {
        ::kill(m_id, SIGKILL);
        ::waitpid(m_id, nullptr, 0);
    }
}

std::string Process::output() const
{
    return readBytes(m_outputFile);
}

std::string Process::inside(const std::string& path) const
{
    return "/proc/" + std::to_string(m_id) + "/root" + path;
}

bool Process::waitForOutput(const std::string& text, std::chrono::milliseconds limit)
{
    waitUntil([&] { return countInOutput(text) > 0 || ended(); }, limit);
    return countInOutput(text) > 0;
}

int Process::countInOutput(const std::string& text) const
{
    const std::string all = output();
    int count = 0;
    for (std::size_t at = all.find(text); at != std::string::npos; at = all.find(text, at + 1)) {
        ++count;
    }
    return count;
}

int Process::waitForEnd(std::chrono::milliseconds limit)
{
    waitUntil([this] { return ended(); }, limit);
    return m_status;
}

void Process::signal(int number) const
{
    ::kill(m_id, number);
}

bool Process::ended()
{
    int status = 0;
    if (m_status < 0 && ::waitpid(m_id, &status, WNOHANG) == m_id) {
        m_status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
    return m_status >= 0;
}

Finished run(const Command& command, std::chrono::milliseconds limit)
{
    static int number = 0;
    const std::string file = Sandbox::path("run-" + std::to_string(++number) + ".out");
    Finished finished;
    {
        Process process(command, file);
        finished.status = process.waitForEnd(limit);
    }
    finished.output = readBytes(file);
    std::error_code ignored;
    std::filesystem::remove(file, ignored);
    return finished;
}
