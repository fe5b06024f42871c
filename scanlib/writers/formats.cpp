// Which format is made by whom.
#include "scanlib/writers/encoders.h"

#include <algorithm>
#include <array>
#include <new>

namespace orva {

namespace {

// 64 MiB below what 32-bit offsets can reach: room for the directories.
constexpr std::uint64_t kClassicTiffLimitBytes =
    (std::uint64_t { 1 } << 32) - (std::uint64_t { 64 } << 20);

std::unique_ptr<DocumentWriter> makeStandardTiffWriter()
{
    return makeTiffWriter(kClassicTiffLimitBytes);
}

const std::array kFormats {
    OutputFormat { FileFormat::kJpg, false, false, makeJpegEncoder, makeSinglePageWriter },
    OutputFormat { FileFormat::kBmp, false, false, makeBmpEncoder, makeSinglePageWriter },
    OutputFormat { FileFormat::kPng, false, false, makePngEncoder, makeSinglePageWriter },
    OutputFormat { FileFormat::kTif, true, false, makeTiffEncoder, makeStandardTiffWriter },
    OutputFormat { FileFormat::kPdf, true, false, makePdfEncoder, makePdfWriter },
    OutputFormat { FileFormat::kPdfText, true, true, makePdfTextEncoder, makePdfTextWriter },
    OutputFormat { FileFormat::kOfd, true, false, makeOfdEncoder, makeOfdWriter },
    OutputFormat { FileFormat::kOfdText, true, true, makeOfdEncoder, makeOfdTextWriter },
    OutputFormat {
        FileFormat::kTxt, true, true, makeJpegEncoder, makeTxtWriter, makeSinglePageWriter },
    OutputFormat {
        FileFormat::kRtf, true, true, makeJpegEncoder, makeRtfWriter, makeSinglePageWriter },
    OutputFormat {
        FileFormat::kXls, true, true, makeJpegEncoder, makeXlsWriter, makeSinglePageWriter },
};

} // namespace

const OutputFormat* findOutputFormat(FileFormat format)
{
    const auto* const found = std::find_if(kFormats.begin(), kFormats.end(),
        [format](const OutputFormat& candidate) { return candidate.format == format; });
    return found != kFormats.end() ? found : nullptr;
}

Status PageEncoderBase::encode(
    const Page& page, const EncodeOptions& options, EncodedPage& out) const
{
    out.width = page.width;
    out.height = page.height;
    out.format = page.format;
    out.dpiX = page.dpiX;
    out.dpiY = page.dpiY;
    out.sheet = page.sheet;
    out.side = page.side;
    out.number = page.number;
    out.stream = page.stream;
    out.bytes.clear();
    try {
        return encodeBytes(page, options, out.bytes);
    } catch (const std::bad_alloc&) {
        return { kNoMemory, "no memory for the encoded page" };
    }
}

} // namespace orva
