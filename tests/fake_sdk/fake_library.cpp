// The entry points, generated from the list: each records its call and answers from the script.
#include "sdk/records.h"
#include "sdk/result_codes.h"
#include "tests/fake_sdk/fake_job.h"
#include "tests/fake_sdk/fake_script.h"
#include "tests/fake_sdk/fake_sdk.h"

#include <chrono>
#include <cstdio>
#include <cstring>
#include <sstream>
#include <tuple>
#include <type_traits>

#define FAKE_EXPORT extern "C" __attribute__((visibility("default")))

namespace {

constexpr int kNameBytes = 64; // the buffers of the entries that take no size

std::mutex mutex; // of all but the jobs
fake::Script script = fake::Script::factory();
std::vector<FakeCall> recorded;
int device = -1;
int source = 0;
std::string folder; // szFilePath of the last SetFileParam
fake::Jobs jobs;

const fake::Line* rowAt(const std::vector<fake::Line>& rows, int index)
{
    return index >= 0 && static_cast<std::size_t>(index) < rows.size()
        ? &rows[static_cast<std::size_t>(index)]
        : nullptr;
}

int give(const std::string& text, char* buffer, int size)
{
    if (buffer == nullptr || size <= 0) {
        return orva::kBadArgument;
    }
    std::snprintf(buffer, static_cast<std::size_t>(size), "%s", text.c_str());
    return orva::kOk;
}

int giveName(const std::vector<fake::Line>& rows, int index, char* name)
{
    const fake::Line* row = rowAt(rows, index);
    return row != nullptr ? give((*row)[1], name, kNameBytes)
                          : static_cast<int>(orva::kIndexOutOfRange);
}

/// A field of the chosen device.
int giveOfDevice(std::size_t field, char* buffer, int size)
{
    const fake::Line* row = rowAt(script.rows("device"), device);
    return row != nullptr ? give((*row)[field], buffer, size)
                          : static_cast<int>(orva::kNoScannerSelected);
}

int choose(const std::vector<fake::Line>& rows, int index, int& chosen)
{
    if (rowAt(rows, index) == nullptr) {
        return orva::kIndexOutOfRange;
    }
    chosen = index;
    return orva::kOk;
}

int countOf(const std::vector<fake::Line>& rows)
{
    return static_cast<int>(rows.size());
}

/// What an entry does that has nothing of its own below.
struct Plain
{
#define ORVA_ENTRY(number, operation, symbol, need, parameters, arguments)                         \
    static int symbol parameters                                                                   \
    {                                                                                              \
        static_cast<void>(std::forward_as_tuple arguments);                                        \
        return orva::kOk;                                                                          \
    }
#include "sdk/entry_points.def"
};

/// With the mutex held.
struct Scripted : Plain
{
    static int SelectScanner(int index) { return choose(script.rows("device"), index, device); }
    static int GetScannerCount() { return countOf(script.rows("device")); }
    static int GetScannerName(int index, char* name)
    {
        return giveName(script.rows("device"), index, name);
    }
    // The size that the application gives here is smaller than what it has and than the text.
    static int GetScannerVIDPID(char* vidpid, int /*size*/)
    {
        return giveOfDevice(2, vidpid, kNameBytes);
    }
    static int GetScannerSN(char* sn, int size) { return giveOfDevice(3, sn, size); }
    static int GetScannerVersion(char* version1, int size1, char* version2, int size2)
    {
        const int first = giveOfDevice(4, version1, size1);
        return first != 0 ? first : giveOfDevice(5, version2, size2);
    }
    static int GetScannerClass(char* cls) { return giveOfDevice(6, cls, kNameBytes); }

    static int GetScanSourceCount() { return countOf(script.rows("source")); }
    static int GetScanSourceName(int index, char* name)
    {
        return giveName(script.rows("source"), index, name);
    }
    static int SetScanSource(int index) { return choose(script.rows("source"), index, source); }
    static int GetPaperCount() { return countOf(script.rowsOf("paper", source)); }
    static int GetPaperName(int index, char* name)
    {
        return giveName(script.rowsOf("paper", source), index, name);
    }
    static int GetPaperSize(int index, double& left, double& top, double& width, double& height)
    {
        if (const fake::Line* row = rowAt(script.rowsOf("paper", source), index)) {
            left = fake::number(*row, 2);
            top = fake::number(*row, 3);
            width = fake::number(*row, 4);
            height = fake::number(*row, 5);
            return orva::kOk;
        }
        return orva::kIndexOutOfRange;
    }
    static int GetResolutionCount() { return countOf(script.rowsOf("resolution", source)); }
    static int GetResolutionName(int index, char* name)
    {
        return giveName(script.rowsOf("resolution", source), index, name);
    }
    static int GetResolution(int index, int& x, int& y)
    {
        if (const fake::Line* row = rowAt(script.rowsOf("resolution", source), index)) {
            x = fake::integer(*row, 2);
            y = fake::integer(*row, 3);
            return orva::kOk;
        }
        return orva::kIndexOutOfRange;
    }

