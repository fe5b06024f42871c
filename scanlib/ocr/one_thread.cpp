#include "scanlib/ocr/one_thread.h"

// GCC's <omp.h> is not in every compiler's path, and its library the one that Tesseract uses.
// OpenMP 5.0, 3.2.15 and 3.2.16: the value belongs to the calling task.
extern "C" void omp_set_max_active_levels(int levels) noexcept;
extern "C" int omp_get_max_active_levels() noexcept;

namespace orva {

OneThread::OneThread()
    : m_before(omp_get_max_active_levels())
{
    omp_set_max_active_levels(0);
}

OneThread::~OneThread()
{
    omp_set_max_active_levels(m_before);
}

} // namespace orva
