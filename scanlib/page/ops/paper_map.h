// How light the paper is, place by place: the base of background removal and of the threshold for
// uneven light.
#pragma once

#include "scanlib/base/page.h"

#include <array>
#include <cstdint>
#include <vector>

namespace orva {

/// Squares of about 8 mm, `columns` x `rows`; of each the colour of its paper: red, green, blue (of
/// a grey page all three alike) and luminance, 0..255. Squares that hold no paper have that of
/// their neighbours.
struct PaperMap
{
    int columns = 0;
    int rows = 0;
    int cell = 0; ///< page pixels
    std::vector<std::array<float, 4>> levels;
    std::array<float, 4> mean {};

    bool found() const { return !levels.empty(); }
};

/// From a sample of about 75 dpi. Paper is the most frequent light tone of a square; it must join
/// on to the page's most frequent light tone without a jump of more than 10 levels from square to
/// square, so that shaded boxes and pictures do not count, but a fold or a lamp's shadow does.
/// Nothing is found where no light tone covers 15 percent of the page (a picture), and on
/// black-and-white pages.
PaperMap paperMapOf(const Page& page);

/// One value for every byte of a row, from values at the middle of the squares: `values` holds
/// `channels` for each square. `y` is the row of the page; between the middles it is interpolated.
void spreadOver(const PaperMap& map, const std::vector<std::uint16_t>& values, int channels, int y,
    int width, std::uint16_t* out);

/// Rows of a page that may share one spread row: less than a level apart.
inline constexpr int kRowsAlike = 16;

} // namespace orva
