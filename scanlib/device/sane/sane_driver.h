// Scanners that SANE drives, in a helper process each: no driver's code runs in this one. Nothing
// above this header knows SANE.
#pragma once

#include "scanlib/device/device.h"

#include <filesystem>
#include <memory>

namespace orva {

/// host: the program orva-sane-host. models: orva-sane-models.conf, need not exist.
/// SANE_CONFIG_DIR of the environment is honoured. Destroying a device takes 2 s at the most, also
/// when the scanner hangs.
std::unique_ptr<Driver> makeSaneDriver(
    const std::filesystem::path& host, const std::filesystem::path& models);

} // namespace orva
