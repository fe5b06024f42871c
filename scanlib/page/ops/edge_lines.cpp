// A vote over angles, coarse and then fine, and least squares over the points that agree.
#include "scanlib/page/ops/edge_lines.h"

#include "scanlib/base/units.h"

#include <algorithm>
#include <cmath>

namespace orva {

namespace {

constexpr double kCoarseTurn = 0.5 * units::kPi / 180;
constexpr double kCoarseBin = 4; // reduced pixels; covers the drift of half a coarse step
constexpr std::size_t kCoarseStride = 4; // every fourth point will do
constexpr double kFineTurn = 0.1 * units::kPi / 180;
constexpr double kFineBin = 1;
constexpr double kAgreement = 1.5;
constexpr int kRefinements = 3;

/// Of one point in the sheet's axes: across its side and along it.
struct Projected
{
    double across = 0;
    double along = 0;
};

Projected projected(const EdgePoint& point, std::size_t side, const SheetAxes& axes)
{
    const double u = axes.u(point.x, point.y);
    const double v = axes.v(point.x, point.y);
    return side == kLeftSide || side == kRightSide ? Projected { u, v } : Projected { v, u };
}

struct Peak
{
    double across = 0; ///< middle of two neighbouring bins
    int votes = 0;
};

Peak peakOf(const std::vector<EdgePoint>& points, std::size_t side, const SheetAxes& axes,
    double bin, std::size_t stride, std::vector<int>& bins)
{
    double least = 1e9;
    double most = -1e9;
    for (std::size_t i = 0; i < points.size(); i += stride) {
        const double across = projected(points[i], side, axes).across;
        least = std::min(least, across);
        most = std::max(most, across);
    }
    Peak peak;
    if (points.empty()) {
        return peak;
    }
    bins.assign(static_cast<std::size_t>((most - least) / bin) + 2, 0);
    for (std::size_t i = 0; i < points.size(); i += stride) {
        ++bins[static_cast<std::size_t>((projected(points[i], side, axes).across - least) / bin)];
    }
    for (std::size_t i = 0; i + 1 < bins.size(); ++i) {
        if (bins[i] + bins[i + 1] > peak.votes) {
            peak.votes = bins[i] + bins[i + 1];
            peak.across = least + static_cast<double>(i + 1) * bin;
        }
    }
    return peak;
}

double bestAngle(
    const EdgePoints& points, double from, double to, double step, double bin, std::size_t stride)
{
    std::vector<int> bins;
    double best = 0;
    int most = -1;
    const int steps = static_cast<int>(std::lround((to - from) / step));
    for (int i = 0; i <= steps; ++i) {
        const double radians = from + i * step;
        const SheetAxes axes(radians);
        int votes = 0;
        for (std::size_t side = 0; side < kSheetSides; ++side) {
            votes += peakOf(points[side], side, axes, bin, stride, bins).votes;
        }
        if (votes > most) {
            most = votes;
            best = radians;
        }
    }
    return best;
}

struct Agreeing
{
    double across = 0; ///< mean
    std::size_t count = 0;
    double product = 0; ///< sum of (along - mean) x (across - mean)
    double square = 0; ///< sum of (along - mean) squared
};

Agreeing agreeingWith(
    const std::vector<EdgePoint>& points, std::size_t side, const SheetAxes& axes, double across)
{
    Agreeing result;
    double alongSum = 0;
    double acrossSum = 0;
    double products = 0;
    double squares = 0;
    for (const EdgePoint& point : points) {
        const Projected at = projected(point, side, axes);
        const double off = at.across - across;
        if (std::abs(off) <= kAgreement) {
            ++result.count;
            alongSum += at.along;
            acrossSum += off;
            products += at.along * off;
            squares += at.along * at.along;
        }
    }
    if (result.count > 0) {
        const auto count = static_cast<double>(result.count);
        result.across = across + acrossSum / count;
        result.product = products - alongSum * acrossSum / count;
        result.square = squares - alongSum * alongSum / count;
    }
    return result;
}

} // namespace

EdgeLines fitEdgeLines(const EdgePoints& points, double mostRadians, std::size_t leastPoints)
{
    EdgeLines lines;
    const double coarse =
        bestAngle(points, -mostRadians, mostRadians, kCoarseTurn, kCoarseBin, kCoarseStride);
    lines.radians =
        bestAngle(points, coarse - kCoarseTurn, coarse + kCoarseTurn, kFineTurn, kFineBin, 1);
    std::vector<int> bins;
    for (int round = 0; round < kRefinements; ++round) {
        const SheetAxes axes(lines.radians);
        double product = 0;
        double square = 0;
        for (std::size_t side = 0; side < kSheetSides; ++side) {
            const Peak peak = peakOf(points[side], side, axes, kFineBin, 1, bins);
            const Agreeing agreeing = agreeingWith(points[side], side, axes, peak.across);
            EdgeLine& line = lines.sides[side];
            line.offset = agreeing.across;
            line.seen =
                agreeing.count >= leastPoints && agreeing.count * 5 >= points[side].size() * 2;
            if (line.seen) {
                // Top and bottom run downhill by the tilt; left and right lean the other way.
                product +=
                    side == kLeftSide || side == kRightSide ? -agreeing.product : agreeing.product;
                square += agreeing.square;
            }
        }
        if (square == 0) {
            break;
        }
        if (round + 1 < kRefinements) {
            lines.radians += product / square;
        }
    }
    return lines;
}

} // namespace orva
