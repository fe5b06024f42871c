// The job log: what a block holds and which file it belongs to.
#include "log/itprojectlog.h"

#include "app/common.h"
#include "log/log_paths.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <ctime>

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

// With the mutex held. The file is chosen now, also when it is written later.
void ITProLog::appendToday(const char* tag, const std::string& text, int lines)
{
    const log_paths::Day today = log_paths::dayOf(localTime(m_clock()));
    const std::string folder = log_paths::monthFolder(m_destination, today);
    for (int line = 0; line < lines; ++line) {
        std::printf("chFile:%s\n", folder.c_str());
    }
    m_writer.write({ m_destination, folder, log_paths::dayFile(m_destination, tag, today), text });
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
