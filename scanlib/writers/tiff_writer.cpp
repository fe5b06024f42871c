// TIFF files of one or many pages. The pages come compressed; their strips are copied as they are.
#include "scanlib/base/local_time.h"
#include "scanlib/writers/encoders.h"
#include "scanlib/writers/output_file.h"
#include "scanlib/writers/tiff_stream.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <ctime>
#include <optional>

namespace orva {

namespace {

std::string tiffTime(std::int64_t unixSeconds)
{
    const std::tm parts = localTime(unixSeconds);
    char text[20] = "";
    std::strftime(text, sizeof text, "%Y:%m:%d %H:%M:%S", &parts);
    return text;
}

class TiffWriter : public DocumentWriter
{
public:
    explicit TiffWriter(std::uint64_t classicLimitBytes)
        : m_classicLimitBytes(classicLimitBytes)
    {
    }
    ~TiffWriter() override { m_tiff.reset(); }

    Status begin(const std::filesystem::path& path, const DocumentInfo& info) override
    {
        m_info = info;
        m_file = std::make_unique<OutputFile>();
        if (Status status = m_file->open(path); !status.ok()) {
            return status;
        }
        return openTiff("wl");
    }

    Status addPage(const EncodedPage& page) override
    {
        std::vector<std::uint8_t> payload;
        if (Status status = readPayload(page, payload); !status.ok()) {
            return status;
        }
        if (!m_big && m_bytes + payload.size() > m_classicLimitBytes) {
            if (Status status = continueAsBigTiff(); !status.ok()) {
                return status;
            }
        }
        TiffMemory memory(payload);
        const TiffHandle source = memory.open("r");
        if (!source) {
            return { kFileWrite, "damaged page: " + memory.message() };
        }
        TIFFSetField(m_tiff.get(), TIFFTAG_SUBFILETYPE, FILETYPE_PAGE);
        TIFFSetField(m_tiff.get(), TIFFTAG_PAGENUMBER, m_pages,
            0); // 0: the number of pages is not known yet
        TIFFSetField(m_tiff.get(), TIFFTAG_DOCUMENTNAME, m_info.title.c_str());
        TIFFSetField(m_tiff.get(), TIFFTAG_SOFTWARE, m_info.producer.c_str());
        TIFFSetField(m_tiff.get(), TIFFTAG_DATETIME, tiffTime(m_info.createdUnixSeconds).c_str());
        if (!copyTiffPage(source.get(), m_tiff.get()) || TIFFWriteDirectory(m_tiff.get()) == 0
            || m_stream->writeError() != 0) {
            return failed();
        }
        m_bytes += payload.size();
        ++m_pages;
        return {};
    }

    Status finish() override
    {
        if (m_pages == 0) {
            return { kInternal, "file without a page" };
        }
        m_tiff.reset();
        if (m_stream->writeError() != 0) {
            return failed();
        }
        return m_file->finish();
    }

private:
    Status openTiff(const char* mode)
    {
        m_stream.emplace(m_file->descriptor());
        m_tiff = m_stream->open(mode);
        return m_tiff ? Status {} : failed();
    }

    Status failed() const
    {
        return m_stream->writeError() != 0
            ? fileStatus(m_stream->writeError(), "cannot write", m_file->path())
            : Status { kFileWrite, m_stream->message() };
    }

    /// Copies what is there into a file with 64-bit offsets beside it, which then takes its place.
    Status continueAsBigTiff()
    {
        m_tiff.reset();
        if (m_stream->writeError() != 0) {
            return failed();
        }
        const std::filesystem::path path = m_file->path();
        TiffDescriptor oldStream(m_file->descriptor());
        const TiffHandle old = m_pages > 0 ? oldStream.open("r") : nullptr;
        const std::unique_ptr<OutputFile> oldFile =
            std::move(m_file); // open until the copy is made
        m_file = std::make_unique<OutputFile>();
        std::filesystem::path bigPath = path;
        bigPath += ".big";
        if (Status status = m_file->open(bigPath); !status.ok()) {
            return status;
        }
        Status status = openTiff("wl8");
        if (status.ok() && m_pages > 0) {
            bool good = old != nullptr;
            while (good) {
                good =
                    copyTiffPage(old.get(), m_tiff.get()) && TIFFWriteDirectory(m_tiff.get()) != 0;
                if (TIFFReadDirectory(old.get()) == 0) {
                    break;
                }
            }
            if (!good || m_stream->writeError() != 0) {
                status = failed();
            }
        }
        if (status.ok() && ::rename(bigPath.c_str(), path.c_str()) != 0) {
            status = fileStatus(errno, "cannot rename to", path);
        }
        if (!status.ok()) {
            ::unlink(bigPath.c_str());
            return status;
        }
        m_big = true;
        return {};
    }

    const std::uint64_t m_classicLimitBytes;
    DocumentInfo m_info;
    std::unique_ptr<OutputFile> m_file;
    std::optional<TiffDescriptor> m_stream;
    TiffHandle m_tiff;
    std::uint64_t m_bytes = 0;
    std::uint16_t m_pages = 0;
    bool m_big = false;
};

} // namespace

std::unique_ptr<DocumentWriter> makeTiffWriter(std::uint64_t classicLimitBytes)
{
    return std::make_unique<TiffWriter>(classicLimitBytes);
}

} // namespace orva
