// Lets libtiff work on memory or on an output file, and keeps what went wrong.
#pragma once

#include <tiffio.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace orva {

struct CloseTiff
{
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};
using TiffHandle = std::unique_ptr<TIFF, CloseTiff>;

/// Where libtiff reads and writes. Must outlive the handle.
class TiffStream
{
public:
    virtual ~TiffStream() = default;
    virtual tmsize_t read(void* data, tmsize_t size) = 0;
    virtual tmsize_t write(const void* data, tmsize_t size) = 0;
    virtual toff_t seek(toff_t offset, int whence) = 0;
    virtual toff_t size() = 0;

    /// mode as in TIFFOpen: "r", "w", "w8" ... nullptr with a message when it cannot be.
    TiffHandle open(const char* mode);
    /// The last complaint of libtiff; empty when there was none.
    const std::string& message() const { return m_message; }

private:
    static int onError(
        TIFF* tiff, void* user, const char* module, const char* format, va_list arguments);
    std::string m_message;
};

class TiffMemory : public TiffStream
{
public:
    explicit TiffMemory(std::vector<std::uint8_t>& bytes)
        : m_bytes(bytes)
    {
    }
    tmsize_t read(void* data, tmsize_t size) override;
    tmsize_t write(const void* data, tmsize_t size) override;
    toff_t seek(toff_t offset, int whence) override;
    toff_t size() override { return m_bytes.size(); }
    bool outOfMemory() const { return m_outOfMemory; }

private:
    std::vector<std::uint8_t>& m_bytes;
    std::size_t m_position = 0;
    bool m_outOfMemory = false;
};

/// Borrows the descriptor.
class TiffDescriptor : public TiffStream
{
public:
    explicit TiffDescriptor(int descriptor)
        : m_descriptor(descriptor)
    {
    }
    tmsize_t read(void* data, tmsize_t size) override;
    tmsize_t write(const void* data, tmsize_t size) override;
    toff_t seek(toff_t offset, int whence) override;
    toff_t size() override;
    /// errno of the first write that failed, 0 when none did. libtiff forgets some of them.
    int writeError() const { return m_writeError; }

private:
    int m_descriptor;
    int m_writeError = 0;
};

/// Copies the current directory of one file to the next one of the other: tags and compressed
/// strips as they are.
bool copyTiffPage(TIFF* from, TIFF* to);

} // namespace orva
