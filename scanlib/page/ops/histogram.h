// How often each grey level occurs in a page.
#pragma once

#include "scanlib/base/page.h"

#include <array>
#include <cstdint>

namespace orva {

using Histogram = std::array<std::uint64_t, 256>;

/// Of the luminance, all pixels.
Histogram lumaHistogram(const Page& page);
std::uint64_t pixelCount(const Histogram& histogram);
/// The lowest level that at least this share (0..1) of the pixels does not exceed.
int levelAtShare(const Histogram& histogram, double share);
/// The level around which (two levels to either side) most pixels lie, not below `lowest`.
int mostFrequentLevel(const Histogram& histogram, int lowest);

} // namespace orva
