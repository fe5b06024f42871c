#include "tests/fake_sdk/fake_scanner.h"

#include "sdk/result_codes.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <sstream>

namespace fake {
namespace {

constexpr int kNameBytes = 64; // the buffers of the entries that take no size
constexpr int kCommon = -1;

std::vector<std::string> splitFields(const std::string& line)
{
    std::vector<std::string> fields;
    std::size_t from = 0;
    for (std::size_t bar = 0; bar != std::string::npos; from = bar + 1) {
        bar = line.find('|', from);
        fields.push_back(line.substr(from, bar == std::string::npos ? bar : bar - from));
    }
    return fields;
}

int number(const std::string& text)
{
    return std::stoi(text);
}

// The source index of "paper@1"; kCommon without one.
int sourceOf(const std::string& command)
{
    const std::size_t at = command.find('@');
    return at == std::string::npos ? kCommon : number(command.substr(at + 1));
}

int copyText(const std::string& text, char* buffer, int size)
{
    if (buffer == nullptr || size <= 0) {
        return orva::kBadArgument;
    }
    std::snprintf(buffer, static_cast<std::size_t>(size), "%s", text.c_str());
    return orva::kOk;
}

template <typename Rows>
bool holds(const Rows& rows, int index)
{
    return index >= 0 && static_cast<std::size_t>(index) < rows.size();
}

template <typename Rows>
const auto& rowAt(const Rows& rows, int index)
{
    return rows[static_cast<std::size_t>(index)];
}

template <typename Rows>
int copyName(const Rows& rows, int index, char* name)
{
    return holds(rows, index) ? copyText(rowAt(rows, index).name, name, kNameBytes)
                              : orva::kIndexOutOfRange;
}

template <typename Row>
const std::vector<Row>& rowsOf(const std::map<int, std::vector<Row>>& all, int source)
{
    static const std::vector<Row> kNone;
    const auto own = all.find(source);
    if (own != all.end()) {
        return own->second;
    }
    const auto common = all.find(kCommon);
    return common == all.end() ? kNone : common->second;
}

Step stepFrom(const std::vector<std::string>& fields)
{
    Step step;
    const std::string& kind = fields.at(1);
    if (kind == "wait") {
        step.kind = Step::Kind::kWait;
    } else if (kind == "image") {
        step.kind = Step::Kind::kImage;
        step.name = fields.at(2);
        step.width = number(fields.at(3));
        step.height = number(fields.at(4));
    } else {
        step.number = number(fields.at(2));
        if (kind == "state") {
            step.kind = Step::Kind::kState;
            step.page = number(fields.at(3));
            step.name = fields.at(4);
        } else if (kind == "error") {
            step.kind = Step::Kind::kError;
        } else if (kind == "sleep") {
            step.kind = Step::Kind::kSleep;
        } else {
            throw std::invalid_argument(kind);
        }
    }
    return step;
}

} // namespace

State factoryState()
{
    State state;
#ifndef FAKE_NO_DEVICES
    state.devices = { { "Orvascan A300", "1234:5678", "A1234567", "1.2.3", "4.5.6", "AvH4" } };
#endif
    state.sources = { "平板", "ADF单面", "ADF双面" };
    state.papers[kCommon] = {
        { "A4", { 0.0, 0.0, 210.0, 297.0 } },
        { "A5", { 0.0, 0.0, 148.0, 210.0 } },
        { "B5", { 0.0, 0.0, 182.0, 257.0 } },
        { "Letter", { 0.0, 0.0, 215.9, 279.4 } },
        { "名片", { 0.0, 0.0, 90.0, 54.0 } },
    };
    for (const int dpi : { 100, 150, 200, 300, 600 }) {
        state.resolutions[kCommon].push_back({ std::to_string(dpi), dpi, dpi });
    }
    state.fileTypes = { { 0, 0, 0, 0, 0, 128, 10 }, { 1, 0, 0, 10, 20, 140, 11 },
        { 2, 0, 0, -10, 5, 100, 18 } };
    state.deviceInfo =
        R"({"InSleep":{"nEnable":1,"nMax":60,"nMix":1,"nStep":1,"chUnit":109,"value":15},)"
        R"("AutoOff":{"nEnable":1,"nMax":12,"nMix":0,"nStep":1,"chUnit":104,"value":4},)"
        R"("Prefeed":{"nCap":1,"nEnable":1,"value":"1.5"},"IsHigh":1})";
    state.sleepTime = 15;
    state.autoOffTime = 4;
    Step scanned;
    scanned.kind = Step::Kind::kState;
    scanned.number = 1;
    scanned.page = 1;
    Step saved;
    saved.kind = Step::Kind::kImage;
    saved.name = "fake-0001.jpg";
    saved.page = 1;
    saved.width = 210;
    saved.height = 297;
    state.job.steps = { scanned, saved };
    return state;
}

Scanner::Scanner()
    : m_state(factoryState())
{
    if (const char* path = std::getenv("FAKE_SDK_SCRIPT")) {
        std::ifstream in(path);
        runScript({ std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>() });
    }
}

Scanner::~Scanner()
{
    stopControl();
    m_jobs.finishAll();
}

bool Scanner::runScript(const std::string& lines)
{
    bool wasReset = false;
    std::istringstream in(lines);
    for (std::string line; std::getline(in, line);) {
        if (line.empty()) {
            continue;
        }
        try {
            if (line == "reset") {
                reset();
                wasReset = true;
            } else if (line == "release") {
                m_jobs.release();
            } else if (line.compare(0, 5, "fire|") == 0) {
                m_jobs.fire(stepFrom(splitFields(line)));
            } else {
                const std::lock_guard<std::mutex> guard(m_mutex);
                runLine(line);
            }
        } catch (const std::exception& error) {
            std::fprintf(
                stderr, "fake scanner: bad script line \"%s\" (%s)\n", line.c_str(), error.what());
            std::abort();
        }
    }
    return wasReset;
}

void Scanner::reset()
{
    m_jobs.finishAll();
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_state = factoryState();
}

// With the mutex held.
void Scanner::runLine(const std::string& line)
{
    const std::vector<std::string> fields = splitFields(line);
    const std::string command = fields[0].substr(0, fields[0].find('@'));
    const bool clear = fields.size() == 2 && fields[1] == "clear";
    if (command == "devices" && clear) {
        m_state.devices.clear();
    } else if (command == "device") {
        m_state.devices.push_back(
            { fields.at(1), fields.at(2), fields.at(3), fields.at(4), fields.at(5), fields.at(6) });
    } else if (command == "sources" && clear) {
        m_state.sources.clear();
    } else if (command == "source") {
        m_state.sources.push_back(fields.at(1));
    } else if (command == "papers" && clear) {
        m_state.papers.clear();
    } else if (command == "paper") {
        m_state.papers[sourceOf(fields[0])].push_back({ fields.at(1),
            { std::stod(fields.at(2)), std::stod(fields.at(3)), std::stod(fields.at(4)),
                std::stod(fields.at(5)) } });
    } else if (command == "resolutions" && clear) {
        m_state.resolutions.clear();
    } else if (command == "resolution") {
        m_state.resolutions[sourceOf(fields[0])].push_back(
            { fields.at(1), number(fields.at(2)), number(fields.at(3)) });
    } else if (command == "filetypes" && clear) {
        m_state.fileTypes.clear();
    } else if (command == "filetype") {
        m_state.fileTypes.push_back({ 0, 0, 0, number(fields.at(1)), number(fields.at(2)),
            number(fields.at(3)), number(fields.at(4)) });
    } else if (command == "json" || command == "json-unterminated") {
        m_state.deviceInfo = line.substr(command.size() + 1);
        m_state.deviceInfoTerminated = command == "json";
    } else if (command == "times") {
        m_state.sleepTime = number(fields.at(1));
        m_state.autoOffTime = number(fields.at(2));
    } else if (command == "havepaper") {
        m_state.havePaper = number(fields.at(1));
    } else if (command == "button") {
        m_state.buttons.push_back(number(fields.at(1)));
    } else if (command == "result") {
        if (fields.at(2) == "normal") {
            m_state.results.erase(fields[1]);
        } else {
            const int times = fields.size() > 3 ? number(fields[3]) : -1;
            m_state.results[fields[1]] = { number(fields[2]), times };
        }
    } else if (command == "delay") {
        m_state.delaysMs[fields.at(1)] = number(fields.at(2));
    } else if (command == "job" && clear) {
        m_state.job = {};
    } else if (line == "job|end-twice") {
        m_state.job.ends = 2;
    } else if (line == "job|no-end") {
        m_state.job.ends = 0;
    } else if (command == "step") {
        m_state.job.steps.push_back(stepFrom(fields));
    } else {
        throw std::invalid_argument(command);
    }
}

std::optional<int> Scanner::forcedResult(const std::string& entry)
{
    int delayMs = 0;
    std::optional<int> code;
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        const auto delay = m_state.delaysMs.find(entry);
        delayMs = delay == m_state.delaysMs.end() ? 0 : delay->second;
        const auto found = m_state.results.find(entry);
        if (found != m_state.results.end() && found->second.times != 0) {
            code = found->second.code;
            found->second.times -= found->second.times > 0 ? 1 : 0;
        }
    }
    if (delayMs > 0) {
        std::this_thread::sleep_for(std::chrono::milliseconds(delayMs));
    }
    return code;
}

