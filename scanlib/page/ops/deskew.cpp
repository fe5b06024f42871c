#include "scanlib/page/ops/deskew.h"

#include "scanlib/page/ops/blobs.h"
#include "scanlib/page/ops/histogram.h"
#include "scanlib/page/ops/reduced.h"
#include "scanlib/page/ops/resample.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <vector>

namespace orva {

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kSearchDpi = 100;
constexpr double kMostDegrees = 8;
constexpr double kLeastDegrees = 0.1;
constexpr int kInkContrast = 60; // grey levels
constexpr int kDarkestPaper = 120; // a backing is darker than this, paper lighter
constexpr int kLeastEdgeContrast = 50; // between backing and paper
constexpr double kLeastSheetShare =
    0.03; // of the scanned area; a business card on A4 has 8 percent

constexpr double kInset = 0.75; // reduced pixels: the half-covered ones at an edge stay out
constexpr int kBackingSpread = 40; // grey levels
// Scanners, and areas rounded up to whole pixels, leave light lines along the rim.
constexpr int kRim = 3; // reduced pixels
constexpr double kMostStrayShare = 0.02;

double tangent(double degrees)
{
    return std::tan(degrees * kPi / 180.0);
}

// ---- by the lines of print

struct Point
{
    int x = 0;
    int y = 0;
};

/// Sum of squares of the ink in each row, when rows are tilted by the angle.
double sharpness(const std::vector<Point>& ink, double degrees, int width, int height)
{
    const double slope = tangent(degrees);
    const int margin = static_cast<int>(width * std::abs(slope)) + 1;
    std::vector<int> rows(
        static_cast<std::size_t>(height) + 2 * static_cast<std::size_t>(margin) + 1);
    for (const Point& point : ink) {
        const long row = std::lround(point.y - point.x * slope) + margin;
        ++rows[static_cast<std::size_t>(row)];
    }
    double sum = 0;
    for (const int count : rows) {
        sum += static_cast<double>(count) * count;
    }
    return sum;
}

/// The middle of the foot of every mark of the size of a letter: baselines are sharper than ink,
/// and pictures and rules stay out of it.
std::vector<Point> lettersOf(const Page& gray)
{
    const int paper = paperLevel(gray);
    const Page bits = marksAgainst(gray, paper, std::min(kInkContrast, std::max(24, paper / 4)));
    const double pixelsPerMm = gray.dpiY / 25.4;
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

// ---- by the edges of the sheet

/// position = offset + slope x along; `along` is y for the left and right edge, x for the others.
struct EdgeLine
{
    double offset = 0;
    double slope = 0;
    bool seen = false; ///< the backing shows beyond it
};

/// Median of slopes between points half the edge apart, then median of offsets: up to a quarter of
/// the points may lie on a torn corner, a hole or a tab.
EdgeLine fitEdge(const std::vector<Point>& points)
{
    EdgeLine line;
    const std::size_t half = points.size() / 2;
    if (half < 8) {
        return line;
    }
    std::vector<double> values;
    for (std::size_t i = 0; i + half < points.size(); ++i) {
        values.push_back(static_cast<double>(points[i + half].x - points[i].x)
            / (points[i + half].y - points[i].y));
    }
    const auto median = [&values] {
        const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
        std::nth_element(values.begin(), middle, values.end());
        return *middle;
    };
    line.slope = median();
    values.clear();
    for (const Point& point : points) {
        values.push_back(point.x - line.slope * point.y);
    }
    line.offset = median();
    line.seen = true;
    return line;
}

/// Light areas that are no specks: a dark picture may cut the sheet into several.
bool isPaper(const Blob& blob, int width, int height)
{
    return static_cast<double>(blob.area) * 2000 > static_cast<double>(width) * height;
}

/// The box of all of them; without area where there are none.
Blob paperBox(const Blobs& found, int width, int height)
{
    Blob box { width, height, 0, 0, 0 };
    for (const Blob& blob : found.blobs) {
        if (isPaper(blob, width, height)) {
            box.left = std::min(box.left, blob.left);
            box.top = std::min(box.top, blob.top);
            box.right = std::max(box.right, blob.right);
            box.bottom = std::max(box.bottom, blob.bottom);
            box.area += blob.area;
        }
    }
    return box;
}

struct SheetEdges
{
    EdgeLine left;
    EdgeLine right;
    EdgeLine top;
    EdgeLine bottom;
};

/// First and last paper pixel of every row and column. Points on the rim of the scanned area tell
/// nothing: there the sheet goes on, or no backing shows.
SheetEdges edgesOf(const Blobs& found, const Blob& sheet, int width, int height)
{
    std::vector<Point> left;
    std::vector<Point> right;
    std::vector<int> first(static_cast<std::size_t>(width), height);
    std::vector<int> last(static_cast<std::size_t>(width), -1);
    std::vector<int> rowFirst(static_cast<std::size_t>(height), width);
    std::vector<int> rowLast(static_cast<std::size_t>(height), -1);
    for (const BlobRun& run : found.runs) {
        if (!isPaper(found.blobs[run.blob], width, height)) {
            continue;
        }
        const auto y = static_cast<std::size_t>(run.y);
        rowFirst[y] = std::min(rowFirst[y], run.begin);
        rowLast[y] = std::max(rowLast[y], run.end);
        for (int x = run.begin; x < run.end; ++x) {
            first[static_cast<std::size_t>(x)] =
                std::min(first[static_cast<std::size_t>(x)], run.y);
            last[static_cast<std::size_t>(x)] = run.y + 1;
        }
    }
    // The ends of an edge belong to the corners.
    const int skipY = sheet.height() / 8;
    const int skipX = sheet.width() / 8;
    for (int y = sheet.top + skipY; y < sheet.bottom - skipY; ++y) {
        const auto row = static_cast<std::size_t>(y);
        if (rowFirst[row] > 1 && rowLast[row] >= 0) {
            left.push_back({ rowFirst[row], y });
        }
        if (rowLast[row] >= 0 && rowLast[row] < width - 1) {
            right.push_back({ rowLast[row], y });
        }
    }
    std::vector<Point> top;
    std::vector<Point> bottom;
    for (int x = sheet.left + skipX; x < sheet.right - skipX; ++x) {
        const auto column = static_cast<std::size_t>(x);
        if (first[column] > 1 && last[column] >= 0) {
            top.push_back({ first[column], x });
        }
        if (last[column] >= 0 && last[column] < height - 1) {
            bottom.push_back({ last[column], x });
        }
    }
    return { fitEdge(left), fitEdge(right), fitEdge(top), fitEdge(bottom) };
}

/// Top and bottom run downhill by the slope; left and right lean the other way. The longer pair of
/// a sheet is the more exact one, so each edge weighs with its length.
std::optional<double> slopeOf(const SheetEdges& edges, const Blob& sheet)
{
    double sum = 0;
    double weight = 0;
    const auto add = [&](const EdgeLine& line, double slope, int length) {
        if (line.seen) {
            sum += slope * length;
            weight += length;
        }
    };
    add(edges.top, edges.top.slope, sheet.width());
    add(edges.bottom, edges.bottom.slope, sheet.width());
    add(edges.left, -edges.left.slope, sheet.height());
    add(edges.right, -edges.right.slope, sheet.height());
    if (weight == 0) {
        return std::nullopt;
    }
    return sum / weight;
}

/// Grey level that a tenth of the frame that far inside is darker than.
int darkLevelOfFrame(const Page& gray, int inset)
{
    Page frame;
    frame.allocate(2 * (gray.width + gray.height), 1, PixelFormat::kGray);
    std::uint8_t* out = frame.pixels.data();
    for (int x = 0; x < gray.width; ++x) {
        *out++ = gray.row(inset)[x];
        *out++ = gray.row(gray.height - 1 - inset)[x];
    }
    for (int y = 0; y < gray.height; ++y) {
        *out++ = gray.row(y)[inset];
        *out++ = gray.row(y)[gray.width - 1 - inset];
    }
    return levelAtShare(lumaHistogram(frame), 0.1);
}

/// Grey level of the rim where it is dark.
int backingLevel(const Page& gray)
{
    return std::min(darkLevelOfFrame(gray, 0), darkLevelOfFrame(gray, kRim));
}

/// "Black" where the page is light, for the search of connected areas. The rim is light only where
/// what lies beside it is.
Page lightAreas(const Page& gray, int limit)
{
    Page light;
    light.allocate(gray.width, gray.height, PixelFormat::kBlackWhite);
    for (int y = 0; y < gray.height; ++y) {
        const std::uint8_t* const row = gray.row(y);
        const std::uint8_t* const inner = gray.row(std::clamp(y, kRim, gray.height - 1 - kRim));
        for (int x = 0; x < gray.width; ++x) {
            if (row[x] > limit && inner[std::clamp(x, kRim, gray.width - 1 - kRim)] > limit) {
                light.row(y)[x >> 3] =
                    static_cast<std::uint8_t>(light.row(y)[x >> 3] | (0x80 >> (x & 7)));
            }
        }
    }
    return light;
}

/// Each edge through its own middle, all at the common angle; an unseen one is the rim.
TiltedRect rectOf(const SheetEdges& edges, const Blob& box, double slope)
{
    const double angle = std::atan(slope);
    const double cosine = std::cos(angle);
    const double sine = std::sin(angle);
    const double middleX = (box.left + box.right) / 2.0;
    const double middleY = (box.top + box.bottom) / 2.0;
    const auto edgeAt = [](const EdgeLine& line, double along, double rim, double inwards) {
        return line.seen ? line.offset + line.slope * along + inwards * kInset : rim;
    };
    const double left = edgeAt(edges.left, middleY, box.left, 1);
    const double right = edgeAt(edges.right, middleY, box.right, -1);
    const double top = edgeAt(edges.top, middleX, box.top, 1);
    const double bottom = edgeAt(edges.bottom, middleX, box.bottom, -1);
    // Axes of the sheet: u = (cos, sin) along the top, v = (-sin, cos) down the side.
    const double uLeft = left * cosine + middleY * sine;
    const double uRight = right * cosine + middleY * sine;
    const double vTop = -middleX * sine + top * cosine;
    const double vBottom = -middleX * sine + bottom * cosine;
    TiltedRect rect;
    rect.degrees = angle * 180.0 / kPi;
    rect.width = uRight - uLeft;
    rect.height = vBottom - vTop;
    rect.x = uLeft * cosine - vTop * sine;
    rect.y = uLeft * sine + vTop * cosine;
    return rect;
}

/// A dark picture that runs up to the edge of the paper could be taken for backing. Backing is
/// even, pictures are not: nothing is cut unless what would go is.
bool onlyBackingOutside(const Page& gray, const TiltedRect& rect, int backing)
{
    constexpr double kSlack = 3; // reduced pixels
    const double cosine = std::cos(rect.degrees * kPi / 180.0);
    const double sine = std::sin(rect.degrees * kPi / 180.0);
    long outside = 0;
    long other = 0;
    for (int y = kRim; y < gray.height - kRim; ++y) {
        for (int x = kRim; x < gray.width - kRim; ++x) {
            const double u = (x - rect.x) * cosine + (y - rect.y) * sine;
            const double v = (y - rect.y) * cosine - (x - rect.x) * sine;
            if (u < -kSlack || v < -kSlack || u > rect.width + kSlack || v > rect.height + kSlack) {
                ++outside;
                other += std::abs(gray.row(y)[x] - backing) > kBackingSpread ? 1 : 0;
            }
        }
    }
    return static_cast<double>(other) <= kMostStrayShare * static_cast<double>(outside);
}

/// The sheet in reduced pixels; nothing when no dark backing is seen.
std::optional<TiltedRect> findSheet(const Page& gray)
{
    const int backing = backingLevel(gray);
    const int paper = mostFrequentLevel(lumaHistogram(gray), kDarkestPaper);
    if (backing >= kDarkestPaper || paper - backing < kLeastEdgeContrast) {
        return std::nullopt;
    }
    const Page light = lightAreas(gray, backing + (paper - backing) * 2 / 5);
    const Blobs found = findBlobs(light);
    const Blob box = paperBox(found, gray.width, gray.height);
    if (static_cast<double>(box.area) < kLeastSheetShare * gray.width * gray.height) {
        return std::nullopt;
    }
    const SheetEdges edges = edgesOf(found, box, gray.width, gray.height);
    const std::optional<double> slope = slopeOf(edges, box);
    if (!slope || std::abs(*slope) > tangent(kMostDegrees)) {
        return std::nullopt;
    }
    const TiltedRect rect = rectOf(edges, box, *slope);
    if (rect.width < 8 || rect.height < 8 || !onlyBackingOutside(gray, rect, backing)) {
        return std::nullopt;
    }
    return rect;
}

/// The whole page turned around its middle, as large as before.
TiltedRect wholePage(const Page& page, double degrees)
{
    const double radians = degrees * kPi / 180.0;
    const double halfWidth = page.width / 2.0;
    const double halfHeight = page.height / 2.0;
    TiltedRect rect;
    rect.degrees = degrees;
    rect.width = page.width;
    rect.height = page.height;
    rect.x = halfWidth - halfWidth * std::cos(radians) + halfHeight * std::sin(radians);
    rect.y = halfHeight - halfWidth * std::sin(radians) - halfHeight * std::cos(radians);
    return rect;
}

} // namespace

double textSkewDegrees(const Page& page)
{
    const Page gray = reducedGray(page, kSearchDpi).gray;
    const std::vector<Point> letters = lettersOf(gray);
    if (letters.size() < 20) {
        return 0;
    }
    const auto at = [&](double degrees) {
        return sharpness(letters, degrees, gray.width, gray.height);
    };
    double best = 0;
    double most = 0;
    double sum = 0;
    int count = 0;
    const auto search = [&](double from, double to, double step) {
        for (double degrees = from; degrees <= to + step / 2; degrees += step) {
            const double value = at(degrees);
            sum += value;
            ++count;
            if (value > most) {
                most = value;
                best = degrees;
            }
        }
    };
    search(-kMostDegrees, kMostDegrees, 0.25);
    // Scattered marks give much the same everywhere; lines stand out.
    if (most < 1.4 * sum / count) {
        return 0;
    }
    const double coarse = best;
    search(coarse - 0.25, coarse + 0.25, 0.05);
    return best;
}

void cropAndDeskew(Page& page)
{
    const ReducedPage reduced = reducedGray(page, kSearchDpi);
    if (reduced.gray.width < 32 || reduced.gray.height < 32) {
        return;
    }
    // Angles are those of square pixels; a page with two resolutions is left as it came.
    const bool square = std::abs(page.dpiX - page.dpiY) < 0.01 * page.dpiX || page.dpiX <= 0;
    if (!square || reduced.factorX != reduced.factorY) {
        return;
    }
    std::optional<TiltedRect> rect = findSheet(reduced.gray);
    if (rect) {
        const int factor = reduced.factorX;
        rect->x *= factor;
        rect->y *= factor;
        rect->width *= factor;
        rect->height *= factor;
        if (std::abs(rect->degrees) < kLeastDegrees) { // only cut, pixel for pixel
            rect->degrees = 0;
            rect->x = std::round(rect->x);
            rect->y = std::round(rect->y);
        }
        page = extracted(page, *rect);
        return;
    }
    const double degrees = textSkewDegrees(page);
    if (std::abs(degrees) >= kLeastDegrees) {
        page = extracted(page, wholePage(page, degrees));
    }
}

} // namespace orva
