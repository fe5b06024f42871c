// Finds the printed page in a processed scan again, without asking the code that processed it:
// patches of the print are searched by normalised cross-correlation, and a similarity is fitted to
// where they lie. Angles are good to about 0.02 degrees, places to half a pixel at 150 dpi.
#pragma once

#include "bench/truth/scan_page.h"

#include <QTransform>

#include <optional>

namespace truth {

struct PageMatch
{
    QTransform pageToOutput; ///< 300 dpi pixels both
    double degrees = 0; ///< clockwise, what is left of the skew
    int patches = 0; ///< that agree
};

/// `ink` is the print alone. Looks for the page upright anywhere, and as it was scanned. Empty when
/// fewer than four patches are found, as on a blank page.
std::optional<PageMatch> matchPage(
    const orva::Page& output, const QImage& ink, const PageTruth& truth);

} // namespace truth
