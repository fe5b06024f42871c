#include "scanlib/page/ops/deskew.h"

#include "scanlib/base/units.h"
#include "scanlib/page/ops/reduced.h"
#include "scanlib/page/ops/resample.h"
#include "scanlib/page/ops/sheet.h"
#include "scanlib/page/ops/skew.h"

#include <cmath>
#include <optional>

namespace orva {

namespace {

constexpr double kSearchDpi = 100;
constexpr double kLeastDegrees = 0.1;

/// The whole page turned around its middle, as large as before.
TiltedRect wholePage(const Page& page, double degrees)
{
    const double radians = degrees * units::kPi / 180.0;
    const double halfWidth = page.width / 2.0;
    const double halfHeight = page.height / 2.0;
    TiltedRect rect;
    rect.degrees = degrees;
    rect.width = page.width;
    rect.height = page.height;
    rect.x = halfWidth - halfWidth * std::cos(radians) + halfHeight * std::sin(radians);
    rect.y = halfHeight - halfWidth * std::sin(radians) - halfHeight * std::cos(radians);
    return rect;
}

} // namespace

void cropAndDeskew(Page& page)
{
    // Angles are those of square pixels.
    const bool square = std::abs(page.dpiX - page.dpiY) < 0.01 * page.dpiX || page.dpiX <= 0;
    const ReducedPage reduced = reducedGray(page, kSearchDpi);
    const int factor = reduced.factorX;
    if (!square || factor != reduced.factorY) {
        return;
    }
    if (std::optional<TiltedRect> rect = findSheet(reduced.gray)) {
        rect->x *= factor;
        rect->y *= factor;
        rect->width *= factor;
        rect->height *= factor;
        if (std::abs(rect->degrees) < kLeastDegrees) {
            rect->degrees = 0;
            rect->x = std::round(rect->x);
            rect->y = std::round(rect->y);
        }
        extract(page, *rect);
        return;
    }
    const double degrees = textSkewDegrees(reduced.gray);
    if (std::abs(degrees) >= kLeastDegrees) {
        extract(page, wholePage(page, degrees));
    }
}

} // namespace orva
