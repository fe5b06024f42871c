// The driver with helpers and limits of one's own; the public factory starts the installed program.
#pragma once

#include "scanlib/device/sane/sane_device.h"

namespace orva {

std::unique_ptr<Driver> makeSaneDriver(const SaneParts& parts);

} // namespace orva
