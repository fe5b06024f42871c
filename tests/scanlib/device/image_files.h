// Writes image files for the tests, those of many forms with ImageMagick.
#pragma once

#include "scanlib/base/page.h"
#include "tests/scanlib/temporary_folder.h"

#include <filesystem>
#include <string>
#include <vector>

namespace device_tests {

/// Quarters: red, green above blue, white. Grey: 0, 80 above 160, 255.
orva::Page quarters(int width, int height, orva::PixelFormat format, double dpi);
/// One colour all over.
orva::Page plain(int width, int height, std::uint8_t gray, double dpi);

void writePng(const std::filesystem::path& file, const orva::Page& page);
/// Raw (P5, P6) with a comment line.
void writePnm(const std::filesystem::path& file, const orva::Page& page);
/// A JPEG or TIFF file, by its extension; options of "convert" besides.
void writeConverted(const std::filesystem::path& file, const std::vector<orva::Page>& pages,
    const std::string& options = "");

/// The colour in the middle of a quarter (0 to 3, row by row), averaged over 9 pixels.
std::vector<int> quarterColor(const orva::Page& page, int quarter);

} // namespace device_tests
