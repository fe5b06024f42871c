// The job log. A block goes out in one write to a locked file open for appending, so that blocks of
// two processes do not mix, also when a full disk or a network folder cuts the write in two.
#include "log/itprojectlog.h"

#include "app/common.h"
#include "log/Log.h"
#include "log/log_paths.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <system_error>
#include <thread>

namespace {

using TimePoint = std::chrono::system_clock::time_point;

std::tm localTime(TimePoint moment)
{
    const std::time_t seconds = std::chrono::system_clock::to_time_t(moment);
    std::tm local {};
    ::localtime_r(&seconds, &local);
    return local;
}

const char* resultText(int result)
{
    if (result == 0) {
        return "成功!";
    }
    return result == -1 ? "失败" : "不正常";
}

// A record's text field. It ends at its array's end at the latest.
template <std::size_t Size>
std::string fieldText(const char (&field)[Size])
{
    return { field, ::strnlen(field, Size) };
}

// Copies at most room bytes, never half a UTF-8 character, and ends the text.
void copyWhole(const std::string& text, char* buffer, std::size_t room)
{
    std::size_t length = std::min(text.size(), room);
    while (length < text.size() && length > 0
        && (static_cast<unsigned char>(text[length]) & 0xC0U) == 0x80U) {
        --length;
    }
    text.copy(buffer, length);
    buffer[length] = '\0';
}

/// A folder or file that another user's first block has just made lets others in a moment later.
constexpr int kOpenTries = 5;
constexpr int kLockTries = 100;
constexpr std::chrono::milliseconds kLockPause { 10 };

/// Bounded: a process that hangs with the lock must not hang this one.
bool lockFile(int descriptor)
{
    for (int tries = 0; ::flock(descriptor, LOCK_EX | LOCK_NB) != 0; ++tries) {
        if (errno != EWOULDBLOCK || tries == kLockTries) {
            return false;
        }
        std::this_thread::sleep_for(kLockPause);
    }
    return true;
}

/// errno of the fault; 0 when all bytes are on the disk, so that they outlive a loss of power.
int writeAll(int descriptor, const std::string& bytes)
{
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t written = ::write(descriptor, bytes.data() + done, bytes.size() - done);
        if (written > 0) {
            done += static_cast<std::size_t>(written);
        } else if (written == 0 || errno != EINTR) {
            return errno;
        }
    }
    return ::fdatasync(descriptor) == 0 || errno == EINVAL ? 0 : errno;
}

/// errno; 0 when the bytes are in the file. A new file gets the permissions of its folder.
int appendBytes(const std::string& file, const std::string& bytes, mode_t folderMode)
{
    int descriptor = -1;
    for (int tries = 0; descriptor < 0; ++tries) {
        descriptor = ::open(file.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666);
        if (descriptor < 0 && (errno != EACCES || tries == kOpenTries)) {
            return errno;
        }
        if (descriptor < 0) {
            std::this_thread::sleep_for(kLockPause);
        }
    }
    const bool locked = lockFile(descriptor);
    struct stat before
    {
    };
    const bool known = ::fstat(descriptor, &before) == 0;
    if (known && before.st_size == 0) {
        ::fchmod(descriptor, folderMode & 0666U); // refused to all but its owner
    }
    const int fault = writeAll(descriptor, bytes);
    if (fault != 0 && locked && known && ::ftruncate(descriptor, before.st_size) != 0) {
        runLog("[func:%s]%s ends in half a block", __func__, file.c_str());
    }
    ::close(descriptor);
    return fault;
}

/// Makes the month's folder and tells the permissions of what lies in it. Who may write into the
/// destination may write into what lies below it, or the first user of a shared folder would lock
/// the others out.
mode_t makeFolder(const std::string& destination, const std::string& folder)
{
    std::error_code ignored; // opening the file tells
    const bool isNew = std::filesystem::create_directories(folder, ignored);
    struct stat status
    {
    };
    if (isNew && ::stat(destination.c_str(), &status) == 0) {
        ::chmod(folder.c_str(), status.st_mode & 0777U);
    }
    // Not those of the folder: another user's process may be about to set them.
    return ::stat(destination.c_str(), &status) == 0 ? status.st_mode : 0;
}

} // namespace

ITProLog::ITProLog()
    : m_clock([] { return std::chrono::system_clock::now(); })
{
    GetDefaultSavePath();
}

ITProLog::~ITProLog() = default;

void ITProLog::GetDefaultSavePath()
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    std::snprintf(
        m_destination, sizeof m_destination, "%s/%s", homeFolder().c_str(), ".ORVA/TarvexBaseUI/");
    std::printf("[func:%s] destHome = %s \n", __func__, m_destination);
}