    static int HavePaper() { return fake::integer(script.last("havepaper"), 1); }
    static int SetFileParam(const FileParam& param)
    {
        folder.assign(param.szFilePath, ::strnlen(param.szFilePath, sizeof param.szFilePath));
        return orva::kOk;
    }
    static int SetStateCallback(OrvaStateCallback callback, void* /*user*/)
    {
        jobs.onState = callback;
        return orva::kOk;
    }
    static int SetErrorCallback(OrvaErrorCallback callback, void* /*user*/)
    {
        jobs.onError = callback;
        return orva::kOk;
    }
    static int CancelScan()
    {
        jobs.cancel();
        return orva::kOk;
    }
    static int GetButtonStatus()
    {
        std::vector<fake::Line>& pressed = script.rows("button");
        if (pressed.empty() || jobs.running()) {
            return 0;
        }
        const int button = fake::integer(pressed.front(), 1);
        pressed.erase(pressed.begin());
        return button;
    }
    static int GetScannerSleepTime(int& sleep, int& autoOff)
    {
        sleep = fake::integer(script.last("times"), 1);
        autoOff = fake::integer(script.last("times"), 2);
        return orva::kOk;
    }
    static int GetDevInfo(char* json, int size)
    {
        const fake::Line& line = script.last("json");
        if (json == nullptr || size <= 0 || line[0] == "json") {
            return give(line[1], json, size);
        }
        line[1].copy(json, static_cast<std::size_t>(size)); // no end
        return orva::kOk;
    }
    static int GetImageParam(std::vector<stFileTypeParam>& rows)
    {
        rows.clear();
        for (const fake::Line& line : script.rows("filetype")) {
            rows.push_back({ countOf(script.rows("filetype")), 0, 0, fake::integer(line, 1),
                fake::integer(line, 2), fake::integer(line, 3), fake::integer(line, 4) });
        }
        return orva::kOk;
    }
};

// One argument by its declared type: what the library fills in is not read.
template <typename Declared, typename Value>
std::string argumentText(const Value& value)
{
    using Plainly = std::remove_cv_t<std::remove_reference_t<Declared>>;
    if constexpr (std::is_same_v<Plainly, ImageParam> || std::is_same_v<Plainly, FileParam>) {
        return { reinterpret_cast<const char*>(&value), sizeof value };
    } else if constexpr (std::is_same_v<Plainly, const char*>) {
        return value;
    } else if constexpr (
        std::is_same_v<Plainly,
            void*> || std::is_same_v<Plainly, OrvaStateCallback> || std::is_same_v<Plainly, OrvaErrorCallback>) {
        return value == nullptr ? "null" : "set";
    } else if constexpr (std::is_lvalue_reference_v<Declared> || std::is_pointer_v<Plainly>) {
        return "-";
    } else {
        std::ostringstream text;
        text.precision(9);
        text << value;
        return text.str();
    }
}

template <typename Signature>
struct Arguments;
template <typename... Declared>
struct Arguments<int(Declared...)>
{
    static std::vector<std::string> texts(const Declared&... values)
    {
        return { argumentText<Declared>(values)... };
    }
};

/// Records the call, waits as the script says, and gives the result that the script forces on it.
std::optional<int> begin(const char* entry, std::vector<std::string> arguments)
{
    int delayMs = 0;
    std::optional<int> forced;
    {
        const std::lock_guard<std::mutex> guard(mutex);
        recorded.push_back({ entry, std::move(arguments) });
        delayMs = script.delayMs(entry);
        forced = script.forcedResult(entry);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(delayMs));
    return forced;
}

int scan()
{
    std::vector<fake::Line> steps;
    int ends = 1;
    std::string into;
    {
        const std::lock_guard<std::mutex> guard(mutex);
        steps = script.rows("step");
        ends = script.has("job", "no-end") ? 0 : script.has("job", "end-twice") ? 2 : 1;
        into = folder;
    }
    return jobs.run(steps, ends, into);
}

template <typename Body>
int answer(const char* entry, std::vector<std::string> arguments, Body body)
{
    const std::optional<int> forced = begin(entry, std::move(arguments));
    if (std::strcmp(entry, "Scan") == 0) {
        const int result = scan();
        return forced.value_or(result);
    }
    if (std::strcmp(entry, "UnInit") == 0) {
        jobs.finishAll();
    }
    const std::lock_guard<std::mutex> guard(mutex);
    return forced ? *forced : body();
}

} // namespace

// One library entry. The prototype first: every function has one.
#define FAKE_REQUIRED(symbol, parameters, arguments)                                               \
    FAKE_EXPORT int symbol parameters;                                                             \
    FAKE_EXPORT int symbol parameters                                                              \
    {                                                                                              \
        return answer(#symbol, Arguments<int parameters>::texts arguments,                         \
            [&] { return Scripted::symbol arguments; });                                           \
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
    std::istringstream in(lines);
    for (std::string line; std::getline(in, line);) {
        if (line == "reset") {
            jobs.finishAll();
            const std::lock_guard<std::mutex> guard(mutex);
            script = fake::Script::factory();
            recorded.clear();
        } else if (line == "release") {
            jobs.release();
        } else if (line.compare(0, 5, "fire|") == 0) {
            jobs.fire(fake::fieldsOf(line));
        } else if (!line.empty()) {
            const std::lock_guard<std::mutex> guard(mutex);
            script.take(line);
        }
    }
}

FAKE_EXPORT void fake_calls(std::vector<FakeCall>* calls)
{
    const std::lock_guard<std::mutex> guard(mutex);
    *calls = recorded;
}

FAKE_EXPORT int fake_is_scanning()
{
    return jobs.running() ? 1 : 0;
}
