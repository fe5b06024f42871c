// How much ink stands in each column of a line of text.
#pragma once

#include "scanlib/base/page_text.h"
#include "scanlib/ocr/gray_picture.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace orva {

/// For each column from `left` on the part of a line's height that is ink.
struct InkProfile
{
    static constexpr double kLeastInk = 0.03; ///< of the line's height: less is dust

    int left = 0;
    std::vector<double> ink;
    std::vector<double> sums; ///< of the ink before a column
    std::vector<int> empty; ///< columns without ink before a column

    std::size_t index(int x) const
    {
        return static_cast<std::size_t>(std::clamp(x, left, right()) - left);
    }
    /// Ink between two columns, in heights of the line x pixels.
    double between(int from, int to) const { return sums[index(to)] - sums[index(from)]; }
    int emptyBetween(int from, int to) const { return empty[index(to)] - empty[index(from)]; }
    int right() const { return left + static_cast<int>(ink.size()); }
    double at(int x) const
    {
        return x < left || x >= right() ? 0 : ink[static_cast<std::size_t>(x - left)];
    }
    /// The first column with ink from here on, and the one behind the last before.
    int inkFrom(int x) const
    {
        while (x < right() && at(x) <= kLeastInk) {
            ++x;
        }
        return x;
    }
    int inkUntil(int x) const
    {
        while (x > left && at(x - 1) <= kLeastInk) {
            --x;
        }
        return x;
    }
    /// On the border between two columns.
    double cut(int x) const { return (at(x - 1) + at(x)) / 2; }
};

/// The profile of the columns from `left` to `right`, as far as the picture has them.
InkProfile inkProfileOf(const GrayPicture& picture, const TextLine& line, int left, int right);

} // namespace orva
