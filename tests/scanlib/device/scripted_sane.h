// A table of SANE calls that answers from a script: options, frames, reads, faults, silence.
// Records who called what. One script at a time. The helper runs as a thread of the test: its
// messages and its memory are those of the real one.
#pragma once

#include "scanlib/device/sane/sane_driver_parts.h"
#include "scanlib/device/sane_host/sane_api.h"

#include <atomic>
#include <condition_variable>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace device_tests {

struct ScriptRead
{
    SANE_Status status = SANE_STATUS_GOOD;
    std::string data;
    bool silent = false; ///< returns only when the script is released, or cancelled if cancelWakes
};

struct ScriptFrame
{
    SANE_Status start = SANE_STATUS_GOOD;
    SANE_Parameters parameters {};
    std::vector<ScriptRead> reads; ///< then the end of the frame
};

struct ScriptOption
{
    std::string name;
    SANE_Value_Type type = SANE_TYPE_INT;
    SANE_Unit unit = SANE_UNIT_NONE;
    bool settable = true;
    std::vector<std::string> texts {};
    std::vector<int> numbers {};
    int min = 0;
    int max = 0; ///< range when larger than min
    std::string text {};
    double value = 0;
};

SANE_Parameters parameters(SANE_Frame format, int width, int lines, int depth, bool last = true);
/// A frame of whole grey lines, in reads of a size of its own.
ScriptFrame grayFrame(int width, int lines, char value);

class ScriptedSane
{
public:
    ScriptedSane();
    ~ScriptedSane();
    ScriptedSane(const ScriptedSane&) = delete;
    ScriptedSane& operator=(const ScriptedSane&) = delete;

    static orva::SaneApi api();
    /// Starts helpers on this script.
    orva::HostLauncher launcher();
    void addOption(const ScriptOption& option) { options.push_back(option); }
    ScriptOption& option(const std::string& name);
    int count(const std::string& call) const;
    void releaseSilence();

    struct Device
    {
        const char* name;
        const char* vendor;
        const char* model;
        const char* type;
    };
    std::vector<Device> devices { { "script:0", "Paperlane", "P100", "sheetfed scanner" } };
    std::vector<ScriptOption> options;
    std::deque<ScriptFrame> frames; ///< then the feeder is empty
    std::map<std::string, SANE_Status> openStatus;
    bool cancelWakes = true;
    std::atomic<bool> searchSilent { false };
    std::atomic<bool> openSilent { false };
    bool neverEmpty = false; ///< the first frame is fed again and again

    mutable std::mutex mutex;
    std::condition_variable changed;
    std::vector<std::string> calls;
    std::set<std::thread::id> threads; ///< of all calls but cancel, those of a search left out
    std::atomic<int> silent { 0 }; ///< calls that do not return, now
    std::atomic<int> hosts { 0 }; ///< started
    std::atomic<int> running { 0 };
    bool released = false;
    bool cancelled = false;
    ScriptFrame current;
    std::size_t nextRead = 0;
    struct Described
    {
        SANE_Option_Descriptor descriptor {};
        std::vector<const char*> texts;
        std::vector<SANE_Word> numbers;
        SANE_Range range {};
    };
    std::deque<Described> described;
};

} // namespace device_tests
