#include "scanlib/writers/zip_file.h"

#include "scanlib/base/local_time.h"

#include <unistd.h>
#include <zip.h>

#include <cerrno>
#include <ctime>

namespace orva {

struct ZipCalls
{
    static ZipFile* self(voidpf stream) { return static_cast<ZipFile*>(stream); }
    static voidpf open(voidpf opaque, const void* /*name*/, int /*mode*/) { return opaque; }
    static uLong read(voidpf /*opaque*/, voidpf stream, void* buffer, uLong size)
    {
        const ssize_t got = ::read(self(stream)->m_file.descriptor(), buffer, size);
        return got > 0 ? static_cast<uLong>(got) : 0;
    }
    /// minizip loses memory when a write fails, so it is never told: check() is.
    static uLong write(voidpf /*opaque*/, voidpf stream, const void* buffer, uLong size)
    {
        ZipFile& zip = *self(stream);
        if (zip.m_writeError == 0) {
            errno = 0;
            if (!zip.m_file.write(buffer, size).ok()) {
                zip.m_writeError = errno != 0 ? errno : EIO;
            }
        }
        return size;
    }
    static ZPOS64_T tell(voidpf /*opaque*/, voidpf stream)
    {
        return static_cast<ZPOS64_T>(::lseek(self(stream)->m_file.descriptor(), 0, SEEK_CUR));
    }
    static long seek(voidpf /*opaque*/, voidpf stream, ZPOS64_T offset, int origin)
    {
        const int whence = origin == ZLIB_FILEFUNC_SEEK_SET ? SEEK_SET
            : origin == ZLIB_FILEFUNC_SEEK_CUR              ? SEEK_CUR
                                                            : SEEK_END;
        return ::lseek(self(stream)->m_file.descriptor(), static_cast<off_t>(offset), whence) < 0
            ? -1
            : 0;
    }
    static int close(voidpf /*opaque*/, voidpf /*stream*/) { return 0; }
    static int error(voidpf /*opaque*/, voidpf /*stream*/) { return 0; }
};

namespace {

zip_fileinfo entryInfo(std::int64_t unixSeconds)
{
    const std::tm parts = localTime(unixSeconds);
    zip_fileinfo info {};
    info.tmz_date.tm_year = static_cast<uInt>(parts.tm_year + 1900);
    info.tmz_date.tm_mon = static_cast<uInt>(parts.tm_mon);
    info.tmz_date.tm_mday = static_cast<uInt>(parts.tm_mday);
    info.tmz_date.tm_hour = static_cast<uInt>(parts.tm_hour);
    info.tmz_date.tm_min = static_cast<uInt>(parts.tm_min);
    info.tmz_date.tm_sec = static_cast<uInt>(parts.tm_sec);
    return info;
}

} // namespace

ZipFile::~ZipFile()
{
    if (m_zip != nullptr) {
        m_writeError = m_writeError != 0 ? m_writeError : EIO; // given up: no directory any more
        zipClose(m_zip, nullptr);
    }
}

Status ZipFile::open(const std::filesystem::path& path, std::int64_t unixSeconds)
{
    m_unixSeconds = unixSeconds;
    if (Status status = m_file.open(path); !status.ok()) {
        return status;
    }
    zlib_filefunc64_def calls {};
    calls.zopen64_file = ZipCalls::open;
    calls.zread_file = ZipCalls::read;
    calls.zwrite_file = ZipCalls::write;
    calls.ztell64_file = ZipCalls::tell;
    calls.zseek64_file = ZipCalls::seek;
    calls.zclose_file = ZipCalls::close;
    calls.zerror_file = ZipCalls::error;
    calls.opaque = this;
    m_zip = zipOpen2_64("document", APPEND_STATUS_CREATE, nullptr, &calls);
    return m_zip != nullptr ? Status {} : Status { kNoMemory, "no memory for the container" };
}

Status ZipFile::check(int result) const
{
    if (m_writeError != 0) {
        return fileStatus(m_writeError, "cannot write", m_file.path());
    }
    return result == ZIP_OK ? Status {}
                            : Status { kFileWrite, "ZIP: error " + std::to_string(result) };
}

Status ZipFile::begin(const std::string& name, bool deflated)
{
    const zip_fileinfo info = entryInfo(m_unixSeconds);
    return check(zipOpenNewFileInZip64(m_zip, name.c_str(), &info, nullptr, 0, nullptr, 0, nullptr,
        deflated ? Z_DEFLATED : 0, deflated ? Z_DEFAULT_COMPRESSION : 0, 0));
}

Status ZipFile::addText(const std::string& name, const std::string& text)
{
    Status status = begin(name, true);
    if (status.ok()) {
        status = check(zipWriteInFileInZip(m_zip, text.data(), static_cast<unsigned>(text.size())));
    }
    return status.ok() ? check(zipCloseFileInZip(m_zip)) : status;
}

Status ZipFile::addPayload(const std::string& name, const EncodedPage& page)
{
    std::vector<std::uint8_t> payload;
    Status status = readPayload(page, payload);
    if (status.ok()) {
        status = begin(name, false);
    }
    if (status.ok()) {
        status = check(
            zipWriteInFileInZip(m_zip, payload.data(), static_cast<unsigned>(payload.size())));
    }
    return status.ok() ? check(zipCloseFileInZip(m_zip)) : status;
}

Status ZipFile::finish()
{
    const int result = zipClose(m_zip, nullptr);
    m_zip = nullptr;
    Status status = check(result);
    return status.ok() ? m_file.finish() : status;
}

} // namespace orva
