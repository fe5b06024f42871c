// The run log: the application's own diagnostic trace, one file, wiped at every start. Beside it a
// date-named log for untagged messages, a level mask, stopwatches, and a second, stream-based
// logger as free functions.
#pragma once

#include <chrono>
#include <cstdarg>
#include <fstream>
#include <mutex>
#include <string>
#include <vector>

struct _tagTIMER
{
    std::chrono::system_clock::time_point start;
    std::chrono::system_clock::time_point unused; ///< always zero
    int id = 0;
};

/// All operations may be called from any thread; a line is on disk when its call returns.
class CLog
{
public:
    /// Wipes the previous run's file, reads the level mask from "logmgr.xml" in the working folder,
    /// enables writing. Wiping is left out while another copy of the application runs.
    explicit CLog(const char* moduleName);
    /// All levels on, no file prepared, the untagged form switched off.
    explicit CLog(int ignored);
    virtual ~CLog();
    CLog(const CLog&) = delete;
    CLog& operator=(const CLog&) = delete;

    /// At most 255 bytes. -1 for a null or empty path, else 0.
    int SetLogFileName(const char* path);
    /// Sets the run log's path and wipes that file, unless another copy of the application runs.
    /// Not to be called by the process that holds the instance lock: the look at the lock would
    /// release it.
    void CreateLogFile(const char* ignored);
    /// Overwrites the file with zero bytes, then with bytes of value 1, and removes it. Of a link,
    /// or of anything else that is no regular file, only the name goes.
    void DeleteLogFile(const char* path);
    /// File name of the running executable, without its folder. -1 when it cannot be told.
    int LinuxGetModuleFileName(char* buffer, int size);

    /// One line of the run log. The tag is accepted and not written.
    void Add(const char* tag, const char* format, ...) __attribute__((format(printf, 3, 4)));
    /// One line of the date-named log.
    void Add(const char* format, ...) __attribute__((format(printf, 2, 3)));
    /// One line of the date-named log when the level shares a bit with the mask.
    void Add(int level, const char* format, ...) __attribute__((format(printf, 3, 4)));

    /// 0, or -1 when the stopwatch runs already.
    int StarTimer(int id);
    /// Seconds since the stopwatch was started; 0.0 when there is none. Removes it.
    double Duration(int id);
    double Duration_not_erase(int id);
    void Erase_a_timer(int id);
    /// Year and month, without padding: 2024-3. 16 bytes are enough.
    void GetCurYearMonth(char* buffer);

    const char* logFileName() const { return m_logFileName; }
    int levelMask() const { return m_levelMask; }

private:
    void appendRunLog(const char* format, va_list values) __attribute__((format(printf, 2, 0)));
    void appendDayLog(const char* format, va_list values) __attribute__((format(printf, 2, 0)));
    void addDayLine(const char* format, ...) __attribute__((format(printf, 2, 3)));
    std::string dayLogFile();
    void readLevels();

    char m_message[3000] = {};
    int m_levelMask = 0;
    std::mutex m_mutex;
    std::vector<_tagTIMER> m_timers;
    unsigned char m_enabled = 0;
    char m_logFileName[256] = {};
    std::string m_unused;
    char m_moduleName[256] = {};

    friend void runLog(const char* format, ...);
};

/// The process-wide run log, made before main.
extern CLog Log;

/// One line of the run log under the application's tag. Use this one: Log.Add("text %s", "x") would
/// pick the tagged form and lose the text.
void runLog(const char* format, ...) __attribute__((format(printf, 1, 2)));

/// The stream-based logger; nothing in the application calls it. CreateLogFile: -604 for a null
/// path, -612 when the file cannot be opened, else 0.
extern std::ofstream g_LogFile;
int CreateLogFile(const char* path);
void AddLog(const char* format, ...) __attribute__((format(printf, 1, 2)));
void CloseLogFile();
