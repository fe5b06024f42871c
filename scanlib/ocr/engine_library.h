// Finds the recogniser in the library that holds it, when it is first needed.
#pragma once

#include "scanlib/base/status.h"
#include "scanlib/ocr/text_engine.h"

#include <filesystem>
#include <memory>

namespace orva {

/// A recogniser without models. The library is loaded once and stays in the process: Tesseract
/// keeps tables to its end, and a reading may still be on its way. kModelMissing when the library,
/// or what it stands on, is missing or is of another build; the detail says what the loader said.
/// Any thread.
Status makeEngine(const std::filesystem::path& library, std::unique_ptr<TextEngine>& out);

} // namespace orva
