// Business cards (90 x 54 mm) whose pages are known: a ground of one colour, a black frame corner
// at the upper left, so that a turned page shows, and as many black bars as the number of the side.
#pragma once

#include <QImage>

#include <string>

namespace cards {

inline constexpr double kWidthMm = 90;
inline constexpr double kHeightMm = 54;

/// Sides count from 1; two make a sheet. "card-2-back.png" is side 4.
std::string fileName(int side);
QImage picture(int side, int dpi);
/// As PNG with its resolution. False when it cannot be written.
bool draw(int side, int dpi, const std::string& file);

/// Mean distance of two pictures of the same size over all channels, 0 to 255; 255 when the sizes
/// differ.
double distance(const QImage& a, const QImage& b);

} // namespace cards
