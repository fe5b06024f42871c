#include "scanlib/ocr/models.h"

#include <algorithm>
#include <array>
#include <sstream>
#include <vector>

namespace orva {

namespace {

/// Where the distributions put them; the first that holds what is asked for serves.
constexpr std::array kInstalledFolders { "/usr/share/tesseract-ocr/5/tessdata",
    "/usr/share/tesseract-ocr/4.00/tessdata", "/usr/share/tessdata",
    "/usr/share/tesseract/tessdata", "/usr/local/share/tessdata" };

std::vector<std::string> namesIn(const std::string& list)
{
    std::vector<std::string> names;
    std::istringstream parts(list);
    for (std::string name; std::getline(parts, name, '+');) {
        names.push_back(name);
    }
    return names;
}

std::string packageOf(std::string model)
{
    std::replace(model.begin(), model.end(), '_', '-');
    return "tesseract-ocr-" + model;
}

/// What of the names the folder lacks, as text for the log; empty when it has all.
std::string missingIn(const std::filesystem::path& folder, const std::vector<std::string>& names)
{
    std::string missing;
    for (const std::string& name : names) {
        std::error_code error;
        if (!std::filesystem::is_regular_file(folder / (name + ".traineddata"), error)) {
            missing += (missing.empty() ? "" : ", ") + name + " (package " + packageOf(name) + ")";
        }
    }
    return missing;
}

} // namespace

Status findModels(
    const RecognitionSettings& settings, const std::string& names, std::filesystem::path& folder)
{
    std::vector<std::filesystem::path> folders(kInstalledFolders.begin(), kInstalledFolders.end());
    if (!settings.models.empty()) {
        folders = { settings.models };
    }
    const std::vector<std::string> wanted = namesIn(names);
    std::string missing;
    for (const std::filesystem::path& candidate : folders) {
        const std::string lacks = missingIn(candidate, wanted);
        if (lacks.empty()) {
            folder = candidate;
            return {};
        }
        // The folder that has some of them tells best what is missing.
        missing = missing.empty() || lacks.size() < missing.size() ? lacks : missing;
    }
    return { kModelMissing, "models are missing: " + missing };
}

} // namespace orva
