// The driver on a table of calls and limits of one's own; the public factory uses the real ones.
#pragma once

#include "scanlib/device/sane/sane_runtime.h"

#include <memory>

namespace orva {

std::unique_ptr<Driver> makeSaneDriver(std::shared_ptr<SaneRuntime> runtime);

} // namespace orva
