// The entry points themselves, generated from the list, and the functions that steer them.
#include "tests/fake_sdk/fake_recorder.h"
#include "tests/fake_sdk/fake_scanner.h"
#include "tests/fake_sdk/fake_sdk.h"

#include <cstring>

#define FAKE_EXPORT extern "C" __attribute__((visibility("default")))

namespace {

fake::Recorder recorder;
fake::Scanner scanner;

template <typename Body>
int answer(const char* entry, Body body)
{
    const std::optional<int> forced = scanner.forcedResult(entry);
    if (!forced) {
        return body();
    }
    if (std::strcmp(entry, "Scan") == 0) {
        body();
    }
    return *forced;
}

} // namespace

// One library entry. The prototype first: every function has one.
#define FAKE_REQUIRED(symbol, parameters, arguments)                                               \
    FAKE_EXPORT int symbol parameters;                                                             \
    FAKE_EXPORT int symbol parameters                                                              \
    {                                                                                              \
        recorder.add(                                                                              \
            #symbol, fake::Arguments<int parameters>::texts(std::forward_as_tuple arguments));     \
        return answer(#symbol, [&] { return scanner.symbol arguments; });                          \
    }
#ifdef FAKE_WITHOUT_OPTIONAL
#define FAKE_OPTIONAL(symbol, parameters, arguments)
#else
#define FAKE_OPTIONAL FAKE_REQUIRED
#endif
#define ORVA_REQUIRED FAKE_REQUIRED
#define ORVA_OPTIONAL FAKE_OPTIONAL
#define ORVA_ENTRY(number, operation, symbol, need, parameters, arguments)                         \
    need(symbol, parameters, arguments)
#include "sdk/entry_points.def"

FAKE_EXPORT void fake_script(const char* lines)
{
    if (scanner.runScript(lines)) {
        recorder.clear();
    }
}

FAKE_EXPORT std::size_t fake_calls(char* buffer, std::size_t size)
{
    const std::string text = recorder.text();
    if (size > 0) {
        const std::size_t part = std::min(text.size(), size - 1);
        text.copy(buffer, part);
        buffer[part] = '\0';
    }
    return text.size() + 1;
}

FAKE_EXPORT int fake_call_count(const char* entry)
{
    return recorder.count(entry);
}

FAKE_EXPORT int fake_is_scanning()
{
    return scanner.scanning() ? 1 : 0;
}
