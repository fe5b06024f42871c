#include "scanlib/device/virtual/tray.h"

#include "scanlib/base/library_log.h"
#include "scanlib/device/virtual/image_file.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string_view>
#include <utility>

namespace orva {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kFrontMark = "-front";
constexpr std::string_view kBackMark = "-back";

/// The name without extension and mark; mark tells which one it was.
std::string sheetStem(const fs::path& file, std::string_view& mark)
{
    std::string stem = file.stem().string();
    mark = {};
    for (const std::string_view candidate : { kFrontMark, kBackMark }) {
        if (stem.size() > candidate.size()
            && stem.compare(stem.size() - candidate.size(), candidate.size(), candidate) == 0) {
            mark = candidate;
            stem.resize(stem.size() - candidate.size());
            break;
        }
    }
    return stem;
}

} // namespace

bool isImageName(const fs::path& file)
{
    static constexpr std::array<std::string_view, 9> kExtensions { ".jpg", ".jpeg", ".png", ".tif",
        ".tiff", ".pnm", ".pbm", ".pgm", ".ppm" };
    std::string extension = file.extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
        [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return std::find(kExtensions.begin(), kExtensions.end(), extension) != kExtensions.end()
        && file.filename().string().front() != '.';
}

std::vector<fs::path> imagesOf(const fs::path& folder)
{
    std::vector<fs::path> files;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        std::error_code ignored;
        if (isImageName(entry->path()) && entry->is_regular_file(ignored)) {
            files.push_back(entry->path());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

std::vector<Sheet> listSheets(const fs::path& folder)
{
    const std::vector<fs::path> files = imagesOf(folder);
    std::map<std::string, fs::path> fronts;
    std::map<std::string, fs::path> backs;
    std::string_view mark;
    for (const fs::path& file : files) {
        const std::string stem = sheetStem(file, mark);
        if (mark == kFrontMark) {
            fronts.emplace(stem, file);
        } else if (mark == kBackMark) {
            backs.emplace(stem, file);
        }
    }
    std::vector<Sheet> sheets;
    for (const fs::path& file : files) {
        const std::string stem = sheetStem(file, mark);
        if (mark == kBackMark && fronts.count(stem) != 0 && backs.at(stem) == file) {
            continue; // comes with its front
        }
        Sheet sheet;
        sheet.front = file;
        if (mark == kFrontMark && fronts.at(stem) == file && backs.count(stem) != 0) {
            sheet.back = backs.at(stem);
            sheets.push_back(sheet);
            continue;
        }
        int count = 1;
        if (!countImages(file, count).ok()) {
            count = 1;
        }
        for (int page = 0; page < count; ++page) {
            sheet.page = page;
            sheet.lastOfFile = page + 1 == count;
            sheets.push_back(sheet);
        }
    }
    return sheets;
}

void moveSheet(const Sheet& sheet, const fs::path& toFolder)
{
    for (const fs::path& file : { sheet.front, sheet.back }) {
        if (file.empty()) {
            continue;
        }
        std::error_code error;
        fs::rename(file, toFolder / file.filename(), error);
        if (error) {
            libraryLog(
                "virtual scanner: %s stays in the tray: %s", file.c_str(), error.message().c_str());
        }
    }
}

std::vector<std::string> trayNames(const std::vector<fs::path>& files, const fs::path& tray)
{
    constexpr std::size_t kDigits = 6;
    long number = 0;
    for (const fs::path& file : imagesOf(tray)) {
        const std::string name = file.filename().string();
        const std::size_t dash = name.find_first_not_of("0123456789");
        if (dash != std::string::npos && dash >= kDigits && dash <= 9 && name[dash] == '-') {
            number = std::max(number, std::strtol(name.c_str(), nullptr, 10));
        }
    }
    std::vector<std::string> names;
    std::map<std::string, std::pair<std::string_view, long>>
        openPairs; // mark and number of one side
    for (const fs::path& file : files) {
        std::string_view mark;
        const std::string key = (file.parent_path() / sheetStem(file, mark)).string();
        long own = 0;
        const auto pair = openPairs.find(key);
        if (!mark.empty() && pair != openPairs.end() && pair->second.first != mark) {
            own = pair->second.second;
            openPairs.erase(pair); // the same name once more is a new sheet
        } else {
            own = ++number;
            if (!mark.empty()) {
                openPairs[key] = { mark, own };
            }
        }
        char digits[32];
        std::snprintf(digits, sizeof digits, "%06ld-", own);
        names.push_back(digits + file.filename().string());
    }
    return names;
}

} // namespace orva
