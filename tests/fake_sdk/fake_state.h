// What a script can set in the fake library, and how its lines are read.
#pragma once

#include "sdk/records.h"
#include "tests/fake_sdk/fake_job.h"

#include <array>
#include <deque>
#include <map>
#include <string>
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

struct Source
{
    std::string name;
};

struct ForcedResult
{
    int code = 0;
    int times = -1; ///< -1 always
};

/// The key kCommon of papers and resolutions stands for every source.
inline constexpr int kCommon = -1;

struct State
{
    std::vector<Device> devices;
    std::vector<Source> sources;
    std::map<int, std::vector<Paper>> papers;
    std::map<int, std::vector<Resolution>> resolutions;
    std::vector<stFileTypeParam> fileTypes;
    std::string deviceInfo;
    bool deviceInfoTerminated = true;
    int sleepTime = 15;
    int autoOffTime = 4;
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

/// One script line that sets something; throws on a line that is none.
void applyLine(State& state, const std::string& line);
/// "step|..." or "fire|...".
Step stepFrom(const std::string& line);

template <typename Rows>
bool holds(const Rows& rows, int index)
{
    return index >= 0 && static_cast<std::size_t>(index) < rows.size();
}

template <typename Rows>
const auto& rowAt(const Rows& rows, int index)
{
    return rows[static_cast<std::size_t>(index)];
}

/// The source's own rows, else those of all sources.
template <typename Row>
std::vector<Row>& rowsOf(std::map<int, std::vector<Row>>& all, int source)
{
    return all.count(source) != 0 ? all[source] : all[kCommon];
}

} // namespace fake
