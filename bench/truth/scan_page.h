// Pages of the truth set as the scanner library sees them.
#pragma once

#include "bench/truth/truth_record.h"
#include "scanlib/base/page.h"

#include <QImage>

namespace truth {

/// Colour, 300 dpi. Throws std::runtime_error when there is no such picture.
orva::Page readScan(const QString& folder, const PageTruth& page);
/// NAME-ink.png or NAME-stamp.png; grey.
QImage readLayer(const QString& folder, const PageTruth& page, const char* layer);

/// The sheet alone, upright: what a perfect crop and deskew would give. Bilinear.
orva::Page straightened(const orva::Page& scan, const PageTruth& page);

/// Luminance 0..255, nearest pixel; 255 outside. Any pixel format.
int lumaAt(const orva::Page& page, double x, double y);

/// A small grey picture for searching in: each pixel the mean of factor x factor pixels.
struct Gray
{
    int width = 0;
    int height = 0;
    std::vector<float> level;

    float at(int x, int y) const { return level[static_cast<std::size_t>(y) * width + x]; }
};
Gray reduced(const orva::Page& page, int factor);
Gray reduced(const QImage& gray, int factor);

} // namespace truth
