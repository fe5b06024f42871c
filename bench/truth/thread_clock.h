// Processor time of the calling thread: other programs' share of the machine is not in it.
#pragma once

#include <ctime>

namespace truth {

inline double threadMs()
{
    timespec time {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

} // namespace truth
