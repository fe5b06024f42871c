#include "scanlib/page/ops/denoise.h"

#include "scanlib/page/ops/blobs.h"

#include <algorithm>
#include <cstring>

namespace orva {

namespace {

constexpr long kSpeckPixels = 2;
constexpr long kStrongSpeckPixels = 6;

std::uint8_t middleOf(std::uint8_t a, std::uint8_t b, std::uint8_t c)
{
    return std::max(std::min(a, b), std::min(std::max(a, b), c));
}

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

// The median of nine is the middle of: the largest low, the middle of the middles, the smallest
// high of three sorted columns. Only minima and maxima of bytes, so that the compiler vectorises
// it.
void medianRow(const std::uint8_t* above, const std::uint8_t* here, const std::uint8_t* below,
    std::uint8_t* out, std::size_t size, std::size_t channels, SortedColumns& columns)
{
    std::uint8_t* const low = columns.low.data();
    std::uint8_t* const middle = columns.middle.data();
    std::uint8_t* const high = columns.high.data();
    for (std::size_t i = 0; i < size; ++i) {
        const std::uint8_t a = above[i];
        const std::uint8_t b = here[i];
        const std::uint8_t c = below[i];
        low[channels + i] = std::min(std::min(a, b), c);
        high[channels + i] = std::max(std::max(a, b), c);
        middle[channels + i] = middleOf(a, b, c);
    }
    for (std::uint8_t* const values : { low, middle, high }) {
        std::memcpy(values, values + channels, channels);
        std::memcpy(values + channels + size, values + size, channels);
    }
    for (std::size_t i = 0; i < size; ++i) {
        const std::size_t left = i;
        const std::size_t centre = i + channels;
        const std::size_t right = i + 2 * channels;
        out[i] = middleOf(std::max(std::max(low[left], low[centre]), low[right]),
            middleOf(middle[left], middle[centre], middle[right]),
            std::min(std::min(high[left], high[centre]), high[right]));
    }
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
        medianPass(page);
    }
}

} // namespace orva
