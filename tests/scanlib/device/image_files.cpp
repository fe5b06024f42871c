#include "tests/scanlib/device/image_files.h"

#include <gtest/gtest.h>
#include <png.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
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

void writeConverted(
    const std::filesystem::path& file, const std::vector<Page>& pages, const std::string& options)
{
    std::string command = "convert -units PixelsPerInch";
    for (std::size_t i = 0; i < pages.size(); ++i) {
        const std::string source = file.string() + "." + std::to_string(i) + ".pnm";
        writePnm(source, pages[i]);
        const std::string density = std::to_string(std::lround(pages[i].dpiX));
        command.append(" -density ").append(density).append(" '").append(source).append("'");
    }
    command.append(" ").append(options).append(" '").append(file.string()).append("'");
    EXPECT_EQ(std::system(command.c_str()), 0) << command;
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
