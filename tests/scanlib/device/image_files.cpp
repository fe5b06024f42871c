#include "tests/scanlib/device/image_files.h"

// jpeglib.h wants stdio before it
// clang-format off
#include <cstdio>
#include <jpeglib.h>
// clang-format on

#include <png.h>
#include <tiffio.h>

#include <cmath>
#include <fstream>

namespace device_tests {

using orva::Page;
using orva::PixelFormat;

Page quarters(int width, int height, PixelFormat format, double dpi)
{
    static constexpr std::uint8_t kColors[4][3] = { { 255, 0, 0 }, { 0, 255, 0 }, { 0, 0, 255 },
        { 255, 255, 255 } };
    static constexpr std::uint8_t kGrays[4] = { 0, 80, 160, 255 };
    Page page;
    page.allocate(width, height, format);
    page.dpiX = page.dpiY = dpi;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const int quarter = (y * 2 / height) * 2 + x * 2 / width;
            if (format == PixelFormat::kGray) {
                page.row(y)[x] = kGrays[quarter];
            } else {
                for (int c = 0; c < 3; ++c) {
                    page.row(y)[3 * x + c] = kColors[quarter][c];
                }
            }
        }
    }
    return page;
}

Page plain(int width, int height, std::uint8_t gray, double dpi)
{
    Page page;
    page.allocate(width, height, PixelFormat::kGray);
    page.dpiX = page.dpiY = dpi;
    page.pixels.assign(page.pixels.size(), gray);
    return page;
}

void writeJpeg(const std::filesystem::path& file, const Page& page)
{
    jpeg_compress_struct jpeg {};
    jpeg_error_mgr errors {};
    jpeg.err = jpeg_std_error(&errors);
    jpeg_create_compress(&jpeg);
    std::FILE* stream = std::fopen(file.c_str(), "wb");
    jpeg_stdio_dest(&jpeg, stream);
    jpeg.image_width = static_cast<JDIMENSION>(page.width);
    jpeg.image_height = static_cast<JDIMENSION>(page.height);
    jpeg.input_components = page.format == PixelFormat::kGray ? 1 : 3;
    jpeg.in_color_space = page.format == PixelFormat::kGray ? JCS_GRAYSCALE : JCS_RGB;
    jpeg_set_defaults(&jpeg);
    jpeg_set_quality(&jpeg, 95, TRUE);
    jpeg.density_unit = page.dpiX > 0 ? 1 : 0;
    jpeg.X_density = static_cast<UINT16>(page.dpiX);
    jpeg.Y_density = static_cast<UINT16>(page.dpiY);
    jpeg_start_compress(&jpeg, TRUE);
    for (int y = 0; y < page.height; ++y) {
        JSAMPROW row = const_cast<JSAMPROW>(page.row(y));
        jpeg_write_scanlines(&jpeg, &row, 1);
    }
    jpeg_finish_compress(&jpeg);
    jpeg_destroy_compress(&jpeg);
    std::fclose(stream);
}

void writePng(const std::filesystem::path& file, const Page& page)
{
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    std::FILE* stream = std::fopen(file.c_str(), "wb");
    png_init_io(png, stream);
    png_set_IHDR(png, info, static_cast<png_uint_32>(page.width),
        static_cast<png_uint_32>(page.height), 8,
        page.format == PixelFormat::kGray ? PNG_COLOR_TYPE_GRAY : PNG_COLOR_TYPE_RGB,
        PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    if (page.dpiX > 0) {
        png_set_pHYs(png, info, static_cast<png_uint_32>(std::lround(page.dpiX / 0.0254)),
            static_cast<png_uint_32>(std::lround(page.dpiY / 0.0254)), PNG_RESOLUTION_METER);
    }
    png_write_info(png, info);
    for (int y = 0; y < page.height; ++y) {
        png_write_row(png, page.row(y));
    }
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    std::fclose(stream);
}

void writePnm(const std::filesystem::path& file, const Page& page)
{
    std::ofstream stream(file, std::ios::binary);
    stream << (page.format == PixelFormat::kGray ? "P5" : "P6") << "\n# drawn by a test\n"
           << page.width << ' ' << page.height << "\n255\n";
    stream.write(reinterpret_cast<const char*>(page.pixels.data()),
        static_cast<std::streamsize>(page.pixels.size()));
}

void writeTiff(const std::filesystem::path& file, const std::vector<Page>& pages, bool g4)
{
    TIFF* tiff = TIFFOpen(file.c_str(), "w");
    for (const Page& page : pages) {
        const bool gray = page.format == PixelFormat::kGray;
        TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, page.width);
        TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, page.height);
        TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, g4 ? 1 : 8);
        TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, gray ? 1 : 3);
        TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC,
            g4         ? PHOTOMETRIC_MINISWHITE
                : gray ? PHOTOMETRIC_MINISBLACK
                       : PHOTOMETRIC_RGB);
        TIFFSetField(tiff, TIFFTAG_COMPRESSION, g4 ? COMPRESSION_CCITTFAX4 : COMPRESSION_LZW);
        TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
        TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, 16);
        TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
        TIFFSetField(tiff, TIFFTAG_XRESOLUTION, page.dpiX);
        TIFFSetField(tiff, TIFFTAG_YRESOLUTION, page.dpiY);
        for (int y = 0; y < page.height; ++y) {
            std::vector<std::uint8_t> row(page.row(y), page.row(y) + page.stride());
            if (g4) {
                std::vector<std::uint8_t> bits(row.size() / 8 + 1);
                for (std::size_t x = 0; x < row.size(); ++x) {
                    bits[x / 8] = static_cast<std::uint8_t>(
                        bits[x / 8] | (row[x] < 128 ? 0x80 >> (x % 8) : 0));
                }
                row = bits;
            }
            TIFFWriteScanline(tiff, row.data(), static_cast<std::uint32_t>(y));
        }
        TIFFWriteDirectory(tiff);
    }
    TIFFClose(tiff);
}

std::vector<int> quarterColor(const Page& page, int quarter)
{
    const int channels = page.format == PixelFormat::kGray ? 1 : 3;
    const int centreX = page.width / 4 + (quarter % 2) * page.width / 2;
    const int centreY = page.height / 4 + (quarter / 2) * page.height / 2;
    std::vector<int> sums(static_cast<std::size_t>(channels));
    for (int y = centreY - 1; y <= centreY + 1; ++y) {
        for (int x = centreX - 1; x <= centreX + 1; ++x) {
            for (int c = 0; c < channels; ++c) {
                sums[static_cast<std::size_t>(c)] += page.row(y)[channels * x + c];
            }
        }
    }
    for (int& sum : sums) {
        sum = (sum + 4) / 9;
    }
    return sums;
}

} // namespace device_tests
