// What the virtual scanner remembers: its times, pressed buttons, armed faults, how far it is in a
// file of several pages. One text file, shared by the library, the command and all users of the
// machine.
#pragma once

#include "scanlib/base/status.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace orva {

struct ButtonPress
{
    int value = 0; ///< codes.h, Button
    std::int64_t atMs = 0; ///< since 1970
};

/// A fault at a sheet counts the sheets of a job from 1; 0 is not armed.
struct ScannerFaults
{
    int jamSheet = 0;
    int doubleFeedSheet = 0;
    int unplugSheet = 0;
    int hangSheet = 0;
    int hangMs = 0; ///< how long it is silent before the driver gives up
    int slowMs = 0; ///< a side takes at least so long
    bool coverOpen = false;
    bool unplugged = false;
};

struct ScannerState
{
    int sleepMinutes = 15;
    int autoOffHours = 4; ///< 0: never
    bool prefeed = false;
    float prefeedSeconds = 2;
    bool empty = false; ///< no sample sheets either
    std::vector<ButtonPress> presses; ///< oldest first
    ScannerFaults faults;
    std::string openFile; ///< name in the tray of a file that was fed in part
    int openPage = 0; ///< its next page, from 0
};

inline constexpr int kSleepMinutesMin = 1;
inline constexpr int kSleepMinutesMax = 240;
inline constexpr int kAutoOffHoursMax = 12;
inline constexpr float kPrefeedSecondsMin = 0.5F;
inline constexpr float kPrefeedSecondsMax = 5.0F;
/// A press that nobody asked for in this time is forgotten, so that no scan starts with the
/// program.
inline constexpr std::int64_t kPressLifetimeMs = 10'000;

std::int64_t nowMs();

/// The folder of the virtual scanner: tray/, fed/, state, lock. Any thread and any process.
class StateStore
{
public:
    explicit StateStore(std::filesystem::path folder)
        : m_folder(std::move(folder))
    {
    }

    std::filesystem::path tray() const { return m_folder / "tray"; }
    std::filesystem::path fed() const { return m_folder / "fed"; }

    /// Makes the folders, open to every user. What exists is left as it is.
    Status prepare() const;
    /// A missing file gives the factory state; what cannot be understood in one keeps its factory
    /// value.
    ScannerState read() const;
    /// Reads, changes and writes under the lock of the folder; the file is replaced whole.
    Status update(const std::function<void(ScannerState&)>& change) const;

private:
    std::filesystem::path m_folder;
};

} // namespace orva
