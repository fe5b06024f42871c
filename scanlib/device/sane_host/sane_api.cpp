#include "scanlib/device/sane_host/sane_api.h"

#include <string>

namespace orva {

const SaneApi& realSaneApi()
{
    static constexpr SaneApi kApi { sane_init, sane_get_devices, sane_open, sane_close,
        sane_get_option_descriptor, sane_control_option, sane_get_parameters, sane_start, sane_read,
        sane_cancel, sane_exit };
    return kApi;
}

Status saneFailure(SANE_Status status, const char* call)
{
    struct Row
    {
        ResultCode code;
        const char* text;
    };
    // in the order of SANE_Status; the last two are not in every sane.h
    static constexpr Row kRows[] = {
        { kOk, "good" },
        { kNotSupported, "unsupported" },
        { kCancelled, "cancelled" },
        { kDeviceBusy, "device busy" },
        { kDeviceBadParameter, "invalid" },
        { kDeviceIo, "unexpected end of data" },
        { kPaperJam, "jammed" },
        { kNoPaper, "out of documents" },
        { kCoverOpen, "cover open" },
        { kDeviceIo, "input/output error" },
        { kNoMemory, "out of memory" },
        { kAccessDenied, "access denied" },
        { kDeviceBusy, "warming up" },
        { kDeviceBusy, "locked for transport" },
    };
    const auto index = static_cast<std::size_t>(status);
    if (index == 0) {
        return {};
    }
    if (index >= sizeof kRows / sizeof kRows[0]) {
        return { kDeviceIo, std::string(call) + ": status " + std::to_string(index) };
    }
    return { kRows[index].code, std::string(call) + ": " + kRows[index].text };
}

} // namespace orva
