// Which drivers SANE is configured for, cut into groups that are searched side by side: a slow or
// broken driver then delays or loses its own scanners only, and the log can name it.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace orva {

struct BackendGroup
{
    std::string name; ///< of the driver, or "local"
    std::string backends; ///< separated by commas; empty: what the configuration lists
};

/// The folders in which SANE looks for its configuration: SANE_CONFIG_DIR, else its own default.
std::vector<std::filesystem::path> saneConfigFolders();

/// Reads dll.conf and dll.d as SANE does. Drivers that ask the network and those that came with
/// another package have a group each, the others one together. Never empty.
std::vector<BackendGroup> backendGroups(const std::vector<std::filesystem::path>& folders);

} // namespace orva
