// What the entry points answer, from the state that the script has set.
#include "tests/fake_sdk/fake_scanner.h"

#include <cstdio>
#include <cstring>

// An entry that only succeeds.
#define FAKE_NOTHING(signature)                                                                    \
    int Scanner::signature                                                                         \
    {                                                                                              \
        return orva::kOk;                                                                          \
    }

namespace fake {
namespace {

constexpr int kNameBytes = 64; // the buffers of the entries that take no size

int copyText(const std::string& text, char* buffer, int size)
{
    if (buffer == nullptr || size <= 0) {
        return orva::kBadArgument;
    }
    std::snprintf(buffer, static_cast<std::size_t>(size), "%s", text.c_str());
    return orva::kOk;
}

template <typename Rows>
int copyName(const Rows& rows, int index, char* name)
{
    return holds(rows, index) ? copyText(rowAt(rows, index).name, name, kNameBytes)
                              : static_cast<int>(orva::kIndexOutOfRange);
}

/// Makes the index the chosen one when there is such a row.
template <typename Rows>
int choose(const Rows& rows, int index, int& chosen)
{
    if (!holds(rows, index)) {
        return orva::kIndexOutOfRange;
    }
    chosen = index;
    return orva::kOk;
}

void tellExtent(const Paper& paper, double& left, double& top, double& width, double& height)
{
    left = paper.extent[0];
    top = paper.extent[1];
    width = paper.extent[2];
    height = paper.extent[3];
}

} // namespace

FAKE_NOTHING(GetScannerState())
FAKE_NOTHING(SetScanSpeed(int /*speed*/))
FAKE_NOTHING(GetOverScan())
FAKE_NOTHING(SetOverScanValue(int /*value1*/, int /*value2*/))
FAKE_NOTHING(SetJPGQulity(int /*quality*/))
FAKE_NOTHING(SetImageParam(ImageParam /*param*/))
FAKE_NOTHING(ClearTmpData())
FAKE_NOTHING(SetLogInfo(bool /*enable*/, const char* /*logFile*/))

int Scanner::GetCurScannerName(char* name)
{
    return with([&](State& s) { return copyName(s.devices, s.device, name); });
}

int Scanner::SelectScanner(int index)
{
    return with([&](State& s) { return choose(s.devices, index, s.device); });
}

int Scanner::GetScannerCount()
{
    return with([](State& s) { return static_cast<int>(s.devices.size()); });
}

int Scanner::GetScannerName(int index, char* name)
{
    return with([&](State& s) { return copyName(s.devices, index, name); });
}

int Scanner::GetScannerSN(char* sn, int size)
{
    return withDevice([&](const Device& d) { return copyText(d.serial, sn, size); });
}

int Scanner::GetScannerClass(char* cls)
{
    return withDevice([&](const Device& d) { return copyText(d.deviceClass, cls, kNameBytes); });
}

// The size that the application gives here is smaller than what it has and than the text, so the
// text is bounded by the 64 bytes that every caller provides.
int Scanner::GetScannerVIDPID(char* vidpid, int /*size*/)
{
    return withDevice([&](const Device& d) { return copyText(d.vidPid, vidpid, kNameBytes); });
}

int Scanner::GetScannerVersion(char* version1, int size1, char* version2, int size2)
{
    return withDevice([&](const Device& d) {
        const int first = copyText(d.version1, version1, size1);
        return first != 0 ? first : copyText(d.version2, version2, size2);
    });
}

int Scanner::GetScanSourceCount()
{
    return with([](State& s) { return static_cast<int>(s.sources.size()); });
}

int Scanner::GetScanSourceName(int index, char* name)
{
    return with([&](State& s) { return copyName(s.sources, index, name); });
}

int Scanner::SetScanSource(int index)
{
    return with([&](State& s) { return choose(s.sources, index, s.source); });
}

int Scanner::GetCurScanSource()
{
    return with([](State& s) { return s.source; });
}

int Scanner::SetColorMode(int mode)
{
    return with([&](State& s) {
        s.colorMode = mode;
        return orva::kOk;
    });
}

int Scanner::GetColorMode()
{
    return with([](State& s) { return s.colorMode; });
}

int Scanner::GetPaperCount()
{
    return with([](State& s) { return static_cast<int>(rowsOf(s.papers, s.source).size()); });
}

int Scanner::GetPaperName(int index, char* name)
{
    return with([&](State& s) { return copyName(rowsOf(s.papers, s.source), index, name); });
}

int Scanner::GetPaperSize(int index, double& left, double& top, double& width, double& height)
{
    return with([&](State& s) {
        const std::vector<Paper>& papers = rowsOf(s.papers, s.source);
        if (!holds(papers, index)) {
            return orva::kIndexOutOfRange;
        }
        tellExtent(rowAt(papers, index), left, top, width, height);
        return orva::kOk;
    });
}

int Scanner::GetPaperSizeMax(double& width, double& height)
{
    width = 216.0;
    height = 356.0;
    return orva::kOk;
}

int Scanner::SetPaperSize(double left, double top, double width, double height, int /*index*/)
{
    return with([&](State& s) {
        s.area.extent = { left, top, width, height };
        return orva::kOk;
    });
}

int Scanner::GetCurPaperSize(double& left, double& top, double& width, double& height)
{
    return with([&](State& s) {
        tellExtent(s.area, left, top, width, height);
        return orva::kOk;
    });
}

int Scanner::GetResolutionCount()
{
    return with([](State& s) { return static_cast<int>(rowsOf(s.resolutions, s.source).size()); });
}

int Scanner::GetResolutionName(int index, char* name)
{
    return with([&](State& s) { return copyName(rowsOf(s.resolutions, s.source), index, name); });
}

int Scanner::GetResolution(int index, int& x, int& y)
{
    return with([&](State& s) {
        const std::vector<Resolution>& all = rowsOf(s.resolutions, s.source);
        if (!holds(all, index)) {
            return orva::kIndexOutOfRange;
        }
        x = rowAt(all, index).x;
        y = rowAt(all, index).y;
        return orva::kOk;
    });
}

int Scanner::SetResolution(int x, int y)
{
    return with([&](State& s) {
        s.resolution.x = x;
        s.resolution.y = y;
        return orva::kOk;
    });
}

int Scanner::GetCurResolution(int& x, int& y)
{
    return with([&](State& s) {
        x = s.resolution.x;
        y = s.resolution.y;
        return orva::kOk;
    });
}

int Scanner::SetPrefeed(bool enable, float seconds)
{
    return with([&](State& s) {
        s.prefeed = enable ? seconds : 0.0F;
        return orva::kOk;
    });
}

int Scanner::GetPrefeed(float* seconds)
{
    return with([&](State& s) {
        if (seconds == nullptr) {
            return orva::kBadArgument;
        }
        *seconds = s.prefeed;
        return orva::kOk;
    });
}

int Scanner::HavePaper()
{
    return with([](State& s) { return s.havePaper; });
}

int Scanner::SetFileParam(FileParam param)
{
    return with([&](State& s) {
        s.folder.assign(param.szFilePath, ::strnlen(param.szFilePath, sizeof param.szFilePath));
        return orva::kOk;
    });
}

int Scanner::GetPageParameters(_tagPageParameter* page)
{
    if (page == nullptr) {
        return orva::kBadArgument;
    }
    *page = { 1, 1654, 2339, 24, 200, 200 };
    return orva::kOk;
}

int Scanner::UpLoad(int /*mode*/, const char* /*path*/)
{
    return orva::kNotSupported;
}

int Scanner::Scan()
{
    JobScript job;
    std::string folder;
    with([&](State& s) {
        job = s.job;
        folder = s.folder;
        return orva::kOk;
    });
    return m_jobs.run(job, folder);
}

int Scanner::CancelScan()
{
    m_jobs.cancel();
    return orva::kOk;
}

int Scanner::SetStateCallback(OrvaStateCallback callback, void* /*user*/)
{
    m_jobs.setStateCallback(callback);
    return orva::kOk;
}

int Scanner::SetErrorCallback(OrvaErrorCallback callback, void* /*user*/)
{
    m_jobs.setErrorCallback(callback);
    return orva::kOk;
}

int Scanner::SetScannerTime(int sleep, int autoOff)
{
    return with([&](State& s) {
        s.sleepTime = sleep < 0 ? s.sleepTime : sleep;
        s.autoOffTime = autoOff < 0 ? s.autoOffTime : autoOff;
        return orva::kOk;
    });
}

int Scanner::GetButtonStatus()
{
    return with([this](State& s) {
        if (s.buttons.empty() || m_jobs.running()) {
            return 0;
        }
        const int button = s.buttons.front();
        s.buttons.pop_front();
        return button;
    });
}

int Scanner::GetScannerSleepTime(int& sleep, int& autoOff)
{
    return with([&](State& s) {
        sleep = s.sleepTime;
        autoOff = s.autoOffTime;
        return orva::kOk;
    });
}

int Scanner::GetDevInfo(char* json, int size)
{
    return with([&](State& s) {
        if (json == nullptr || size <= 0 || s.deviceInfoTerminated) {
            return copyText(s.deviceInfo, json, size);
        }
        s.deviceInfo.copy(json, static_cast<std::size_t>(size)); // no end
        return static_cast<int>(orva::kOk);
    });
}

int Scanner::GetImageParam(std::vector<stFileTypeParam>& rows)
{
    return with([&](State& s) {
        rows = s.fileTypes;
        return orva::kOk;
    });
}

} // namespace fake
