#include "scanlib/page/ops/sheet.h"

#include "scanlib/base/units.h"
#include "scanlib/page/ops/edge_lines.h"
#include "scanlib/page/ops/histogram.h"
#include "scanlib/page/ops/skew.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <vector>

namespace orva {

namespace {

// Lengths in reduced pixels, levels of grey.
// Scanners, and areas rounded up to whole pixels, leave light lines along the rim.
constexpr int kRim = 3;
constexpr int kLeastSize = 32;
constexpr int kDarkestPaper = 120;
constexpr int kLeastDarkContrast = 50; // between backing and paper
constexpr int kLeastShadow = 8;
constexpr int kShadowWidth = 4;
constexpr double kInset = 0.75; // the half-covered pixels at an edge stay out
constexpr std::size_t kLeastEdge = 24;
constexpr int kLeastDifference = 3; // between paper and white backing
constexpr int kSlack = 4; // around the sheet, for its shadow
constexpr int kBackingSpread = 40;
// What may differ from the backing outside the sheet, of its area: dirt.
constexpr double kMostStrayOnDark = 0.02;
constexpr double kMostStrayOnWhite = 0.001;

struct Backing
{
    bool dark = false; ///< darker than the paper; white otherwise
    int level = 0;
    int paper = 0;
    int limit = 0; ///< the paper begins above it (dark) or the shadow below it (white)
};

/// The frame that far inside the rim.
Histogram frameHistogram(const Page& gray)
{
    Histogram frame {};
    for (int x = kRim; x < gray.width - kRim; ++x) {
        ++frame[gray.row(kRim)[x]];
        ++frame[gray.row(gray.height - 1 - kRim)[x]];
    }
    for (int y = kRim; y < gray.height - kRim; ++y) {
        ++frame[gray.row(y)[kRim]];
        ++frame[gray.row(y)[gray.width - 1 - kRim]];
    }
    return frame;
}

std::optional<Backing> darkBacking(const Page& gray, const Histogram& frame)
{
    Backing backing;
    backing.dark = true;
    backing.paper = mostFrequentLevel(lumaHistogram(gray), kDarkestPaper);
    const int darkest = levelAtShare(frame, 0.1);
    if (backing.paper - darkest < kLeastDarkContrast) {
        return std::nullopt;
    }
    Histogram darkPart = frame;
    std::fill(darkPart.begin() + (darkest + backing.paper) / 2, darkPart.end(), 0);
    backing.level = levelAtShare(darkPart, 0.5);
    backing.limit = backing.level + (backing.paper - backing.level) * 2 / 5;
    return backing;
}

Backing whiteBacking(const Histogram& frame)
{
    Backing backing;
    backing.level = mostFrequentLevel(frame, kDarkestPaper);
    // Half of the frame's distance from its level is a robust measure of noise.
    Histogram distances {};
    for (int level = 0; level < 256; ++level) {
        distances[static_cast<std::size_t>(std::abs(level - backing.level))] +=
            frame[static_cast<std::size_t>(level)];
    }
    backing.limit = backing.level - std::max(kLeastShadow, 6 * levelAtShare(distances, 0.5));
    return backing;
}

/// A row or column as seen from the rim: place 0 is the first pixel.
struct Ray
{
    const std::uint8_t* first;
    std::ptrdiff_t step;
    int count;

