// Compiled for AVX2 where the architecture has it; chosen when the program runs, because Debian's
// x86-64 and the older machines it runs on go without.
#include "scanlib/page/ops/row_loops.h"

#ifdef __AVX2__

#include <cstring>

namespace {

constexpr std::size_t kLanes = 16;

} // namespace

#include "scanlib/page/ops/row_loops_source.inc"

namespace orva {

const RowLoops* wideRowLoops()
{
    return __builtin_cpu_supports("avx2") != 0 ? &kLoops : nullptr;
}

} // namespace orva

#else

const orva::RowLoops* orva::wideRowLoops()
{
    return nullptr;
}

#endif
