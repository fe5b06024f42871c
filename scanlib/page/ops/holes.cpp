#include "scanlib/page/ops/holes.h"

#include "scanlib/base/units.h"
#include "scanlib/page/ops/reduced.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>

namespace orva {

namespace {

constexpr double kHoleSearchDpi = 100;
constexpr double kLeastMm = 4;
constexpr double kMostMm = 9;
constexpr double kRoundnessMm = 1; // width and height may differ by this much
constexpr double kEdgeMm = 20;
constexpr double kLeastFill = 0.9; // of the area of the ellipse in the blob's box
constexpr double kMostFill = 1.12;
constexpr int kContrast = 60; // grey levels between paper and hole
constexpr int kPaleContrast = 18; // of holes over a white backing, which show a shadow
constexpr double kAlignedMm = 3; // a sheet may lie askew by two degrees
constexpr double kLeastPitchMm = 6; // 30 holes stand 9.5 mm apart
constexpr double kRimMm = 0.6; // the shadow around a hole
constexpr double kSampleMm = 1.2; // width of the ring that the paper is taken from

/// Centre and half axes, page pixels.
struct Ellipse
{
    double x = 0;
    double y = 0;
    double halfWidth = 0;
    double halfHeight = 0;

    double distance(int px, int py) const
    {
        const double dx = (px - x) / halfWidth;
        const double dy = (py - y) / halfHeight;
        return dx * dx + dy * dy;
    }
};

template <typename Visit>
void forEachAround(const Page& page, const Ellipse& ellipse, Visit visit)
{
    const int top = std::max(0, static_cast<int>(ellipse.y - ellipse.halfHeight));
    const int bottom =
        std::min(page.height - 1, static_cast<int>(ellipse.y + ellipse.halfHeight) + 1);
    const int left = std::max(0, static_cast<int>(ellipse.x - ellipse.halfWidth));
    const int right = std::min(page.width - 1, static_cast<int>(ellipse.x + ellipse.halfWidth) + 1);
    for (int y = top; y <= bottom; ++y) {
        for (int x = left; x <= right; ++x) {
            visit(x, y);
        }
    }
}

void coverBits(Page& page, const Ellipse& hole)
{
    forEachAround(page, hole, [&](int x, int y) {
        if (hole.distance(x, y) <= 1) {
            std::uint8_t& byte = page.row(y)[x >> 3];
            byte = static_cast<std::uint8_t>(byte & ~(0x80 >> (x & 7)));
        }
    });
}

/// The median of the ring around, each channel on its own: print that reaches in decides nothing.
void coverTones(Page& page, const Ellipse& hole, const Ellipse& ring)
{
    const int channels = page.format == PixelFormat::kRgb ? 3 : 1;
    for (int c = 0; c < channels; ++c) {
        std::array<int, 256> counts {};
        int total = 0;
        forEachAround(page, ring, [&](int x, int y) {
            if (hole.distance(x, y) > 1 && ring.distance(x, y) <= 1) {
                ++counts[page.row(y)[x * channels + c]];
                ++total;
            }
        });
        int sum = 0;
        std::size_t median = 0;
        while (median < 255 && (sum += counts[median]) * 2 < total) {
            ++median;
        }
        forEachAround(page, hole, [&](int x, int y) {
            if (hole.distance(x, y) <= 1) {
                page.row(y)[x * channels + c] = static_cast<std::uint8_t>(median);
            }
        });
    }
}

std::vector<Blob> holesAt(const Page& gray, int paper, int contrast)
{
    const Page bits = marksAgainst(gray, paper, contrast);
    std::vector<Blob> holes = findBlobs(bits).blobs;
    holes.erase(std::remove_if(holes.begin(), holes.end(),
                    [&bits](const Blob& blob) { return !looksLikeHole(blob, bits); }),
        holes.end());
    return holes;
}

/// Those that have another one of their size at the same distance from the same edge: a punch makes
/// two at least, and a lone round mark may be print.
std::vector<Blob> patternOf(const std::vector<Blob>& found, const Page& gray)
{
    const double mmX = units::kMillimetresPerInch / gray.dpiX;
    const double mmY = units::kMillimetresPerInch / gray.dpiY;
    std::vector<Blob> pattern;
    std::copy_if(found.begin(), found.end(), std::back_inserter(pattern), [&](const Blob& one) {
        return std::any_of(found.begin(), found.end(), [&](const Blob& other) {
            const double dx = std::abs(one.left + one.right - other.left - other.right) / 2.0 * mmX;
            const double dy = std::abs(one.top + one.bottom - other.top - other.bottom) / 2.0 * mmY;
            return std::min(dx, dy) <= kAlignedMm && std::max(dx, dy) >= kLeastPitchMm
                && std::abs(one.width() - other.width()) * mmX <= kRoundnessMm;
        });
    });
    return pattern;
}

} // namespace

bool looksLikeHole(const Blob& blob, const Page& bits)
{
    const double mmX = units::kMillimetresPerInch / bits.dpiX;
    const double mmY = units::kMillimetresPerInch / bits.dpiY;
    const double width = blob.width() * mmX;
    const double height = blob.height() * mmY;
    if (std::min(width, height) < kLeastMm || std::max(width, height) > kMostMm
        || std::abs(width - height) > kRoundnessMm) {
        return false;
    }
    const double fill =
        static_cast<double>(blob.area) / (units::kPi / 4 * blob.width() * blob.height());
    if (fill < kLeastFill || fill > kMostFill) {
        return false;
    }
    const double x = (blob.left + blob.right) / 2.0 * mmX;
    const double y = (blob.top + blob.bottom) / 2.0 * mmY;
    const double edge =
        std::min(std::min(x, bits.width * mmX - x), std::min(y, bits.height * mmY - y));
    return edge <= kEdgeMm;
}

void removeHoles(Page& page)
{
    const ReducedPage reduced = reducedGray(page, kHoleSearchDpi);
    const Page& gray = reduced.gray;
    const int paper = paperLevel(gray);
    std::vector<Blob> holes = patternOf(holesAt(gray, paper, kContrast), gray);
    if (holes.empty()) {
        holes = patternOf(holesAt(gray, paper, kPaleContrast), gray);
    }
    const double rimX = kRimMm / units::kMillimetresPerInch * gray.dpiX * reduced.factorX;
    const double rimY = kRimMm / units::kMillimetresPerInch * gray.dpiY * reduced.factorY;
    for (const Blob& blob : holes) {
        Ellipse hole;
        hole.x = (blob.left + blob.right) / 2.0 * reduced.factorX;
        hole.y = (blob.top + blob.bottom) / 2.0 * reduced.factorY;
        hole.halfWidth = blob.width() / 2.0 * reduced.factorX + rimX;
        hole.halfHeight = blob.height() / 2.0 * reduced.factorY + rimY;
        if (page.format == PixelFormat::kBlackWhite) {
            coverBits(page, hole);
            continue;
        }
        Ellipse ring = hole;
        ring.halfWidth += rimX / kRimMm * kSampleMm;
        ring.halfHeight += rimY / kRimMm * kSampleMm;
        coverTones(page, hole, ring);
    }
}

} // namespace orva
