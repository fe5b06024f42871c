#include "scanlib/page/ops/denoise.h"

#include "scanlib/base/units.h"
#include "scanlib/page/ops/blobs.h"
#include "scanlib/page/ops/row_loops.h"
#include "scanlib/page/ops/threshold.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace orva {

namespace {

constexpr long kSpeckPixels = 2;
constexpr long kStrongSpeckPixels = 6;
constexpr double kStrongSpeckMm = 0.35; // 4 pixels at 300 dpi; full stops of 9 points have 5
constexpr double kLonelyMm = 1; // further from print than any punctuation
constexpr int kSpeckThreshold = 200; // of white paper's 255

/// Three rows with one repeated pixel at each end, as one row of sorted columns.
struct SortedColumns
{
    explicit SortedColumns(std::size_t size)
        : low(size)
        , middle(size)
        , high(size)
    {
    }
    std::vector<std::uint8_t> low;
    std::vector<std::uint8_t> middle;
    std::vector<std::uint8_t> high;
};

void medianRow(const std::uint8_t* above, const std::uint8_t* here, const std::uint8_t* below,
    std::uint8_t* out, std::size_t size, std::size_t channels, SortedColumns& columns)
{
    const RowLoops& loops = rowLoops();
    std::uint8_t* const low = columns.low.data();
    std::uint8_t* const middle = columns.middle.data();
    std::uint8_t* const high = columns.high.data();
    loops.sort(above, here, below, low + channels, middle + channels, high + channels, size);
    for (std::uint8_t* const values : { low, middle, high }) {
        std::memcpy(values, values + channels, channels);
        std::memcpy(values + channels + size, values + size, channels);
    }
    loops.medianOfNine(low, middle, high, out, size, channels);
}

void medianPass(Page& page)
{
    const std::size_t size = page.stride();
    const std::size_t channels = page.format == PixelFormat::kRgb ? 3 : 1;
    SortedColumns columns(size + 2 * channels);
    // The two input rows that the output overwrites before they are done with.
    std::vector<std::uint8_t> above(page.row(0), page.row(0) + size);
    std::vector<std::uint8_t> here = above;
    for (int y = 0; y < page.height; ++y) {
        const std::uint8_t* const below = y + 1 < page.height ? page.row(y + 1) : here.data();
        medianRow(above.data(), here.data(), below, page.row(y), size, channels, columns);
        above.swap(here);
        if (y + 1 < page.height) {
            std::memcpy(here.data(), page.row(y + 1), size);
        }
    }
}

void removeSpecks(Page& page, long largest)
{
    const Blobs found = findBlobs(page);
    for (const BlobRun& run : found.runs) {
        if (found.blobs[run.blob].area <= largest) {
            std::uint8_t* const row = page.row(run.y);
            for (int x = run.begin; x < run.end; ++x) {
                row[x >> 3] = static_cast<std::uint8_t>(row[x >> 3] & ~(0x80 >> (x & 7)));
            }
        }
    }
}

/// Whether every pixel of the frame around the blob, `gap` pixels off, is white: nothing is near
/// that the blob could belong to, as a dot to its letter or a full stop to its word.
bool standsAlone(const Page& bits, const Blob& blob, int gap)
{
    const int left = std::max(0, blob.left - gap);
    const int right = std::min(bits.width, blob.right + gap);
    const int top = std::max(0, blob.top - gap);
    const int bottom = std::min(bits.height, blob.bottom + gap);
    for (int y = top; y < bottom; ++y) {
        const std::uint8_t* const row = bits.row(y);
        for (int x = left; x < right; ++x) {
            const bool within =
                y >= blob.top && y < blob.bottom && x >= blob.left && x < blob.right;
            if (!within && ((row[x >> 3] >> (7 - (x & 7))) & 1) != 0) {
                return false;
            }
        }
    }
    return true;
}

/// The row above the speck, over and over: a speck has paper around it.
void coverSpeck(Page& page, const Blob& blob)
{
    const int channels = page.format == PixelFormat::kRgb ? 3 : 1;
    const int left = std::max(0, blob.left - 1); // with the half-dark pixels around it
    const int right = std::min(page.width, blob.right + 1);
    const int top = std::max(0, blob.top - 1);
    const int bottom = std::min(page.height, blob.bottom + 1);
    const std::uint8_t* const paper =
        page.row(top > 0 ? top - 1 : std::min(bottom, page.height - 1));
    const int bytes = (right - left) * channels;
    for (int y = top; y < bottom; ++y) {
        std::memmove(page.row(y) + left * channels, paper + left * channels,
            static_cast<std::size_t>(bytes));
    }
}

/// Dark specks that stand alone.
void coverSpecks(Page& page)
{
    const double dpi = page.dpiX > 0 ? page.dpiX : units::kAssumedDpi;
    const int side =
        std::max(2, static_cast<int>(kStrongSpeckMm / units::kMillimetresPerInch * dpi));
    const int gap = static_cast<int>(std::lround(kLonelyMm / units::kMillimetresPerInch * dpi));
    Page bits = page;
    toBlackWhiteByPaper(bits, kSpeckThreshold);
    for (const Blob& blob : findBlobs(bits).blobs) {
        if (blob.width() <= side && blob.height() <= side && standsAlone(bits, blob, gap)) {
            coverSpeck(page, blob);
        }
    }
}

} // namespace

void denoise(Page& page, Denoise strength)
{
    if (strength == Denoise::kOff) {
        return;
    }
    const bool strong = strength == Denoise::kStrong;
    if (page.format == PixelFormat::kBlackWhite) {
        removeSpecks(page, strong ? kStrongSpeckPixels : kSpeckPixels);
        return;
    }
    medianPass(page);
    if (strong) {
        coverSpecks(page);
    }
}

} // namespace orva
