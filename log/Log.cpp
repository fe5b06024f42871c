// The run log. A line costs an open, a write and a close, so that it survives a crash.
#include "log/Log.h"

#include "app/common.h"
#include "app/install_paths.h"
#include "app/xml_guard.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <tinyxml.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <iostream>
#include <string_view>
#include <system_error>

namespace {

constexpr char kModuleTag[] = "tarvex-base-ui";
constexpr std::size_t kWipeBlock = 1024;
constexpr int kAllLevels = 31;

struct LevelName
{
    std::string_view text;
    int bit;
};
constexpr std::array<LevelName, 5> kLevelNames { {
    { "LOG_ERROR", 1 },
    { "LOG_FLOW", 2 },
    { "LOG_SPEED", 4 },
    { "LOG_SCANX", 8 },
    { "LOG_DEBUG", 16 },
} };

struct LocalTime
{
    std::tm parts {};
    int milliseconds = 0;
};

LocalTime localNow()
{
    std::timespec now {};
    ::clock_gettime(CLOCK_REALTIME, &now);
    LocalTime local;
    ::localtime_r(&now.tv_sec, &local.parts);
    local.milliseconds = static_cast<int>(now.tv_nsec / 1'000'000);
    return local;
}

// "14:05:09:042", a tab, a space, the message and a newline, in one write: the file is open for
// appending, so lines of two processes do not mix.
bool appendLine(const char* path, const char* mode, const char* message)
{
    std::FILE* file = std::fopen(path, mode);
    if (file == nullptr) {
        return false;
    }
    const LocalTime now = localNow();
    std::array<char, 512> stamp {};
    std::snprintf(stamp.data(), stamp.size(), "%02d:%02d:%02d:%03d", now.parts.tm_hour,
        now.parts.tm_min, now.parts.tm_sec, now.milliseconds);
    std::array<char, 6000> line {};
    std::snprintf(line.data(), line.size(), "%s\t %s\n", stamp.data(), message);
    std::fputs(line.data(), file);
    std::fclose(file);
    return true;
}

// Other users may write the folder of a log: a link in its place is never followed to somebody's
// file, and a pipe in its place is never waited for.
int openInPlace(const char* path, int access)
{
    return ::open(path, access | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
}

bool overwrite(std::FILE* file, off_t size, char value)
{
    std::array<char, kWipeBlock> block {};
    block.fill(value);
    for (off_t left = size; left > 0;) {
        const std::size_t part =
            std::min<std::size_t>(static_cast<std::size_t>(left), block.size());
        if (std::fwrite(block.data(), 1, part, file) != part) {
            return false;
        }
        left -= static_cast<off_t>(part);
    }
    // Each pass has to reach the disk: a second pass over a cached first one would wipe nothing.
    return std::fflush(file) == 0 && ::fdatasync(::fileno(file)) == 0;
}

// Zero bytes, then bytes of value 1, over every byte of a regular file. It is not truncated first:
// that would free the old blocks and wipe new ones.
void wipeBytes(const char* path)
{
    const int descriptor = openInPlace(path, O_WRONLY);
    std::FILE* file = descriptor < 0 ? nullptr : ::fdopen(descriptor, "wb");
    if (file == nullptr) {
        return;
    }
    struct stat status
    {
    };
    if (::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) && status.st_size > 0
        && overwrite(file, status.st_size, '\0') && std::fseek(file, 0, SEEK_SET) == 0) {
        overwrite(file, status.st_size, '\1');
    }
    std::fclose(file);
}

// Whether another process holds the instance lock. Closing the descriptor drops the locks that this
// process itself has on the file, so this is for the time before the lock is taken.
bool anotherCopyRuns()
{
    const std::string pidFile = std::string(install_paths::kConfigFolder) + "TarvexBaseUI.pid";
    const int descriptor = openInPlace(pidFile.c_str(), O_RDONLY);
    if (descriptor < 0) {
        return false;
    }
    struct flock lock
    {
    };
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    const bool held = ::fcntl(descriptor, F_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
    ::close(descriptor);
    return held;
}

// What a second pass of printf makes of a text without values: "%%" becomes "%". Other conversions
// have no value to print, so they stay as they are.
std::string interpretPercentAgain(const char* text)
{
    std::string out;
    for (const char* at = text; *at != '\0'; ++at) {
        out += *at;
        if (at[0] == '%' && at[1] == '%') {
            ++at;
        }
    }
    return out;
}

std::mutex& streamMutex()
{
    static std::mutex mutex;
    return mutex;
}

} // namespace

CLog::CLog(const char* moduleName)
{
    CreateLogFile(nullptr);
    m_enabled = 1;
    if (moduleName != nullptr) {
        std::snprintf(m_moduleName, sizeof m_moduleName, "%s", moduleName);
    }
    readLevels();
}

CLog::CLog(int /*ignored*/)
    : m_levelMask(kAllLevels)
{
}

CLog::~CLog() = default;

void CLog::readLevels()
{
    TiXmlDocument document;
    if (!readXmlFile(QStringLiteral("logmgr.xml"), document).empty()) {
        return;
    }
    const TiXmlElement* root = document.RootElement();
    if (root == nullptr) {
        Add("没有找到element");
        return;
    }
    for (const TiXmlElement* entry = root->FirstChildElement(); entry != nullptr;
         entry = entry->NextSiblingElement()) {
        const char* text = entry->GetText();
        int enable = 0;
        if (text == nullptr || entry->QueryIntAttribute("enable", &enable) != TIXML_SUCCESS
            || enable != 1) {
            continue;
        }
        for (const LevelName& level : kLevelNames) {
            if (level.text == text) {
                m_levelMask |= level.bit;
            }
        }
    }
}

int CLog::SetLogFileName(const char* path)
{
    if (path == nullptr || *path == '\0') {
        return -1;
    }
    const std::lock_guard<std::mutex> guard(m_mutex);
    std::snprintf(m_logFileName, sizeof m_logFileName, "%s", path);
    return 0;
}

void CLog::CreateLogFile(const char* /*ignored*/)
{
    const std::string user = getAppOwnUsr().toStdString();
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        std::snprintf(m_logFileName, sizeof m_logFileName, "%s/%s/OrvaLog/%s.log",
            g_strCommonPath.c_str(), user.c_str(), kModuleTag);
    }
    if (!anotherCopyRuns()) {
        DeleteLogFile(m_logFileName);
    }
}

