#include "bench/truth/page_samples.h"

#include <algorithm>
#include <cmath>

namespace truth {

namespace {

/// Darkest pixel of the scan below a rectangle of the page.
int darkest(const orva::Page& page, const QTransform& toPage, const QRectF& box)
{
    int level = 255;
    for (double y = box.top(); y <= box.bottom(); y += 1) {
        for (double x = box.left(); x <= box.right(); x += 1) {
            const QPointF at = toPage.map(QPointF(x, y));
            level = std::min(level, lumaAt(page, at.x(), at.y()));
        }
    }
    return level;
}

/// Whether nothing darker than `level` lies within `reach` pixels.
bool isClear(const QImage& gray, int x, int y, int reach, int level)
{
    for (int row = std::max(0, y - reach); row <= std::min(gray.height() - 1, y + reach); ++row) {
        const uchar* line = gray.constScanLine(row);
        for (int column = std::max(0, x - reach); column <= std::min(gray.width() - 1, x + reach);
             ++column) {
            if (line[column] < level) {
                return false;
            }
        }
    }
    return true;
}

int median(std::vector<int>& levels)
{
    if (levels.empty()) {
        return 255;
    }
    const auto middle = levels.begin() + static_cast<std::ptrdiff_t>(levels.size() / 2);
    std::nth_element(levels.begin(), middle, levels.end());
    return *middle;
}

/// Median of a square of scan pixels: the paper, since print covers less than half.
int paperAround(const orva::Page& page, const QPointF& at, int reach)
{
    std::vector<int> levels;
    for (int y = -reach; y <= reach; y += 2) {
        for (int x = -reach; x <= reach; x += 2) {
            levels.push_back(lumaAt(page, at.x() + x, at.y() + y));
        }
    }
    return median(levels);
}

double meanOfRing(
    const orva::Page& page, const PageTruth& truth, const Hole& hole, double from, double to)
{
    double sum = 0;
    int count = 0;
    for (double y = -to; y <= to; y += 1) {
        for (double x = -to; x <= to; x += 1) {
            const double distance = std::hypot(x, y);
            const QPointF on = hole.center + QPointF(x, y);
            if (distance >= from && distance < to && on.x() > 2) {
                const QPointF at = truth.pageToScan.map(on);
                sum += lumaAt(page, at.x(), at.y());
                ++count;
            }
        }
    }
    return sum / count;
}

bool nearHoleOrPhoto(const PageTruth& truth, const QPointF& at)
{
    const bool hole = std::any_of(truth.holes.begin(), truth.holes.end(), [&](const Hole& h) {
        return std::hypot(at.x() - h.center.x(), at.y() - h.center.y()) < h.radius + 15;
    });
    return hole || std::any_of(truth.photos.begin(), truth.photos.end(), [&](const QRectF& photo) {
        return photo.adjusted(-12, -12, 12, 12).contains(at);
    });
}

} // namespace

Share lettersKept(const orva::Page& before, const QTransform& toBefore, const orva::Page& after,
    const QTransform& toAfter, const PageTruth& truth, const LetterFilter& filter)
{
    Share share;
    for (const Word& word : truth.words()) {
        for (int i = 0; i < word.text.size(); ++i) {
            const QRectF& box = word.boxes[i];
            if ((!filter || filter(word.text[i], box)) && darkest(before, toBefore, box) < 140) {
                share.count(darkest(after, toAfter, box) < 140);
            }
        }
    }
    return share;
}

bool isSmallMark(QChar letter, const QRectF& /*box*/)
{
    return QString::fromUtf8(".,:;'`\"·、。，：；“”‘’").contains(letter);
}

Share specksGone(const orva::Page& after, const QImage& ink, const PageTruth& truth)
{
    Share share;
    const QTransform toPage = truth.pageToScan.inverted();
    for (const Speck& speck : truth.specks) {
        const QPointF middle(speck.x + speck.size / 2.0, speck.y + speck.size / 2.0);
        const QPointF at = toPage.map(middle);
        if (!nearHoleOrPhoto(truth, at)
            && isClear(ink, static_cast<int>(at.x()), static_cast<int>(at.y()), 6, 200)) {
            int dark = 255;
            for (int y = speck.y; y < speck.y + speck.size; ++y) {
                for (int x = speck.x; x < speck.x + speck.size; ++x) {
                    dark = std::min(dark, lumaAt(after, x, y));
                }
            }
            share.count(dark > paperAround(after, middle, 14) - 60);
        }
    }
    return share;
}

Share holesFilled(const orva::Page& after, const PageTruth& truth)
{
    Share share;
    for (const Hole& hole : truth.holes) {
        const double inside = meanOfRing(after, truth, hole, 0, hole.radius - 2);
        const double outside = meanOfRing(after, truth, hole, hole.radius + 8, hole.radius + 16);
        share.count(std::abs(inside - outside) <= 12);
    }
    return share;
}

Share stampGone(
    const orva::Page& after, const QImage& ink, const QImage& stamp, const PageTruth& truth)
{
    Share share;
    for (int y = 0; y < stamp.height(); y += 2) {
        const uchar* line = stamp.constScanLine(y);
        for (int x = 0; x < stamp.width(); x += 2) {
            if (line[x] > 120 && isClear(ink, x, y, 3, 250)) {
                const QPointF at = truth.pageToScan.map(QPointF(x + 0.5, y + 0.5));
                share.count(lumaAt(after, at.x(), at.y()) > paperAround(after, at, 60) - 40);
            }
        }
    }
    return share;
}

Share paperAbove(int level, const orva::Page& after, const QImage& ink, const PageTruth& truth)
{
    Share share;
    for (int y = 40; y < kPageHeight - 40; y += 23) {
        for (int x = 40; x < kPageWidth - 40; x += 23) {
            if (!nearHoleOrPhoto(truth, QPointF(x, y)) && isClear(ink, x, y, 12, 250)) {
                const QPointF at = truth.pageToScan.map(QPointF(x + 0.5, y + 0.5));
                share.count(lumaAt(after, at.x(), at.y()) > level);
            }
        }
    }
    return share;
}

double inkAgreement(const orva::Page& after, const QImage& ink, const PageTruth& truth)
{
    long hits = 0;
    long misses = 0;
    long wrong = 0;
    for (int y = 40; y < kPageHeight - 40; ++y) {
        const uchar* line = ink.constScanLine(y);
        for (int x = 40; x < kPageWidth - 40; ++x) {
            const QPointF at = truth.pageToScan.map(QPointF(x + 0.5, y + 0.5));
            const bool black = lumaAt(after, at.x(), at.y()) < 128;
            const bool print = line[x] < 128;
            hits += black && print ? 1 : 0;
            misses += !black && print ? 1 : 0;
            wrong += black && !print && !nearHoleOrPhoto(truth, QPointF(x, y)) ? 1 : 0;
        }
    }
    return hits == 0 ? 0 : 2.0 * hits / static_cast<double>(2 * hits + misses + wrong);
}

} // namespace truth
