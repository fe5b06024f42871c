// The ruling lines that are printed on a page: the frames of tables and forms.
#pragma once

#include "scanlib/writers/writer.h"

#include <vector>

namespace orva {

/// A straight line along one axis, in pixels of the page turned straight (see text_rows.h).
struct Ruling
{
    double at = 0; ///< y of a line across, x of a line down
    double from = 0;
    double to = 0;
};

struct Rulings
{
    std::vector<Ruling> across; ///< unordered
    std::vector<Ruling> down;
};

/// From a page whose payload is a JPEG file; `slope` is that of its text. A line is darker than the
/// paper on both sides of it, up to 1 mm thick and at least 6 mm long. None where the payload is no
/// JPEG file, and none where there are too many: that is a screened picture.
Rulings findRulings(const EncodedPage& page, double slope);

} // namespace orva
