// Punch holes: found as round dark discs near an edge, covered with the paper around them.
#pragma once

#include "scanlib/base/page.h"
#include "scanlib/page/ops/blobs.h"

#include <vector>

namespace orva {

/// What makes a blob a hole: 4 to 9 mm wide and high, as wide as high, filled like a disc, its
/// centre within 20 mm of an edge. `bits` gives the resolution.
bool looksLikeHole(const Blob& blob, const Page& bits);

/// Covers the holes of a punch, two or more in a line (80 mm apart, 4 of them, 3, or 30 at 9.5 mm),
/// that differ from the paper by 60 levels, or if there are none by 18 (over a white backing only
/// their shadow tells). A lone round mark is left: it may be print.
void removeHoles(Page& page);

} // namespace orva
