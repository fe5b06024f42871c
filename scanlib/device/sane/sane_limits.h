// How long a scanner may take before it counts as gone.
#pragma once

#include <chrono>

namespace orva {

struct SaneLimits
{
    /// An opening that takes longer goes on, and the next one waits for it.
    std::chrono::milliseconds open { 10'000 };
    std::chrono::milliseconds configure { 15'000 };
    std::chrono::milliseconds start { 90'000 }; ///< lamps warm up in here
    std::chrono::milliseconds read { 30'000 }; ///< without a single byte
    std::chrono::milliseconds poll { 3'000 };
    std::chrono::milliseconds endBatch { 1'000 }; ///< goes on by itself behind that
    /// For a scan to end after it was cancelled; then the helper is killed.
    std::chrono::milliseconds cancel { 1'800 };
    /// Anything that has not been answered for so long means a helper that hangs; it is killed.
    std::chrono::milliseconds hung { 20'000 };
    std::chrono::milliseconds search { 4'000 }; ///< for a scanner that is not where it was
    std::chrono::milliseconds searchPause { 5'000 }; ///< while it stays away
    std::chrono::milliseconds searchHung { 60'000 }; ///< for one driver
    std::chrono::milliseconds stop { 2'000 }; ///< for a helper to close its device and end
};

} // namespace orva
