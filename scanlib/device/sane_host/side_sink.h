// Where the lines of a side go as they are read. The helper hands them over through shared memory.
#pragma once

#include "scanlib/device/sane/frame_shape.h"

#include <cstddef>
#include <cstdint>

namespace orva {

class SideSink
{
public:
    virtual ~SideSink() = default;
    virtual void beginFrame(const FrameShape& shape) = 0;
    struct Room
    {
        std::uint8_t* data; ///< nullptr: nobody takes any more
        std::size_t size;
    };
    /// For the next read; waits until there is some.
    virtual Room room() = 0;
    virtual void add(std::size_t bytes) = 0;
    virtual void endFrame() = 0;
};

} // namespace orva
