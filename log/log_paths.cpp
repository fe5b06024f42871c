#include "log/log_paths.h"

namespace log_paths {

Day dayOf(const std::tm& local)
{
    return { local.tm_year + 1900, local.tm_mon + 1, local.tm_mday };
}

std::string yearMonth(const Day& day)
{
    return std::to_string(day.year) + '-' + std::to_string(day.month);
}

std::string monthFolder(const std::string& destination, const Day& day)
{
    return destination + yearMonth(day);
}

std::string dayFile(const std::string& destination, const char* tag, const Day& day)
{
    return monthFolder(destination, day) + '/' + tag + '-' + std::to_string(day.year) + '_'
        + std::to_string(day.month) + '_' + std::to_string(day.day) + ".log";
}

} // namespace log_paths
