// A program that the journey starts: its output, its end, and its death with the test.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <vector>

struct Command
{
    std::vector<std::string> words; ///< program, found in PATH, and its arguments
    std::map<std::string, std::optional<std::string>> environment; ///< no value: removed
    std::string folder = "/"; ///< working folder
    bool obeysPermissions = false; ///< root, too, is held by the permissions of files
    std::string smallDisk; ///< this folder is a disk of kSmallDiskKb, for this program alone
};

inline constexpr int kSmallDiskKb = 2000;

/// Ends with the object, and also when the test process dies.
class Process
{
public:
    /// Standard output and error go to the file.
    Process(const Command& command, const std::string& outputFile);
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    pid_t id() const { return m_id; }
    /// A path as the program sees it, for looking into its small disk while it runs.
    std::string inside(const std::string& path) const;
    bool running() { return !ended(); }
    std::string output() const;
    bool waitForOutput(const std::string& text, std::chrono::milliseconds limit);
    /// How often the text stands in the output.
    int countInOutput(const std::string& text) const;
    /// The exit status, 128 + n after signal n, -1 when it still runs after the limit.
    int waitForEnd(std::chrono::milliseconds limit);
    void signal(int number) const;

private:
    bool ended();

    pid_t m_id = 0;
    int m_status = -1;
    std::string m_outputFile;
};

struct Finished
{
    int status = -1; ///< as Process::waitForEnd; -1: did not end and was killed
    std::string output; ///< standard output and error
};

/// Runs a short program to its end.
Finished run(const Command& command, std::chrono::milliseconds limit = std::chrono::seconds(20));
