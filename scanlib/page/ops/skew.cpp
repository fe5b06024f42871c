#include "scanlib/page/ops/skew.h"

#include "scanlib/base/units.h"
#include "scanlib/page/ops/blobs.h"
#include "scanlib/page/ops/reduced.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace orva {

namespace {

constexpr int kInkContrast = 60; // grey levels
constexpr std::size_t kLeastLetters = 20;
constexpr double kCoarseStep = 0.25; // degrees
constexpr double kFineStep = 0.03;
constexpr double kNearlySharpest = 0.8;
// Scattered marks give much the same profile at every angle; lines stand out.
constexpr double kLeastSharpness = 1.4;

struct Point
{
    int x = 0;
    int y = 0;
};

/// The middle of the foot of every mark of the size of a letter: baselines are sharper than ink,
/// and pictures and rules stay out of it.
std::vector<Point> lettersOf(const Page& gray)
{
    const int paper = paperLevel(gray);
    const Page bits = marksAgainst(gray, paper, std::min(kInkContrast, std::max(24, paper / 4)));
    const double pixelsPerMm = gray.dpiY / units::kMillimetresPerInch;
    std::vector<Point> letters;
    for (const Blob& blob : findBlobs(bits).blobs) {
        const double height = blob.height() / pixelsPerMm;
        const double width = blob.width() / pixelsPerMm;
        if (height > 0.8 && height < 12 && width > 0.3 && width < 60) {
            letters.push_back({ (blob.left + blob.right) / 2, blob.bottom });
        }
    }
    return letters;
}

/// Sum of squares of the letters in each row, when rows are tilted by the angle.
double sharpness(const std::vector<Point>& letters, double degrees, const Page& gray)
{
    const double slope = std::tan(degrees * units::kPi / 180.0);
    const int margin = static_cast<int>(gray.width * std::abs(slope)) + 1;
    std::vector<int> rows(
        static_cast<std::size_t>(gray.height) + 2 * static_cast<std::size_t>(margin) + 1);
    for (const Point& letter : letters) {
        ++rows[static_cast<std::size_t>(std::lround(letter.y - letter.x * slope) + margin)];
    }
    double sum = 0;
    for (const int count : rows) {
        sum += static_cast<double>(count) * count;
    }
    return sum;
}

/// The middle of the angles that are nearly as sharp as the sharpest: rows are whole pixels, which
/// makes a ragged plateau of the peak.
double refined(const std::vector<Point>& letters, double coarse, const Page& gray)
{
    constexpr int kSteps = 15;
    std::array<double, 2 * kSteps + 1> values {};
    double* const middle = values.data() + kSteps;
    for (int i = -kSteps; i <= kSteps; ++i) {
        middle[i] = sharpness(letters, coarse + i * kFineStep, gray);
    }
    const double limit = kNearlySharpest * *std::max_element(values.begin(), values.end());
    double sum = 0;
    double weight = 0;
    for (int i = -kSteps; i <= kSteps; ++i) {
        const double above = std::max(0.0, middle[i] - limit);
        sum += above * i;
        weight += above;
    }
    return coarse + (weight > 0 ? sum / weight : 0.0) * kFineStep;
}

} // namespace

double textSkewDegrees(const Page& gray)
{
    const std::vector<Point> letters = lettersOf(gray);
    if (letters.size() < kLeastLetters) {
        return 0;
    }
    double best = 0;
    double most = 0;
    double sum = 0;
    int count = 0;
    for (double degrees = -kMostSkewDegrees; degrees <= kMostSkewDegrees; degrees += kCoarseStep) {
        const double value = sharpness(letters, degrees, gray);
        sum += value;
        ++count;
        if (value > most) {
            most = value;
            best = degrees;
        }
    }
    return most < kLeastSharpness * sum / count ? 0 : refined(letters, best, gray);
}

} // namespace orva
