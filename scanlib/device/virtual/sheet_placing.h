// Puts a sheet image on the scan area that was asked for: cut where the sheet is larger, white
// where it is smaller, in the resolution asked for. The sheet lies in the top left corner of the
// source.
#pragma once

#include "scanlib/base/page.h"

namespace orva {

struct ScanArea
{
    double leftMm = 0;
    double topMm = 0;
    double widthMm = 0;
    double heightMm = 0;
    double dpiX = 0;
    double dpiY = 0;
};

/// Pixels of a length, at least 1.
int pixelsOf(double mm, double dpi);

/// In: the whole sheet in its own resolution, kGray or kRgb. Out: the area. A sheet that already
/// agrees is left where it is. Shrinking averages, enlarging interpolates linearly.
void placeSheet(Page& page, const ScanArea& area);

} // namespace orva
