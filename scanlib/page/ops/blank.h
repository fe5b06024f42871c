// Is there anything on this side?
#pragma once

#include "scanlib/base/page.h"

namespace orva {

/// Square millimetres of ink on the sheet (sheet.h), at 100 dpi: everything that differs from the
/// paper by more than a quarter of its brightness (fainter is the other side showing through),
/// except
///   specks below 0.6 mm (dust), punch holes, and what touches the outer 3 mm (borders, folded and
///   torn corners, shadows) unless it covers a twentieth of the side (a picture up to the edge).
double inkOn(const Page& page);

/// How much ink a side may hold and still count as blank: 0.05 mm2 x 10^(0.03 x threshold), so 0.05
/// at 0, 2.2 at 55 (a short line of print has 5 or more), 50 at 100. `threshold` 0..100.
double blankLimit(int threshold);

} // namespace orva