void ITProLog::GetDestSavePath(const char* folder)
{
    const bool fits = folder != nullptr && std::strlen(folder) + 2 <= sizeof m_destination;
    if (!fits || checkWritable(folder) != 0) {
        std::printf("[func:%s] logSavePath: %s do not have authority! \n", __func__,
            folder == nullptr ? "" : folder);
        return;
    }
    const std::lock_guard<std::mutex> guard(m_mutex);
    std::snprintf(m_destination, sizeof m_destination, "%s/", folder);
    std::printf("[func:%s] destHome = %s \n", __func__, m_destination);
}

void ITProLog::setEnabledValue(unsigned char value)
{
    m_enabled = value;
}

// With the mutex held: the message buffer belongs to all callers.
std::string ITProLog::formatLine(const char* format, va_list values)
{
    std::vsnprintf(m_message, sizeof m_message, format, values);
    return std::string(m_message) + '\n';
}

// With the mutex held. The file is chosen at the moment of writing.
void ITProLog::appendToday(const char* tag, const std::string& text, int lines)
{
    const log_paths::Day today = log_paths::dayOf(localTime(m_clock()));
    const std::string folder = log_paths::monthFolder(m_destination, today);
    for (int line = 0; line < lines; ++line) {
        std::printf("chFile:%s\n", folder.c_str());
    }
    const mode_t folderMode = makeFolder(m_destination, folder);
    const std::string file = log_paths::dayFile(m_destination, tag, today);
    if (const int fault = appendBytes(file, text, folderMode); fault != 0) {
        runLog("[func:%s]job log %s cannot be written: %s", __func__, file.c_str(),
            std::strerror(fault));
    }
}

void ITProLog::Add(const char* tag, const char* format, ...)
{
    if (m_enabled == 0) {
        return;
    }
    const std::lock_guard<std::mutex> guard(m_mutex);
    va_list values;
    va_start(values, format);
    const std::string line = formatLine(format, values);
    va_end(values);
    appendToday(tag, line, 1);
}

void ITProLog::AddBatch(InstituteOfInformation* record)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    std::printf("[func:%s] destHome = %s\n", __func__, m_destination);
    if (m_enabled == 0 || record == nullptr) {
        return;
    }
    std::vector<std::string> lines {
        std::string(50, '-'),
        "开始时间: " + fieldText(record->startTime),
        "结束时间: " + fieldText(record->endTime),
        "计算机名称: " + fieldText(record->computerName),
        "用户名称: " + fieldText(record->userName),
        "作业页数: " + std::to_string(record->pageCount),
        std::string("扫描结果: ") + resultText(record->result),
        "生成的文件：",
    };
    lines.insert(lines.end(), record->files.begin(), record->files.end());

    std::string block;
    for (const std::string& line : lines) {
        block += line;
        block += '\n';
    }
    appendToday(kJobLogTag, block, static_cast<int>(lines.size()));
}

void ITProLog::GetCurDayTime(char* buffer)
{
    const TimePoint now = m_clock();
    const std::tm local = localTime(now);
    const auto sinceEpoch =
        std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch());
    std::snprintf(buffer, 32, "%02d:%02d:%02d:%03d", local.tm_hour, local.tm_min, local.tm_sec,
        static_cast<int>(sinceEpoch.count() % 1000));
}

void ITProLog::GetCurYearMonth(char* buffer)
{
    const std::string text = log_paths::yearMonth(log_paths::dayOf(localTime(m_clock())));
    std::strcpy(buffer, text.c_str());
}

void ITProLog::GetCurUserName(char* user)
{
    std::puts("ITProLog::GetCurUserName(char *user) ");
    std::string name = homeFolder();
    name.erase(0, name.rfind('/') + 1); // npos + 1 is 0
    std::printf("ITProLog::GetCurUserName() %s\n", name.c_str());
    std::printf("user:%s\n", name.c_str());
    copyWhole(name, user, sizeof InstituteOfInformation::userName - 1);
}

void ITProLog::GetComputerName(char* buffer, int size)
{
    std::array<char, 256> line {};
    if (buffer == nullptr || size <= 0 || ::gethostname(line.data(), 254) != 0) {
        return;
    }
    std::size_t length = std::strlen(line.data());
    line[length++] = '\n'; // counted as part of the line
    // KEPT: the two values stand under each other's name
    std::printf("ITProLog::GetComputerName() nSize=%d,nlen=%d\n", static_cast<int>(length), size);
    if (static_cast<std::size_t>(size) >= length) {
        std::memcpy(buffer, line.data(), length - 1);
        buffer[length - 1] = '\0';
    } else {
        std::memcpy(buffer, line.data(), static_cast<std::size_t>(size));
    }
}
