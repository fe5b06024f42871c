// A file descriptor that is closed at the end of its block.
#pragma once

#include <unistd.h>

namespace orva {

/// Holds what open() gave, a failure too. Closing also gives up the locks on the file.
class Descriptor
{
public:
    explicit Descriptor(int value)
        : m_value(value)
    {
    }
    ~Descriptor()
    {
        if (m_value >= 0) {
            ::close(m_value);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int get() const { return m_value; }

private:
    int m_value;
};

} // namespace orva
