// The pages of the truth set: which text, how it is set, how it was scanned.
#pragma once

#include "bench/truth/degrade.h"

#include <vector>

namespace truth {

struct PagePlan
{
    const char* language; ///< "zh" or "en"
    const char* chapter; ///< of the Debian Reference: ch01 ...
    int start; ///< number of the first block
    const char* layout;
    double points;
    bool sans;
    ScanPlan scan;
};

const std::vector<PagePlan>& pagePlans();

} // namespace truth
