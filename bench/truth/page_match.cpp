#include "bench/truth/page_match.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace truth {

namespace {

constexpr int kFine = 2; ///< 150 dpi
constexpr int kCoarse = 16; ///< 19 dpi
constexpr int kPatchWidth = 120; ///< fine pixels
constexpr int kPatchHeight = 70;
constexpr int kReach = 26; ///< fine pixels, how far around the expected place is searched
constexpr double kFound = 0.6; ///< correlation of a patch that counts as found

struct Pair
{
    QPointF page; ///< 300 dpi pixels
    QPointF output;
};

/// The part of `gray` under a transform, sampled at the nearest pixel.
Gray patchAt(const Gray& gray, const QTransform& patchToGray, int width, int height)
{
    Gray patch { width, height, {} };
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const QPointF at = patchToGray.map(QPointF(x, y));
            const int column = static_cast<int>(std::lround(at.x()));
            const int row = static_cast<int>(std::lround(at.y()));
            const bool inside = column >= 0 && row >= 0 && column < gray.width && row < gray.height;
            patch.level.push_back(inside ? gray.at(column, row) : 255.0F);
        }
    }
    return patch;
}

/// Sums to 0, its squares to 1; false when there is nothing to see.
bool normalise(Gray& patch)
{
    double sum = 0;
    for (const float level : patch.level) {
        sum += level;
    }
    const auto mean = static_cast<float>(sum / static_cast<double>(patch.level.size()));
    double squares = 0;
    for (float& level : patch.level) {
        level -= mean;
        squares += static_cast<double>(level) * level;
    }
    if (squares < 100.0 * static_cast<double>(patch.level.size())) {
        return false;
    }
    const auto scale = static_cast<float>(1 / std::sqrt(squares));
    for (float& level : patch.level) {
        level *= scale;
    }
    return true;
}

/// Correlation of a normalised patch with the place whose top left is (left, top); -1 outside.
double correlation(const Gray& patch, const Gray& in, int left, int top)
{
    if (left < 0 || top < 0 || left + patch.width > in.width || top + patch.height > in.height) {
        return -1;
    }
    float product = 0;
    float sum = 0;
    float squares = 0;
    for (int y = 0; y < patch.height; ++y) {
        const float* a = &patch.level[static_cast<std::size_t>(y) * patch.width];
        const float* b = &in.level[static_cast<std::size_t>(top + y) * in.width + left];
        for (int x = 0; x < patch.width; ++x) {
            const float level = b[x] - 200;
            product += a[x] * level;
            sum += level;
            squares += level * level;
        }
    }
    const auto count = static_cast<float>(patch.level.size());
    const float variance = squares - sum * sum / count;
    return variance <= 1 ? 0 : product / std::sqrt(variance);
}

struct Peak
{
    double value = -1;
    double x = 0;
    double y = 0;
};

/// Between the pixels: the top of a parabola through three values.
double parabola(double before, double at, double after)
{
    const double bend = before - 2 * at + after;
    return bend >= 0 ? 0 : std::clamp((before - after) / (2 * bend), -0.5, 0.5);
}

Peak search(const Gray& patch, const Gray& in, int left, int top, int reachX, int reachY)
{
    Peak peak;
    int bestX = 0;
    int bestY = 0;
    for (int y = top - reachY; y <= top + reachY; ++y) {
        for (int x = left - reachX; x <= left + reachX; ++x) {
            const double value = correlation(patch, in, x, y);
            if (value > peak.value) {
                peak.value = value;
                bestX = x;
                bestY = y;
            }
        }
    }
    const auto around = [&](int dx, int dy) {
        return correlation(patch, in, bestX + dx, bestY + dy);
    };
    peak.x = bestX + parabola(around(-1, 0), peak.value, around(1, 0));
    peak.y = bestY + parabola(around(0, -1), peak.value, around(0, 1));
    return peak;
}

/// Middles of words, one for each field of a 4 x 5 grid that has some.
std::vector<QPointF> landmarks(const PageTruth& truth)
{
    QVector<QPointF> fields(20);
    for (const Word& word : truth.words()) {
        const QPointF at = word.box().center();
        const int column = std::clamp(static_cast<int>(at.x() * 4 / kPageWidth), 0, 3);
        const int row = std::clamp(static_cast<int>(at.y() * 5 / kPageHeight), 0, 4);
        QPointF& field = fields[row * 4 + column];
        // the outermost ones tell most about the angle
        const QPointF middle(kPageWidth / 2.0, kPageHeight / 2.0);
        const auto distance = [&middle](const QPointF& p) {
            return std::hypot(p.x() - middle.x(), p.y() - middle.y());
        };
        if (field.isNull() || distance(at) > distance(field)) {
            field = at;
        }
    }
    std::vector<QPointF> all;
    std::copy_if(fields.begin(), fields.end(), std::back_inserter(all),
        [](const QPointF& p) { return !p.isNull(); });
    return all;
}

