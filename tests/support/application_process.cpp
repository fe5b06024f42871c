#include "tests/support/application_process.h"

#include "tests/support/sandbox.h"
#include "tests/support/wait.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <filesystem>
#include <stdexcept>

namespace {

constexpr char kProgram[] = TARVEX_BUILD_DIR "/app/TarvexBaseUI";

// In the child.
void placeOutput(ApplicationProcess::Output output, const std::string& file)
{
    const int out = ::open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    ::dup2(out, STDOUT_FILENO);
    ::dup2(out, STDERR_FILENO);
    if (output == ApplicationProcess::Output::kClosedPipe) {
        std::array<int, 2> ends {};
        if (::pipe(ends.data()) == 0) {
            ::dup2(ends[1], STDOUT_FILENO);
            ::close(ends[0]);
            ::close(ends[1]);
        }
    } else if (output == ApplicationProcess::Output::kNone) {
        ::close(STDIN_FILENO);
        ::close(STDOUT_FILENO);
        ::close(STDERR_FILENO);
    }
}

} // namespace

ApplicationProcess::ApplicationProcess(
    const std::map<std::string, std::string>& environment, Output output)
{
    static int number = 0;
    m_output = Sandbox::path("application-" + std::to_string(++number) + ".out");
    const std::string folder = Sandbox::path("working-folder");
    std::filesystem::create_directories(folder);
    if (::access(kProgram, X_OK) != 0) {
        throw std::runtime_error(std::string("not built: ") + kProgram);
    }
    m_process = ::fork();
    if (m_process != 0) {
        return;
    }
    placeOutput(output, m_output);
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    for (const auto& [name, value] : environment) {
        ::setenv(name.c_str(), value.c_str(), 1);
    }
    if (::chdir(folder.c_str()) == 0) {
        ::execl(kProgram, kProgram, nullptr);
    }
    ::_exit(127);
}

ApplicationProcess::~ApplicationProcess()
{
    if (!ended()) {
        ::kill(m_process, SIGKILL);
        ::waitpid(m_process, nullptr, 0);
    }
}

std::string ApplicationProcess::output() const
{
    return readBytes(m_output);
}

bool ApplicationProcess::waitForOutput(const std::string& text, std::chrono::milliseconds limit)
{
    const auto printed = [&] { return output().find(text) != std::string::npos; };
    waitUntil([&] { return printed() || ended(); }, limit);
    return printed();
}

int ApplicationProcess::waitForEnd(std::chrono::milliseconds limit)
{
    waitUntil([this] { return ended(); }, limit);
    return m_status;
}

void ApplicationProcess::signal(int number) const
{
    ::kill(m_process, number);
}

bool ApplicationProcess::ended()
{
    int status = 0;
    if (m_status < 0 && ::waitpid(m_process, &status, WNOHANG) == m_process) {
        m_status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
    return m_status >= 0;
}
