#include "tests/scanlib/device/scripted_sane.h"

#include "scanlib/device/sane_host/host_server.h"

#include <fcntl.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace device_tests {

namespace {

ScriptedSane* g_script = nullptr;

void record(const std::string& call)
{
    const std::lock_guard<std::mutex> lock(g_script->mutex);
    g_script->calls.push_back(call);
    if (call != "init" && call != "exit" && call != "get_devices") {
        g_script->threads.insert(std::this_thread::get_id());
    }
}

SANE_Word wordOf(const ScriptOption& option, double value)
{
    return option.type == SANE_TYPE_FIXED ? SANE_FIX(value) : static_cast<SANE_Word>(value);
}

/// A call that does not return, unless it is released or, where that wakes it, cancelled.
void keepSilent(bool cancelWakes)
{
    std::unique_lock<std::mutex> lock(g_script->mutex);
    ++g_script->silent;
    g_script->changed.wait(
        lock, [&] { return g_script->released || (cancelWakes && g_script->cancelled); });
    --g_script->silent;
}

SANE_Status doInit(SANE_Int* version, SANE_Auth_Callback)
{
    record("init");
    *version = SANE_VERSION_CODE(1, 0, 0);
    return SANE_STATUS_GOOD;
}

SANE_Status doGetDevices(const SANE_Device*** list, SANE_Bool)
{
    record("get_devices");
    if (g_script->searchSilent) {
        keepSilent(false);
    }
    static std::vector<SANE_Device> devices;
    static std::vector<const SANE_Device*> pointers;
    devices.clear();
    pointers.clear();
    for (const ScriptedSane::Device& device : g_script->devices) {
        devices.push_back({ device.name, device.vendor, device.model, device.type });
    }
    for (const SANE_Device& device : devices) {
        pointers.push_back(&device);
    }
    pointers.push_back(nullptr);
    *list = pointers.data();
    return SANE_STATUS_GOOD;
}

SANE_Status doOpen(SANE_String_Const name, SANE_Handle* handle)
{
    record(std::string("open ") + name);
    if (g_script->openSilent) {
        keepSilent(false);
    }
    *handle = g_script;
    const auto status = g_script->openStatus.find(name);
    return status != g_script->openStatus.end() ? status->second : SANE_STATUS_GOOD;
}

void doClose(SANE_Handle)
{
    record("close");
}

const SANE_Option_Descriptor* doDescriptor(SANE_Handle, SANE_Int index)
{
    if (index == 0) {
        return nullptr;
    }
    const ScriptOption& option = g_script->options.at(static_cast<std::size_t>(index) - 1);
    g_script->described.emplace_back(); // the driver's, until the end of the test
    ScriptedSane::Described& described = g_script->described.back();
    SANE_Option_Descriptor* const descriptor = &described.descriptor;
    descriptor->name = option.name.c_str();
    descriptor->title = descriptor->desc = "";
    descriptor->type = option.type;
    descriptor->unit = option.unit;
    descriptor->size = option.type == SANE_TYPE_STRING ? 64 : sizeof(SANE_Word);
    descriptor->cap = SANE_CAP_SOFT_DETECT | (option.settable ? SANE_CAP_SOFT_SELECT : 0);
    descriptor->constraint_type = SANE_CONSTRAINT_NONE;
    if (!option.texts.empty()) {
        for (const std::string& text : option.texts) {
            described.texts.push_back(text.c_str());
        }
        described.texts.push_back(nullptr);
        descriptor->constraint_type = SANE_CONSTRAINT_STRING_LIST;
        descriptor->constraint.string_list = described.texts.data();
    } else if (!option.numbers.empty()) {
        described.numbers.push_back(static_cast<SANE_Word>(option.numbers.size()));
        for (const int number : option.numbers) {
            described.numbers.push_back(wordOf(option, number));
        }
        descriptor->constraint_type = SANE_CONSTRAINT_WORD_LIST;
        descriptor->constraint.word_list = described.numbers.data();
    } else if (option.max > option.min) {
        described.range = { wordOf(option, option.min), wordOf(option, option.max), 0 };
        descriptor->constraint_type = SANE_CONSTRAINT_RANGE;
        descriptor->constraint.range = &described.range;
    }
    return descriptor;
}

SANE_Status doControl(SANE_Handle, SANE_Int index, SANE_Action action, void* value, SANE_Int* info)
{
    if (index == 0) {
        record("count");
        *static_cast<SANE_Int*>(value) = static_cast<SANE_Int>(g_script->options.size()) + 1;
        return SANE_STATUS_GOOD;
    }
    ScriptOption& option = g_script->options.at(static_cast<std::size_t>(index) - 1);
    if (action == SANE_ACTION_GET_VALUE) {
        if (option.type == SANE_TYPE_STRING) {
            std::strcpy(static_cast<char*>(value), option.text.c_str());
        } else {
            *static_cast<SANE_Word*>(value) = wordOf(option, option.value);
        }
        return SANE_STATUS_GOOD;
    }
    record("set " + option.name);
    if (option.type == SANE_TYPE_STRING) {
        option.text = static_cast<const char*>(value);
        if (std::find(option.texts.begin(), option.texts.end(), option.text)
            == option.texts.end()) {
            return SANE_STATUS_INVAL;
        }
    } else if (option.type != SANE_TYPE_BUTTON) {
        const SANE_Word word = *static_cast<const SANE_Word*>(value);
        option.value = option.type == SANE_TYPE_FIXED ? SANE_UNFIX(word) : word;
    }
    if (info != nullptr) {
        *info = 0;
    }
    return SANE_STATUS_GOOD;
}

SANE_Status doGetParameters(SANE_Handle, SANE_Parameters* result)
{
    record("get_parameters");
    *result = g_script->current.parameters;
    return SANE_STATUS_GOOD;
}

SANE_Status doStart(SANE_Handle)
{
    record("start");
    if (g_script->frames.empty()) {
        return SANE_STATUS_NO_DOCS;
    }
    g_script->current = g_script->frames.front();
    if (!g_script->neverEmpty) {
        g_script->frames.pop_front();
    }
    g_script->nextRead = 0;
    return g_script->current.start;
}

SANE_Status doRead(SANE_Handle, SANE_Byte* data, SANE_Int capacity, SANE_Int* length)
{
    record("read");
    *length = 0;
    if (g_script->nextRead >= g_script->current.reads.size()) {
        return SANE_STATUS_EOF;
    }
    ScriptRead& read = g_script->current.reads[g_script->nextRead];
    if (read.silent) {
        ++g_script->nextRead;
        keepSilent(g_script->cancelWakes);
        return SANE_STATUS_CANCELLED;
    }
    *length = static_cast<SANE_Int>(
        std::min<std::size_t>(read.data.size(), static_cast<std::size_t>(capacity)));
    std::memcpy(data, read.data.data(), static_cast<std::size_t>(*length));
    read.data.erase(0, static_cast<std::size_t>(*length));
    g_script->nextRead += read.data.empty() ? 1 : 0;
    return read.status;
}

void doCancel(SANE_Handle)
{
    const std::lock_guard<std::mutex> lock(g_script->mutex);
    g_script->calls.push_back("cancel");
    g_script->cancelled = true;
    g_script->changed.notify_all();
}

void doExit()
{
    record("exit");
}

/// The helper as a thread. Killing it lets the driver out of its call, also of one that it is
/// still on its way into.
class ScriptedHost final : public orva::SaneHost
{
public:
    ScriptedHost(ScriptedSane& script, const orva::HostChannel& channel)
        : m_script(script)
        , m_socket(::fcntl(channel.theirs.get(), F_DUPFD_CLOEXEC, 3))
        , m_ring(channel.ring.get())
    {
        ++m_script.hosts;
        ++m_script.running;
        m_thread = std::thread([this] {
            {
                orva::HostPauses pauses;
                pauses.scanner.busy = std::chrono::milliseconds(5);
                pauses.cancelPatience = std::chrono::milliseconds(50);
                orva::HostServer server(ScriptedSane::api(), pauses, m_socket.get(), m_ring.data());
                server.run();
            }
            m_socket.reset();
            m_ended = true;
            --m_script.running;
        });
    }
    ~ScriptedHost() override
    {
        do {
            kill();
        } while (!waitEnded(std::chrono::milliseconds(5)));
        m_thread.join();
    }
    ScriptedHost(const ScriptedHost&) = delete;
    ScriptedHost& operator=(const ScriptedHost&) = delete;

