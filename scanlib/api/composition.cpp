#include "scanlib/api/composition.h"

#include "scanlib/device/sane/sane_driver.h"
#include "scanlib/device/virtual/virtual_driver.h"
#include "scanlib/ocr/text_recognition.h"
#include "scanlib/page/operations.h"
#include "scanlib/writers/writer.h"

namespace orva {

SessionParts installedParts()
{
    SessionParts parts;
    parts.paths = installedLibraryPaths();
    parts.config.recognition.engineFile = parts.paths.recognition;
    parts.makeDrivers = [](const LibraryPaths& paths) {
        std::vector<std::unique_ptr<Driver>> drivers;
        drivers.push_back(makeSaneDriver(paths.saneHost, paths.saneModels));
        drivers.push_back(makeVirtualDriver(paths));
        return drivers;
    };
    parts.tools.imageSettings = imageSettingsFrom;
    parts.tools.needsWholeSheet = needsWholeSheet;
    parts.tools.runOperations = runOperations;
    parts.tools.findOutputFormat = findOutputFormat;
    parts.tools.makeTextRecognition = makeTextRecognition;
    return parts;
}

} // namespace orva
