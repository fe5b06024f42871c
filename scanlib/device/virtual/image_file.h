// Reads one page image of the tray. The files come from anywhere: every size is checked before
// memory is taken, and a file that cannot be read whole is refused, never delivered in part.
#pragma once

#include "scanlib/base/page.h"
#include "scanlib/base/status.h"

#include <cstdint>
#include <filesystem>

namespace orva {

/// Number of pages in a file: more than one for TIFF only. Fails like readImage.
Status countImages(const std::filesystem::path& file, int& count);

/// Reads the image (JPEG, PNG, TIFF, PNM, told apart by content) as 8-bit grey or as colour; wanted
/// is kGray or kRgb. The resolution is that of the file; without one the image is as wide as A4.
/// Memory that the page already holds is used again. index counts from 0.
/// kDamagedPage (the detail names the file), kPageTooLarge, kNoMemory; kDeviceNotFound when there
/// is no such file. The page's pixels are then unspecified.
Status readImage(const std::filesystem::path& file, int index, PixelFormat wanted, Page& page);

} // namespace orva
