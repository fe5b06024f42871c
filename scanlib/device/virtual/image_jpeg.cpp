// JPEG through libjpeg. What the library only warns about but leaves pixels wrong (cut off, broken
// codes) is damage here; harmless extra bytes are not.
#include "scanlib/device/virtual/image_formats.h"

// jpeglib.h wants the first two before it
// clang-format off
#include <csetjmp>
#include <cstdio>
#include <jpeglib.h>
#include <jerror.h>
// clang-format on

#include <string>
#include <vector>

namespace orva {

namespace {

struct JpegReader
{
    JpegReader() = default;
    ~JpegReader() { jpeg_destroy_decompress(&jpeg); } // nothing to do for one that was never made
    JpegReader(const JpegReader&) = delete;
    JpegReader& operator=(const JpegReader&) = delete;

    jpeg_decompress_struct jpeg {};
    jpeg_error_mgr errors {};
    std::jmp_buf escape {};
    char message[JMSG_LENGTH_MAX] {};
    bool broken = false;
};

[[noreturn]] void onError(j_common_ptr common)
{
    auto* reader = static_cast<JpegReader*>(common->client_data);
    common->err->format_message(common, reader->message);
    std::longjmp(reader->escape, 1);
}

void onMessage(j_common_ptr common, int level)
{
    if (level >= 0) {
        return; // a trace line
    }
    const int code = common->err->msg_code;
    if (code == JWRN_EXTRANEOUS_DATA || code == JWRN_ADOBE_XFORM || code == JWRN_JFIF_MAJOR) {
        return;
    }
    auto* reader = static_cast<JpegReader*>(common->client_data);
    if (!reader->broken) {
        common->err->format_message(common, reader->message);
    }
    reader->broken = true;
}

double dotsPerInch(const jpeg_decompress_struct& jpeg, int density)
{
    constexpr double kCmPerInch = 2.54;
    return jpeg.saw_JFIF_marker == 0 ? 0
        : jpeg.density_unit == 1     ? density
        : jpeg.density_unit == 2     ? density * kCmPerInch
                                     : 0;
}

/// Photoshop's CMYK is stored inverted, and that is all that is met in practice.
void storeCmykLine(const std::uint8_t* from, Page& page, int y)
{
    std::uint8_t* to = page.row(y);
    for (int x = 0; x < page.width; ++x, from += 4) {
        const auto mixed = [&](int i) {
            return static_cast<std::uint8_t>(from[i] * from[3] / 255);
        };
        if (page.format == PixelFormat::kGray) {
            *to++ = grayOf(mixed(0), mixed(1), mixed(2));
        } else {
            *to++ = mixed(0);
            *to++ = mixed(1);
            *to++ = mixed(2);
        }
    }
}

// No object with a destructor may live in the frames that longjmp leaves: line is the caller's.
Status decode(JpegReader& reader, const std::filesystem::path& file, std::FILE* stream,
    PixelFormat wanted, Page& page, std::vector<std::uint8_t>& line)
{
    jpeg_decompress_struct& jpeg = reader.jpeg;
    jpeg_stdio_src(&jpeg, stream);
    jpeg_read_header(&jpeg, TRUE);
    if (Status size = checkSize(file, jpeg.image_width, jpeg.image_height); !size.ok()) {
        return size;
    }
    const bool cmyk = jpeg.jpeg_color_space == JCS_CMYK || jpeg.jpeg_color_space == JCS_YCCK;
    jpeg.out_color_space = cmyk                                            ? JCS_CMYK
        : wanted == PixelFormat::kGray && jpeg.jpeg_color_space != JCS_RGB ? JCS_GRAYSCALE
                                                                           : JCS_RGB;
    const bool toGray = jpeg.out_color_space == JCS_RGB && wanted == PixelFormat::kGray;
    jpeg_start_decompress(&jpeg);
    page.allocate(
        static_cast<int>(jpeg.output_width), static_cast<int>(jpeg.output_height), wanted);
    setResolution(page, dotsPerInch(jpeg, jpeg.X_density), dotsPerInch(jpeg, jpeg.Y_density));
    line.resize(cmyk || toGray ? static_cast<std::size_t>(page.width) * 4 : 0);
    while (jpeg.output_scanline < jpeg.output_height && !reader.broken) {
        const int y = static_cast<int>(jpeg.output_scanline);
        JSAMPROW row = line.empty() ? page.row(y) : line.data();
        jpeg_read_scanlines(&jpeg, &row, 1);
        if (cmyk) {
            storeCmykLine(row, page, y);
        } else if (toGray) {
            for (int x = 0; x < page.width; ++x) {
                page.row(y)[x] = grayOf(row[3 * x], row[3 * x + 1], row[3 * x + 2]);
            }
        }
    }
    if (!reader.broken) {
        jpeg_finish_decompress(&jpeg);
    }
    return {};
}

struct DecodeJob
{
    const std::filesystem::path& file;
    std::FILE* stream;
    PixelFormat wanted;
    Page& page;
    std::vector<std::uint8_t>& line;
    Status& status;
};

__attribute__((noinline)) void decodeJob(JpegReader& reader, const DecodeJob& job)
{
    job.status = decode(reader, job.file, job.stream, job.wanted, job.page, job.line);
}

/// false when the library gave up. Stands alone, without a local variable that a jump could spoil.
__attribute__((noinline)) bool decodeGuarded(JpegReader& reader, const DecodeJob& job)
{
    if (setjmp(reader.escape) != 0) { // NOLINT(cert-err52-cpp): the library knows no other way
        return false;
    }
    jpeg_create_decompress(&reader.jpeg);
    // progressive images take memory of their own; one that needs more is refused
    reader.jpeg.mem->max_memory_to_use = 1L << 30;
    decodeJob(reader, job);
    return true;
}

} // namespace

Status readJpeg(
    const std::filesystem::path& file, std::FILE* stream, PixelFormat wanted, Page& page)
{
    JpegReader reader;
    std::vector<std::uint8_t> line;
    Status status;
    reader.jpeg.err = jpeg_std_error(&reader.errors);
    reader.errors.error_exit = onError;
    reader.errors.emit_message = onMessage;
    reader.jpeg.client_data = &reader;
    const bool failed = !decodeGuarded(reader, { file, stream, wanted, page, line, status });
    if (failed || reader.broken) {
        return damaged(file, reader.message);
    }
    return status;
}

} // namespace orva
