#include "scanlib/writers/output_file.h"

#include "scanlib/base/descriptor.h"
#include "scanlib/base/output_store.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <new>

namespace orva {

namespace {

/// A spool file, or the first bytes of it.
template <typename Bytes>
Status readSpooled(const std::filesystem::path& path, Bytes& out, std::size_t maxBytes)
{
    const Descriptor source(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    struct stat info
    {
    };
    if (source.get() < 0 || ::fstat(source.get(), &info) != 0) {
        return { kFileWrite, "cannot read " + path.string() + ": " + std::strerror(errno) };
    }
    try {
        out.resize(std::min(static_cast<std::size_t>(info.st_size), maxBytes));
    } catch (const std::bad_alloc&) {
        return { kNoMemory, "no memory for " + path.string() };
    }
    std::size_t done = 0;
    while (done < out.size()) {
        const ssize_t got = ::read(source.get(), &out[done], out.size() - done);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got <= 0) {
            return { kFileWrite, "cannot read " + path.string() + " to its end" };
        }
        done += static_cast<std::size_t>(got);
    }
    return {};
}

} // namespace

Status fileStatus(int error, const char* action, const std::filesystem::path& path)
{
    return { fileFailure(error, path).code(),
        std::string(action) + " " + path.string() + ": " + std::strerror(error) };
}

OutputFile::~OutputFile()
{
    if (m_descriptor >= 0) {
        ::close(m_descriptor);
    }
}

Status OutputFile::open(const std::filesystem::path& path)
{
    if (m_descriptor >= 0) {
        return { kInternal, "output file opened twice" };
    }
    m_path = path;
    m_descriptor = ::open(path.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    return m_descriptor >= 0 ? Status {} : fileStatus(errno, "cannot create", path);
}

Status OutputFile::write(const void* data, std::size_t size)
{
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    while (size > 0) {
        const ssize_t written = ::write(m_descriptor, bytes, size);
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            return fileStatus(written < 0 ? errno : EIO, "cannot write", m_path);
        }
        bytes += written;
        size -= static_cast<std::size_t>(written);
    }
    return {};
}

Status OutputFile::appendFile(const std::filesystem::path& from, std::size_t offset)
{
    const Descriptor source(::open(from.c_str(), O_RDONLY | O_CLOEXEC));
    struct stat info
    {
    };
    if (source.get() < 0 || ::fstat(source.get(), &info) != 0
        || ::lseek(source.get(), static_cast<off_t>(offset), SEEK_SET) < 0) {
        return { kFileWrite, "cannot read " + from.string() + ": " + std::strerror(errno) };
    }
    const auto size = static_cast<std::size_t>(info.st_size);
    std::size_t left = size > offset ? size - offset : 0;
    bool inKernel = true;
    std::array<std::uint8_t, 64 * 1024> buffer;
    while (left > 0) {
        if (inKernel) {
            const ssize_t copied =
                ::copy_file_range(source.get(), nullptr, m_descriptor, nullptr, left, 0);
            if (copied > 0) {
                left -= static_cast<std::size_t>(copied);
                continue;
            }
            if (copied < 0 && errno == EINTR) {
                continue;
            }
            // Two file systems, an old kernel, a device: any refusal but a full disk is no verdict.
            if (copied < 0 && (errno == ENOSPC || errno == EDQUOT)) {
                return fileStatus(errno, "cannot write", m_path);
            }
            inKernel = false;
        }
        const ssize_t got = ::read(source.get(), buffer.data(), std::min(left, buffer.size()));
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got <= 0) {
            return { kFileWrite, "cannot read " + from.string() + " to its end" };
        }
        if (Status status = write(buffer.data(), static_cast<std::size_t>(got)); !status.ok()) {
            return status;
        }
        left -= static_cast<std::size_t>(got);
    }
    return {};
}

Status OutputFile::finish()
{
    if (m_descriptor < 0) {
        return { kInternal, "output file was never opened" };
    }
    // A device or pipe has nothing to flush.
    if (::fsync(m_descriptor) != 0 && errno != EINVAL && errno != EROFS) {
        return fileStatus(errno, "cannot flush", m_path);
    }
    const int closed = ::close(m_descriptor);
    m_descriptor = -1;
    return closed == 0 ? Status {} : fileStatus(errno, "cannot close", m_path);
}

Status readPayload(const EncodedPage& page, std::vector<std::uint8_t>& out, std::size_t maxBytes)
{
    if (!page.file.empty()) {
        return readSpooled(page.file, out, maxBytes);
    }
    const std::size_t size = std::min(page.bytes.size(), maxBytes);
    out.assign(page.bytes.begin(), page.bytes.begin() + static_cast<std::ptrdiff_t>(size));
    return {};
}

Status readText(const EncodedPage& page, PageText& out)
{
    if (page.textFile.empty()) {
        return parsePageText(page.text, out);
    }
    std::string text;
    const Status status = readSpooled(page.textFile, text, std::numeric_limits<std::size_t>::max());
    return status.ok() ? parsePageText(text, out) : status;
}

Status appendPayload(const EncodedPage& page, OutputFile& file, std::size_t offset)
{
    return page.file.empty() ? file.write(page.bytes.data() + offset, page.bytes.size() - offset)
                             : file.appendFile(page.file, offset);
}

} // namespace orva
