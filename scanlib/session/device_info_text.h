// The device information as the application reads it: one JSON object with "InSleep", "AutoOff",
// "Prefeed" and "IsHigh".
#pragma once

#include "scanlib/device/device.h"

#include <string>

namespace orva {

/// Below 1,024 bytes, terminator included.
std::string deviceInfoText(const DeviceTiming& timing);

} // namespace orva
