// The calls into the SANE library as a table, so that everything above it runs against scripted
// answers too.
#pragma once

#include "scanlib/base/status.h"

#include <sane/sane.h>

namespace orva {

struct SaneApi
{
    SANE_Status (*init)(SANE_Int* version, SANE_Auth_Callback authorize);
    SANE_Status (*getDevices)(const SANE_Device*** list, SANE_Bool localOnly);
    SANE_Status (*open)(SANE_String_Const name, SANE_Handle* handle);
    void (*close)(SANE_Handle handle);
    const SANE_Option_Descriptor* (*optionDescriptor)(SANE_Handle handle, SANE_Int option);
    SANE_Status (*controlOption)(
        SANE_Handle handle, SANE_Int option, SANE_Action action, void* value, SANE_Int* info);
    SANE_Status (*getParameters)(SANE_Handle handle, SANE_Parameters* parameters);
    SANE_Status (*start)(SANE_Handle handle);
    SANE_Status (*read)(SANE_Handle handle, SANE_Byte* data, SANE_Int capacity, SANE_Int* length);
    void (*cancel)(SANE_Handle handle);
    void (*exit)();
};

/// The library that is linked.
const SaneApi& realSaneApi();

/// The code for the operator; call tells the log where it came from.
Status saneFailure(SANE_Status status, const char* call);

} // namespace orva
