// The border of the library: arguments are checked, texts are cut to the caller's buffers, no
// exception leaves. What is meant is decided in the session.
#include "scanlib/api/entry_points.h"

#include "scanlib/api/composition.h"
#include "scanlib/base/library_log.h"
#include "scanlib/base/text.h"
#include "scanlib/session/session.h"

#include <new>
#include <string>

namespace {

using namespace orva;

/// Sizes of the callers' buffers where no size is passed.
constexpr int kNameSize = 64;
constexpr int kLongNameSize = 256;

/// Never destroyed: UnInit releases everything, and a process that forgets it must still end.
Session& session()
{
    static Session* const instance = new Session(installedParts());
    return *instance;
}

template <typename Body>
int guarded(Body body) noexcept
{
    try {
        return body();
    } catch (const std::bad_alloc&) {
        return kNoMemory;
    } catch (const std::exception& error) {
        libraryLog("exception at the border: %s", error.what());
        return kInternal;
    } catch (...) {
        return kInternal;
    }
}

/// Asks for a text and copies it out; an empty one after a failure, for callers that do not look.
template <typename Ask>
int guardedText(char* out, int size, Ask ask) noexcept
{
    return guarded([&]() -> int {
        if (out == nullptr || size <= 0) {
            return kBadArgument;
        }
        out[0] = '\0';
        std::string text;
        const int code = ask(text);
        if (code == kOk) {
            copyText(text, out, static_cast<std::size_t>(size));
        }
        return code;
    });
}

/// Asks for a member of the selected scanner's identity.
int identityText(char* out, int size, std::string DeviceIdentity::*member) noexcept
{
    return guardedText(out, size, [&](std::string& text) {
        DeviceIdentity identity;
        const int code = session().currentScanner(identity);
        text = identity.*member;
        return code;
    });
}

} // namespace

int Init()
{
    return guarded([] { return session().init(); });
}

int UnInit()
{
    return guarded([] { return session().unInit(); });
}

int GetCurScannerName(char* name)
{
    return identityText(name, kNameSize, &DeviceIdentity::name);
}

int SelectScanner(int index)
{
    return guarded([&] { return session().selectScanner(index); });
}

int GetScannerCount()
{
    return guarded([] { return session().scannerCount(); });
}

int GetScannerName(int index, char* name)
{
    return guardedText(
        name, kNameSize, [&](std::string& text) { return session().scannerName(index, text); });
}

int GetScannerState()
{
    return guarded([] { return session().scannerState(); });
}

int GetScannerSN(char* sn, int size)
{
    return identityText(sn, size, &DeviceIdentity::serial);
}

int GetScannerClass(char* cls)
{
    return identityText(cls, kNameSize, &DeviceIdentity::deviceClass);
}

int GetScannerVIDPID(char* vidpid, int size)
{
    return identityText(vidpid, size, &DeviceIdentity::vidPid);
}

int GetScannerVersion(char* version1, int size1, char* version2, int size2)
{
    const int code = identityText(version1, size1, &DeviceIdentity::driverVersion);
    return code != kOk ? code : identityText(version2, size2, &DeviceIdentity::firmwareVersion);
}

int GetScanSourceCount()
{
    return guarded([] { return session().sourceCount(); });
}

int GetScanSourceName(int index, char* name)
{
    return guardedText(
        name, kNameSize, [&](std::string& text) { return session().sourceName(index, text); });
}

int SetScanSource(int index)
{
    return guarded([&] { return session().setSource(index); });
}

int GetCurScanSource()
{
    return guarded([] { return session().currentSource(); });
}

int SetColorMode(int mode)
{
    return guarded([&] { return session().setColorMode(mode); });
}

int GetColorMode()
{
    return guarded([] { return session().colorMode(); });
}

int GetPaperCount()
{
    return guarded([] { return session().paperCount(); });
}

int GetPaperName(int index, char* name)
{
    return guardedText(
        name, kLongNameSize, [&](std::string& text) { return session().paperName(index, text); });
}

int GetPaperSize(int index, double& left, double& top, double& width, double& height)
{
    return guarded([&] {
        PaperSize paper;
        const int code = session().paperSize(index, paper);
        if (code == kOk) {
            left = paper.leftMm;
            top = paper.topMm;
            width = paper.widthMm;
            height = paper.heightMm;
        }
        return code;
    });
}

