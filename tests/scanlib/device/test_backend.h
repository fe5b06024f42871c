// SANE's own "test" driver as the only one, in a real helper process that does what a test wishes.
#pragma once

#include "scanlib/device/sane/sane_driver_parts.h"

#include <string>
#include <utility>
#include <vector>

namespace device_tests {

/// Options of the driver (name, value), and the wishes of test_host_main.cpp.
using BackendWishes = std::vector<std::pair<std::string, std::string>>;

/// What the helpers that are started from now on shall do.
void wish(const BackendWishes& wishes);
/// Short limits; the helper of the tests.
orva::SaneParts testBackendParts();
/// The folder with dll.conf that SANE_CONFIG_DIR names; for scanimage.
std::string testBackendFolder();
/// Process numbers of the helpers that run now below a process; 0: below this one.
std::vector<int> runningHelpers(int ofProcess = 0);
bool isRunning(int process);

} // namespace device_tests
