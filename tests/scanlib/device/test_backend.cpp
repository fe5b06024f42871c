#include "tests/scanlib/device/test_backend.h"

#include "tests/scanlib/device/image_files.h"

#include <cstdlib>
#include <cstring>

namespace device_tests {

namespace {

BackendWishes g_wishes;
int g_starts = 0;

void setOption(SANE_Handle handle, const std::string& name, const std::string& text)
{
    for (SANE_Int i = 1;; ++i) {
        const SANE_Option_Descriptor* descriptor = sane_get_option_descriptor(handle, i);
        if (descriptor == nullptr) {
            return;
        }
        if (descriptor->name == nullptr || name != descriptor->name) {
            continue;
        }
        if (descriptor->type == SANE_TYPE_STRING) {
            std::vector<char> buffer(static_cast<std::size_t>(descriptor->size) + text.size() + 1);
            std::memcpy(buffer.data(), text.c_str(), text.size() + 1);
            sane_control_option(handle, i, SANE_ACTION_SET_VALUE, buffer.data(), nullptr);
        } else {
            SANE_Word word = std::atoi(text.c_str());
            sane_control_option(handle, i, SANE_ACTION_SET_VALUE, &word, nullptr);
        }
        return;
    }
}

SANE_Status openAsWished(SANE_String_Const name, SANE_Handle* handle)
{
    const SANE_Status status = sane_open(name, handle);
    g_starts = 0;
    if (status == SANE_STATUS_GOOD) {
        // the driver keeps its options when it is closed
        for (const char* flag : { "read-limit", "read-delay", "three-pass", "hand-scanner" }) {
            setOption(*handle, flag, "0");
        }
        setOption(*handle, "read-return-value", "Default");
        for (const auto& [option, value] : g_wishes.options) {
            setOption(*handle, option, value);
        }
    }
    return status;
}

SANE_Status startAsWished(SANE_Handle handle)
{
    if (++g_starts == g_wishes.faultAtStart) {
        setOption(handle, "read-return-value", g_wishes.fault);
    }
    return sane_start(handle);
}

} // namespace

void wish(const BackendWishes& wishes)
{
    g_wishes = wishes;
}

std::string testBackendFolder()
{
    static const TemporaryFolder folder;
    static const bool written = [] {
        writeText(folder.path() / "dll.conf", "test\n");
        writeText(folder.path() / "test.conf", "number_of_devices 1\n");
        return true;
    }();
    (void)written;
    return folder.path().string();
}

std::shared_ptr<orva::SaneRuntime> testBackendRuntime()
{
    static const std::shared_ptr<orva::SaneRuntime> runtime = [] {
        ::setenv("SANE_CONFIG_DIR", testBackendFolder().c_str(), 1);
        orva::SaneApi api = orva::realSaneApi();
        api.open = openAsWished;
        api.start = startAsWished;
        orva::SaneLimits limits;
        limits.read = std::chrono::milliseconds(2000);
        limits.busyPause = std::chrono::milliseconds(10);
        return std::make_shared<orva::SaneRuntime>(api, limits);
    }();
    return runtime;
}

} // namespace device_tests
