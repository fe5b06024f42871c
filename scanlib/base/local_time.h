// Seconds since 1970 as the date and time of this place.
#pragma once

#include <cstdint>
#include <ctime>

namespace orva {

inline std::tm localTime(std::int64_t unixSeconds)
{
    const auto seconds = static_cast<std::time_t>(unixSeconds);
    std::tm parts {};
    ::localtime_r(&seconds, &parts);
    return parts;
}

} // namespace orva