void CLog::DeleteLogFile(const char* path)
{
    if (path == nullptr) {
        return;
    }
    const int reader = openInPlace(path, O_RDONLY);
    if (reader < 0 && errno != ELOOP) {
        return;
    }
    if (reader >= 0) {
        ::close(reader);
        wipeBytes(path);
    }
    ::unlink(path);
}

int CLog::LinuxGetModuleFileName(char* buffer, int size)
{
    std::array<char, 1024> link {};
    const ssize_t length = ::readlink("/proc/self/exe", link.data(), link.size());
    if (length < 0 || static_cast<std::size_t>(length) >= link.size() || buffer == nullptr
        || size <= 0) {
        return -1;
    }
    const char* slash = std::strrchr(link.data(), '/');
    std::snprintf(
        buffer, static_cast<std::size_t>(size), "%s", slash == nullptr ? link.data() : slash + 1);
    return 0;
}

void CLog::appendRunLog(const char* format, va_list values)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    std::vsnprintf(m_message, sizeof m_message, format, values);
    if (!appendLine(m_logFileName, "a+e", m_message)) {
        std::printf("CLog::Add() openfile(%s) failed\n", m_logFileName);
    }
}

// Folder and file of the date-named log; the folder is made when it is missing.
std::string CLog::dayLogFile()
{
    std::array<char, 256> program {};
    LinuxGetModuleFileName(program.data(), static_cast<int>(program.size()));
    const std::string folder = homeFolder() + "/.ORVA/TarvexBaseUI/" + program.data() + "/Log";
    std::error_code ignored;
    std::filesystem::create_directories(folder, ignored);

    const std::tm today = localNow().parts;
    std::array<char, 320> name {};
    std::snprintf(name.data(), name.size(), "/%s-%d_%d_%d.log", m_moduleName, today.tm_year + 1900,
        today.tm_mon + 1, today.tm_mday);
    return folder + name.data();
}

void CLog::appendDayLog(const char* format, va_list values)
{
    if (m_enabled == 0) {
        return;
    }
    const std::string file = dayLogFile();
    const std::lock_guard<std::mutex> guard(m_mutex);
    std::vsnprintf(m_message, sizeof m_message, format, values);
    appendLine(file.c_str(), "ae", m_message);
}

