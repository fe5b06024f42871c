// Makes a scan of a printed page: what lies on the sheet, what shines through it, how it lay in the
// feeder, what it lay on, and what the sensor adds.
#pragma once

#include "bench/truth/dice.h"
#include "bench/truth/page_layout.h"

namespace truth {

struct ScanPlan
{
    double degrees = 0; ///< clockwise
    const char* backing = "dark"; ///< dark, white, noisy; none: the scan is just the sheet's size
    int paper = 245; ///< level of white paper, 0..255
    int yellow = 0; ///< by how much blue is below it
    double uneven = 0; ///< 0..1, loss of light at the far corner
    double noise = 4; ///< standard deviation of a sample, levels
    double bleed = 0; ///< 0..1, how much of the back's ink shines through
    int holes = 0; ///< 0, 2, 3, 4 or 30 along the left edge
    const char* stamp = ""; ///< red or blue
    int specks = 0;
    bool foldedCorner = false; ///< top right, folded under
};

struct Scan
{
    QImage picture; ///< colour, 300 dpi
    QImage stampMask; ///< in page pixels, white where the stamp is; null without a stamp
};

/// `back` is the ink of the other side. Fills in what PageTruth knows of the scan.
Scan scanPage(const PrintedPage& front, const QImage& back, const ScanPlan& plan, Dice& dice,
    PageTruth& page);

} // namespace truth
