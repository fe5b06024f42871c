// Where the job log of a day lies. Shared by the writer and the viewer.
#pragma once

#include <ctime>
#include <string>

namespace log_paths {

struct Day
{
    int year = 0;
    int month = 0; ///< 1..12
    int day = 0; ///< 1..31
};

Day dayOf(const std::tm& local);
/// "2024-3"
std::string yearMonth(const Day& day);
/// Folder of the day's month. The destination ends with a slash; the result does not.
std::string monthFolder(const std::string& destination, const Day& day);
/// ".../2024-3/tarvex-base-pro-2024_3_7.log" for that tag.
std::string dayFile(const std::string& destination, const char* tag, const Day& day);

} // namespace log_paths
