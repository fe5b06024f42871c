// What a driver promises about a frame of a side, in terms of our own: this side of the helper
// process knows no sane.h.
#pragma once

namespace orva {

enum class FrameFormat : int
{
    kGray = 0, ///< also 1 bit; the numbers are those of SANE_Frame
    kRgb = 1,
    kRed = 2,
    kGreen = 3,
    kBlue = 4,
};

inline bool isPass(FrameFormat format)
{
    return format == FrameFormat::kRed || format == FrameFormat::kGreen
        || format == FrameFormat::kBlue;
}

struct FrameShape
{
    FrameFormat format = FrameFormat::kGray; ///< may hold a number that has no name here
    int bytesPerLine = 0;
    int pixelsPerLine = 0;
    int lines = 0; ///< -1: not known before the end
    int depth = 0; ///< bits a sample
};

/// Of a side in three passes, which there were.
class PassSet
{
public:
    /// true when more frames belong to the side.
    bool wantsMoreAfter(FrameFormat format)
    {
        m_seen |= isPass(format) ? 1U << static_cast<unsigned>(format) : 0U;
        return isPass(format) && m_seen != kAll;
    }

private:
    static constexpr unsigned kAll = 1U << 2U | 1U << 3U | 1U << 4U;
    unsigned m_seen = 0;
};

} // namespace orva
