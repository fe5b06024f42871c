// From page to file in two steps: encode (in parallel, any thread) and write (in page order, one
// thread). What encode makes is spooled to disk, so a job needs the memory of a few pages only.
#pragma once

#include "scanlib/base/page.h"
#include "scanlib/base/status.h"
#include "sdk/codes.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace orva {

/// One page ready to be written: the payload is a complete file of its own kind (JPEG, PNG, BMP,
/// one-page TIFF, raw CCITT G4 ...; the format decides) and lies in `bytes` until it is spooled to
/// `file`.
struct EncodedPage
{
    std::vector<std::uint8_t> bytes;
    std::filesystem::path file;
    /// What was recognised, in the form of base/page_text.h, for formats that ask for it; lies in
    /// `text` until it is spooled to `textFile`.
    std::string text;
    std::filesystem::path textFile;

    int width = 0; ///< pixels
    int height = 0; ///< pixels
    PixelFormat format = PixelFormat::kRgb;
    double dpiX = 0;
    double dpiY = 0;
    int sheet = 0;
    Side side = Side::kFront;
    int number = 0;
    std::string stream;
};

struct EncodeOptions
{
    int jpegQuality = 70; ///< percent
};

struct DocumentInfo
{
    std::string title; ///< file name without extension, UTF-8
    std::string producer = "libOrva_SDK";
    std::int64_t createdUnixSeconds = 0;
};

/// Turns pages into payloads. Stateless: any thread, at the same time.
class PageEncoder
{
public:
    virtual ~PageEncoder() = default;
    /// Fills bytes, geometry and identity of the page. kNoMemory, kPageTooLarge, kInternal.
    virtual Status encode(
        const Page& page, const EncodeOptions& options, EncodedPage& out) const = 0;
};

/// Writes one file under the (temporary) path that it is given. begin, addPage one or more times,
/// finish. One thread. After a failure, or without finish, the file may be removed by the caller.
/// kDiskFull, kFileWrite, kFolderMissing, kNoMemory.
class DocumentWriter
{
public:
    virtual ~DocumentWriter() = default;
    virtual Status begin(const std::filesystem::path& path, const DocumentInfo& info) = 0;
    virtual Status addPage(const EncodedPage& page) = 0;
    /// The file is complete and flushed to disk when this returns ok.
    virtual Status finish() = 0;
};

struct OutputFormat
{
    FileFormat format;
    bool holdsPages; ///< several pages fit into one file
    bool needsText; ///< pages come with their recognised text
    std::unique_ptr<PageEncoder> (*makeEncoder)();
    std::unique_ptr<DocumentWriter> (*makeWriter)();
    /// Of formats that show no picture: writes a page that could not be read as a JPEG file, which
    /// its payload is.
    std::unique_ptr<DocumentWriter> (*makePictureWriter)() = nullptr;
};

/// nullptr for a format that this build does not write (kFormatNotSupported at SetFileParam time).
const OutputFormat* findOutputFormat(FileFormat format);

} // namespace orva