    int at(int i) const { return first[i * step]; }
};

/// Part of a pixel that paper covers.
double covered(int level, const Backing& backing)
{
    return std::clamp(
        static_cast<double>(level - backing.level) / (backing.paper - backing.level), 0.0, 1.0);
}

std::optional<double> walkDark(const Ray& ray, const Backing& backing)
{
    for (int i = kRim + 1; i + 1 < ray.count - kRim; ++i) {
        if (ray.at(i) > backing.limit && ray.at(i + 1) > backing.limit) {
            return i + 1 - covered(ray.at(i), backing) - covered(ray.at(i - 1), backing);
        }
    }
    return std::nullopt;
}

std::optional<double> walkWhite(const Ray& ray, const Backing& backing)
{
    for (int i = kRim + 1; i + 2 * kShadowWidth < ray.count - kRim; ++i) {
        if (ray.at(i) >= backing.limit) {
            continue;
        }
        int darkest = i;
        for (int k = i + 1; k < i + kShadowWidth; ++k) {
            darkest = ray.at(k) < ray.at(darkest) ? k : darkest;
        }
        const int inside = (ray.at(i + kShadowWidth) + ray.at(i + kShadowWidth + 1)) / 2;
        return inside - ray.at(darkest) > kLeastShadow / 2 ? darkest + 1.0 : i;
    }
    return std::nullopt;
}

/// Where the backing ends; nothing where none shows at the rim.
std::optional<double> walk(const Ray& ray, const Backing& backing)
{
    const int start = ray.at(kRim);
    if (backing.dark) {
        return start > backing.limit ? std::nullopt : walkDark(ray, backing);
    }
    return start < backing.limit ? std::nullopt : walkWhite(ray, backing);
}

EdgePoints edgePoints(const Page& gray, const Backing& backing)
{
    EdgePoints points;
    const auto stride = static_cast<std::ptrdiff_t>(gray.stride());
    for (int y = kRim; y < gray.height - kRim; ++y) {
        const std::uint8_t* const row = gray.row(y);
        if (const auto x = walk({ row, 1, gray.width }, backing)) {
            points[kLeftSide].push_back({ *x, y + 0.5 });
            if (const auto back = walk({ row + gray.width - 1, -1, gray.width }, backing)) {
                points[kRightSide].push_back({ gray.width - *back, y + 0.5 });
            }
        } else if (const auto only = walk({ row + gray.width - 1, -1, gray.width }, backing)) {
            points[kRightSide].push_back({ gray.width - *only, y + 0.5 });
        }
    }
    for (int x = kRim; x < gray.width - kRim; ++x) {
        if (const auto y = walk({ gray.row(0) + x, stride, gray.height }, backing)) {
            points[kTopSide].push_back({ x + 0.5, *y });
        }
        if (const auto y = walk({ gray.row(gray.height - 1) + x, -stride, gray.height }, backing)) {
            points[kBottomSide].push_back({ x + 0.5, gray.height - *y });
        }
    }
    return points;
}

struct Bounds
{
    double left = 0;
    double right = 0;
    double top = 0;
    double bottom = 0;
};

/// An unseen side is the farthest that the scanned area reaches.
Bounds boundsOf(const EdgeLines& lines, const Page& gray, const SheetAxes& axes)
{
    const double width = gray.width;
    const double height = gray.height;
    const auto side = [&](SheetSide which, double rim) {
        const EdgeLine& line = lines.sides[which];
        const bool first = which == kLeftSide || which == kTopSide;
        return line.seen ? line.offset + (first ? kInset : -kInset) : rim;
    };
    const auto [leftRim, topRim] =
        std::pair { std::min(0.0, axes.u(0, height)), std::min(0.0, axes.v(width, 0)) };
    return { side(kLeftSide, leftRim),
        side(kRightSide, std::max(axes.u(width, 0), axes.u(width, height))), side(kTopSide, topRim),
        side(kBottomSide, std::max(axes.v(0, height), axes.v(width, height))) };
}

/// Level at a share of what lies `near` to `far` inwards of a side (negative: outwards); -1 where
/// too little of it is in the area.
int levelAlong(const Page& gray, const SheetAxes& axes, const Bounds& bounds, SheetSide side,
    int near, int far, double share)
{
    constexpr int kPlaces = 64;
    Histogram levels {};
    const bool upright = side == kLeftSide || side == kRightSide;
    for (int place = 1; place < kPlaces; ++place) {
        const double part = static_cast<double>(place) / kPlaces;
        for (int depth = near; depth <= far; ++depth) {
            const double u = side == kLeftSide ? bounds.left + depth
                : side == kRightSide           ? bounds.right - depth
                                               : bounds.left + part * (bounds.right - bounds.left);
            const double v = upright ? bounds.top + part * (bounds.bottom - bounds.top)
                : side == kTopSide   ? bounds.top + depth
                                     : bounds.bottom - depth;
            const int x = static_cast<int>(std::floor(axes.x(u, v)));
            const int y = static_cast<int>(std::floor(axes.y(u, v)));
            if (x >= 0 && y >= 0 && x < gray.width && y < gray.height) {
                ++levels[gray.row(y)[x]];
            }
        }
    }
    return pixelCount(levels) < kPlaces ? -1 : levelAtShare(levels, share);
}

/// A line of print or a rule on white paper looks like a shadow, but there is the same paper to
/// both sides of it, and it does not fade away outwards.
void forgetSidesWithinPaper(EdgeLines& lines, const Page& gray, const SheetAxes& axes)
{
    const Bounds bounds = boundsOf(lines, gray, axes);
    for (const SheetSide side : { kLeftSide, kRightSide, kTopSide, kBottomSide }) {
        const int inside = levelAlong(gray, axes, bounds, side, 2, 6, 0.8);
        const int close = levelAlong(gray, axes, bounds, side, -4, -3, 0.5);
        const int outside = levelAlong(gray, axes, bounds, side, -8, -5, 0.5);
        if (outside >= 0 && std::abs(outside - inside) < kLeastDifference
            && outside - close < kLeastDifference) {
            lines.sides[side].seen = false;
        }
    }
}

bool onlyBackingOutside(
    const Page& gray, const SheetAxes& axes, const Bounds& bounds, const Backing& backing)
{
    long outside = 0;
    long other = 0;
    for (int y = kRim; y < gray.height - kRim; ++y) {
        double u = axes.u(kRim, y);
        double v = axes.v(kRim, y);
        for (int x = kRim; x < gray.width - kRim; ++x, u += axes.cosine, v -= axes.sine) {
            if (u < bounds.left - kSlack || v < bounds.top - kSlack || u > bounds.right + kSlack
                || v > bounds.bottom + kSlack) {
                ++outside;
                other += std::abs(gray.row(y)[x] - backing.level) > kBackingSpread ? 1 : 0;
            }
        }
    }
    const double most = backing.dark ? kMostStrayOnDark : kMostStrayOnWhite;
    return static_cast<double>(other) <= most * static_cast<double>(outside);
}

std::optional<TiltedRect> sheetOn(const Page& gray, const Backing& backing)
{
    EdgeLines lines =
        fitEdgeLines(edgePoints(gray, backing), kMostSkewDegrees * units::kPi / 180.0, kLeastEdge);
    const SheetAxes axes(lines.radians);
    if (!backing.dark) {
        forgetSidesWithinPaper(lines, gray, axes);
    }
    if (std::none_of(lines.sides.begin(), lines.sides.end(),
            [](const EdgeLine& line) { return line.seen; })) {
        return std::nullopt;
    }
    const Bounds bounds = boundsOf(lines, gray, axes);
    TiltedRect rect;
    rect.width = bounds.right - bounds.left;
    rect.height = bounds.bottom - bounds.top;
    if (rect.width < kLeastSize || rect.height < kLeastSize
        || !onlyBackingOutside(gray, axes, bounds, backing)) {
        return std::nullopt;
    }
    rect.degrees = lines.radians * 180.0 / units::kPi;
    rect.x = axes.x(bounds.left, bounds.top);
    rect.y = axes.y(bounds.left, bounds.top);
    return rect;
}

} // namespace

std::optional<TiltedRect> findSheet(const Page& gray)
{
    if (gray.width < kLeastSize || gray.height < kLeastSize) {
        return std::nullopt;
    }
    const Histogram frame = frameHistogram(gray);
    if (const std::optional<Backing> dark = darkBacking(gray, frame)) {
        if (const std::optional<TiltedRect> rect = sheetOn(gray, *dark)) {
            return rect;
        }
    }
    return sheetOn(gray, whiteBacking(frame));
}

} // namespace orva