const Device* Scanner::currentDevice() const
{
    return holds(m_state.devices, m_state.device) ? &rowAt(m_state.devices, m_state.device)
                                                  : nullptr;
}

const std::vector<Paper>& Scanner::papers() const
{
    return rowsOf(m_state.papers, m_state.source);
}

const std::vector<Resolution>& Scanner::resolutions() const
{
    return rowsOf(m_state.resolutions, m_state.source);
}

// Reads script lines from a FIFO until stopControl. Opened for reading and writing, so that it does
// not end when a writer goes.
void Scanner::readControl(const std::string& path)
{
    const int fifo = ::open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    std::string pending;
    while (fifo >= 0 && !m_stopControl) {
        pollfd wanted { fifo, POLLIN, 0 };
        std::array<char, 1024> part {};
        if (::poll(&wanted, 1, 20) <= 0) {
            continue;
        }
        const ssize_t got = ::read(fifo, part.data(), part.size());
        pending.append(part.data(), got > 0 ? static_cast<std::size_t>(got) : 0);
        const std::size_t end = pending.rfind('\n');
        if (end != std::string::npos) {
            runScript(pending.substr(0, end + 1));
            pending.erase(0, end + 1);
        }
    }
    if (fifo >= 0) {
        ::close(fifo);
    }
}