int GetPaperSizeMax(double& width, double& height)
{
    return guarded([&] { return session().paperSizeMax(width, height); });
}

int SetPaperSize(double left, double top, double width, double height, int index)
{
    return guarded([&] { return session().setPaperSize({ "", left, top, width, height }, index); });
}

int GetCurPaperSize(double& left, double& top, double& width, double& height)
{
    return guarded([&] {
        PaperSize area;
        const int code = session().currentPaperSize(area);
        if (code == kOk) {
            left = area.leftMm;
            top = area.topMm;
            width = area.widthMm;
            height = area.heightMm;
        }
        return code;
    });
}

int GetResolutionCount()
{
    return guarded([] { return session().resolutionCount(); });
}

int GetResolutionName(int index, char* name)
{
    return guardedText(name, kLongNameSize,
        [&](std::string& text) { return session().resolutionName(index, text); });
}

int GetResolution(int index, int& x, int& y)
{
    return guarded([&] { return session().resolution(index, x, y); });
}

int SetResolution(int x, int y)
{
    return guarded([&] { return session().setResolution(x, y); });
}

int GetCurResolution(int& x, int& y)
{
    return guarded([&] { return session().currentResolution(x, y); });
}

// What the values of a speed, an over-scan and an upload would mean is told nowhere: rather than
// guess at a driver's option, these say so.
int SetScanSpeed(int /*speed*/)
{
    return guarded([] { return session().notOffered(); });
}

int SetPrefeed(bool enable, float seconds)
{
    return guarded([&] { return session().setPrefeed(enable, seconds); });
}

int GetPrefeed(float* seconds)
{
    return guarded(
        [&]() -> int { return seconds == nullptr ? kBadArgument : session().prefeed(*seconds); });
}

int GetOverScan()
{
    return guarded([] { return session().notOffered(); });
}

int SetOverScanValue(int /*value1*/, int /*value2*/)
{
    return guarded([] { return session().notOffered(); });
}

int HavePaper()
{
    return guarded([] { return session().havePaper(); });
}

int SetJPGQulity(int quality)
{
    return guarded([&] { return session().setJpegQuality(quality); });
}

int SetImageParam(ImageParam param)
{
    return guarded([&] { return session().setImageParam(param); });
}

int SetFileParam(FileParam param)
{
    return guarded([&] { return session().setFileParam(param); });
}

int GetPageParameters(_tagPageParameter* page)
{
    return guarded(
        [&]() -> int { return page == nullptr ? kBadArgument : session().pageParameters(*page); });
}

int UpLoad(int /*mode*/, const char* path)
{
    return guarded(
        [&]() -> int { return path == nullptr ? kBadArgument : session().notOffered(); });
}

int Scan()
{
    return guarded([] { return session().scan(); });
}

int CancelScan()
{
    return guarded([] { return session().cancelScan(); });
}

int SetStateCallback(OrvaStateCallback callback, void* /*user*/)
{
    return guarded([&] { return session().setStateCallback(callback); });
}

int SetErrorCallback(OrvaErrorCallback callback, void* /*user*/)
{
    return guarded([&] { return session().setErrorCallback(callback); });
}

int ClearTmpData()
{
    return guarded([] { return session().clearTmpData(); });
}

int SetLogInfo(bool enable, const char* logFile)
{
    return guarded([&]() -> int {
        if (enable && logFile == nullptr) {
            return kBadArgument;
        }
        return session().setLogInfo(enable, logFile != nullptr ? logFile : "");
    });
}

int SetScannerTime(int sleep, int autoOff)
{
    return guarded([&] { return session().setScannerTime(sleep, autoOff); });
}

int GetButtonStatus()
{
    return guarded([] { return session().buttonStatus(); });
}

int GetScannerSleepTime(int& sleep, int& autoOff)
{
    return guarded([&] { return session().scannerSleepTime(sleep, autoOff); });
}

int GetDevInfo(char* json, int size)
{
    return guardedText(json, size, [&](std::string& text) {
        const int code = session().deviceInfo(text);
        // Half an object is worth nothing to a reader.
        return code == kOk && text.size() >= static_cast<std::size_t>(size) ? kBadArgument : code;
    });
}

int GetImageParam(std::vector<stFileTypeParam>& rows)
{
    return guarded([&] { return session().documentTypes(rows); });
}
