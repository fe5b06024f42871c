// What the helper program does, with the SANE library that is linked or calls of a test's own.
#pragma once

#include "scanlib/device/sane_host/sane_api.h"

namespace orva {

/// Arguments: process number of the library's process, drivers separated by commas or "". Socket
/// and shared memory come as the descriptors that host_messages.h names. The exit status.
int runSaneHost(int argumentCount, char** arguments, const SaneApi& api);

} // namespace orva