void Scanner::stopControl()
{
    m_stopControl = true;
    if (m_control.joinable()) {
        m_control.join();
    }
    m_stopControl = false;
}

int Scanner::Init()
{
    const char* path = std::getenv("FAKE_SDK_CONTROL");
    if (path != nullptr && !m_control.joinable()) {
        m_control = std::thread([this, file = std::string(path)] { readControl(file); });
    }
    return orva::kOk;
}

int Scanner::UnInit()
{
    stopControl();
    m_jobs.finishAll();
    return orva::kOk;
}

int Scanner::GetCurScannerName(char* name)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    return copyName(m_state.devices, m_state.device, name);
}

int Scanner::SelectScanner(int index)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    if (!holds(m_state.devices, index)) {
        return orva::kIndexOutOfRange;
    }
    m_state.device = index;
    return orva::kOk;
}

int Scanner::GetScannerCount()
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    return static_cast<int>(m_state.devices.size());
}

int Scanner::GetScannerName(int index, char* name)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    return copyName(m_state.devices, index, name);
}

int Scanner::GetScannerState()
{
    return orva::kOk;
}

int Scanner::GetScannerSN(char* sn, int size)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    const Device* device = currentDevice();
    return device == nullptr ? orva::kNoScannerSelected : copyText(device->serial, sn, size);
}

int Scanner::GetScannerClass(char* cls)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    const Device* device = currentDevice();
    return device == nullptr ? orva::kNoScannerSelected
                             : copyText(device->deviceClass, cls, kNameBytes);
}

// The size that the application gives here is smaller than what it has and than the text, so the
// text is bounded by the 64 bytes that every caller provides.
int Scanner::GetScannerVIDPID(char* vidpid, int /*size*/)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    const Device* device = currentDevice();
    return device == nullptr ? orva::kNoScannerSelected
                             : copyText(device->vidPid, vidpid, kNameBytes);
}

int Scanner::GetScannerVersion(char* version1, int size1, char* version2, int size2)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    const Device* device = currentDevice();
    if (device == nullptr) {
        return orva::kNoScannerSelected;
    }
    const int first = copyText(device->version1, version1, size1);
    return first != 0 ? first : copyText(device->version2, version2, size2);
}

int Scanner::GetScanSourceCount()
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    return static_cast<int>(m_state.sources.size());
}

int Scanner::GetScanSourceName(int index, char* name)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    return holds(m_state.sources, index) ? copyText(rowAt(m_state.sources, index), name, kNameBytes)
                                         : orva::kIndexOutOfRange;
}

int Scanner::SetScanSource(int index)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    if (!holds(m_state.sources, index)) {
        return orva::kIndexOutOfRange;
    }
    m_state.source = index;
    return orva::kOk;
}

int Scanner::GetCurScanSource()
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_state.source;
}

int Scanner::SetColorMode(int mode)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_state.colorMode = mode;
    return orva::kOk;
}

int Scanner::GetColorMode()
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_state.colorMode;
}

