// Connected black areas of a black-and-white page.
#pragma once

#include "scanlib/base/page.h"

#include <cstddef>
#include <vector>

namespace orva {

/// Pixels; right and bottom are the first ones outside.
struct Blob
{
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;
    long area = 0;

    int width() const { return right - left; }
    int height() const { return bottom - top; }
};

/// Neighbouring black pixels of one row, from `begin` to before `end`.
struct BlobRun
{
    int y = 0;
    int begin = 0;
    int end = 0;
    std::size_t blob = 0;
};

struct Blobs
{
    std::vector<Blob> blobs;
    std::vector<BlobRun> runs; ///< in reading order
};

/// Pixels that touch at a corner belong together.
Blobs findBlobs(const Page& bits);

} // namespace orva
