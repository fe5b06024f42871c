// The error catalogue, which people edit.
#include "dialogs/error_catalogue.h"

#include "log/Log.h"
#include "tests/fuzz/scratch.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const ScratchFolder folder;
    static const std::string file = folder.file("ErrorCode.xml");
    static const int silent = Log.SetLogFileName("/dev/null");
    require(silent == 0, "the log can be silenced");
    writeInput(file, data, size);

    ErrorCatalogue catalogue;
    catalogue.getErrorCode(QString::fromStdString(file));
    const std::size_t entries = catalogue.size();
    for (const int code : { -404, -40, -1, 0, 1, 2147483647 }) {
        const ErrorEntry* entry = catalogue.find(code);
        require(entry == nullptr || entry->contents.size() <= static_cast<int>(size), "the text");
    }
    catalogue.getErrorCode(QString::fromStdString(file));
    require(catalogue.size() == entries, "loading again gives the same");
    return 0;
}
