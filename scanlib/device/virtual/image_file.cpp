#include "scanlib/device/virtual/image_file.h"

#include "scanlib/device/papers.h"
#include "scanlib/device/virtual/image_formats.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <new>

namespace orva {

namespace {

enum class ImageKind
{
    kUnknown,
    kJpeg,
    kPng,
    kTiff,
    kPnm
};

ImageKind kindOf(std::FILE* stream)
{
    std::array<unsigned char, 8> head {};
    const std::size_t count = std::fread(head.data(), 1, head.size(), stream);
    std::rewind(stream);
    const auto startsWith = [&](const char* bytes, std::size_t length) {
        return count >= length && std::memcmp(head.data(), bytes, length) == 0;
    };
    if (startsWith("\xff\xd8\xff", 3)) {
        return ImageKind::kJpeg;
    }
    if (startsWith("\x89PNG\r\n\x1a\n", 8)) {
        return ImageKind::kPng;
    }
    if (startsWith("II*\0", 4) || startsWith("MM\0*", 4) || startsWith("II+\0", 4)
        || startsWith("MM\0+", 4)) {
        return ImageKind::kTiff;
    }
    if (count >= 2 && head[0] == 'P' && head[1] >= '1' && head[1] <= '6') {
        return ImageKind::kPnm;
    }
    return ImageKind::kUnknown;
}

Status unknownKind(const std::filesystem::path& file)
{
    return damaged(file, "not a JPEG, PNG, TIFF or PNM image");
}

FilePointer openFile(const std::filesystem::path& file, Status& status)
{
    FilePointer stream(std::fopen(file.c_str(), "rbe"));
    if (stream == nullptr) {
        const int error = errno;
        status = error == ENOENT
            ? Status(kDeviceNotFound, file.string() + " is gone")
            : damaged(file, std::string("cannot be opened: ") + std::strerror(error));
    }
    return stream;
}

} // namespace

Status damaged(const std::filesystem::path& file, const std::string& why)
{
    return { kDamagedPage, file.string() + ": " + why };
}

Status checkSize(const std::filesystem::path& file, std::uint64_t width, std::uint64_t height)
{
    if (width == 0 || height == 0) {
        return damaged(file, "no pixels");
    }
    if (width > kMaxSidePixels || height > kMaxSidePixels || width * height > kMaxPixels) {
        return { kPageTooLarge,
            file.string() + ": " + std::to_string(width) + " x " + std::to_string(height)
                + " pixels" };
    }
    return {};
}

void setResolution(Page& page, double dpiX, double dpiY)
{
    const auto usable = [](double dpi) { return dpi >= 10 && dpi <= 10000; };
    const bool known = usable(dpiX) && usable(dpiY);
    page.dpiX = known ? dpiX : 0;
    page.dpiY = known ? dpiY : 0;
}

Status countImages(const std::filesystem::path& file, int& count)
{
    Status status;
    const FilePointer stream = openFile(file, status);
    count = 1;
    if (stream == nullptr) {
        return status;
    }
    switch (kindOf(stream.get())) {
    case ImageKind::kTiff:
        return countTiffPages(file, count);
    case ImageKind::kUnknown:
        return unknownKind(file);
    default:
        return {};
    }
}

Status readImage(const std::filesystem::path& file, int index, PixelFormat wanted, Page& page)
{
    Status status;
    const FilePointer stream = openFile(file, status);
    if (stream == nullptr) {
        return status;
    }
    try {
        switch (kindOf(stream.get())) {
        case ImageKind::kJpeg:
            status = readJpeg(file, stream.get(), wanted, page);
            break;
        case ImageKind::kPng:
            status = readPng(file, stream.get(), wanted, page);
            break;
        case ImageKind::kTiff:
            status = readTiff(file, index, wanted, page);
            break;
        case ImageKind::kPnm:
            status = readPnm(file, stream.get(), wanted, page);
            break;
        case ImageKind::kUnknown:
            return unknownKind(file);
        }
    } catch (const std::bad_alloc&) {
        return { kNoMemory, file.string() };
    }
    if (status.ok() && page.dpiX <= 0) {
        constexpr double kA4WidthMm = 210;
        page.dpiX = page.dpiY = page.width * kMmPerInch / kA4WidthMm;
    }
    return status;
}

} // namespace orva
