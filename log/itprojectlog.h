// The job log: the audit trail of scanning work. One block a batch, one file a day, in monthly
// folders.
#pragma once

#include "log/job_log_writer.h"

#include <atomic>
#include <chrono>
#include <cstdarg>
#include <functional>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

/// Tag of the job log; it names the files.
inline constexpr char kJobLogTag[] = "tarvex-base-pro";

/// One batch.
struct InstituteOfInformation
{
    char startTime[32] = {};
    char endTime[32] = {};
    char userName[32] = {};
    char computerName[32] = {};
    int pageCount = 0;
    int result = 0; ///< 0 success, -1 failure, any other value abnormal
    std::vector<std::string> files; ///< full paths, in the order of arrival
};

/// Any thread. A block is never mixed with another one, of this process or of any other. Off after
/// construction. What cannot be written is told to the run log.
class ITProLog
{
public:
    using Clock = std::function<std::chrono::system_clock::time_point()>;

    ITProLog();
    virtual ~ITProLog();
    ITProLog(const ITProLog&) = delete;
    ITProLog& operator=(const ITProLog&) = delete;

    /// Destination: ".ORVA/TarvexBaseUI/" in the home folder.
    void GetDefaultSavePath();
    /// Destination: the folder, when checkWritable accepts it; else the old one stays.
    void GetDestSavePath(const char* folder);
    /// One line, at most 4095 bytes of it, in today's file of the tag.
    void Add(const char* tag, const char* format, ...) __attribute__((format(printf, 3, 4)));
    /// One block, whole in the file of the day on which it is written.
    void AddBatch(InstituteOfInformation* record);
    /// Local time of day, "14:05:09:042". 32 bytes are enough.
    void GetCurDayTime(char* buffer);
    /// Year and month, without padding: 2024-3. 16 bytes are enough.
    void GetCurYearMonth(char* buffer);
    /// Last component of the home folder, at most 31 bytes: what the record holds.
    void GetCurUserName(char* user);
    /// Host name. A buffer without room for the name and its end is filled with size characters and
    /// then has no end.
    void GetComputerName(char* buffer, int size);

    /// From now on Add and AddBatch return at once and a thread writes; the blocks that are left at
    /// the end of the process have JobLogWriter::kLastWait.
    void startWriter() { m_writer.start(); }
    /// True as soon as all is in the files, false when that takes longer than the limit.
    [[nodiscard]] bool flush(std::chrono::milliseconds limit) { return m_writer.flush(limit); }

    /// Above 0 enables writing.
    void setEnabledValue(unsigned char value);
    unsigned char enabledValue() const { return m_enabled; }
    /// Ends with a slash. GUI thread, which also sets it.
    const char* destination() const { return m_destination; }
    /// Takes the place of the system's clock; for tests.
    void setClock(Clock clock) { m_clock = std::move(clock); }

private:
    std::string formatLine(const char* format, va_list values)
        __attribute__((format(printf, 2, 0)));
    void appendToday(const char* tag, const std::string& text, int lines);

    std::atomic<unsigned char> m_enabled { 0 };
    std::mutex m_mutex;
    char m_message[4096] = {};
    char m_destination[4096] = {};
    Clock m_clock;
    JobLogWriter m_writer;
};

/// The process-wide job log, made before main.
extern ITProLog IOFLog;
