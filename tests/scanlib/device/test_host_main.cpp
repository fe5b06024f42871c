// The helper program with the real SANE library, whose calls are bent as the test wishes: options
// set right after opening, a fault before a certain start, a call that never returns or crashes.
// ORVA_TEST_WISHES names the file with the wishes, one a line, the name first.
#include "scanlib/device/sane_host/host_program.h"

#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

// The driver's own leaks are not ours to report. NOLINTNEXTLINE(bugprone-reserved-identifier)
extern "C" int __lsan_is_turned_off();
extern "C" int __lsan_is_turned_off() // NOLINT(bugprone-reserved-identifier)
{
    return 1;
}

namespace {

struct Wishes
{
    std::vector<std::pair<std::string, std::string>> options;
    int faultAtStart = 0;
    std::string fault = "Default";
    std::string bentCall; ///< "open", "search", "read"
    int bentAt = 0; ///< which call of the kind, from 1; of "read": in which frame
    bool crash = false; ///< else it never returns
    bool gone = false; ///< no scanner is attached any more
};

Wishes readWishes()
{
    Wishes wishes;
    const char* const file = std::getenv("ORVA_TEST_WISHES");
    std::ifstream lines(file != nullptr ? file : "");
    std::string name;
    std::string value;
    while (lines >> name && std::getline(lines >> std::ws, value)) {
        if (name == "fault-at-start") {
            wishes.faultAtStart = std::atoi(value.c_str());
        } else if (name == "fault") {
            wishes.fault = value;
        } else if (name == "gone") {
            wishes.gone = true;
        } else if (name.rfind("crash-", 0) == 0 || name.rfind("hang-", 0) == 0) {
            wishes.crash = name[0] == 'c';
            wishes.bentCall = name.substr(name.find('-') + 1);
            wishes.bentAt = std::atoi(value.c_str());
        } else {
            wishes.options.emplace_back(name, value);
        }
    }
    return wishes;
}

const Wishes& wishes()
{
    static const Wishes read = readWishes();
    return read;
}

int g_starts = 0;

void bend(const char* call, int number)
{
    if (wishes().bentCall != call || number != wishes().bentAt) {
        return;
    }
    if (wishes().crash) {
        std::signal(SIGSEGV, SIG_DFL); // no sanitizer in between
        ::raise(SIGSEGV);
    }
    for (;;) {
        ::pause();
    }
}

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

SANE_Status getDevices(const SANE_Device*** list, SANE_Bool localOnly)
{
    bend("search", 1);
    static const SANE_Device* none[] = { nullptr };
    if (wishes().gone) {
        *list = none;
        return SANE_STATUS_GOOD;
    }
    return sane_get_devices(list, localOnly);
}

SANE_Status openAsWished(SANE_String_Const name, SANE_Handle* handle)
{
    bend("open", 1);
    if (wishes().gone) {
        return SANE_STATUS_INVAL;
    }
    const SANE_Status status = sane_open(name, handle);
    if (status == SANE_STATUS_GOOD) {
        for (const auto& [option, value] : wishes().options) {
            setOption(*handle, option, value);
        }
    }
    return status;
}

SANE_Status startAsWished(SANE_Handle handle)
{
    if (++g_starts == wishes().faultAtStart) {
        setOption(handle, "read-return-value", wishes().fault);
    }
    return sane_start(handle);
}

SANE_Status readAsWished(SANE_Handle handle, SANE_Byte* data, SANE_Int most, SANE_Int* length)
{
    bend("read", g_starts);
    return sane_read(handle, data, most, length);
}

} // namespace

int main(int argumentCount, char** arguments)
{
    orva::SaneApi api = orva::realSaneApi();
    api.getDevices = getDevices;
    api.open = openAsWished;
    api.start = startAsWished;
    api.read = readAsWished;
    return orva::runSaneHost(argumentCount, arguments, api);
}
