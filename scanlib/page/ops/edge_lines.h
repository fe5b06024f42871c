// Four lines that enclose a sheet, out of places where its edges seem to be.
#pragma once

#include <array>
#include <cstddef>
#include <vector>

namespace orva {

struct EdgePoint
{
    double x = 0;
    double y = 0;
};

enum SheetSide : std::size_t
{
    kLeftSide,
    kRightSide,
    kTopSide,
    kBottomSide
};
inline constexpr std::size_t kSheetSides = 4;

using EdgePoints = std::array<std::vector<EdgePoint>, kSheetSides>;

/// Axes of the sheet: u = x cos + y sin along its top, v = y cos - x sin down its side.
struct EdgeLine
{
    bool seen = false;
    double offset = 0; ///< u of the left and right side, v of the others
};

struct EdgeLines
{
    double radians = 0; ///< clockwise
    std::array<EdgeLine, kSheetSides> sides;
};

/// The tilt, at most `mostRadians` either way, at which most points lie on one line a side, and
/// these lines. A side on whose line lie less than two in five of its points, or less than
/// `leastPoints`, is not seen. Points off the lines (torn corners, print, specks) decide nothing.
EdgeLines fitEdgeLines(const EdgePoints& points, double mostRadians, std::size_t leastPoints);

} // namespace orva
