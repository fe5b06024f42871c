// Punch holes: found as round dark discs near an edge, covered with the paper around them.
#pragma once

#include "scanlib/base/page.h"
#include "scanlib/page/ops/blobs.h"

#include <vector>

namespace orva {

/// What makes a blob a hole: 4 to 9 mm wide and high, as wide as high, filled like a disc, its
/// centre within 20 mm of an edge. `bits` gives the resolution.
bool looksLikeHole(const Blob& blob, const Page& bits);

/// Holes that show the backing darker than the paper. On a white backing there is nothing to see.
void removeHoles(Page& page);

} // namespace orva
