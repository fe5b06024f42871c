#include "bench/truth/degrade.h"

#include "bench/truth/sheet.h"

#include <QPainter>

#include <algorithm>

namespace truth {

namespace {

constexpr double kFoldMm = 18;
constexpr double kHolesMm = 20; ///< all patterns of holes lie this near to the left edge

/// The sheet as it lies there: print, photos, stamp, what shines through.
QImage sheetPicture(
    const PrintedPage& front, const QImage& back, const ScanPlan& plan, Dice& dice, Scan& scan)
{
    QImage sheet = front.ink.convertToFormat(QImage::Format_RGB888);
    QPainter painter(&sheet);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    for (const QRectF& photo : front.photos) {
        painter.drawImage(photo.topLeft(),
            drawnPhoto(static_cast<int>(photo.width()), static_cast<int>(photo.height()), dice));
    }
    painter.setCompositionMode(QPainter::CompositionMode_Multiply);
    if (plan.bleed > 0) {
        // seen through the paper it is mirrored, pale and blurred
        QImage through =
            back.mirrored(true, false)
                .scaled(kPageWidth / 5, kPageHeight / 5, Qt::IgnoreAspectRatio,
                    Qt::SmoothTransformation)
                .scaled(kPageWidth, kPageHeight, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
                .convertToFormat(QImage::Format_RGB888);
        for (int y = 0; y < through.height(); ++y) {
            uchar* row = through.scanLine(y);
            for (int i = 0; i < kPageWidth * 3; ++i) {
                row[i] = static_cast<uchar>(255 - (255 - row[i]) * plan.bleed);
            }
        }
        painter.drawImage(0, 0, through);
    }
    if (*plan.stamp != '\0') {
        const QImage stamp = drawnStamp(plan.stamp);
        const QPointF at(1300 + dice.below(400), 1500 + dice.below(1300));
        painter.drawImage(at, stamp);
        scan.stampMask = QImage(kPageWidth, kPageHeight, QImage::Format_Grayscale8);
        scan.stampMask.fill(Qt::black);
        QImage mask = stamp.convertToFormat(QImage::Format_Grayscale8);
        mask.invertPixels();
        QPainter(&scan.stampMask).drawImage(at, mask);
    }
    return sheet;
}

/// Where the sheet lies on the scan: turned about its middle, on a bed that holds it.
void place(const ScanPlan& plan, Dice& dice, PageTruth& page)
{
    QTransform turn;
    turn.rotate(plan.degrees);
    turn.translate(-kPageWidth / 2.0, -kPageHeight / 2.0);
    const QRectF bounds = turn.mapRect(QRectF(0, 0, kPageWidth, kPageHeight));
    const bool tight = page.backing == "none";
    page.scanWidth = tight ? kPageWidth : std::max(2660, static_cast<int>(bounds.width()) + 90);
    page.scanHeight = tight ? kPageHeight : std::max(3660, static_cast<int>(bounds.height()) + 90);
    const double roomX = (page.scanWidth - bounds.width()) / 2 - 30;
    const double roomY = (page.scanHeight - bounds.height()) / 2 - 30;
    const double dx = tight ? 0 : (dice.uniform() * 2 - 1) * roomX;
    const double dy = tight ? 0 : (dice.uniform() * 2 - 1) * roomY;
    page.pageToScan =
        turn * QTransform::fromTranslate(page.scanWidth / 2.0 + dx, page.scanHeight / 2.0 + dy);
}

/// How much of the scan's pixel is paper, 0..1, from its place on the page.
double paperShare(const QPointF& at, const PageTruth& page, const ScanPlan& plan)
{
    const double inside = std::min({ at.x(), at.y(), kPageWidth - at.x(), kPageHeight - at.y() });
    double share = std::clamp(inside + 0.5, 0.0, 1.0);
    if (at.x() < kHolesMm * kPixelsPerMm) {
        for (const Hole& hole : page.holes) {
            const double distance = std::hypot(at.x() - hole.center.x(), at.y() - hole.center.y());
            share = std::min(share, std::clamp(distance - hole.radius + 0.5, 0.0, 1.0));
        }
    }
    if (plan.foldedCorner) {
        const double beyond = at.x() - kPageWidth + at.y() * -1 + kFoldMm * kPixelsPerMm;
        share = std::min(share, std::clamp(0.5 - beyond, 0.0, 1.0));
    }
    return share;
}

class Sensor
{
public:
    Sensor(const QImage& sheet, const ScanPlan& plan, const PageTruth& page, Dice& dice)
        : m_sheet(sheet)
        , m_plan(plan)
        , m_page(page)
        , m_dice(dice)
        , m_noise(plan.noise, dice)
        , m_backingNoise(page.backing == "noisy" ? 22 : plan.noise, dice)
        , m_inverse(page.pageToScan.inverted())
    {
    }

    QImage read()
    {
        QImage scan(m_page.scanWidth, m_page.scanHeight, QImage::Format_RGB888);
        for (int y = 0; y < scan.height(); ++y) {
            uchar* out = scan.scanLine(y);
            for (int x = 0; x < scan.width(); ++x, out += 3) {
                pixel(x, y, out);
            }
        }
        return scan;
    }

private:
    void pixel(int x, int y, uchar* out)
    {
        const QPointF at = m_inverse.map(QPointF(x + 0.5, y + 0.5)) - QPointF(0.5, 0.5);
        const double paper = paperShare(at, m_page, m_plan);
        float rgb[3] = { 0, 0, 0 };
        if (paper > 0) {
            sample(at, rgb);
            const double far = (at.x() / kPageWidth + at.y() / kPageHeight) / 2;
            const auto light = static_cast<float>(1 - m_plan.uneven * far * far);
            rgb[0] *= light * static_cast<float>(m_plan.paper) / 255;
            rgb[1] *= light * static_cast<float>(m_plan.paper - m_plan.yellow / 3) / 255;
            rgb[2] *= light * static_cast<float>(m_plan.paper - m_plan.yellow) / 255;
        }
        const float behind = paper < 1 ? backingLevel(at) : 0;
        const float common = (paper > 0.5 ? m_noise : m_backingNoise).pick(m_dice);
        for (int i = 0; i < 3; ++i) {
            const auto share = static_cast<float>(paper);
            const float level =
                rgb[i] * share + behind * (1 - share) + common + 0.5F * m_noise.pick(m_dice);
            out[i] = static_cast<uchar>(std::clamp(level + 0.5F, 0.0F, 255.0F));
        }
    }

    /// The sheet throws a narrow shadow on a white backing; a dark one swallows it.
    float backingLevel(const QPointF& at) const
    {
        if (m_page.backing == "dark") {
            return 34;
        }
        if (m_page.backing == "noisy") {
            return 105;
        }
        const double outside =
            std::max({ -at.x(), -at.y(), at.x() - kPageWidth, at.y() - kPageHeight, 0.0 });
        return static_cast<float>(252 - 45 * std::exp(-outside / 5));
    }

    /// Between four pixels of the sheet.
    void sample(const QPointF& at, float* rgb) const
    {
        const double x = std::clamp(at.x(), 0.0, kPageWidth - 1.001);
        const double y = std::clamp(at.y(), 0.0, kPageHeight - 1.001);
        const int left = static_cast<int>(x);
        const int top = static_cast<int>(y);
        const auto fx = static_cast<float>(x - left);
        const auto fy = static_cast<float>(y - top);
        const uchar* a = m_sheet.constScanLine(top) + left * 3;
        const uchar* b = m_sheet.constScanLine(top + 1) + left * 3;
        for (int i = 0; i < 3; ++i) {
            const float upper = a[i] + (a[i + 3] - a[i]) * fx;
            const float lower = b[i] + (b[i + 3] - b[i]) * fx;
            rgb[i] = upper + (lower - upper) * fy;
        }
    }

    const QImage& m_sheet;
    const ScanPlan& m_plan;
    const PageTruth& m_page;
    Dice& m_dice;
    NoiseTable m_noise;
    NoiseTable m_backingNoise;
    QTransform m_inverse;
};

void strewSpecks(QImage& scan, int count, Dice& dice, PageTruth& page)
{
    const QRectF sheet(20, 20, kPageWidth - 40, kPageHeight - 40);
    for (int i = 0; i < count; ++i) {
        const QPointF at = page.pageToScan.map(QPointF(sheet.x() + dice.uniform() * sheet.width(),
            sheet.y() + dice.uniform() * sheet.height()));
        // most dust is a single pixel; three across are more than a 3 x 3 median takes
        const int kind = dice.below(8);
        const int size = kind == 0 ? 3 : kind < 3 ? 2 : 1;
        const Speck speck { static_cast<int>(at.x()), static_cast<int>(at.y()), size };
        if (!scan.rect().contains(QRect(speck.x, speck.y, size, size))) {
            continue;
        }
        for (int y = speck.y; y < speck.y + size; ++y) {
            std::fill_n(scan.scanLine(y) + speck.x * 3, size * 3, uchar { 40 });
        }
        page.specks.append(speck);
    }
}

} // namespace

Scan scanPage(
    const PrintedPage& front, const QImage& back, const ScanPlan& plan, Dice& dice, PageTruth& page)
{
    page.degrees = plan.degrees;
    page.backing = plan.backing;
    page.stampColor = plan.stamp;
    page.holes = punchHoles(plan.holes);
    Scan scan;
    const QImage sheet = sheetPicture(front, back, plan, dice, scan);
    place(plan, dice, page);
    scan.picture = Sensor(sheet, plan, page, dice).read();
    strewSpecks(scan.picture, plan.specks, dice, page);
    const int dotsPerMetre = static_cast<int>(std::lround(300 / 0.0254));
    scan.picture.setDotsPerMeterX(dotsPerMetre);
    scan.picture.setDotsPerMeterY(dotsPerMetre);
    return scan;
}

} // namespace truth
