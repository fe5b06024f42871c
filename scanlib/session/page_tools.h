// The rooms below the session as functions, so that a job runs against scripted ones in tests.
#pragma once

#include "scanlib/page/operations.h"
#include "scanlib/writers/writer.h"

#include <functional>

namespace orva {

struct PageTools
{
    std::function<ImageSettings(const ImageParam&, ColorMode)> imageSettings;
    std::function<bool(const ImageSettings&)> needsWholeSheet;
    std::function<Status(PageGroup&, const ImageSettings&)> runOperations;
    std::function<const OutputFormat*(FileFormat)> findOutputFormat;
};

} // namespace orva