void CLog::Add(const char* /*tag*/, const char* format, ...)
{
    va_list values;
    va_start(values, format);
    appendRunLog(format, values);
    va_end(values);
}

void CLog::Add(const char* format, ...)
{
    va_list values;
    va_start(values, format);
    appendDayLog(format, values);
    va_end(values);
}

void CLog::Add(int level, const char* format, ...)
{
    if ((level & m_levelMask) == 0) {
        return;
    }
    std::array<char, sizeof m_message> text {};
    va_list values;
    va_start(values, format);
    std::vsnprintf(text.data(), text.size(), format, values);
    va_end(values);
    // KEPT: the finished text is a format once more, so "%%" in it loses a percent sign.
    addDayLine("%s", interpretPercentAgain(text.data()).c_str());
}

// The untagged form under a name of its own: Add("%s", text) would be the tagged one.
void CLog::addDayLine(const char* format, ...)
{
    va_list values;
    va_start(values, format);
    appendDayLog(format, values);
    va_end(values);
}

int CLog::StarTimer(int id)
{
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        const bool used = std::any_of(m_timers.begin(), m_timers.end(),
            [id](const _tagTIMER& timer) { return timer.id == id; });
        if (!used) {
            m_timers.push_back({ std::chrono::system_clock::now(), {}, id });
            return 0;
        }
    }
    Add("此ID已经被使用：%d", id);
    return -1;
}

double CLog::Duration(int id)
{
    const double seconds = Duration_not_erase(id);
    Erase_a_timer(id);
    return seconds;
}

double CLog::Duration_not_erase(int id)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    for (const _tagTIMER& timer : m_timers) {
        if (timer.id == id) {
            const std::chrono::nanoseconds passed = std::chrono::system_clock::now() - timer.start;
            return static_cast<double>(passed.count()) / 1e9;
        }
    }
    return 0.0;
}

void CLog::Erase_a_timer(int id)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    const auto found = std::find_if(
        m_timers.begin(), m_timers.end(), [id](const _tagTIMER& timer) { return timer.id == id; });
    if (found != m_timers.end()) {
        m_timers.erase(found);
    }
}

void CLog::GetCurYearMonth(char* buffer)
{
    const std::tm today = localNow().parts;
    const std::string text =
        std::to_string(today.tm_year + 1900) + '-' + std::to_string(today.tm_mon + 1);
    std::strcpy(buffer, text.c_str());
}

void runLog(const char* format, ...)
{
    va_list values;
    va_start(values, format);
    Log.appendRunLog(format, values);
    va_end(values);
}

int CreateLogFile(const char* path)
{
    if (path == nullptr) {
        return -604;
    }
    const std::lock_guard<std::mutex> guard(streamMutex());
    g_LogFile.close();
    g_LogFile.clear();
    g_LogFile.open(path, std::ios::out | std::ios::trunc);
    if (!g_LogFile.is_open()) {
        return -612;
    }
    if (::chmod(path, 0777) != 0) {
        std::printf("--CreateLogFile() chmode(%s) failed(errcode=%d)---\n", path, errno);
    }
    return 0;
}

void AddLog(const char* format, ...)
{
    if (format == nullptr) {
        std::puts("AddLog(const char* szArgs,...) szArgs=nullptr---");
        return;
    }
    const std::lock_guard<std::mutex> guard(streamMutex());
    if (!g_LogFile.is_open()) {
        std::puts("AddLog(const char* szArgs,...) not open---");
        return;
    }
    std::array<char, 3000> message {};
    va_list values;
    va_start(values, format);
    std::vsnprintf(message.data(), message.size(), format, values);
    va_end(values);
    const LocalTime now = localNow();
    std::array<char, 64> stamp {};
    std::snprintf(stamp.data(), stamp.size(), "[%04d%02d%02d %2d:%2d:%2d:%3d] ",
        now.parts.tm_year + 1900, now.parts.tm_mon + 1, now.parts.tm_mday, now.parts.tm_hour,
        now.parts.tm_min, now.parts.tm_sec, now.milliseconds);
    g_LogFile << stamp.data() << message.data() << std::flush;
}

void CloseLogFile()
{
    const std::lock_guard<std::mutex> guard(streamMutex());
    g_LogFile.flush();
    g_LogFile.close();
}
