// Conversions between the units of paper, pixels and files.
#pragma once

namespace orva::units {

inline constexpr double kMillimetresPerInch = 25.4;
inline constexpr double kInchesPerMetre = 1000 / kMillimetresPerInch;
inline constexpr double kPi = 3.14159265358979323846;
/// What a page is taken to have when it does not know its resolution, dots per inch.
inline constexpr double kAssumedDpi = 200;

} // namespace orva::units
