// What the readers of the single image formats share. Private to the virtual scanner.
#pragma once

#include "scanlib/base/page.h"
#include "scanlib/base/status.h"

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

namespace orva {

struct FileCloser
{
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using FilePointer = std::unique_ptr<std::FILE, FileCloser>;

/// Longest side in pixels: A3 at 1800 dpi.
inline constexpr std::uint64_t kMaxSidePixels = 30000;
/// A3 at 600 dpi has 70 million; twice that is 450 MB in colour.
inline constexpr std::uint64_t kMaxPixels = 150'000'000;

Status damaged(const std::filesystem::path& file, const std::string& why);
/// Refuses a size before any memory is taken for it.
Status checkSize(const std::filesystem::path& file, std::uint64_t width, std::uint64_t height);
/// 0 where the file names no usable resolution (outside 10 to 10000 dpi).
void setResolution(Page& page, double dpiX, double dpiY);

inline std::uint8_t grayOf(std::uint8_t red, std::uint8_t green, std::uint8_t blue)
{
    // ITU-R BT.601 luma in 1/256
    return static_cast<std::uint8_t>((red * 77 + green * 150 + blue * 29 + 128) >> 8);
}

Status readPnm(
    const std::filesystem::path& file, std::FILE* stream, PixelFormat wanted, Page& page);
Status readJpeg(
    const std::filesystem::path& file, std::FILE* stream, PixelFormat wanted, Page& page);
Status readPng(
    const std::filesystem::path& file, std::FILE* stream, PixelFormat wanted, Page& page);
Status readTiff(const std::filesystem::path& file, int index, PixelFormat wanted, Page& page);
Status countTiffPages(const std::filesystem::path& file, int& count);

} // namespace orva
