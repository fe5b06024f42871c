#include "bench/truth/scan_page.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <stdexcept>

namespace truth {

namespace {

QImage readImage(const QString& file, QImage::Format format)
{
    const QImage image(file);
    if (image.isNull()) {
        throw std::runtime_error("cannot read " + file.toStdString());
    }
    return image.convertToFormat(format);
}

template <typename Level>
Gray reducedBy(int factor, int width, int height, Level levelOf)
{
    Gray gray { width / factor, height / factor, {} };
    gray.level.reserve(static_cast<std::size_t>(gray.width) * gray.height);
    for (int y = 0; y < gray.height; ++y) {
        for (int x = 0; x < gray.width; ++x) {
            int sum = 0;
            for (int dy = 0; dy < factor; ++dy) {
                for (int dx = 0; dx < factor; ++dx) {
                    sum += levelOf(x * factor + dx, y * factor + dy);
                }
            }
            gray.level.push_back(static_cast<float>(sum) / static_cast<float>(factor * factor));
        }
    }
    return gray;
}

} // namespace

orva::Page readScan(const QString& folder, const PageTruth& truth)
{
    const QImage image = readImage(folder + '/' + truth.name + ".jpg", QImage::Format_RGB888);
    orva::Page page;
    page.allocate(image.width(), image.height(), orva::PixelFormat::kRgb);
    page.dpiX = page.dpiY = 300;
    page.sheet = page.number = 1;
    for (int y = 0; y < page.height; ++y) {
        std::memcpy(page.row(y), image.constScanLine(y), page.stride());
    }
    return page;
}

QImage readLayer(const QString& folder, const PageTruth& page, const char* layer)
{
    return readImage(
        QString("%1/%2-%3.png").arg(folder, page.name, layer), QImage::Format_Grayscale8);
}

orva::Page straightened(const orva::Page& scan, const PageTruth& truth)
{
    orva::Page page = scan;
    page.allocate(kPageWidth, kPageHeight, orva::PixelFormat::kRgb);
    for (int y = 0; y < page.height; ++y) {
        std::uint8_t* out = page.row(y);
        for (int x = 0; x < page.width; ++x) {
            const QPointF at = truth.pageToScan.map(QPointF(x + 0.5, y + 0.5)) - QPointF(0.5, 0.5);
            const double left = std::clamp(at.x(), 0.0, scan.width - 1.001);
            const double top = std::clamp(at.y(), 0.0, scan.height - 1.001);
            const int column = static_cast<int>(left);
            const std::uint8_t* a = scan.row(static_cast<int>(top)) + column * 3;
            const std::uint8_t* b = a + scan.stride();
            const double fx = left - column;
            const double fy = top - std::floor(top);
            for (int i = 0; i < 3; ++i, ++out) {
                const double upper = a[i] + (a[i + 3] - a[i]) * fx;
                const double lower = b[i] + (b[i + 3] - b[i]) * fx;
                *out = static_cast<std::uint8_t>(upper + (lower - upper) * fy + 0.5);
            }
        }
    }
    return page;
}

int lumaAt(const orva::Page& page, double x, double y)
{
    const int column = static_cast<int>(x);
    const int line = static_cast<int>(y);
    if (x < 0 || y < 0 || column >= page.width || line >= page.height) {
        return 255;
    }
    const std::uint8_t* row = page.row(line);
    switch (page.format) {
    case orva::PixelFormat::kBlackWhite:
        return (row[column / 8] >> (7 - column % 8) & 1) != 0 ? 0 : 255;
    case orva::PixelFormat::kGray:
        return row[column];
    case orva::PixelFormat::kRgb:
        break;
    }
    row += column * 3;
    return (77 * row[0] + 150 * row[1] + 29 * row[2] + 128) >> 8;
}

Gray reduced(const orva::Page& page, int factor)
{
    return reducedBy(
        factor, page.width, page.height, [&page](int x, int y) { return lumaAt(page, x, y); });
}

Gray reduced(const QImage& gray, int factor)
{
    return reducedBy(factor, gray.width(), gray.height(),
        [&gray](int x, int y) { return int { gray.constScanLine(y)[x] }; });
}

} // namespace truth
