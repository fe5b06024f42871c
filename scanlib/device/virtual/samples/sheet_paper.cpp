#include "scanlib/device/virtual/samples/sheet_paper.h"

#include <QPainter>

#include <algorithm>
#include <random>

namespace samples {

namespace {

void addGrain(QImage& image, unsigned seed)
{
    std::minstd_rand random(seed);
    for (int y = 0; y < image.height(); ++y) {
        uchar* line = image.scanLine(y);
        for (int x = 0; x < image.width(); ++x, line += 3) {
            const int change = static_cast<int>(random() % 7) - 3;
            for (int c = 0; c < 3; ++c) {
                line[c] = static_cast<uchar>(std::clamp(line[c] + change, 0, 255));
            }
        }
    }
}

} // namespace

QImage blankPage()
{
    QImage page(kWidth, kHeight, QImage::Format_RGB888);
    page.fill(QColor(250, 249, 245));
    return page;
}

QImage scanned(const QImage& page, const Wear& wear, unsigned seed)
{
    const QColor backing(38, 38, 40);
    QImage result(kWidth, kHeight, QImage::Format_RGB888);
    result.fill(wear.darkBorder > 0 ? backing : QColor(250, 249, 245));
    QPainter painter(&result);
    painter.setRenderHints(QPainter::SmoothPixmapTransform | QPainter::Antialiasing);
    painter.translate(kWidth / 2.0, kHeight / 2.0);
    painter.rotate(wear.angleDegrees);
    const double scale = 1 - 2.0 * wear.darkBorder / kWidth;
    painter.scale(scale, scale);
    painter.translate(-kWidth / 2.0, -kHeight / 2.0);
    painter.drawImage(0, 0, page);
    if (wear.holes) { // two holes, 6 mm wide, 80 mm apart, 12 mm from the edge
        const double mm = kDpi / 25.4;
        painter.setPen(Qt::NoPen);
        painter.setBrush(backing);
        for (const double offset : { -40.0, 40.0 }) {
            painter.drawEllipse(QPointF(12 * mm, kHeight / 2.0 + offset * mm), 3 * mm, 3 * mm);
        }
    }
    painter.end();
    addGrain(result, seed);
    return result;
}

} // namespace samples
