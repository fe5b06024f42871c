// The file orva-sane-models.conf: what an administrator says of a model whose driver has words or
// buttons that nobody knows. Sections "[part of vendor and model]", lines "key = value", "#" before
// a remark:
//   source.flatbed, source.feeder, source.duplex   the driver's word for this source
//   button.<option>                                1, 2, 4 or 8: what this option means
//   paper-sensor                                   the option that tells whether paper is loaded
#pragma once

#include "scanlib/device/sane/host_messages.h"

#include <filesystem>

namespace orva {

/// Lines of all sections that the name of the device contains; empty without a file. A line that
/// cannot be read is logged and left out.
ModelOverrides modelOverrides(const std::filesystem::path& file, const std::string& deviceName);

} // namespace orva
