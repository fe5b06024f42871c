// Keeps OpenMP out of the recognition: pages run side by side, one a core, and Tesseract's own
// threads within a page only get in their way.
#pragma once

namespace orva {

/// While it lives, parallel regions that the calling thread meets run on it alone. Other threads,
/// and the environment of the process, stay as they are.
class OneThread
{
public:
    OneThread();
    ~OneThread();
    OneThread(const OneThread&) = delete;
    OneThread& operator=(const OneThread&) = delete;

private:
    int m_before;
};

} // namespace orva
