#include "scanlib/ocr/engine_library.h"

#include <dlfcn.h>

#include <cstring>

namespace orva {

Status makeEngine(const std::filesystem::path& library, std::unique_ptr<TextEngine>& out)
{
    const auto unusable = [](const std::string& why) {
        return Status(
            kModelMissing, "the recognition (package libtesseract5) is not there: " + why);
    };
    // No count of loads is kept: the loader has one, and nothing is unloaded.
    void* const handle = ::dlopen(library.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    if (handle == nullptr) {
        const char* const why = ::dlerror();
        return unusable(why != nullptr ? why : library.string());
    }
    const auto ask = reinterpret_cast<const EngineEntry* (*)()>(::dlsym(handle, kEngineSymbol));
    const EngineEntry* const entry = ask != nullptr ? ask() : nullptr;
    if (entry == nullptr || std::strcmp(entry->version, kEngineVersion) != 0
        || entry->layout != kEngineLayout) {
        return unusable(library.string() + " is of another version");
    }
    out = entry->make();
    return {};
}

} // namespace orva
