// The library's settings file, orva-sdk.conf: lines "key = value", "#" before a remark.
#pragma once

#include "scanlib/ocr/text_recognition.h"
#include "scanlib/session/job_settings.h"

#include <chrono>
#include <filesystem>

namespace orva {

/// What a system administrator may set.
struct LibraryConfig
{
    PipelineLimits limits; ///< workers 0 to 64, queue_megabytes 16 to 65,536
    std::chrono::milliseconds listingLimit { 4000 }; ///< search_limit_ms 100 to 60,000
    RecognitionSettings recognition; ///< ocr_languages "a" or "a+b"; ocr_models, an absolute folder
};

/// What the file says; the given values where it says nothing. A line that is unknown or out of
/// range is logged and left out, a missing file is an empty one.
LibraryConfig readLibraryConfig(const std::filesystem::path& file, const LibraryConfig& otherwise);

} // namespace orva
