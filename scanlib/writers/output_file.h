// The file that a writer makes: every write is checked, nothing is complete before it is on disk.
#pragma once

#include "scanlib/base/page_text.h"
#include "scanlib/base/status.h"
#include "scanlib/writers/writer.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <vector>

namespace orva {

/// What a failed system call on an output file means, see fileFailure; the action is for the log.
Status fileStatus(int error, const char* action, const std::filesystem::path& path);

/// One thread. Closes the file when destroyed; only finish() vouches for what is in it.
class OutputFile
{
public:
    OutputFile() = default;
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// Creates the file or empties the one that is there.
    Status open(const std::filesystem::path& path);
    Status write(const void* data, std::size_t size);
    /// Appends another file from this byte on; inside the kernel where the file system can.
    Status appendFile(const std::filesystem::path& from, std::size_t offset = 0);
    /// Flushed to disk and closed.
    Status finish();

    int descriptor() const { return m_descriptor; }
    const std::filesystem::path& path() const { return m_path; }
    bool isOpen() const { return m_descriptor >= 0; }

private:
    std::filesystem::path m_path;
    int m_descriptor = -1;
};

/// The encoded bytes of a page, or the first of them, from its spool file when it has one.
Status readPayload(const EncodedPage& page, std::vector<std::uint8_t>& out,
    std::size_t maxBytes = std::numeric_limits<std::size_t>::max());
/// The recognised text of a page, from its spool file when it has one. Empty when there is none.
/// kDamagedPage, kFileWrite, kNoMemory.
Status readText(const EncodedPage& page, PageText& out);
/// Copies the encoded bytes from this one on, of which there are at least so many.
Status appendPayload(const EncodedPage& page, OutputFile& file, std::size_t offset = 0);

} // namespace orva
