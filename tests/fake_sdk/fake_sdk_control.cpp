#include "tests/fake_sdk/fake_sdk_control.h"

#include "app/install_paths.h"

#include <dlfcn.h>

#include <array>
#include <cstring>
#include <filesystem>
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

template <typename Record>
Record recordOf(const std::string& bytes)
{
    Record record {};
    if (bytes.size() != sizeof record) {
        throw std::runtime_error("no record");
    }
    std::memcpy(&record, bytes.data(), sizeof record);
    return record;
}

} // namespace

std::string FakeSdk::fileOf(Variant variant)
{
    static constexpr std::array<const char*, 4> kNames { "complete", "without_optional",
        "without_scan", "no_devices" };
    return std::string(FAKE_SDK_FOLDER "/libfake_orva_")
        + kNames.at(static_cast<std::size_t>(variant)) + ".so";
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
    find(library, "fake_is_scanning", m_scanning);
    ::dlclose(library); // it stays loaded
    script("reset");
}

FakeSdk::~FakeSdk()
{
    script("reset");
}

void FakeSdk::install() const
{
    const std::filesystem::path place = install_paths::kScannerLibrary;
    std::filesystem::create_directories(place.parent_path());
    std::filesystem::remove(place);
    std::filesystem::create_symlink(m_file, place);
}

std::vector<FakeCall> FakeSdk::calls() const
{
    std::vector<FakeCall> all;
    m_calls(&all);
    return all;
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

std::vector<std::string> FakeSdk::lastCall(const std::string& entry) const
{
    const std::vector<FakeCall> found = callsOf(entry);
    if (found.empty()) {
        throw std::runtime_error("never called: " + entry);
    }
    return found.back().arguments;
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
    return static_cast<int>(callsOf(entry).size());
}

ImageParam FakeSdk::lastImageParam() const
{
    return recordOf<ImageParam>(lastCall("SetImageParam").front());
}

FileParam FakeSdk::lastFileParam() const
{
    return recordOf<FileParam>(lastCall("SetFileParam").front());
}
