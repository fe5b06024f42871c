#include "scanlib/device/virtual/virtual_device.h"

#include "scanlib/base/library_log.h"
#include "scanlib/device/papers.h"
#include "scanlib/device/virtual/image_file.h"

#include <algorithm>
#include <thread>

namespace orva {

namespace {

using Clock = std::chrono::steady_clock;

PaperSource makeSource(std::string_view name, SourceKind kind, double widthMm, double heightMm)
{
    PaperSource source;
    source.name = name;
    source.kind = kind;
    source.maxWidthMm = widthMm;
    source.maxHeightMm = heightMm;
    source.papers = papersWithin(widthMm, heightMm);
    source.resolutions = { 75, 100, 150, 200, 240, 300, 400, 600 };
    return source;
}

std::string fileKey(const Sheet& sheet)
{
    return sheet.front.string() + '#' + std::to_string(sheet.page);
}

} // namespace

DeviceIdentity virtualScannerIdentity()
{
    DeviceIdentity identity;
    identity.key = "virtual:0";
    identity.name = "Orvascan Virtual Scanner"; // the mark that switches the device options on
    identity.serial = "AVH4V00000001";
    identity.vidPid = "AV:H4V1";
    identity.driverVersion = "1.0.0";
    identity.firmwareVersion = "1.0.0";
    identity.deviceClass = "AvH4";
    return identity;
}

VirtualDevice::VirtualDevice(const LibraryPaths& paths)
    : m_store(paths.virtualScanner)
    , m_samples(paths.sampleSheets)
{
}

Status VirtualDevice::reachable() const
{
    return m_store.read().faults.unplugged
        ? Status(kDeviceNotFound, "the virtual scanner is unplugged")
        : Status();
}

Status VirtualDevice::open()
{
    if (Status status = m_store.prepare(); !status.ok()) {
        // the sample sheets can still be fed
        libraryLog("virtual scanner: %s", status.detail().c_str());
    }
    if (Status status = reachable(); !status.ok()) {
        return status;
    }
    if (m_sources.empty()) {
        m_sources.push_back(makeSource(kSourceFlatbed, SourceKind::kFlatbed, 216, 297));
        m_sources.push_back(makeSource(kSourceFeeder, SourceKind::kFeeder, 305, 432));
        m_sources.push_back(makeSource(kSourceDuplex, SourceKind::kDuplex, 305, 432));
    }
    return {};
}

Status VirtualDevice::configure(const AcquireSettings& settings)
{
    if (m_sources.empty()) {
        return { kNotInitialised, "not open" };
    }
    if (settings.source >= m_sources.size()) {
        return { kIndexOutOfRange, "source" };
    }
    const PaperSource& source = m_sources[settings.source];
    const PaperSize& area = settings.area;
    const auto dpiPossible = [&](int dpi) {
        return dpi >= source.resolutions.front() && dpi <= source.resolutions.back();
    };
    constexpr double kRoundingMm = 0.5;
    const bool inside = area.leftMm >= 0 && area.topMm >= 0 && area.widthMm > 0 && area.heightMm > 0
        && area.leftMm + area.widthMm <= source.maxWidthMm + kRoundingMm
        && area.topMm + area.heightMm <= source.maxHeightMm + kRoundingMm;
    if (!dpiPossible(settings.dpiX) || !dpiPossible(settings.dpiY) || !inside) {
        return { kDeviceBadParameter, "resolution or area outside the source" };
    }
    if (Status status = reachable(); !status.ok()) {
        return status;
    }
    m_job = Job();
    m_job.configured = true;
    m_job.settings = settings;
    m_job.kind = source.kind;
    m_cancelRequested.store(false);
    return {};
}

bool VirtualDevice::cancelled(const CancelToken& cancel) const
{
    return m_cancelRequested.load() || cancel.cancelled();
}

void VirtualDevice::requestCancel() noexcept
{
    m_cancelRequested.store(true);
    m_wake.notify_all();
}

bool VirtualDevice::waitUntil(Clock::time_point end, const CancelToken& cancel)
{
    constexpr auto kTokenLook = std::chrono::milliseconds(20); // the token itself wakes nobody
    std::unique_lock<std::mutex> lock(m_waitMutex);
    while (!cancelled(cancel) && Clock::now() < end) {
        m_wake.wait_until(lock, std::min(end, Clock::now() + kTokenLook));
    }
    return !cancelled(cancel);
}

std::vector<Sheet> VirtualDevice::sheetsInFeeder(bool& fromSamples) const
{
    std::vector<Sheet> sheets = listSheets(m_store.tray());
    const ScannerState state = m_store.read();
    fromSamples = sheets.empty() && !state.empty;
    if (fromSamples) {
        return listSheets(m_samples);
    }
    if (!state.openFile.empty()) { // pages of the file that earlier jobs have fed
        const auto fed = [&](const Sheet& sheet) {
            return sheet.front.filename() == state.openFile && sheet.page < state.openPage
                && !sheet.lastOfFile;
        };
        sheets.erase(std::remove_if(sheets.begin(), sheets.end(), fed), sheets.end());
    }
    return sheets;
}

/// Paper that is put in while the job runs is fed too; sample sheets are fed once a job.
void VirtualDevice::fillFromTray()
{
    if (m_job.sheets > 0 && m_job.fromSamples) {
        return;
    }
    bool fromSamples = false;
    for (Sheet& sheet : sheetsInFeeder(fromSamples)) {
        if (m_job.gone.count(fileKey(sheet)) == 0) {
            m_job.waiting.push_back(std::move(sheet));
        }
    }
    if (m_job.sheets > 0 && fromSamples) {
        m_job.waiting.clear(); // the job emptied the tray; the samples are for the next one
    } else {
        m_job.fromSamples = fromSamples;
    }
}

Status VirtualDevice::armedFault(const ScannerState& state, int sheet, const CancelToken& cancel)
{
    const auto logged = [](const Status& status) {
        if (!status.ok()) {
            libraryLog("virtual scanner: %s", status.detail().c_str());
        }
    };
    const ScannerFaults& faults = state.faults;
    const std::string at = " at sheet " + std::to_string(sheet);
    if (faults.unplugSheet == sheet) {
        logged(m_store.update([](ScannerState& changed) {
            changed.faults.unplugSheet = 0;
            changed.faults.unplugged = true;
        }));
        return { kDeviceLost, "unplugged" + at };
    }
    if (faults.hangSheet == sheet) {
        if (!waitUntil(Clock::now() + std::chrono::milliseconds(faults.hangMs), cancel)) {
            return { kCancelled, "cancelled while silent" + at };
        }
        logged(m_store.update([](ScannerState& changed) { changed.faults.hangSheet = 0; }));
        return { kDeviceTimeout, "no answer" + at };
    }
    if (faults.jamSheet == sheet) {
        logged(m_store.update([](ScannerState& changed) { changed.faults.jamSheet = 0; }));
        return { kPaperJam, "jam" + at };
    }
    if (faults.doubleFeedSheet == sheet && m_job.settings.detectDoubleFeed) {
        logged(m_store.update([](ScannerState& changed) { changed.faults.doubleFeedSheet = 0; }));
        return { kDoubleFeed, "two sheets" + at };
    }
    return {};
}

Status VirtualDevice::feedSheet(
    const ScannerState& state, bool& endOfFeed, const CancelToken& cancel)
{
    if (m_job.kind == SourceKind::kFlatbed && m_job.sheets > 0) {
        endOfFeed = true;
        return {};
    }
    if (m_job.waiting.empty()) {
        fillFromTray();
    }
    std::error_code error;
    while (!m_job.waiting.empty() && !std::filesystem::exists(m_job.waiting.front().front, error)) {
        m_job.waiting.pop_front(); // taken out meanwhile
    }
    if (m_job.waiting.empty()) {
        endOfFeed = m_job.sheets > 0;
        return endOfFeed ? Status() : Status(kNoPaper, "the tray is empty");
    }
    if (Status fault = armedFault(state, m_job.sheets + 1, cancel); !fault.ok()) {
        return fault; // the sheet stays in the tray
    }
    m_job.current = m_job.waiting.front();
    m_job.waiting.pop_front();
    m_job.gone.insert(fileKey(m_job.current));
    ++m_job.sheets;
    return {};
}

Status VirtualDevice::readSide(Page& page)
{
    const AcquireSettings& settings = m_job.settings;
    const bool gray = settings.mode == ColorMode::kGray || settings.mode == ColorMode::kBlackWhite;
    const PixelFormat wanted = gray ? PixelFormat::kGray : PixelFormat::kRgb;
    page.sheet = m_job.sheets;
    page.side = m_job.backDue ? Side::kBack : Side::kFront;
    page.stream.clear();
    if (m_job.backDue && m_job.current.back.empty()) { // nothing printed: as large as the front
        page.width = m_job.frontWidth;
        page.height = m_job.frontHeight;
        page.format = wanted;
        page.dpiX = settings.dpiX;
        page.dpiY = settings.dpiY;
        page.pixels.assign(page.stride() * static_cast<std::size_t>(page.height), 255);
        return {};
    }
    const std::filesystem::path& file = m_job.backDue ? m_job.current.back : m_job.current.front;
    if (Status status = readImage(file, m_job.current.page, wanted, page); !status.ok()) {
        return status.code() == kDeviceNotFound ? Status(kDamagedPage, status.detail()) : status;
    }
    ScanArea area { settings.area.leftMm, settings.area.topMm, settings.area.widthMm,
        settings.area.heightMm, static_cast<double>(settings.dpiX),
        static_cast<double>(settings.dpiY) };
    if (settings.area.name == kPaperAuto) {
        const PaperSource& source = m_sources[settings.source];
        area.leftMm = area.topMm = 0;
        area.widthMm = std::min(source.maxWidthMm, page.width / page.dpiX * kMmPerInch);
        area.heightMm = std::min(source.maxHeightMm, page.height / page.dpiY * kMmPerInch);
    }
    placeSheet(page, area);
    m_job.frontWidth = page.width;
    m_job.frontHeight = page.height;
    return {};
}

void VirtualDevice::sheetIsThrough()
{
    m_job.backDue = false;
    if (m_job.fromSamples || m_job.kind == SourceKind::kFlatbed) {
        return; // samples are never used up; a sheet lies on the glass until it is taken away
    }
    const Sheet& sheet = m_job.current;
    if (sheet.lastOfFile) {
        moveSheet(sheet, m_store.fed());
    }
    if (sheet.lastOfFile && sheet.page == 0) {
        return;
    }
    const Status status = m_store.update([&](ScannerState& state) {
        state.openFile = sheet.lastOfFile ? "" : sheet.front.filename().string();
        state.openPage = sheet.lastOfFile ? 0 : sheet.page + 1;
    });
    if (!status.ok()) {
        libraryLog("virtual scanner: %s", status.detail().c_str());
    }
}

Status VirtualDevice::nextPage(Page& page, bool& endOfFeed, const CancelToken& cancel)
{
    endOfFeed = false;
    if (!m_job.configured) {
        return { kDeviceBadParameter, "no settings" };
    }
    if (cancelled(cancel)) {
        return { kCancelled, "cancelled" };
    }
    const Clock::time_point started = Clock::now();
    const ScannerState state = m_store.read();
    if (state.faults.unplugged) {
        return { m_job.sheets > 0 ? kDeviceLost : kDeviceNotFound, "unplugged" };
    }
    if (state.faults.coverOpen) {
        return { kCoverOpen, "the cover is open" };
    }
    if (!m_job.backDue) {
        if (Status status = feedSheet(state, endOfFeed, cancel); !status.ok() || endOfFeed) {
            return status;
        }
    }
    if (Status status = readSide(page); !status.ok()) {
        m_job.backDue = false; // the sheet stays in the tray
        return status;
    }
    if (!waitUntil(started + std::chrono::milliseconds(state.faults.slowMs), cancel)) {
        sheetIsThrough(); // the rollers had it already
        return { kCancelled, "cancelled" };
    }
    if (m_job.kind == SourceKind::kDuplex && !m_job.backDue) {
        m_job.backDue = true;
    } else {
        sheetIsThrough();
    }
    return {};
}

void VirtualDevice::endBatch()
{
    if (m_job.backDue) {
        sheetIsThrough();
    }
    m_job = Job();
}

Status VirtualDevice::hasPaper(bool& result)
{
    result = false;
    if (Status status = reachable(); !status.ok()) {
        return status;
    }
    bool fromSamples = false;
    result = (m_job.configured && m_job.kind == SourceKind::kFlatbed)
        || !sheetsInFeeder(fromSamples).empty();
    return {};
}

Status VirtualDevice::pressedButton(int& value)
{
    value = 0;
    const ScannerState state = m_store.read();
    if (state.faults.unplugged) {
        return { kDeviceNotFound, "the virtual scanner is unplugged" };
    }
    if (state.presses.empty()) {
        return {}; // the usual poll takes no lock and writes nothing
    }
    return m_store.update([&](ScannerState& changed) {
        const std::int64_t now = nowMs();
        std::vector<ButtonPress>& presses = changed.presses;
        const auto stale = [&](const ButtonPress& press) {
            return press.atMs > now + kPressLifetimeMs || press.atMs < now - kPressLifetimeMs;
        };
        presses.erase(std::remove_if(presses.begin(), presses.end(), stale), presses.end());
        if (!presses.empty()) {
            value = presses.front().value;
            presses.erase(presses.begin());
        }
    });
}

Status VirtualDevice::timing(DeviceTiming& result)
{
    if (Status status = reachable(); !status.ok()) {
        return status;
    }
    const ScannerState state = m_store.read();
    result = DeviceTiming();
    result.sleep = { true, kSleepMinutesMin, kSleepMinutesMax, 1, 'm', state.sleepMinutes };
    result.autoOff = { true, 0, kAutoOffHoursMax, 1, 'h', state.autoOffHours };
    result.prefeedCapable = true;
    result.prefeedEnabled = state.prefeed;
    result.prefeedSeconds = state.prefeedSeconds;
    result.high = true;
    return {};
}

Status VirtualDevice::setTimes(int sleep, int autoOff)
{
    const bool sleepPossible =
        sleep == -1 || (sleep >= kSleepMinutesMin && sleep <= kSleepMinutesMax);
    const bool autoOffPossible = autoOff >= -1 && autoOff <= kAutoOffHoursMax;
    if (!sleepPossible || !autoOffPossible) {
        return { kValueOutOfRange, "sleep or auto-off time" };
    }
    if (Status status = reachable(); !status.ok()) {
        return status;
    }
    return m_store.update([&](ScannerState& state) {
        state.sleepMinutes = sleep == -1 ? state.sleepMinutes : sleep;
        state.autoOffHours = autoOff == -1 ? state.autoOffHours : autoOff;
    });
}

Status VirtualDevice::setPrefeed(bool enable, float seconds)
{
    const bool possible = seconds >= kPrefeedSecondsMin && seconds <= kPrefeedSecondsMax;
    if (enable && !possible) {
        return { kValueOutOfRange, "pre-feed time" };
    }
    if (Status status = reachable(); !status.ok()) {
        return status;
    }
    return m_store.update([&](ScannerState& state) {
        state.prefeed = enable;
        state.prefeedSeconds = enable ? seconds : state.prefeedSeconds;
    });
}

} // namespace orva
