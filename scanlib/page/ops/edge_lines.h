// Four lines that enclose a sheet, out of places where its edges seem to be.
#pragma once

#include <array>
#include <cmath>
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

/// Axes of a tilted sheet: u along its top, v down its side.
struct SheetAxes
{
    explicit SheetAxes(double radians)
        : cosine(std::cos(radians))
        , sine(std::sin(radians))
    {
    }
    double u(double x, double y) const { return x * cosine + y * sine; }
    double v(double x, double y) const { return y * cosine - x * sine; }
    double x(double u, double v) const { return u * cosine - v * sine; }
    double y(double u, double v) const { return u * sine + v * cosine; }

    double cosine;
    double sine;
};

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
