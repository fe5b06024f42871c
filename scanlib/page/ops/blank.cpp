#include "scanlib/page/ops/blank.h"

#include "scanlib/base/units.h"
#include "scanlib/page/ops/holes.h"
#include "scanlib/page/ops/reduced.h"
#include "scanlib/page/ops/sheet.h"

#include <algorithm>
#include <cmath>

namespace orva {

namespace {

constexpr double kBlankSearchDpi = 100;
constexpr int kLeastContrast = 24; // grey levels
constexpr double kDustMm = 0.6; // two pixels of the search are 0.51
constexpr double kBorderMm = 3;
// An even picture up to the edge could be backing: a side is kept rather than dropped.
constexpr double kLeastSheet = 0.75; // of the scanned area
constexpr double kPictureShare = 0.05;

} // namespace

double inkOn(const Page& page)
{
    Page gray = reducedGray(page, kBlankSearchDpi).gray;
    const std::optional<TiltedRect> sheet = findSheet(gray);
    if (sheet && sheet->width * sheet->height > kLeastSheet * gray.width * gray.height) {
        gray = extracted(gray, *sheet); // what lies around it is nobody's ink
    }
    const int paper = paperLevel(gray);
    const Page bits = marksAgainst(gray, paper, std::max(kLeastContrast, paper / 4));
    const double mmX = units::kMillimetresPerInch / gray.dpiX;
    const double mmY = units::kMillimetresPerInch / gray.dpiY;
    const double side = static_cast<double>(gray.width) * gray.height;
    // On a strip too narrow for borders all of it counts.
    const int borderX = gray.width * mmX > 6 * kBorderMm ? static_cast<int>(kBorderMm / mmX) : 0;
    const int borderY = gray.height * mmY > 6 * kBorderMm ? static_cast<int>(kBorderMm / mmY) : 0;
    double ink = 0;
    for (const Blob& blob : findBlobs(bits).blobs) {
        const bool dust = blob.width() * mmX < kDustMm && blob.height() * mmY < kDustMm;
        const bool atBorder = blob.left < borderX || blob.right > gray.width - borderX
            || blob.top < borderY || blob.bottom > gray.height - borderY;
        const bool picture = static_cast<double>(blob.area) > side * kPictureShare;
        if (!dust && (!atBorder || picture) && !looksLikeHole(blob, bits)) {
            ink += static_cast<double>(blob.area) * mmX * mmY;
        }
    }
    return ink;
}

double blankLimit(int threshold)
{
    return 0.05 * std::pow(10.0, 0.03 * threshold);
}

} // namespace orva
