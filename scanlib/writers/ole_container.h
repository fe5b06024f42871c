// The container of old office files (compound file): a workbook stream and what is known about the
// document.
#pragma once

#include "scanlib/base/status.h"
#include "scanlib/writers/writer.h"

#include <cstdint>
#include <vector>

namespace orva {

/// The bytes of the whole file. kNoMemory, kInternal. Any thread.
Status oleFile(const std::vector<std::uint8_t>& workbook, const DocumentInfo& info,
    std::vector<std::uint8_t>& out);

} // namespace orva
