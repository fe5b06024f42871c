#include "bench/truth/sheet.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace truth {

namespace {

/// Height of a range of hills above the lower edge, 0..1.
double hill(double x, int range, const std::array<double, 12>& phase)
{
    double height = 0;
    for (int octave = 0; octave < 4; ++octave) {
        const double wave = 2.2 * (range + 1) * (1 << octave);
        height += std::sin(wave * x + phase[range * 4 + octave]) / (2 << octave);
    }
    return 0.62 - 0.2 * range + 0.13 * height;
}

QPainterPath star(double radius)
{
    QPainterPath path;
    for (int i = 0; i < 10; ++i) {
        const double angle = M_PI * i / 5 - M_PI / 2;
        const double r = i % 2 == 0 ? radius : radius * 0.382;
        const QPointF at(r * std::cos(angle), r * std::sin(angle));
        i == 0 ? path.moveTo(at) : path.lineTo(at);
    }
    path.closeSubpath();
    return path;
}

} // namespace

QImage drawnPhoto(int width, int height, Dice& dice)
{
    constexpr int kRanges[3][3] = { { 120, 130, 160 }, { 80, 105, 95 }, { 45, 62, 40 } };
    std::array<double, 12> phase {};
    for (double& value : phase) {
        value = dice.uniform() * 6.28;
    }
    const double tint = dice.uniform() * 50;
    QImage photo(width, height, QImage::Format_RGB888);
    for (int y = 0; y < height; ++y) {
        uchar* out = photo.scanLine(y);
        const double up = 1 - static_cast<double>(y) / height;
        for (int x = 0; x < width; ++x) {
            double rgb[3] = { 235 - 120 * up, 190 - 60 * up + tint / 2, 150 + 70 * up };
            for (int range = 0; range < 3; ++range) {
                if (up < hill(static_cast<double>(x) / width, range, phase)) {
                    std::copy(kRanges[range], kRanges[range] + 3, rgb);
                    rgb[1] += tint * up;
                }
            }
            const double grain = dice.gauss() * 7;
            for (const double level : rgb) {
                *out++ = static_cast<uchar>(std::clamp(level + grain, 0.0, 255.0));
            }
        }
    }
    return photo;
}

QImage drawnStamp(const QString& color)
{
    const int size = static_cast<int>(42 * kPixelsPerMm);
    const QColor ink = color == "red" ? QColor(205, 30, 40) : QColor(35, 60, 185);
    QImage stamp(size, size, QImage::Format_RGB888);
    stamp.fill(Qt::white);
    QPainter painter(&stamp);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(size / 2.0, size / 2.0);
    painter.setPen(QPen(ink, 14));
    painter.drawEllipse(QPointF(0, 0), size * 0.47, size * 0.47);
    painter.fillPath(star(size * 0.16), ink);
    QFont font("Noto Serif CJK SC");
    font.setPixelSize(size / 8);
    font.setBold(true);
    painter.setFont(font);
    const QString text = QString::fromUtf8("文件验收专用章");
    for (int i = 0; i < text.size(); ++i) {
        painter.save();
        painter.rotate((i - (text.size() - 1) / 2.0) * 34);
        painter.drawText(QRectF(-size / 10.0, -size * 0.45, size / 5.0, size / 6.0),
            Qt::AlignCenter, text.mid(i, 1));
        painter.restore();
    }
    return stamp;
}

QVector<Hole> punchHoles(int count)
{
    struct Pattern
    {
        int count;
        double pitchMm;
        double fromEdgeMm;
        double diameterMm;
    };
    constexpr Pattern kPatterns[] = { { 2, 80, 12, 6 }, { 3, 108, 12, 8 }, { 4, 80, 12, 6 },
        { 30, 9.5, 6.5, 5.5 } };
    QVector<Hole> holes;
    for (const Pattern& pattern : kPatterns) {
        for (int i = 0; pattern.count == count && i < count; ++i) {
            const double y =
                kPageHeight / 2.0 + (i - (count - 1) / 2.0) * pattern.pitchMm * kPixelsPerMm;
            holes.append({ { pattern.fromEdgeMm * kPixelsPerMm, y },
                pattern.diameterMm / 2 * kPixelsPerMm });
        }
    }
    return holes;
}

} // namespace truth
