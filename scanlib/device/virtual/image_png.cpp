// PNG through libpng: every colour type and depth becomes 8-bit grey or colour on white.
#include "scanlib/device/virtual/image_formats.h"

#include <png.h>

#include <csetjmp>
#include <cstdio>
#include <string>
#include <vector>

namespace orva {

namespace {

struct PngReader
{
    PngReader() = default;
    ~PngReader() { png_destroy_read_struct(&png, &info, nullptr); }
    PngReader(const PngReader&) = delete;
    PngReader& operator=(const PngReader&) = delete;

    png_structp png = nullptr;
    png_infop info = nullptr;
    char message[128] {};
};

[[noreturn]] void onError(png_structp png, png_const_charp message)
{
    auto* reader = static_cast<PngReader*>(png_get_error_ptr(png));
    std::snprintf(reader->message, sizeof reader->message, "%s", message);
    png_longjmp(png, 1);
}

void onWarning(png_structp, png_const_charp) { }

void setTransforms(PngReader& reader, PixelFormat wanted)
{
    png_structp png = reader.png;
    const int type = png_get_color_type(png, reader.info);
    const bool colored = (type & PNG_COLOR_MASK_COLOR) != 0;
    png_set_expand(png);
    png_set_scale_16(png);
    if ((type & PNG_COLOR_MASK_ALPHA) != 0 || png_get_valid(png, reader.info, PNG_INFO_tRNS) != 0) {
        png_color_16 white {};
        white.red = white.green = white.blue = white.gray = 0xff;
        if (png_get_bit_depth(png, reader.info) == 16) {
            white.red = white.green = white.blue = white.gray = 0xffff;
        }
        png_set_background(png, &white, PNG_BACKGROUND_GAMMA_SCREEN, 0, 1);
    }
    if (wanted == PixelFormat::kRgb && !colored) {
        png_set_gray_to_rgb(png);
    }
    if (wanted == PixelFormat::kGray && colored) {
        png_set_rgb_to_gray(png, PNG_ERROR_ACTION_NONE, 0.299, 0.587);
    }
}

// No object with a destructor may live in the frames that png_longjmp leaves: rows is the caller's.
Status decode(PngReader& reader, const std::filesystem::path& file, std::FILE* stream,
    PixelFormat wanted, Page& page, std::vector<png_bytep>& rows)
{
    png_structp png = reader.png;
    png_init_io(png, stream);
    png_set_user_limits(png, 0x7fffffff, 0x7fffffff); // checkSize speaks with a code of its own
    png_read_info(png, reader.info);
    const png_uint_32 width = png_get_image_width(png, reader.info);
    const png_uint_32 height = png_get_image_height(png, reader.info);
    if (Status size = checkSize(file, width, height); !size.ok()) {
        return size;
    }
    setTransforms(reader, wanted);
    png_set_interlace_handling(png);
    png_read_update_info(png, reader.info);
    page.allocate(static_cast<int>(width), static_cast<int>(height), wanted);
    if (png_get_rowbytes(png, reader.info) != page.stride()) {
        return damaged(file, "unexpected pixel layout");
    }
    rows.resize(height);
    for (png_uint_32 y = 0; y < height; ++y) {
        rows[y] = page.row(static_cast<int>(y));
    }
    png_read_image(png, rows.data());
    png_read_end(png, nullptr);
    constexpr double kMetrePerInch = 0.0254;
    setResolution(page, png_get_x_pixels_per_meter(png, reader.info) * kMetrePerInch,
        png_get_y_pixels_per_meter(png, reader.info) * kMetrePerInch);
    return {};
}

struct PngDecodeJob
{
    const std::filesystem::path& file;
    std::FILE* stream;
    PixelFormat wanted;
    Page& page;
    std::vector<png_bytep>& rows;
    Status& status;
};

__attribute__((noinline)) void decodeJob(PngReader& reader, const PngDecodeJob& job)
{
    job.status = decode(reader, job.file, job.stream, job.wanted, job.page, job.rows);
}

/// false when the library gave up. Stands alone, without a local variable that a jump could spoil.
__attribute__((noinline)) bool decodeGuarded(PngReader& reader, const PngDecodeJob& job)
{
    if (setjmp(png_jmpbuf(reader.png))
        != 0) { // NOLINT(cert-err52-cpp): the library knows no other way
        return false;
    }
    decodeJob(reader, job);
    return true;
}

} // namespace

Status readPng(const std::filesystem::path& file, std::FILE* stream, PixelFormat wanted, Page& page)
{
    PngReader reader;
    std::vector<png_bytep> rows;
    Status status;
    reader.png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &reader, onError, onWarning);
    reader.info = reader.png != nullptr ? png_create_info_struct(reader.png) : nullptr;
    if (reader.info == nullptr) {
        return { kNoMemory, file.string() };
    }
    const bool failed = !decodeGuarded(reader, { file, stream, wanted, page, rows, status });
    return failed ? damaged(file, reader.message) : status;
}

} // namespace orva
