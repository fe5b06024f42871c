#include "scanlib/page/ops/levels.h"

namespace orva {

namespace {

constexpr double kDarkShare = 0.005;
constexpr double kLightShare = 0.05;
constexpr int kLeastSpan = 48; // grey levels

} // namespace

std::optional<LevelStretch> levelStretch(const Histogram& luminance)
{
    const LevelStretch stretch { levelAtShare(luminance, kDarkShare),
        levelAtShare(luminance, 1.0 - kLightShare) };
    return stretch.light - stretch.dark < kLeastSpan ? std::nullopt : std::optional(stretch);
}

} // namespace orva
