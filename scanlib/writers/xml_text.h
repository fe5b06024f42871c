// Text as XML content.
#pragma once

#include <string>

namespace orva {

/// UTF-8 with the characters that XML keeps for itself replaced; control characters become blanks.
std::string xmlEscaped(const std::string& text);

} // namespace orva