int Scanner::GetPaperCount()
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    return static_cast<int>(papers().size());
}

int Scanner::GetPaperName(int index, char* name)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    return copyName(papers(), index, name);
}

int Scanner::GetPaperSize(int index, double& left, double& top, double& width, double& height)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    if (!holds(papers(), index)) {
        return orva::kIndexOutOfRange;
    }
    const std::array<double, 4>& extent = rowAt(papers(), index).extent;
    left = extent[0];
    top = extent[1];
    width = extent[2];
    height = extent[3];
    return orva::kOk;
}

int Scanner::GetPaperSizeMax(double& width, double& height)
{
    width = 216.0;
    height = 356.0;
    return orva::kOk;
}

int Scanner::SetPaperSize(double left, double top, double width, double height, int /*index*/)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_state.area.extent = { left, top, width, height };
    return orva::kOk;
}

int Scanner::GetCurPaperSize(double& left, double& top, double& width, double& height)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    left = m_state.area.extent[0];
    top = m_state.area.extent[1];
    width = m_state.area.extent[2];
    height = m_state.area.extent[3];
    return orva::kOk;
}

int Scanner::GetResolutionCount()
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    return static_cast<int>(resolutions().size());
}

int Scanner::GetResolutionName(int index, char* name)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    return copyName(resolutions(), index, name);
}

int Scanner::GetResolution(int index, int& x, int& y)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    if (!holds(resolutions(), index)) {
        return orva::kIndexOutOfRange;
    }
    x = rowAt(resolutions(), index).x;
    y = rowAt(resolutions(), index).y;
    return orva::kOk;
}

int Scanner::SetResolution(int x, int y)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_state.resolution.x = x;
    m_state.resolution.y = y;
    return orva::kOk;
}

int Scanner::GetCurResolution(int& x, int& y)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    x = m_state.resolution.x;
    y = m_state.resolution.y;
    return orva::kOk;
}

int Scanner::SetScanSpeed(int /*speed*/)
{
    return orva::kOk;
}

int Scanner::SetPrefeed(bool enable, float seconds)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_state.prefeed = enable ? seconds : 0.0F;
    return orva::kOk;
}

int Scanner::GetPrefeed(float* seconds)
{
    if (seconds == nullptr) {
        return orva::kBadArgument;
    }
    const std::lock_guard<std::mutex> guard(m_mutex);
    *seconds = m_state.prefeed;
    return orva::kOk;
}

int Scanner::GetOverScan()
{
    return 0;
}
int Scanner::SetOverScanValue(int /*value1*/, int /*value2*/)
{
    return orva::kOk;
}

int Scanner::HavePaper()
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_state.havePaper;
}

int Scanner::SetJPGQulity(int /*quality*/)
{
    return orva::kOk;
}
int Scanner::SetImageParam(ImageParam /*param*/)
{
    return orva::kOk;
}

int Scanner::SetFileParam(FileParam param)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_state.folder.assign(param.szFilePath, ::strnlen(param.szFilePath, sizeof param.szFilePath));
    return orva::kOk;
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
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        job = m_state.job;
        folder = m_state.folder;
    }
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

int Scanner::ClearTmpData()
{
    return orva::kOk;
}
int Scanner::SetLogInfo(bool /*enable*/, const char* /*logFile*/)
{
    return orva::kOk;
}

int Scanner::SetScannerTime(int sleep, int autoOff)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_state.sleepTime = sleep < 0 ? m_state.sleepTime : sleep;
    m_state.autoOffTime = autoOff < 0 ? m_state.autoOffTime : autoOff;
    return orva::kOk;
}

int Scanner::GetButtonStatus()
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    if (m_state.buttons.empty() || m_jobs.running()) {
        return 0;
    }
    const int button = m_state.buttons.front();
    m_state.buttons.pop_front();
    return button;
}

int Scanner::GetScannerSleepTime(int& sleep, int& autoOff)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    sleep = m_state.sleepTime;
    autoOff = m_state.autoOffTime;
    return orva::kOk;
}

int Scanner::GetDevInfo(char* json, int size)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    if (json != nullptr && size > 0 && !m_state.deviceInfoTerminated) {
        std::memcpy(json, m_state.deviceInfo.data(),
            std::min(m_state.deviceInfo.size(), static_cast<std::size_t>(size)));
        return orva::kOk;
    }
    return copyText(m_state.deviceInfo, json, size);
}

int Scanner::GetImageParam(std::vector<stFileTypeParam>& rows)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    rows = m_state.fileTypes;
    return orva::kOk;
}

} // namespace fake
