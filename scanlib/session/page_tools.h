// The rooms below the session as functions, so that a job runs against scripted ones in tests.
#pragma once

#include "scanlib/ocr/text_recognition.h"
#include "scanlib/page/operations.h"
#include "scanlib/writers/writer.h"

#include <functional>
#include <memory>

namespace orva {

struct PageTools
{
    std::function<ImageSettings(const ImageParam&, ColorMode)> imageSettings;
    std::function<bool(const ImageSettings&)> needsWholeSheet;
    std::function<Status(PageGroup&, const ImageSettings&)> runOperations;
    std::function<const OutputFormat*(FileFormat)> findOutputFormat;
    /// May be empty: then there is neither text nor orientation.
    std::function<std::unique_ptr<TextRecognition>(const RecognitionSettings&)> makeTextRecognition;
};

} // namespace orva
