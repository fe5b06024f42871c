#include "sdk/COrva_SDK.h"

#include "app/install_paths.h"
#include "sdk/result_codes.h"

#include <dlfcn.h>

#include <array>
#include <cstdio>

namespace {

constexpr int kUnInitEntry = 2; // number of UnInit in the list
constexpr int kDeviceInfoBytes = 1024;

template <typename Function>
void bindEntry(void* library, const char* symbol, Function& entry)
{
    entry = reinterpret_cast<Function>(::dlsym(library, symbol));
}

// Parsed device information is not freed: the application reads it once a device selection. It
// stays reachable from here.
void keepForGood(cJSON* tree)
{
    static auto* const trees = new std::vector<cJSON*>;
    trees->push_back(tree);
}

} // namespace

COrva_SDK::COrva_SDK()
{
    InitParam();
}

void COrva_SDK::InitParam()
{
    m_library = nullptr;
    m_entries = {};
}

int COrva_SDK::LoadDll()
{
    return LoadDll(install_paths::kScannerLibrary);
}

int COrva_SDK::LoadDll(const char* libraryFile)
{
    std::printf("chdir return %d\n", 0);
    std::printf("%s\n", libraryFile);
    m_library = ::dlopen(libraryFile, RTLD_NOW);
    if (m_library == nullptr) {
        std::printf("dlerror() %s\n", ::dlerror());
        return orva::kNotLoaded;
    }
    bool complete = true;
#define ORVA_REQUIRED true
#define ORVA_OPTIONAL false
#define ORVA_ENTRY(number, operation, symbol, need, parameters, arguments)                         \
    bindEntry(m_library, #symbol, m_entries.operation);                                            \
    complete = complete && (m_entries.operation != nullptr || !(need));
#include "sdk/entry_points.def"
#undef ORVA_REQUIRED
#undef ORVA_OPTIONAL
    if (!complete) {
        std::puts("Get Orva_SDK func failed");
        return orva::kEntryPointMissing;
    }
    return orva::kOk;
}

int COrva_SDK::closeLibrary()
{
    std::puts("COrva_SDK::UnInit()");
    if (m_library != nullptr) {
        if (m_entries.UnInit != nullptr) {
            m_entries.UnInit();
        }
        std::puts("COrva_SDK::UnInit()----");
        ::dlclose(m_library);
        InitParam();
    }
    std::puts("COrva_SDK::UnInit() end");
    return orva::kOk;
}

#define ORVA_ENTRY(number, operation, symbol, need, parameters, arguments)                         \
    int COrva_SDK::operation parameters                                                            \
    {                                                                                              \
        if constexpr ((number) == kUnInitEntry) {                                                  \
            return closeLibrary();                                                                 \
        } else {                                                                                   \
            return m_entries.operation == nullptr ? static_cast<int>(orva::kNotLoaded)             \
                                                  : m_entries.operation arguments;                 \
        }                                                                                          \
    }
#include "sdk/entry_points.def"

int COrva_SDK::SetMultiFeed(bool enable)
{
    return m_entries.SetMultiFeed == nullptr ? static_cast<int>(orva::kNotLoaded)
                                             : m_entries.SetMultiFeed(enable);
}

int COrva_SDK::GetDevInfo(
    stSleep_AutoOff& sleep, stSleep_AutoOff& autoOff, structPrefeed& prefeed, int& isHigh)
{
    if (m_entries.GetDevInfo == nullptr) {
        return orva::kNotLoaded;
    }
    // One byte more than the library is told of, so that a text that fills the buffer ends too.
    std::array<char, kDeviceInfoBytes + 1> text {};
    if (m_entries.GetDevInfo(text.data(), kDeviceInfoBytes) != 0) {
        return device_info_json::kNotRead;
    }
    cJSON* root = cJSON_Parse(text.data());
    if (root == nullptr) {
        return device_info_json::kNotRead;
    }
    keepForGood(root);

    // Read into copies: a pre-feed text that throws leaves the caller's records as they were.
    stSleep_AutoOff newAutoOff = autoOff;
    stSleep_AutoOff newSleep = sleep;
    structPrefeed newPrefeed = prefeed;
    const int autoOffResult = GetDevInfoEx(root, "AutoOff", newAutoOff);
    const int sleepResult = GetDevInfoEx(root, "InSleep", newSleep);
    const int prefeedResult = GetPrefeedEx(root, "Prefeed", newPrefeed);
    autoOff = newAutoOff;
    sleep = newSleep;
    prefeed = newPrefeed;
    static_cast<void>(device_info_json::readInteger(root, "IsHigh", isHigh));

    const bool anyRead = autoOffResult == 0 || sleepResult == 0 || prefeedResult == 0;
    return anyRead ? static_cast<int>(orva::kOk) : device_info_json::kNotRead;
}

int COrva_SDK::GetDevInfoEx(cJSON* root, const char* key, stSleep_AutoOff& out)
{
    return device_info_json::readTimes(root, key, out);
}

int COrva_SDK::GetPrefeedEx(cJSON* root, const char* key, structPrefeed& out)
{
    return device_info_json::readPrefeed(root, key, out);
}
