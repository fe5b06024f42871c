// Puts the library together: which drivers, operations and writers the session works with.
#pragma once

#include "scanlib/session/session.h"

namespace orva {

/// The parts of the installed library, real scanners before the virtual one.
SessionParts installedParts();

} // namespace orva
