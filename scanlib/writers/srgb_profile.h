// The colour space of scanned pages, as an ICC profile that may be handed out with every file.
#pragma once

#include <string>

namespace orva {

/// IEC 61966-2-1 (sRGB) as an ICC.1:2001 display profile of three primaries and one tone curve.
std::string sRgbProfile();

} // namespace orva