    bool ended() override { return m_ended; }
    bool waitEnded(std::chrono::milliseconds limit) override
    {
        const auto deadline = std::chrono::steady_clock::now() + limit;
        while (!m_ended && std::chrono::steady_clock::now() < deadline) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return m_ended;
    }
    void kill() override
    {
        if (!m_ended && m_script.silent > 0) {
            m_script.releaseSilence();
        }
    }
    std::string fault() const override { return {}; }

private:
    ScriptedSane& m_script;
    orva::OwnedFd m_socket;
    const orva::RingMapping m_ring;
    std::atomic<bool> m_ended { false };
    std::thread m_thread;
};

} // namespace

SANE_Parameters parameters(SANE_Frame format, int width, int lines, int depth, bool last)
{
    const int samples = width * (format == SANE_FRAME_RGB ? 3 : 1);
    return { format, last ? SANE_TRUE : SANE_FALSE, (samples * depth + 7) / 8, width, lines,
        depth };
}

ScriptFrame grayFrame(int width, int lines, char value)
{
    ScriptFrame frame;
    frame.parameters = parameters(SANE_FRAME_GRAY, width, lines, 8);
    const std::size_t bytes = static_cast<std::size_t>(width) * static_cast<std::size_t>(lines);
    frame.reads.push_back({ SANE_STATUS_GOOD, std::string(bytes / 2 + 1, value) });
    frame.reads.push_back({ SANE_STATUS_GOOD, std::string() });
    frame.reads.push_back({ SANE_STATUS_GOOD, std::string(bytes - bytes / 2 - 1, value) });
    return frame;
}

ScriptedSane::ScriptedSane()
{
    g_script = this;
}

ScriptedSane::~ScriptedSane()
{
    g_script = nullptr;
}

orva::SaneApi ScriptedSane::api()
{
    return { doInit, doGetDevices, doOpen, doClose, doDescriptor, doControl, doGetParameters,
        doStart, doRead, doCancel, doExit };
}

orva::HostLauncher ScriptedSane::launcher()
{
    return [this](const orva::HostChannel& channel, const std::string&,
               std::unique_ptr<orva::SaneHost>& host) {
        host = std::make_unique<ScriptedHost>(*this, channel);
        return orva::Status();
    };
}

ScriptOption& ScriptedSane::option(const std::string& name)
{
    for (ScriptOption& candidate : options) {
        if (candidate.name == name) {
            return candidate;
        }
    }
    throw std::out_of_range(name);
}

int ScriptedSane::count(const std::string& call) const
{
    const std::lock_guard<std::mutex> lock(mutex);
    return static_cast<int>(std::count(calls.begin(), calls.end(), call));
}

void ScriptedSane::releaseSilence()
{
    const std::lock_guard<std::mutex> lock(mutex);
    released = true;
    changed.notify_all();
}

} // namespace device_tests
