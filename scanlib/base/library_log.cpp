#include "scanlib/base/library_log.h"

#include "scanlib/base/local_time.h"

#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <ctime>
#include <mutex>

namespace orva {

namespace {

std::mutex g_mutex;
bool g_enabled = false;
void (*g_sink)(const char* text) = nullptr;
/// Never destroyed: a driver's thread may log while the process ends.
std::string& g_file = *new std::string;

} // namespace

void setLibraryLog(bool enable, const std::string& file)
{
    const std::lock_guard<std::mutex> lock(g_mutex);
    g_enabled = enable && !file.empty();
    g_file = file;
}

void setLibraryLogSink(void (*sink)(const char* text))
{
    const std::lock_guard<std::mutex> lock(g_mutex);
    g_sink = sink;
}

void libraryLog(const char* format, ...)
{
    const std::lock_guard<std::mutex> lock(g_mutex);
    if (g_sink != nullptr) {
        constexpr std::size_t kLongest = 1000;
        char text[kLongest];
        std::va_list arguments;
        va_start(arguments, format);
        std::vsnprintf(text, sizeof text, format, arguments);
        va_end(arguments);
        g_sink(text);
        return;
    }
    if (!g_enabled) {
        return;
    }
    std::FILE* const file = std::fopen(g_file.c_str(), "ae");
    if (file == nullptr) {
        return;
    }
    const auto now = std::chrono::system_clock::now();
    const auto ms =
        std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count()
        % 1000;
    const std::tm parts = localTime(std::chrono::system_clock::to_time_t(now));
    std::fprintf(file, "%04d-%02d-%02d %02d:%02d:%02d.%03d ", parts.tm_year + 1900,
        parts.tm_mon + 1, parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec,
        static_cast<int>(ms));
    std::va_list arguments;
    va_start(arguments, format);
    std::vfprintf(file, format, arguments);
    va_end(arguments);
    std::fputc('\n', file);
    std::fclose(file);
}

} // namespace orva
