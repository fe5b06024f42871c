#include "tests/fake_sdk/fake_sdk_control.h"

#include "app/install_paths.h"

#include <dlfcn.h>

#include <cstring>
#include <filesystem>
#include <sstream>
#include <stdexcept>

namespace {

template <typename Function>
void find(void* library, const char* name, Function& function)
{
    function = reinterpret_cast<Function>(::dlsym(library, name));
    if (function == nullptr) {
        throw std::runtime_error(std::string("not in the fake library: ") + name);
    }
}

std::string bytesOfHex(const std::string& hex)
{
    std::string bytes;
    for (std::size_t at = 0; at + 1 < hex.size(); at += 2) {
        bytes += static_cast<char>(std::stoi(hex.substr(at, 2), nullptr, 16));
    }
    return bytes;
}

template <typename Record>
Record recordOf(const std::string& bytes)
{
    Record record {};
    if (bytes.size() != sizeof record) {
        throw std::runtime_error("the fake library got no such record");
    }
    std::memcpy(&record, bytes.data(), sizeof record);
    return record;
}

std::string unescaped(const std::string& text)
{
    std::string out;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] == '\\' && at + 1 < text.size()) {
            ++at;
            out += text[at] == 't' ? '\t' : text[at] == 'n' ? '\n' : text[at];
        } else {
            out += text[at];
        }
    }
    return out;
}

} // namespace

std::string FakeSdk::fileOf(Variant variant)
{
    const char* name = "complete";
    switch (variant) {
    case Variant::kComplete:
        break;
    case Variant::kWithoutOptional:
        name = "without_optional";
        break;
    case Variant::kWithoutScan:
        name = "without_scan";
        break;
    case Variant::kNoDevices:
        name = "no_devices";
        break;
    }
    return std::string(FAKE_SDK_FOLDER "/libfake_orva_") + name + ".so";
}

FakeSdk::FakeSdk(Variant variant)
    : m_file(fileOf(variant))
{
    void* library = ::dlopen(m_file.c_str(), RTLD_NOW | RTLD_NODELETE);
    if (library == nullptr) {
        throw std::runtime_error(::dlerror());
    }
    find(library, "fake_script", m_script);
    find(library, "fake_calls", m_calls);
    find(library, "fake_call_count", m_count);
    find(library, "fake_is_scanning", m_scanning);
    ::dlclose(library); // it stays loaded
    reset();
}

FakeSdk::~FakeSdk()
{
    reset();
}

void FakeSdk::install() const
{
    const std::filesystem::path place = install_paths::kScannerLibrary;
    std::filesystem::create_directories(place.parent_path());
    std::filesystem::remove(place);
    std::filesystem::create_symlink(m_file, place);
}

void FakeSdk::script(const std::string& lines)
{
    m_script(lines.c_str());
}

bool FakeSdk::scanning() const
{
    return m_scanning() != 0;
}

std::vector<FakeCall> FakeSdk::calls() const
{
    // Calls may come in between; what is new since the size was asked is left for the next time.
    std::string text(m_calls(nullptr, 0), '\0');
    m_calls(text.data(), text.size());
    return parseFakeCalls(text.substr(0, text.rfind('\n') + 1));
}

std::vector<FakeCall> FakeSdk::callsOf(const std::string& entry) const
{
    std::vector<FakeCall> found;
    for (FakeCall& call : calls()) {
        if (call.entry == entry) {
            found.push_back(std::move(call));
        }
    }
    return found;
}

std::vector<std::string> FakeSdk::callOrder() const
{
    std::vector<std::string> names;
    for (const FakeCall& call : calls()) {
        names.push_back(call.entry);
    }
    return names;
}

int FakeSdk::count(const std::string& entry) const
{
    return m_count(entry.c_str());
}

std::string FakeSdk::lastBytes(const std::string& entry) const
{
    const std::vector<FakeCall> found = callsOf(entry);
    return found.empty() ? std::string() : bytesOfHex(found.back().arguments.at(0));
}

ImageParam FakeSdk::lastImageParam() const
{
    return recordOf<ImageParam>(lastBytes("SetImageParam"));
}

FileParam FakeSdk::lastFileParam() const
{
    return recordOf<FileParam>(lastBytes("SetFileParam"));
}

std::vector<FakeCall> parseFakeCalls(const std::string& text)
{
    std::vector<FakeCall> calls;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        FakeCall call;
        std::istringstream fields(line);
        std::string field;
        for (int at = 0; std::getline(fields, field, '\t'); ++at) {
            if (at == 0) {
                call.atMs = std::stoll(field);
            } else if (at == 1) {
                call.thread = std::stoi(field);
            } else if (at == 2) {
                call.entry = field;
            } else {
                call.arguments.push_back(unescaped(field));
            }
        }
        calls.push_back(std::move(call));
    }
    return calls;
}
