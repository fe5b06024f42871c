// The scanner that is always there: it feeds page images from a folder, keeps times, buttons and
// faults in a state folder that the command virtual-scanner writes as well. No hardware, no
// sockets.
#pragma once

#include "scanlib/base/library_paths.h"
#include "scanlib/device/device.h"

#include <memory>

namespace orva {

/// Uses paths.virtualScanner (made when missing) and paths.sampleSheets (only read).
std::unique_ptr<Driver> makeVirtualDriver(const LibraryPaths& paths);

} // namespace orva
