// What a PDF says of itself: the same facts in the information dictionary and in XMP.
#pragma once

#include "scanlib/writers/writer.h"

#include <string>

namespace orva {

/// D:YYYYMMDDHHmmSS+08'00', local time with its distance from UTC (ISO 32000-1, 7.9.4).
std::string pdfDate(std::int64_t unixSeconds);
/// XMP packet; claims PDF/A-2b (ISO 19005-2), which the writer's files are built for.
std::string xmpPacket(const DocumentInfo& info);

} // namespace orva
