// What a scanner tells about its timing settings: the records, and how they are read from the JSON
// text of the library's GetDevInfo.
#pragma once

#include <cJSON.h>

/// One timing capability. Units of the times: minutes or hours, see chUnit.
struct stSleep_AutoOff
{
    bool nEnable = false; ///< the device supports this setting
    int nMax = 0;
    int nMin = 0; ///< KEPT: its JSON key is spelled "nMix"
    int nStep = 0;
    int chUnit = 0; ///< kUnitMinutes or kUnitHours
    int value = 0; ///< current value

    static constexpr int kUnitMinutes = 'm';
    static constexpr int kUnitHours = 'h';
};

struct structPrefeed
{
    bool nCap = false; ///< the device has pre-feed
    bool nEnable = false; ///< it is switched on
    float value = 0.0F; ///< pre-feed time
};

namespace device_info_json {

inline constexpr int kNoTree = -604;
inline constexpr int kNotRead = -605; ///< a key is missing, or the text is not JSON

/// Read the object `key` of the tree. Every member may be a number or a string that holds one. The
/// first missing member gives kNotRead; the fields before it are set by then. Any thread.
[[nodiscard]] int readTimes(const cJSON* root, const char* key, stSleep_AutoOff& out);
/// Throws std::invalid_argument or std::out_of_range ("stof") when "value" is a string that holds
/// no number of type float.
[[nodiscard]] int readPrefeed(const cJSON* root, const char* key, structPrefeed& out);
/// An integer member of the tree itself; false, and nothing changed, when it is missing.
[[nodiscard]] bool readInteger(const cJSON* root, const char* key, int& out);

} // namespace device_info_json
