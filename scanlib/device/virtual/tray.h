// The sheets that lie in the feeder: image files of a folder in the order of their names. "x-front"
// and "x-back" are the two sides of one sheet, any other image is a sheet printed on one side, and
// every page of a TIFF is a sheet of its own.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace orva {

struct Sheet
{
    std::filesystem::path front;
    std::filesystem::path back; ///< empty: nothing on the back
    int page = 0; ///< in a file of several pages, from 0
    bool lastOfFile = true; ///< the file leaves the tray with this sheet
};

/// Whether the feeder takes a file of this name: JPEG, PNG, TIFF or PNM by its extension, not
/// hidden.
bool isImageName(const std::filesystem::path& file);

/// The images of a folder in the order of their names; a folder that cannot be read has none.
std::vector<std::filesystem::path> imagesOf(const std::filesystem::path& folder);

/// Images by their extension, no hidden files; a folder that cannot be read is empty. A file that
/// cannot be understood counts as one sheet, so that feeding it tells the operator its name.
std::vector<Sheet> listSheets(const std::filesystem::path& folder);

/// Moves the files of a sheet that has gone through into the other folder, replacing what is there.
void moveSheet(const Sheet& sheet, const std::filesystem::path& toFolder);

/// "000007-" style numbers keep the order in which files are put in; both sides of a sheet get the
/// same.
std::vector<std::string> trayNames(
    const std::vector<std::filesystem::path>& files, const std::filesystem::path& tray);

} // namespace orva
