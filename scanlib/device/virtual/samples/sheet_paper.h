// What happens to a printed page on its way through a scanner: it lies askew, has holes, shows the
// dark backing at its edge, is not quite white.
#pragma once

#include <QImage>

namespace samples {

constexpr int kDpi = 300;
constexpr int kWidth = 2480; // A4
constexpr int kHeight = 3508;

struct Wear
{
    double angleDegrees = 0; ///< clockwise
    int darkBorder = 0; ///< pixels of backing visible around the sheet
    bool holes = false;
};

/// A white page to draw on.
QImage blankPage();
/// Same size as the page. The grain is the same in every build.
QImage scanned(const QImage& page, const Wear& wear, unsigned seed);

} // namespace samples
