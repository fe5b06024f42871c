// A small grey picture of a page, for operations that look at the whole.
#pragma once

#include "scanlib/base/page.h"

namespace orva {

/// Grey, at the whole fraction of the resolution that comes nearest to `dpi` (never enlarged), each
/// pixel the mean of those that it stands for. Incomplete ones at the right and bottom are left
/// out. A page that does not know its resolution counts as 200 dpi.
struct ReducedPage
{
    Page gray;
    int factorX = 1; ///< page pixels a reduced pixel
    int factorY = 1;
};
ReducedPage reducedGray(const Page& page, double dpi);

/// The level of most pixels: the paper, or what the whole side is made of.
int paperLevel(const Page& gray);

/// Black where the grey differs from the paper by more than `contrast` levels, either way.
Page marksAgainst(const Page& gray, int paper, int contrast);

} // namespace orva
