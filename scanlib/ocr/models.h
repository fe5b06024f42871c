// Where the models of the recognition lie, and which of those that are asked for are missing.
#pragma once

#include "scanlib/base/status.h"
#include "scanlib/ocr/text_recognition.h"

#include <filesystem>
#include <string>

namespace orva {

/// Detects which way up a page is.
inline constexpr const char* kOrientationModel = "osd";

/// The folder that holds every model of the list ("a+b"). kModelMissing names those that are not
/// there and the packages that bring them.
Status findModels(
    const RecognitionSettings& settings, const std::string& names, std::filesystem::path& folder);

} // namespace orva
