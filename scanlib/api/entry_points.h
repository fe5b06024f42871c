// The library's functions as C++ sees them. Made from the one list, so that every body in
// entry_points.cpp is checked against its name and signature there.
#pragma once

#include "sdk/records.h"

#include <vector>

#define ORVA_API __attribute__((visibility("default")))

extern "C" {
#define ORVA_ENTRY(number, operation, symbol, required, parameters, arguments)                     \
    ORVA_API int symbol parameters;
#include "sdk/entry_points.def"
}
