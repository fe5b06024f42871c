// SANE's own "test" driver as the only one of this process, with its fault options set from the
// test.
#pragma once

#include "scanlib/device/sane/sane_driver_parts.h"

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace device_tests {

struct BackendWishes
{
    /// Options of the driver, set right after opening: name and text of the value.
    std::vector<std::pair<std::string, std::string>> options;
    /// Set before this start (from 1); 0 never.
    int faultAtStart = 0;
    std::string fault = "Default"; ///< value of "read-return-value"
};

/// What the next opening and the scans after it shall do.
void wish(const BackendWishes& wishes);
/// One for the whole process: SANE is initialised once. Short limits.
std::shared_ptr<orva::SaneRuntime> testBackendRuntime();
/// The folder with dll.conf that SANE_CONFIG_DIR names; for scanimage.
std::string testBackendFolder();

} // namespace device_tests
