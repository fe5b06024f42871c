// Writes image files for the tests with the encoders of the image libraries, and folders to put
// them in.
#pragma once

#include "scanlib/base/page.h"

#include <filesystem>
#include <string>
#include <vector>

namespace device_tests {

/// Removed with everything in it at the end of the test.
class TemporaryFolder
{
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    const std::filesystem::path& path() const { return m_path; }

private:
    std::filesystem::path m_path;
};

/// Quarters: red, green above blue, white. Grey: 0, 80 above 160, 255.
orva::Page quarters(int width, int height, orva::PixelFormat format, double dpi);
/// One colour all over.
orva::Page plain(int width, int height, std::uint8_t gray, double dpi);

void writeJpeg(const std::filesystem::path& file, const orva::Page& page);
void writePng(const std::filesystem::path& file, const orva::Page& page);
/// Raw (P5, P6) with a comment line.
void writePnm(const std::filesystem::path& file, const orva::Page& page);
/// LZW; pages darker than half become ink in G4.
void writeTiff(const std::filesystem::path& file, const std::vector<orva::Page>& pages, bool g4);
void writeText(const std::filesystem::path& file, const std::string& text);

/// The colour in the middle of a quarter (0 to 3, row by row), averaged over 9 pixels.
std::vector<int> quarterColor(const orva::Page& page, int quarter);

} // namespace device_tests
