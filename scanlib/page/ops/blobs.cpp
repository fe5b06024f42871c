// Runs of black pixels are joined with the runs of the row above that they touch (union-find), so
// the cost follows the ink, not the paper.
#include "scanlib/page/ops/blobs.h"

#include <algorithm>

namespace orva {

namespace {

bool isBlack(const std::uint8_t* row, int x)
{
    return ((row[x >> 3] >> (7 - (x & 7))) & 1) != 0;
}

void findRuns(const Page& bits, int y, std::vector<BlobRun>& runs)
{
    const std::uint8_t* const row = bits.row(y);
    int x = 0;
    while (x < bits.width) {
        if ((x & 7) == 0 && row[x >> 3] == 0) {
            x += 8;
        } else if (!isBlack(row, x)) {
            ++x;
        } else {
            const int begin = x;
            while (x < bits.width && isBlack(row, x)) {
                ++x;
            }
            runs.push_back({ y, begin, x, runs.size() });
        }
    }
}

std::size_t rootOf(std::vector<BlobRun>& runs, std::size_t run)
{
    while (runs[run].blob != run) {
        runs[run].blob = runs[runs[run].blob].blob;
        run = runs[run].blob;
    }
    return run;
}

void join(std::vector<BlobRun>& runs, std::size_t a, std::size_t b)
{
    a = rootOf(runs, a);
    b = rootOf(runs, b);
    runs[std::max(a, b)].blob = std::min(a, b);
}

} // namespace

Blobs findBlobs(const Page& bits)
{
    Blobs result;
    std::vector<BlobRun>& runs =
        result.runs; // until the end, `blob` is another run of the same blob
    std::size_t above = 0;
    std::size_t current = 0;
    for (int y = 0; y < bits.height; ++y) {
        const std::size_t start = runs.size();
        findRuns(bits, y, runs);
        std::size_t candidate = above;
        for (std::size_t i = start; i < runs.size(); ++i) {
            while (candidate < current && runs[candidate].end < runs[i].begin) {
                ++candidate;
            }
            for (std::size_t j = candidate; j < current && runs[j].begin <= runs[i].end; ++j) {
                join(runs, i, j);
            }
        }
        above = start;
        current = runs.size();
    }
    for (std::size_t i = 0; i < runs.size(); ++i) {
        BlobRun& run = runs[i];
        if (run.blob == i) {
            run.blob = result.blobs.size();
            result.blobs.push_back({ run.begin, run.y, run.end, run.y + 1, 0 });
        } else {
            run.blob = runs[run.blob].blob; // an earlier run, which already holds its number
        }
        Blob& blob = result.blobs[run.blob];
        blob.left = std::min(blob.left, run.begin);
        blob.right = std::max(blob.right, run.end);
        blob.bottom = run.y + 1;
        blob.area += run.end - run.begin;
    }
    return result;
}

} // namespace orva
