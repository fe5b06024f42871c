// The job log: the audit trail of scanning work. One block a batch, one file a day, in monthly folders.
#pragma once

#include <mutex>
#include <string>
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

/// Any thread. A block is never mixed with another one, of this process or of any other.
class ITProLog
{
public:
    ITProLog();
    virtual ~ITProLog();
    ITProLog(const ITProLog&) = delete;
    ITProLog& operator=(const ITProLog&) = delete;

    void GetDefaultSavePath();
    void GetDestSavePath(const char* folder);
    void Add(const char* tag, const char* format, ...) __attribute__((format(printf, 3, 4)));
    void AddBatch(InstituteOfInformation* record);
    void GetCurDayTime(char* buffer);
    void GetCurYearMonth(char* buffer);
    void GetCurUserName(char* user);
    void GetComputerName(char* buffer, int size);

    /// Above 0 enables writing.
    void setEnabledValue(unsigned char value);
    unsigned char enabledValue() const { return m_enabled; }
    const char* destination() const { return m_destination; }

private:
    unsigned char m_enabled = 0;
    std::mutex m_mutex;
    char m_message[4096] = {};
    char m_destination[4096] = {};
};

/// The process-wide job log, made before main.
extern ITProLog IOFLog;
