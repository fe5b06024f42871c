// The binding of the scanner library: loads it at run time, binds its entry points by name and
// offers one member operation an entry point that hands the call on unchanged.
//
//   COrva_SDK sdk;
//   if (sdk.LoadDll() == 0 && sdk.Init() == 0) { char name[64] = {}; sdk.GetScannerName(0, name); }
#pragma once

#include "sdk/device_info_json.h"
#include "sdk/records.h"

#include <vector>

/// No lock of its own: the library bears CancelScan and GetButtonStatus beside a running Scan; the
/// owner keeps LoadDll and UnInit apart from everything else. Destroying it does not unload the
/// library.
class COrva_SDK
{
public:
    COrva_SDK();

    /// Opens the installed library and binds every entry point. 0; -401 when a required entry point
    /// is missing (the others are bound then); -404 when the library cannot be opened.
    int LoadDll();
    /// The same with another library file; for tests.
    int LoadDll(const char* libraryFile);
    /// Forgets the library and all entry points without closing anything.
    void InitParam();

    // One operation an entry point of sdk/entry_points.def, named and typed as there:
    //   int Init(); int GetScannerCount(); int GetScannerName(int index, char* name); ...
    // Each returns the library's result, or -404 when its entry point is not bound. UnInit is more:
    // it shuts the library down, closes it and returns 0, whatever the state.
#define ORVA_ENTRY(number, operation, symbol, need, parameters, arguments) int operation parameters;
#include "sdk/entry_points.def"

    /// KEPT: bound to no entry point, so it returns -404 with every library.
    int SetMultiFeed(bool enable);

    /// The device's timing settings, from the JSON text of the library. 0 when at least one of the
    /// three records was read; -404 not bound; -605 no text, no JSON, or none of the records in it.
    /// A malformed pre-feed text throws as GetPrefeedEx does, and then nothing has changed.
    int GetDevInfo(
        stSleep_AutoOff& sleep, stSleep_AutoOff& autoOff, structPrefeed& prefeed, int& isHigh);
    /// 0; -604 null tree; -605 first missing member, the fields before it are set.
    int GetDevInfoEx(cJSON* root, const char* key, stSleep_AutoOff& out);
    /// The same; throws std::invalid_argument or std::out_of_range ("stof") for a malformed time.
    int GetPrefeedEx(cJSON* root, const char* key, structPrefeed& out);

private:
    struct EntryPoints
    {
#define ORVA_ENTRY(number, operation, symbol, need, parameters, arguments)                         \
    int(*operation) parameters = nullptr;
#include "sdk/entry_points.def"
        int (*SetMultiFeed)(bool enable) = nullptr;
    };

    int closeLibrary();

    void* m_library = nullptr;
    EntryPoints m_entries;
};
