#include "scanlib/base/library_paths.h"

#include "scanlib/base/library_paths_config.h"

namespace orva {

LibraryPaths installedLibraryPaths()
{
    LibraryPaths paths;
    paths.spool = ORVA_DATA_ROOT "/.spool";
    paths.virtualScanner = ORVA_DATA_ROOT "/.virtual-scanner";
    paths.sampleSheets = ORVA_LIBRARY_ROOT "/share/sample-sheets";
    paths.config = ORVA_LIBRARY_ROOT "/config/orva-sdk.conf";
    return paths;
}

} // namespace orva
