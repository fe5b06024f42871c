// TIFF through libtiff's own conversion to 8-bit colour, which knows every photometric kind and
// every compression (G4, LZW, JPEG); 1-bit and 8-bit grey come out as grey.
#include "scanlib/device/virtual/image_formats.h"

#include <tiffio.h>

#include <cstdarg>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace orva {

namespace {

struct TiffCloser
{
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};
struct OptionsFreer
{
    void operator()(TIFFOpenOptions* options) const { TIFFOpenOptionsFree(options); }
};

int onError(TIFF*, void* userData, const char*, const char* format, va_list arguments)
{
    auto* message = static_cast<std::string*>(userData);
    if (message->empty()) {
        char text[256];
        std::vsnprintf(text, sizeof text, format, arguments);
        *message = text;
    }
    return 1;
}

int onWarning(TIFF*, void*, const char*, const char*, va_list)
{
    return 1;
}

std::unique_ptr<TIFF, TiffCloser> openTiff(const std::filesystem::path& file, std::string& message)
{
    const std::unique_ptr<TIFFOpenOptions, OptionsFreer> options(TIFFOpenOptionsAlloc());
    if (options == nullptr) {
        return nullptr;
    }
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), onError, &message);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), onWarning, nullptr);
    // one strip may hold the whole page at 4 bytes a pixel, nothing is larger
    TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), static_cast<tmsize_t>(kMaxPixels * 4));
    // m: no mapping, so that a file cut off while it is read gives an error and not a signal
    return std::unique_ptr<TIFF, TiffCloser>(TIFFOpenExt(file.c_str(), "rm", options.get()));
}

void readResolution(TIFF* tiff, Page& page)
{
    constexpr double kCmPerInch = 2.54;
    float x = 0;
    float y = 0;
    std::uint16_t unit = RESUNIT_INCH;
    TIFFGetField(tiff, TIFFTAG_XRESOLUTION, &x);
    TIFFGetField(tiff, TIFFTAG_YRESOLUTION, &y);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_RESOLUTIONUNIT, &unit);
    const double factor = unit == RESUNIT_INCH ? 1 : unit == RESUNIT_CENTIMETER ? kCmPerInch : 0;
    setResolution(page, static_cast<double>(x) * factor, static_cast<double>(y) * factor);
}

} // namespace

Status countTiffPages(const std::filesystem::path& file, int& count)
{
    // A chain of directories can be made endless; no tray holds a file of so many pages.
    constexpr int kMaxPages = 10000;
    std::string message;
    const auto tiff = openTiff(file, message);
    if (tiff == nullptr) {
        return damaged(file, message);
    }
    count = 1;
    while (count < kMaxPages && TIFFReadDirectory(tiff.get()) != 0) {
        ++count;
    }
    return message.empty() ? Status() : damaged(file, message);
}

Status readTiff(const std::filesystem::path& file, int index, PixelFormat wanted, Page& page)
{
    std::string message;
    const auto tiff = openTiff(file, message);
    if (tiff == nullptr
        || (index > 0 && TIFFSetDirectory(tiff.get(), static_cast<tdir_t>(index)) == 0)) {
        return damaged(file, message);
    }
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    TIFFGetField(tiff.get(), TIFFTAG_IMAGEWIDTH, &width);
    TIFFGetField(tiff.get(), TIFFTAG_IMAGELENGTH, &height);
    if (Status size = checkSize(file, width, height); !size.ok()) {
        return size;
    }
    std::vector<std::uint32_t> raster(static_cast<std::size_t>(width) * height);
    if (TIFFReadRGBAImageOriented(tiff.get(), width, height, raster.data(), ORIENTATION_TOPLEFT, 1)
            == 0
        || !message.empty()) {
        return damaged(file, message);
    }
    page.allocate(static_cast<int>(width), static_cast<int>(height), wanted);
    readResolution(tiff.get(), page);
    std::uint8_t* to = page.pixels.data();
    for (const std::uint32_t pixel : raster) {
        const auto red = static_cast<std::uint8_t>(TIFFGetR(pixel));
        const auto green = static_cast<std::uint8_t>(TIFFGetG(pixel));
        const auto blue = static_cast<std::uint8_t>(TIFFGetB(pixel));
        if (wanted == PixelFormat::kGray) {
            *to++ = grayOf(red, green, blue);
        } else {
            *to++ = red;
            *to++ = green;
            *to++ = blue;
        }
    }
    return {};
}

} // namespace orva
