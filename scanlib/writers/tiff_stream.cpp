#include "scanlib/writers/tiff_stream.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <new>

namespace orva {

namespace {

TiffStream* streamOf(thandle_t handle)
{
    return static_cast<TiffStream*>(handle);
}
tmsize_t readProc(thandle_t handle, void* data, tmsize_t size)
{
    return streamOf(handle)->read(data, size);
}
tmsize_t writeProc(thandle_t handle, void* data, tmsize_t size)
{
    return streamOf(handle)->write(data, size);
}
toff_t seekProc(thandle_t handle, toff_t offset, int whence)
{
    return streamOf(handle)->seek(offset, whence);
}
int closeProc(thandle_t /*handle*/)
{
    return 0;
}
toff_t sizeProc(thandle_t handle)
{
    return streamOf(handle)->size();
}

int ignoreWarning(TIFF* /*tiff*/, void* /*user*/, const char* /*module*/, const char* /*format*/,
    va_list /*arguments*/)
{
    return 1;
}

template <typename Value>
void copyTag(TIFF* from, TIFF* to, ttag_t tag)
{
    Value value {};
    if (TIFFGetField(from, tag, &value) != 0) {
        TIFFSetField(to, tag, value);
    }
}

} // namespace

int TiffStream::onError(
    TIFF* /*tiff*/, void* user, const char* module, const char* format, va_list arguments)
{
    std::array<char, 300> text {};
    std::vsnprintf(text.data(), text.size(), format, arguments);
    static_cast<TiffStream*>(user)->m_message =
        std::string(module != nullptr ? module : "TIFF") + ": " + text.data();
    return 1; // said; nothing on standard error
}

TiffHandle TiffStream::open(const char* mode)
{
    seek(0, SEEK_SET); // libtiff reads the header wherever the file stands
    TIFFOpenOptions* const options = TIFFOpenOptionsAlloc();
    if (options == nullptr) {
        m_message = "no memory";
        return nullptr;
    }
    TIFFOpenOptionsSetErrorHandlerExtR(options, &TiffStream::onError, this);
    TIFFOpenOptionsSetWarningHandlerExtR(options, &ignoreWarning, nullptr);
    TIFF* const tiff = TIFFClientOpenExt("page", mode, this, readProc, writeProc, seekProc,
        closeProc, sizeProc, nullptr, nullptr, options);
    TIFFOpenOptionsFree(options);
    return TiffHandle(tiff);
}

tmsize_t TiffMemory::read(void* data, tmsize_t size)
{
    const std::size_t left = m_position < m_bytes.size() ? m_bytes.size() - m_position : 0;
    const std::size_t count = std::min(left, static_cast<std::size_t>(size));
    if (count > 0) {
        std::memcpy(data, m_bytes.data() + m_position, count);
    }
    m_position += count;
    return static_cast<tmsize_t>(count);
}

tmsize_t TiffMemory::write(const void* data, tmsize_t size)
{
    const std::size_t end = m_position + static_cast<std::size_t>(size);
    if (end > m_bytes.size()) {
        try {
            m_bytes.resize(end);
        } catch (const std::bad_alloc&) { // must not fly through the C code of the library
            m_outOfMemory = true;
            return -1;
        }
    }
    std::memcpy(m_bytes.data() + m_position, data, static_cast<std::size_t>(size));
    m_position = end;
    return size;
}

toff_t TiffMemory::seek(toff_t offset, int whence)
{
    m_position = static_cast<std::size_t>(offset)
        + (whence == SEEK_CUR        ? m_position
                : whence == SEEK_END ? m_bytes.size()
                                     : 0);
    return m_position;
}

tmsize_t TiffDescriptor::read(void* data, tmsize_t size)
{
    return ::read(m_descriptor, data, static_cast<std::size_t>(size));
}

tmsize_t TiffDescriptor::write(const void* data, tmsize_t size)
{
    const auto* bytes = static_cast<const char*>(data);
    tmsize_t done = 0;
    while (done < size) {
        const ssize_t written =
            ::write(m_descriptor, bytes + done, static_cast<std::size_t>(size - done));
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            m_writeError = m_writeError != 0 ? m_writeError : written < 0 ? errno : EIO;
            return -1;
        }
        done += written;
    }
    return done;
}

toff_t TiffDescriptor::seek(toff_t offset, int whence)
{
    return static_cast<toff_t>(::lseek(m_descriptor, static_cast<off_t>(offset), whence));
}

toff_t TiffDescriptor::size()
{
    struct stat info
    {
    };
    return ::fstat(m_descriptor, &info) == 0 ? static_cast<toff_t>(info.st_size) : 0;
}

bool copyTiffPage(TIFF* from, TIFF* to)
{
    for (const ttag_t tag :
        { TIFFTAG_IMAGEWIDTH, TIFFTAG_IMAGELENGTH, TIFFTAG_SUBFILETYPE, TIFFTAG_ROWSPERSTRIP }) {
        copyTag<std::uint32_t>(from, to, tag);
    }
    for (const ttag_t tag : { TIFFTAG_BITSPERSAMPLE, TIFFTAG_SAMPLESPERPIXEL, TIFFTAG_COMPRESSION,
             TIFFTAG_PHOTOMETRIC, TIFFTAG_FILLORDER, TIFFTAG_ORIENTATION, TIFFTAG_PLANARCONFIG,
             TIFFTAG_RESOLUTIONUNIT }) {
        copyTag<std::uint16_t>(from, to, tag);
    }
    std::uint16_t compression = COMPRESSION_NONE;
    TIFFGetField(from, TIFFTAG_COMPRESSION, &compression);
    if (compression == COMPRESSION_ADOBE_DEFLATE) {
        copyTag<std::uint16_t>(from, to, TIFFTAG_PREDICTOR);
    }
    for (const ttag_t tag : { TIFFTAG_XRESOLUTION, TIFFTAG_YRESOLUTION }) {
        float value = 0;
        if (TIFFGetField(from, tag, &value) != 0) {
            TIFFSetField(to, tag, static_cast<double>(value));
        }
    }
    for (const ttag_t tag : { TIFFTAG_SOFTWARE, TIFFTAG_DATETIME }) {
        copyTag<char*>(from, to, tag);
    }
    std::uint16_t number = 0;
    std::uint16_t total = 0;
    if (TIFFGetField(from, TIFFTAG_PAGENUMBER, &number, &total) != 0) {
        TIFFSetField(to, TIFFTAG_PAGENUMBER, number, total);
    }
    std::vector<std::uint8_t> strip;
    const std::uint32_t strips = TIFFNumberOfStrips(from);
    for (std::uint32_t i = 0; i < strips; ++i) {
        strip.resize(static_cast<std::size_t>(TIFFRawStripSize64(from, i)));
        const auto size = static_cast<tmsize_t>(strip.size());
        if (TIFFReadRawStrip(from, i, strip.data(), size) != size
            || TIFFWriteRawStrip(to, i, strip.data(), size) != size) {
            return false;
        }
    }
    return true;
}

} // namespace orva
