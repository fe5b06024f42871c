// Scanners that SANE drives. Nothing above this header sees sane.h.
#pragma once

#include "scanlib/device/device.h"

#include <memory>

namespace orva {

/// SANE_CONFIG_DIR of the environment is honoured. The SANE library is initialised at the first
/// enumeration or opening, once a process; drivers made later share its one thread.
/// Destroying the driver and its devices takes 2 s at the most, also when a scanner hangs.
std::unique_ptr<Driver> makeSaneDriver();

} // namespace orva
