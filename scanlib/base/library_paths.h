// Where the library keeps what it writes and reads. The session gets it once, so that tests can
// give it folders of their own.
#pragma once

#include <filesystem>

namespace orva {

struct LibraryPaths
{
    std::filesystem::path spool; ///< pages of running jobs; private to the library
    std::filesystem::path virtualScanner; ///< tray, state and faults of the virtual scanner
    std::filesystem::path sampleSheets; ///< what the virtual scanner feeds while its tray is empty
    std::filesystem::path config; ///< orva-sdk.conf
    std::filesystem::path saneHost; ///< the helper that SANE's drivers run in
    std::filesystem::path recognition; ///< libOrva_OCR.so, the recogniser of text
    std::filesystem::path saneModels; ///< orva-sane-models.conf
};

/// The installed places, below the prefix that the build was given.
LibraryPaths installedLibraryPaths();

} // namespace orva
