// One page out of two, two pages out of one.
#pragma once

#include "scanlib/base/page.h"

#include <utility>

namespace orva {

enum class Direction
{
    kTopBottom,
    kLeftRight
};

/// Copies width x height pixels between pages of one format. Both areas must lie inside.
void copyArea(
    const Page& from, int fromX, int fromY, Page& to, int toX, int toY, int width, int height);

/// The second page below or to the right of the first, which gives resolution and identity. The
/// smaller one is filled up with white at its right or bottom; of different formats the richer
/// wins.
Page merged(Page first, Page second, Direction direction);
/// Two halves, top or left first; of an odd number of pixels the second half has one more. Both
/// keep resolution and identity.
std::pair<Page, Page> halves(const Page& page, Direction direction);

} // namespace orva
