// What lies on the sheet besides its print: photos, a stamp, punch holes.
#pragma once

#include "bench/truth/dice.h"
#include "bench/truth/truth_record.h"

#include <QImage>

namespace truth {

/// Hills under an evening sky, with the grain of a print.
QImage drawnPhoto(int width, int height, Dice& dice);
/// A round company stamp with a star; RGB on white, 42 mm wide. Red or blue.
QImage drawnStamp(const QString& color);
/// ISO 838 for 2 and 4 holes, US for 3, loose-leaf for 30; along the left edge.
QVector<Hole> punchHoles(int count);

} // namespace truth
