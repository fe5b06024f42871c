#include "scanlib/page/ops/row_loops.h"

#include <cstring>

namespace {

constexpr std::size_t kLanes = 8; // SSE2, NEON

} // namespace

#include "scanlib/page/ops/row_loops_source.inc"

namespace orva {

const RowLoops& plainRowLoops()
{
    return kLoops;
}

const RowLoops& rowLoops()
{
    static const RowLoops& best = wideRowLoops() != nullptr ? *wideRowLoops() : plainRowLoops();
    return best;
}

} // namespace orva
