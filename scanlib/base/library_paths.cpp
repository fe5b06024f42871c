#include "scanlib/base/library_paths.h"

#include "scanlib/base/library_paths_config.h"

#include <dlfcn.h>

namespace orva {

namespace {

/// In the folder of this shared object, else where it is installed.
std::filesystem::path fileBeside(const char* name, const char* installed)
{
    Dl_info self {};
    if (::dladdr(reinterpret_cast<void*>(&installedLibraryPaths), &self) != 0
        && self.dli_fname != nullptr) {
        std::error_code error;
        auto file = std::filesystem::absolute(self.dli_fname, error).parent_path() / name;
        if (!error && std::filesystem::exists(file, error)) {
            return file;
        }
    }
    return installed;
}

} // namespace

LibraryPaths installedLibraryPaths()
{
    LibraryPaths paths;
    paths.spool = ORVA_DATA_ROOT "/.spool";
    paths.virtualScanner = ORVA_DATA_ROOT "/.virtual-scanner";
    paths.sampleSheets = ORVA_LIBRARY_ROOT "/share/sample-sheets";
    paths.config = ORVA_LIBRARY_ROOT "/config/orva-sdk.conf";
    paths.saneHost = fileBeside("orva-sane-host", ORVA_LIBRARY_ROOT "/lib/OrvaSDK/orva-sane-host");
    paths.recognition =
        fileBeside("libOrva_OCR.so", ORVA_LIBRARY_ROOT "/lib/OrvaSDK/libOrva_OCR.so");
    paths.saneModels = ORVA_LIBRARY_ROOT "/config/orva-sane-models.conf";
    return paths;
}

} // namespace orva
