// The scripted device behind the fake library: one member a entry point, named by its symbol, and
// the script that sets what they answer.
#pragma once

#include "sdk/records.h"
#include "tests/fake_sdk/fake_job.h"

#include <array>
#include <atomic>
#include <deque>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace fake {

struct Device
{
    std::string name, vidPid, serial, version1, version2, deviceClass;
};

struct Paper
{
    std::string name;
    std::array<double, 4> extent {}; ///< left, top, width, height in millimetres
};

struct Resolution
{
    std::string name;
    int x = 0;
    int y = 0;
};

struct ForcedResult
{
    int code = 0;
    int times = -1; ///< -1 always
};

/// What a script can set. The key -1 of papers and resolutions stands for every source.
struct State
{
    std::vector<Device> devices;
    std::vector<std::string> sources;
    std::map<int, std::vector<Paper>> papers;
    std::map<int, std::vector<Resolution>> resolutions;
    std::vector<stFileTypeParam> fileTypes;
    std::string deviceInfo;
    bool deviceInfoTerminated = true;
    int sleepTime = 0;
    int autoOffTime = 0;
    int havePaper = 1;
    std::deque<int> buttons;
    std::map<std::string, ForcedResult> results;
    std::map<std::string, int> delaysMs;
    JobScript job;

    int device = -1;
    int source = 0;
    int colorMode = 0;
    Paper area;
    Resolution resolution { "200", 200, 200 };
    float prefeed = 0.0F;
    std::string folder; ///< szFilePath of the last SetFileParam
};

State factoryState();

/// Any thread.
class Scanner
{
public:
    Scanner();
    ~Scanner();
    Scanner(const Scanner&) = delete;
    Scanner& operator=(const Scanner&) = delete;

    /// Executes script lines; ends the process on a line that it does not understand. Gives whether
    /// one of them was "reset".
    bool runScript(const std::string& lines);
    /// The result that the script forces on the entry, after its scripted delay.
    std::optional<int> forcedResult(const std::string& entry);
    bool scanning() { return m_jobs.running(); }

#define ORVA_ENTRY(number, operation, symbol, need, parameters, arguments) int symbol parameters;
#include "sdk/entry_points.def"

private:
    void runLine(const std::string& line);
    void reset();
    const Device* currentDevice() const;
    const std::vector<Paper>& papers() const;
    const std::vector<Resolution>& resolutions() const;
    void readControl(const std::string& path);
    void stopControl();

    std::mutex m_mutex;
    State m_state;
    Jobs m_jobs;
    std::thread m_control;
    std::atomic<bool> m_stopControl { false };
};

} // namespace fake
