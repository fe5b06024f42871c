// Puts the raw frames of a side together: grey, colour, or three passes; 1, 8 or 16 bits a sample;
// number of lines known or not. What arrives is counted against what was promised.
#pragma once

#include "scanlib/base/page.h"
#include "scanlib/base/status.h"
#include "scanlib/device/sane/frame_shape.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace orva {

class FrameAssembler
{
public:
    FrameAssembler() = default;
    /// Collects the first frame in memory that has been used before; fresh memory for a large page
    /// costs more than reading it.
    explicit FrameAssembler(std::vector<std::uint8_t> memory)
        : m_raw(std::move(memory))
    {
        m_raw.clear();
    }

    /// Begins a frame. kDeviceIo for parameters that make no sense or do not go with the frames
    /// before, kPageTooLarge past 300 megapixels.
    Status begin(const FrameShape& parameters);
    /// The next bytes of the frame. kPageTooLarge when a frame of unknown length does not end.
    Status add(const std::uint8_t* data, std::size_t size);
    /// All of the frame was read. kDeviceIo when data is missing: a driver that promises lines and
    /// delivers none has lost the page, whatever its status says.
    Status end();
    /// More passes are needed.
    bool wantsFrame() const { return m_wantsFrame; }
    bool hasData() const { return !m_raw.empty(); }

    /// Moves the picture into the page: pixels, size and format. Resolution and numbers are the
    /// caller's. 1 bit stays 1 bit (1 is black), 16 bits are cut to the upper 8.
    void finish(Page& page);

private:
    Status finishFrame(int lines);
    void convertLine(const std::uint8_t* from, int y, int channel);

    FrameShape m_parameters {};
    std::vector<std::uint8_t> m_raw; ///< the frame as it comes
    std::size_t m_limit = 0; ///< bytes that are kept
    Page m_page;
    PassSet m_passes;
    bool m_wantsFrame = true;
};

} // namespace orva
