// From the record of the border to the output settings of a job, with every text checked.
#pragma once

#include "scanlib/session/job_settings.h"
#include "scanlib/session/page_tools.h"
#include "sdk/records.h"

namespace orva {

/// kBadFileName for a text without terminator, an empty or relative folder or a part that no file
/// name can hold; kFormatNotSupported. A format of single pages turns multi-page off.
Status outputSettingsFrom(const FileParam& param, const PageTools& tools, OutputSettings& output);

} // namespace orva