/// Least squares of rotation, scale and shift.
QTransform similarity(const std::vector<Pair>& pairs)
{
    QPointF from;
    QPointF to;
    for (const Pair& pair : pairs) {
        from += pair.page / static_cast<double>(pairs.size());
        to += pair.output / static_cast<double>(pairs.size());
    }
    double cosine = 0;
    double sine = 0;
    double norm = 0;
    for (const Pair& pair : pairs) {
        const QPointF a = pair.page - from;
        const QPointF b = pair.output - to;
        cosine += a.x() * b.x() + a.y() * b.y();
        sine += a.x() * b.y() - a.y() * b.x();
        norm += a.x() * a.x() + a.y() * a.y();
    }
    cosine /= norm;
    sine /= norm;
    const QTransform turn(cosine, sine, -sine, cosine, 0, 0);
    const QPointF shift = to - turn.map(from);
    return turn * QTransform::fromTranslate(shift.x(), shift.y());
}

double residual(const QTransform& transform, const Pair& pair)
{
    const QPointF off = transform.map(pair.page) - pair.output;
    return std::hypot(off.x(), off.y());
}

std::optional<PageMatch> fitted(std::vector<Pair> pairs)
{
    while (pairs.size() >= 4) {
        const QTransform transform = similarity(pairs);
        const auto worst =
            std::max_element(pairs.begin(), pairs.end(), [&](const Pair& a, const Pair& b) {
                return residual(transform, a) < residual(transform, b);
            });
        if (residual(transform, *worst) < 3) {
            const double degrees = std::atan2(transform.m12(), transform.m11()) * 180 / M_PI;
            return PageMatch { transform, degrees, static_cast<int>(pairs.size()) };
        }
        pairs.erase(worst);
    }
    return std::nullopt;
}

/// Searches each landmark around where the guess sends it; the patch is turned as the guess says.
std::vector<Pair> searchLandmarks(
    const Gray& output, const Gray& ink, const PageTruth& truth, const QTransform& guess)
{
    std::vector<Pair> pairs;
    const QTransform turn(guess.m11(), guess.m12(), guess.m21(), guess.m22(), 0, 0);
    for (const QPointF& mark : landmarks(truth)) {
        const QTransform patchToInk =
            QTransform::fromTranslate(-kPatchWidth / 2.0, -kPatchHeight / 2.0) * turn.inverted()
            * QTransform::fromTranslate(mark.x() / kFine, mark.y() / kFine);
        Gray patch = patchAt(ink, patchToInk, kPatchWidth, kPatchHeight);
        if (!normalise(patch)) {
            continue;
        }
        const QPointF expected = guess.map(mark) / kFine;
        const Peak peak =
            search(patch, output, static_cast<int>(std::lround(expected.x())) - kPatchWidth / 2,
                static_cast<int>(std::lround(expected.y())) - kPatchHeight / 2, kReach, kReach);
        if (peak.value > kFound) {
            // pixel centres of the reduced pictures lie at (n + 1/2) x factor
            pairs.push_back(
                { mark, QPointF(peak.x + kPatchWidth / 2.0, peak.y + kPatchHeight / 2.0) * kFine });
        }
    }
    return pairs;
}

/// Where the upright page lies in the output, from a look at the whole.
QTransform coarseShift(const orva::Page& output, const QImage& ink)
{
    const Gray in = reduced(output, kCoarse);
    const Gray whole = reduced(ink, kCoarse);
    // without the margins, so that it can lie partly outside
    const int margin = 14;
    Gray patch = patchAt(whole, QTransform::fromTranslate(margin, margin),
        std::min(whole.width, in.width) - 2 * margin,
        std::min(whole.height, in.height) - 2 * margin);
    if (!normalise(patch)) {
        return {};
    }
    const Peak peak =
        search(patch, in, (in.width - patch.width) / 2, (in.height - patch.height) / 2,
            std::abs(in.width - patch.width) / 2 + 1, std::abs(in.height - patch.height) / 2 + 1);
    return QTransform::fromTranslate((peak.x - margin) * kCoarse, (peak.y - margin) * kCoarse);
}

} // namespace

std::optional<PageMatch> matchPage(
    const orva::Page& output, const QImage& ink, const PageTruth& truth)
{
    const Gray fine = reduced(output, kFine);
    const Gray fineInk = reduced(ink, kFine);
    std::vector<Pair> best;
    for (const QTransform& guess : { coarseShift(output, ink), truth.pageToScan }) {
        std::vector<Pair> pairs = searchLandmarks(fine, fineInk, truth, guess);
        if (pairs.size() > best.size()) {
            best = std::move(pairs);
        }
    }
    return fitted(std::move(best));
}

} // namespace truth
