// The executable itself, in a process of its own that has nobody to print to.
#include "app/install_paths.h"
#include "tests/fake_sdk/fake_sdk_control.h"
#include "tests/support/sandbox.h"
#include "tests/support/wait.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>

namespace {

constexpr char kProgram[] = TARVEX_BUILD_DIR "/app/TarvexBaseUI";

// In the child: standard output is a pipe that nobody reads, or nothing at all is open.
[[noreturn]] void runProgram(bool closedPipe)
{
    int ends[2] = {};
    if (closedPipe && ::pipe(ends) == 0) {
        ::dup2(ends[1], STDOUT_FILENO);
        ::close(ends[0]);
        ::close(ends[1]);
    } else {
        for (const int stream : { STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO }) {
            ::close(stream);
        }
    }
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    ::execl(kProgram, kProgram, nullptr);
    ::_exit(127);
}

} // namespace

TEST(Application, GoesOnWhenNobodyReadsWhatItPrints)
{
    const Sandbox sandbox;
    FakeSdk(FakeSdk::Variant::kComplete).install();
    const auto searched = [] {
        return Sandbox::runLog().find("[func:getOnLineScanDevices]") != std::string::npos;
    };
    for (const bool closedPipe : { true, false }) {
        std::filesystem::remove(Sandbox::runLogFile());
        const pid_t process = ::fork();
        if (process == 0) {
            runProgram(closedPipe);
        }
        EXPECT_TRUE(waitUntil(searched, std::chrono::seconds(20)));
        const auto ended = [&] { return ::waitpid(process, nullptr, WNOHANG) == process; };
        const bool gone = waitUntil(ended, std::chrono::milliseconds(300));
        EXPECT_FALSE(gone) << "it runs on";
        EXPECT_EQ(readBytes(std::string(install_paths::kConfigFolder) + "TarvexBaseUI.pid"),
            std::to_string(process) + std::string(1, '\0'))
            << "no printed line in it";
        if (!gone) {
            ::kill(process, SIGKILL);
            ::waitpid(process, nullptr, 0);
        }
    }
}
