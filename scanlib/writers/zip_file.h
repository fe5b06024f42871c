// A ZIP container written entry by entry through minizip; a full disk keeps its name.
#pragma once

#include "scanlib/writers/output_file.h"

#include <cstdint>
#include <string>

namespace orva {

/// One thread. Entries are closed one after the other; finish() writes the directory, flushes and
/// closes. Containers above 4 GiB take the 64-bit form by themselves.
class ZipFile
{
public:
    ZipFile() = default;
    ~ZipFile();
    ZipFile(const ZipFile&) = delete;
    ZipFile& operator=(const ZipFile&) = delete;

    /// Every entry carries this time.
    Status open(const std::filesystem::path& path, std::int64_t unixSeconds);
    /// Deflated.
    Status addText(const std::string& name, const std::string& text);
    /// Stored as it is: images are compressed already.
    Status addPayload(const std::string& name, const EncodedPage& page);
    Status finish();

private:
    Status begin(const std::string& name, bool deflated);
    Status check(int result) const;

    // What minizip calls.
    friend struct ZipCalls;

    OutputFile m_file;
    void* m_zip = nullptr;
    int m_writeError = 0; ///< errno of the first write that failed
    std::int64_t m_unixSeconds = 0;
};

} // namespace orva
