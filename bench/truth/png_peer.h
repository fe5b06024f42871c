// The library's PNG encoder beside libpng itself, on noisy colour pages.
#pragma once

#include <QString>

namespace truth {

/// The upright sheets of the first eight pages of the set, with a sensor's grain and as they are,
/// both encoders in turn, `rounds` times. libpng compresses at level 1 with everything else left as
/// it is. Prints two Markdown rows: time and size as ratios, with their spread over pages and
/// rounds. Throws std::runtime_error.
void comparePng(const QString& folder, int rounds);

} // namespace truth
