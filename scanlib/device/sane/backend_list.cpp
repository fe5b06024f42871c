#include "scanlib/device/sane/backend_list.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string_view>

namespace orva {

namespace {

namespace fs = std::filesystem;

/// These wait for answers from the network, a second or two even where there is none.
constexpr std::array<std::string_view, 9> kNetworkBackends { "dell1600n_net", "epson2", "epsonds",
    "escl", "kodakaio", "magicolor", "net", "pixma", "xerox_mfp" };

void readNames(const fs::path& file, std::vector<std::string>& names)
{
    std::ifstream lines(file);
    std::string line;
    while (std::getline(lines, line)) {
        std::istringstream words(line.substr(0, line.find('#')));
        std::string name;
        // a name becomes part of a list with commas
        if (words >> name && name.find(',') == std::string::npos
            && std::find(names.begin(), names.end(), name) == names.end()) {
            names.push_back(name);
        }
    }
}

} // namespace

std::vector<fs::path> saneConfigFolders()
{
    const char* const variable = std::getenv("SANE_CONFIG_DIR");
    std::string list = variable != nullptr ? variable : "";
    if (list.empty() || list.back() == ':') {
        list += ".:/etc/sane.d";
    }
    std::vector<fs::path> folders;
    std::istringstream parts(list);
    std::string folder;
    while (std::getline(parts, folder, ':')) {
        folders.emplace_back(folder);
    }
    return folders;
}

std::vector<BackendGroup> backendGroups(const std::vector<fs::path>& folders)
{
    std::vector<std::string> own;
    std::vector<std::string> added;
    std::error_code error;
    const auto holding = [&](const char* name) {
        return std::find_if(folders.begin(), folders.end(),
            [&](const fs::path& folder) { return fs::exists(folder / name, error); });
    };
    if (const auto folder = holding("dll.d"); folder != folders.end()) {
        for (const auto& entry : fs::directory_iterator(*folder / "dll.d", error)) {
            const std::string name = entry.path().filename();
            if (name.front() != '.' && name.back() != '~') {
                readNames(entry.path(), added);
            }
        }
    }
    if (const auto folder = holding("dll.conf"); folder != folders.end()) {
        readNames(*folder / "dll.conf", own);
    }
    std::vector<BackendGroup> groups;
    std::string local;
    for (const std::string& name : own) {
        if (std::find(added.begin(), added.end(), name) != added.end()) {
            continue;
        }
        const auto* const network =
            std::find(kNetworkBackends.begin(), kNetworkBackends.end(), name);
        if (network != kNetworkBackends.end()) {
            groups.push_back({ name, name });
        } else {
            local += (local.empty() ? "" : ",") + name;
        }
    }
    for (const std::string& name : added) {
        groups.push_back({ name, name });
    }
    if (groups.empty()) {
        return { { "local", "" } };
    }
    if (!local.empty()) {
        groups.insert(groups.begin(), { "local", local });
    }
    return groups;
}

} // namespace orva
