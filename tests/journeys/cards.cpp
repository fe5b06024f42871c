#include "tests/journeys/cards.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace cards {

namespace {

constexpr double kMmPerInch = 25.4;
constexpr std::array<QRgb, 8> kGrounds { 0xFFF0C0C0, 0xFFC0F0C0, 0xFFC0C0F0, 0xFFF0F0A0, 0xFFA0F0F0,
    0xFFF0A0F0, 0xFFE0D0B0, 0xFFB0D0E0 };

int pixels(double mm, int dpi)
{
    return static_cast<int>(std::lround(mm / kMmPerInch * dpi));
}

void fill(QImage& image, int dpi, const QRectF& mm, QRgb color)
{
    const int right = std::min(pixels(mm.right(), dpi), image.width());
    const int bottom = pixels(mm.bottom(), dpi);
    for (int y = pixels(mm.top(), dpi); y < bottom; ++y) {
        for (int x = pixels(mm.left(), dpi); x < right; ++x) {
            image.setPixel(x, y, color);
        }
    }
}

} // namespace

std::string fileName(int side)
{
    return "card-" + std::to_string((side + 1) / 2) + (side % 2 == 1 ? "-front.png" : "-back.png");
}

QImage picture(int side, int dpi)
{
    constexpr QRgb kBlack = 0xFF000000;
    QImage image(pixels(kWidthMm, dpi), pixels(kHeightMm, dpi), QImage::Format_RGB32);
    image.fill(kGrounds.at(static_cast<std::size_t>(side - 1) % kGrounds.size()));
    fill(image, dpi, { 4, 4, 20, 4 }, kBlack);
    fill(image, dpi, { 4, 4, 4, 20 }, kBlack);
    for (int bar = 0; bar < side; ++bar) {
        fill(image, dpi, { 14.0 + 4 * bar, 30, 2, 18 }, kBlack);
    }
    const auto perMetre = static_cast<int>(std::lround(dpi / kMmPerInch * 1000));
    image.setDotsPerMeterX(perMetre);
    image.setDotsPerMeterY(perMetre);
    return image;
}

bool draw(int side, int dpi, const std::string& file)
{
    return picture(side, dpi).save(QString::fromStdString(file), "PNG");
}

double distance(const QImage& a, const QImage& b)
{
    if (a.size() != b.size() || a.isNull()) {
        return 255;
    }
    double sum = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            const QRgb p = a.pixel(x, y);
            const QRgb q = b.pixel(x, y);
            sum += std::abs(qRed(p) - qRed(q)) + std::abs(qGreen(p) - qGreen(q))
                + std::abs(qBlue(p) - qBlue(q));
        }
    }
    return sum / (3.0 * a.width() * a.height());
}

} // namespace cards
