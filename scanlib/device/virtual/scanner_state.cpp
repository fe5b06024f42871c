#include "scanlib/device/virtual/scanner_state.h"

#include "scanlib/base/descriptor.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <locale>
#include <sstream>

namespace orva {

namespace {

Status failure(const std::string& what, const std::filesystem::path& path)
{
    return { kFileWrite, what + " " + path.string() + ": " + std::strerror(errno) };
}

Status makeSharedFolder(const std::filesystem::path& folder)
{
    if (::mkdir(folder.c_str(), 0777) == 0) {
        ::chmod(folder.c_str(), 0777); // past the umask: every user feeds the same scanner
        return {};
    }
    std::error_code error;
    return errno == EEXIST && std::filesystem::is_directory(folder, error)
        ? Status()
        : failure("cannot make", folder);
}

/// Numbers are clamped to what the scanner could have written itself.
void applyLine(const std::string& key, std::istringstream& values, ScannerState& state)
{
    const auto number = [&](int& field, int low, int high) {
        long value = 0;
        if (values >> value) {
            field = static_cast<int>(std::clamp<long>(value, low, high));
        }
    };
    const auto flag = [&](bool& field) {
        int value = 0;
        if (values >> value) {
            field = value != 0;
        }
    };
    constexpr int kManySheets = 1'000'000;
    constexpr int kLongestMs = 600'000;
    ScannerFaults& faults = state.faults;
    if (key == "sleep_minutes") {
        number(state.sleepMinutes, kSleepMinutesMin, kSleepMinutesMax);
    } else if (key == "auto_off_hours") {
        number(state.autoOffHours, 0, kAutoOffHoursMax);
    } else if (key == "prefeed") {
        flag(state.prefeed);
    } else if (key == "prefeed_seconds") {
        float seconds = 0;
        if (values >> seconds) {
            state.prefeedSeconds = std::clamp(seconds, kPrefeedSecondsMin, kPrefeedSecondsMax);
        }
    } else if (key == "empty") {
        flag(state.empty);
    } else if (key == "press") {
        ButtonPress press;
        if (values >> press.value >> press.atMs) {
            state.presses.push_back(press);
        }
    } else if (key == "jam_sheet") {
        number(faults.jamSheet, 0, kManySheets);
    } else if (key == "double_feed_sheet") {
        number(faults.doubleFeedSheet, 0, kManySheets);
    } else if (key == "unplug_sheet") {
        number(faults.unplugSheet, 0, kManySheets);
    } else if (key == "hang_sheet") {
        number(faults.hangSheet, 0, kManySheets);
    } else if (key == "hang_ms") {
        number(faults.hangMs, 0, kLongestMs);
    } else if (key == "slow_ms") {
        number(faults.slowMs, 0, kLongestMs);
    } else if (key == "cover_open") {
        flag(faults.coverOpen);
    } else if (key == "unplugged") {
        flag(faults.unplugged);
    } else if (key == "open_page") {
        number(state.openPage, 0, kManySheets);
    } else if (key == "open_file") {
        values >> std::ws;
        std::getline(values, state.openFile);
    }
}

std::string textOf(const ScannerState& state)
{
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << "sleep_minutes " << state.sleepMinutes << '\n'
         << "auto_off_hours " << state.autoOffHours << '\n'
         << "prefeed " << state.prefeed << '\n'
         << "prefeed_seconds " << state.prefeedSeconds << '\n'
         << "empty " << state.empty << '\n'
         << "jam_sheet " << state.faults.jamSheet << '\n'
         << "double_feed_sheet " << state.faults.doubleFeedSheet << '\n'
         << "unplug_sheet " << state.faults.unplugSheet << '\n'
         << "hang_sheet " << state.faults.hangSheet << '\n'
         << "hang_ms " << state.faults.hangMs << '\n'
         << "slow_ms " << state.faults.slowMs << '\n'
         << "cover_open " << state.faults.coverOpen << '\n'
         << "unplugged " << state.faults.unplugged << '\n';
    for (const ButtonPress& press : state.presses) {
        text << "press " << press.value << ' ' << press.atMs << '\n';
    }
    // a name with a line break could not be read back; such a file starts from its first page again
    if (!state.openFile.empty() && state.openFile.find('\n') == std::string::npos) {
        text << "open_page " << state.openPage << '\n' << "open_file " << state.openFile << '\n';
    }
    return text.str();
}

Status replaceFile(const std::filesystem::path& file, const std::string& text)
{
    const std::filesystem::path fresh = file.string() + ".new"; // the lock keeps writers apart
    ::unlink(fresh.c_str()); // a crashed writer of another user may have left one
    const Descriptor fd(::open(fresh.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (fd.get() < 0) {
        return failure("cannot write", fresh);
    }
    ::fchmod(fd.get(), 0666);
    std::size_t done = 0;
    while (done < text.size()) {
        const ssize_t count = ::write(fd.get(), text.data() + done, text.size() - done);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            return failure("cannot write", fresh);
        }
        done += static_cast<std::size_t>(count);
    }
    if (::fsync(fd.get()) != 0 || ::rename(fresh.c_str(), file.c_str()) != 0) {
        return failure("cannot write", file);
    }
    return {};
}

} // namespace

std::int64_t nowMs()
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::system_clock::now().time_since_epoch())
        .count();
}

Status StateStore::prepare() const
{
    std::error_code ignored; // makeSharedFolder tells
    std::filesystem::create_directories(m_folder.parent_path(), ignored);
    for (const std::filesystem::path& folder : { m_folder, tray(), fed() }) {
        if (Status status = makeSharedFolder(folder); !status.ok()) {
            return status;
        }
    }
    return {};
}

ScannerState StateStore::read() const
{
    ScannerState state;
    std::ifstream file(m_folder / "state");
    std::string line;
    while (std::getline(file, line)) {
        std::istringstream values(line);
        values.imbue(std::locale::classic());
        std::string key;
        values >> key;
        applyLine(key, values, state);
    }
    return state;
}

Status StateStore::update(const std::function<void(ScannerState&)>& change) const
{
    if (Status status = prepare(); !status.ok()) {
        return status;
    }
    const std::filesystem::path lockFile = m_folder / "lock";
    const Descriptor lock(::open(lockFile.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666));
    if (lock.get() < 0) {
        return failure("cannot open", lockFile);
    }
    ::fchmod(lock.get(), 0666); // fails for all but the owner, who did it
    // A holder only replaces one small file; 2 s means that something is wrong with the folder.
    constexpr int kTries = 200;
    for (int i = 0; ::flock(lock.get(), LOCK_EX | LOCK_NB) != 0; ++i) {
        if (i >= kTries) {
            return { kFileWrite, lockFile.string() + " is held by another program" };
        }
        ::usleep(10'000);
    }
    ScannerState state = read();
    change(state);
    return replaceFile(m_folder / "state", textOf(state));
}

} // namespace orva
