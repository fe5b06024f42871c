// Runs the real executable in a process of its own, without a display, on the paths of the sandbox.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <map>
#include <string>

/// Needs a Sandbox. Its test must depend on the target TarvexBaseUI. Ends the process when it goes.
class ApplicationProcess
{
public:
    enum class Output
    {
        kFile, ///< standard output and error
        kClosedPipe, ///< standard output; error goes to the file
        kNone ///< not even a standard input is open
    };

    /// Starts it at once, in an empty working folder.
    explicit ApplicationProcess(
        const std::map<std::string, std::string>& environment = {}, Output output = Output::kFile);
    ~ApplicationProcess();
    ApplicationProcess(const ApplicationProcess&) = delete;
    ApplicationProcess& operator=(const ApplicationProcess&) = delete;

    pid_t process() const { return m_process; }
    /// What it has printed so far.
    std::string output() const;
    /// False when the text has not been printed within the limit or the process ended without it.
    bool waitForOutput(
        const std::string& text, std::chrono::milliseconds limit = std::chrono::seconds(20));
    /// Waits for its end: the exit status, 128 + n after signal n, -1 when it still runs.
    int waitForEnd(std::chrono::milliseconds limit = std::chrono::seconds(20));
    void signal(int number) const;

private:
    bool ended();

    pid_t m_process = 0;
    int m_status = -1;
    std::string m_output;
};
