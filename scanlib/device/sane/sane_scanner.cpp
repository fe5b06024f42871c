// Opening, settings, sensors. How sides are read: sane_scanner_read.cpp.
#include "scanlib/device/sane/sane_scanner.h"

#include "scanlib/base/library_log.h"
#include "scanlib/device/papers.h"

#include <algorithm>
#include <cmath>

namespace orva {

namespace {

constexpr int kUsualResolutions[] = { 75, 100, 150, 200, 240, 300, 400, 600 };
constexpr int kLowestDpi = 75;
constexpr int kHighestDpi = 600;

/// What the window offers: the usual ones that the device can set, or those of its own list.
std::vector<int> offeredResolutions(const SaneOption* option)
{
    std::vector<int> result;
    if (option != nullptr && !option->numbers.empty()) {
        for (const double value : option->numbers) {
            if (value >= kLowestDpi && value <= kHighestDpi) {
                result.push_back(static_cast<int>(std::lround(value)));
            }
        }
        std::sort(result.begin(), result.end());
        result.erase(std::unique(result.begin(), result.end()), result.end());
    } else {
        for (const int dpi : kUsualResolutions) {
            if (option == nullptr || !option->hasRange
                || std::abs(option->nearest(dpi) - dpi) < 1) {
                result.push_back(dpi);
            }
        }
    }
    if (result.empty()) { // a device with a single odd resolution
        constexpr int kMiddleDpi = 300;
        const double value = option != nullptr ? option->nearest(kMiddleDpi) : kMiddleDpi;
        result.push_back(std::clamp(static_cast<int>(std::lround(value)), kLowestDpi, kHighestDpi));
    }
    return result;
}

std::string_view nameOf(SourceKind kind)
{
    return kind == SourceKind::kFlatbed ? kSourceFlatbed
        : kind == SourceKind::kFeeder   ? kSourceFeeder
                                        : kSourceDuplex;
}

void logProblem(const Status& status)
{
    if (!status.ok()) {
        libraryLog("sane: %s", status.detail().c_str());
    }
}

} // namespace

Status SaneScanner::open(const std::string& key, const std::string& type)
{
    if (isOpen() && !m_distrusted.load() && !isUnplugged(m_key)) {
        return {};
    }
    close();
    m_distrusted.store(false);
    if (Status status = m_runtime->initialise(); !status.ok()) {
        return status;
    }
    SANE_Handle handle = nullptr;
    const SANE_Status status = m_runtime->api().open(key.c_str(), &handle);
    if (status == SANE_STATUS_INVAL) { // of sane_open: there is no such device (now)
        return { kDeviceNotFound, "sane_open: " + key + " is not there" };
    }
    if (status != SANE_STATUS_GOOD) {
        return saneFailure(status, "sane_open");
    }
    m_handle = handle;
    m_key = key;
    m_runtime->deviceOpened();
    m_options = std::make_unique<SaneOptions>(m_runtime->api(), m_handle);
    if (Status loaded = m_options->reload(); !loaded.ok()) {
        close();
        return loaded;
    }
    findSources(type);
    rememberButtons();
    return {};
}

void SaneScanner::close()
{
    if (!isOpen()) {
        return;
    }
    finishBatch();
    m_options.reset();
    m_runtime->api().close(m_handle);
    m_handle = nullptr;
    m_configured = false;
    m_runtime->deviceClosed();
}

void SaneScanner::findSources(const std::string& type)
{
    m_sources.clear();
    m_plans.clear();
    const SaneOption* sourceOption = m_options->findSettable("source");
    const std::vector<std::string> texts =
        sourceOption != nullptr ? sourceOption->texts : std::vector<std::string>();
    std::string duplexOption;
    for (const std::string_view name : kDuplexSwitches) {
        const SaneOption* option = m_options->find(name);
        if (option != nullptr && (option->type == SANE_TYPE_BOOL || !option->texts.empty())) {
            duplexOption = name;
            break;
        }
    }
    std::string feederText;
    bool haveFeeder = false;
    for (const SourceKind kind :
        { SourceKind::kFlatbed, SourceKind::kFeeder, SourceKind::kDuplex }) {
        const SourceWord wanted = kind == SourceKind::kFlatbed ? SourceWord::kFlatbed
            : kind == SourceKind::kFeeder                      ? SourceWord::kFeeder
                                                               : SourceWord::kDuplex;
        const auto text = std::find_if(texts.begin(), texts.end(),
            [&](const std::string& candidate) { return sourceWord(candidate) == wanted; });
        if (text != texts.end()) {
            addSource(kind, { *text, kind == SourceKind::kFeeder ? duplexOption : "", false });
            if (kind == SourceKind::kFeeder) {
                feederText = *text;
                haveFeeder = true;
            }
        } else if (kind == SourceKind::kDuplex && haveFeeder && !duplexOption.empty()) {
            addSource(kind, { feederText, duplexOption, true });
        }
    }
    if (!m_sources.empty()) {
        return;
    }
    // No source to choose, or words that nobody knows: the device feeds or it does not.
    const bool feeds = type.find("feed") != std::string::npos
        || m_options->findAny(kPaperSensors) != nullptr || !duplexOption.empty();
    addSource(feeds ? SourceKind::kFeeder : SourceKind::kFlatbed, { "", duplexOption, false });
    if (feeds && !duplexOption.empty()) {
        addSource(SourceKind::kDuplex, { "", duplexOption, true });
    }
}

void SaneScanner::addSource(SourceKind kind, const SourcePlan& wanted)
{
    SourcePlan plan = wanted;
    if (Status status = selectSource(plan); !status.ok()) {
        logProblem(status);
        return;
    }
    PaperSource source;
    source.name = nameOf(kind);
    source.kind = kind;
    source.maxWidthMm = 210;
    source.maxHeightMm = 297;
    const SaneOption* left = m_options->find("tl-x");
    const SaneOption* top = m_options->find("tl-y");
    const SaneOption* right = m_options->find("br-x");
    const SaneOption* bottom = m_options->find("br-y");
    const SaneOption* resolution = m_options->find("resolution");
    if (left != nullptr && top != nullptr && right != nullptr && bottom != nullptr
        && right->hasRange && bottom->hasRange) {
        plan.pixelUnits = right->unit == SANE_UNIT_PIXEL;
        double mmPerUnit = 1;
        if (plan.pixelUnits) {
            const double dpi =
                resolution != nullptr ? m_options->number(*resolution).value_or(0) : 0;
            mmPerUnit = dpi > 0 ? kMmPerInch / dpi : kMmPerInch / 300;
        }
        plan.leftMm = left->hasRange ? left->min * mmPerUnit : 0;
        plan.topMm = top->hasRange ? top->min * mmPerUnit : 0;
        source.maxWidthMm = right->max * mmPerUnit - plan.leftMm;
        source.maxHeightMm = bottom->max * mmPerUnit - plan.topMm;
    }
    source.papers = papersWithin(source.maxWidthMm, source.maxHeightMm);
    source.resolutions =
        offeredResolutions(resolution != nullptr ? resolution : m_options->find("x-resolution"));
    m_sources.push_back(std::move(source));
    m_plans.push_back(std::move(plan));
}

Status SaneScanner::selectSource(const SourcePlan& plan)
{
    if (!plan.sourceText.empty()) {
        if (Status status = m_options->setText("source", plan.sourceText); !status.ok()) {
            return status;
        }
    }
    if (const SaneOption* option = m_options->findSettable(plan.duplexOption); option != nullptr) {
        Status status;
        if (option->type == SANE_TYPE_BOOL) {
            status = m_options->setNumber(plan.duplexOption, plan.duplex ? 1 : 0);
        } else {
            const auto text = std::find_if(
                option->texts.begin(), option->texts.end(), [&](const std::string& candidate) {
                    return (sourceWord(candidate) == SourceWord::kDuplex) == plan.duplex;
                });
            if (text != option->texts.end()) {
                status = m_options->setText(plan.duplexOption, std::string(*text));
            }
        }
        if (!status.ok()) {
            return status;
        }
    }
    // these limit the area of the feeder; at their largest they limit nothing
    constexpr double kLargest = 1e6;
    setSheetSize(kWidthOptions, kLargest);
    setSheetSize(kHeightOptions, kLargest);
    return {};
}

void SaneScanner::setSheetSize(const Words& names, double wantedMm)
{
    const SaneOption* option = m_options->findAny(names);
    if (option != nullptr && option->settable() && option->hasRange) {
        const double perMm = option->unit == SANE_UNIT_PIXEL ? m_dpiX / kMmPerInch : 1;
        logProblem(m_options->setNumber(
            std::string(option->name), std::min(option->max, wantedMm * std::max(1.0, perMm))));
    }
}

Status SaneScanner::setNumberIfAny(const std::string& name, double value)
{
    return m_options->findSettable(name) != nullptr ? m_options->setNumber(name, value) : Status();
}

Status SaneScanner::setMode(ColorMode mode)
{
    m_wantGray = mode == ColorMode::kGray || mode == ColorMode::kBlackWhite;
    const SaneOption* option = m_options->findSettable("mode");
    bool lineart = false;
    if (option != nullptr) {
        // black-and-white is made from grey afterwards, better than most devices do it
        const std::string gray = allowedWord(*option, kGrayModes);
        const std::string color = allowedWord(*option, kColorModes);
        const std::string binary = allowedWord(*option, kLineartModes);
        const std::string& first = m_wantGray ? gray : color;
        const std::string& second = m_wantGray ? color : gray;
        const std::string word = !first.empty() ? first : !second.empty() ? second : binary;
        lineart = !word.empty() && word == binary;
        if (!word.empty()) {
            if (Status status = m_options->setText("mode", word); !status.ok()) {
                return status;
            }
        }
    }
    constexpr int kBitsASample = 8;
    // not fatal: the frame itself tells how deep it is
    logProblem(setNumberIfAny("depth", lineart ? 1 : kBitsASample));
    return {};
}

Status SaneScanner::setResolution(const AcquireSettings& settings)
{
    const bool single = m_options->findSettable("resolution") != nullptr;
    m_dpiX = settings.dpiX;
    m_dpiY = settings.dpiY;
    const std::string nameX = single ? "resolution" : "x-resolution";
    const std::string nameY = single ? "resolution" : "y-resolution";
    if (Status status = setNumberIfAny(nameX, settings.dpiX); !status.ok()) {
        return status;
    }
    if (!single) {
        if (Status status = setNumberIfAny(nameY, settings.dpiY); !status.ok()) {
            return status;
        }
    }
    if (const SaneOption* option = m_options->find(nameX); option != nullptr) {
        m_dpiX = m_options->number(*option).value_or(m_dpiX);
    }
    if (const SaneOption* option = m_options->find(nameY); option != nullptr) {
        m_dpiY = m_options->number(*option).value_or(m_dpiY);
    }
    return {};
}

Status SaneScanner::setArea(const AcquireSettings& settings, const SourcePlan& plan)
{
    const double unitX = plan.pixelUnits ? kMmPerInch / m_dpiX : 1;
    const double unitY = plan.pixelUnits ? kMmPerInch / m_dpiY : 1;
    const double left = (settings.area.leftMm + plan.leftMm) / unitX;
    const double top = (settings.area.topMm + plan.topMm) / unitY;
    const double right = left + settings.area.widthMm / unitX;
    const double bottom = top + settings.area.heightMm / unitY;
    if (m_sources[settings.source].kind != SourceKind::kFlatbed) {
        // Feeders centre the sheet: these drivers count the area from the edge of a sheet this
        // wide.
        setSheetSize(kWidthOptions, settings.area.leftMm + settings.area.widthMm);
        setSheetSize(kHeightOptions, settings.area.topMm + settings.area.heightMm);
    }
    struct Edge
    {
        const char* name;
        double value;
    };
    // twice: an edge that lay beyond the old opposite one may have been clipped the first time
    for (int round = 0; round < 2; ++round) {
        for (const Edge& edge : { Edge { "tl-x", left }, Edge { "tl-y", top },
                 Edge { "br-x", right }, Edge { "br-y", bottom } }) {
            Status status = setNumberIfAny(edge.name, edge.value);
            if (!status.ok() && round == 1) {
                return status;
            }
        }
    }
    return {};
}

void SaneScanner::setDoubleFeed(bool detect)
{
    const SaneOption* action = m_options->findSettable("df-action");
    if (action != nullptr) {
        const std::string stop = allowedWord(*action, { "Stop" });
        const std::string rest = allowedWord(*action, { "Default" });
        if (!(detect ? stop : rest).empty()) {
            logProblem(m_options->setText("df-action", detect ? stop : rest));
        }
    }
    for (const char* name : { "df-thickness", "df-length", "double-feed", "dfeed-detect" }) {
        const SaneOption* option = m_options->findSettable(name);
        if (option != nullptr && option->type == SANE_TYPE_BOOL) {
            logProblem(m_options->setNumber(name, detect ? 1 : 0));
        }
    }
}

Status SaneScanner::configure(const AcquireSettings& settings)
{
    if (!isOpen()) {
        return { kNotInitialised, "not open" };
    }
    Status status = apply(settings);
    if (status.code() == kDeviceIo) {
        distrust();
    }
    return status;
}

Status SaneScanner::apply(const AcquireSettings& settings)
{
    if (settings.source >= m_sources.size()) {
        return { kIndexOutOfRange, "source" };
    }
    if (settings.dpiX <= 0 || settings.dpiY <= 0 || settings.area.widthMm <= 0
        || settings.area.heightMm <= 0) {
        return { kDeviceBadParameter, "empty area or no resolution" };
    }
    const SourcePlan& plan = m_plans[settings.source];
    m_configured = false;
    // source first: with several drivers it puts mode and resolution back
    if (Status status = selectSource(plan); !status.ok()) {
        return status;
    }
    if (Status status = setMode(settings.mode); !status.ok()) {
        return status;
    }
    if (Status status = setResolution(settings); !status.ok()) {
        return status;
    }
    if (Status status = setArea(settings, plan); !status.ok()) {
        return status;
    }
    logProblem(setNumberIfAny("preview", 0));
    setDoubleFeed(settings.detectDoubleFeed);
    m_settings = settings;
    m_configured = true;
    m_sides = 0;
    return {};
}

Status SaneScanner::hasPaper(bool& result)
{
    result = true; // a device without a sensor tells when it starts
    const bool flatbed = m_configured && m_sources[m_settings.source].kind == SourceKind::kFlatbed;
    if (!isOpen() || flatbed) {
        return isOpen() ? Status() : Status(kNotInitialised, "not open");
    }
    for (const std::string_view name : kPaperSensors) {
        const SaneOption* option = m_options->find(name);
        if (option == nullptr) {
            continue;
        }
        if (const auto value = m_options->number(*option); value.has_value()) {
            result = *value != 0;
            return {};
        }
    }
    return {};
}

double SaneScanner::buttonState(const SaneOption& option) const
{
    return m_options->number(option).value_or(0);
}

void SaneScanner::rememberButtons()
{
    m_buttonStates.clear();
    for (const ButtonOption& button : kButtonOptions) {
        const SaneOption* option = m_options->find(button.option);
        m_buttonStates.push_back(option != nullptr ? buttonState(*option) : 0);
    }
}

Status SaneScanner::pressedButton(int& value)
{
    value = 0;
    if (!isOpen()) {
        return { kNotInitialised, "not open" };
    }
    if (m_options->findSettable("button-update") != nullptr) {
        logProblem(m_options->press("button-update"));
    }
    for (std::size_t i = 0; i < m_buttonStates.size(); ++i) {
        const SaneOption* option = m_options->find(kButtonOptions[i].option);
        if (option == nullptr) {
            continue;
        }
        const double state = buttonState(*option);
        if (state != 0 && m_buttonStates[i] == 0 && value == 0) {
            value = kButtonOptions[i].value;
        }
        m_buttonStates[i] = state;
    }
    return {};
}

Status SaneScanner::timing(DeviceTiming& result)
{
    result = DeviceTiming();
    if (!isOpen()) {
        return { kNotInitialised, "not open" };
    }
    const auto describe = [&](const Words& names, TimingCapability& capability) {
        const SaneOption* option = m_options->findAny(names);
        if (option == nullptr || !option->settable() || !option->hasRange) {
            return;
        }
        capability.enabled = true;
        capability.min = static_cast<int>(option->min);
        capability.max = static_cast<int>(option->max);
        capability.step = std::max(1, static_cast<int>(option->step));
        capability.unit = 'm';
        capability.value = static_cast<int>(m_options->number(*option).value_or(option->min));
    };
    describe(kSleepOptions, result.sleep);
    describe(kAutoOffOptions, result.autoOff);
    return {};
}

Status SaneScanner::setTimes(int sleep, int autoOff)
{
    if (!isOpen()) {
        return { kNotInitialised, "not open" };
    }
    const auto apply = [&](const Words& names, int value) -> Status {
        if (value == -1) {
            return {};
        }
        const SaneOption* option = m_options->findAny(names);
        if (option == nullptr || !option->settable()) {
            return { kNotSupported, "the device keeps no such time" };
        }
        if (option->hasRange && (value < option->min || value > option->max)) {
            return { kValueOutOfRange, option->name };
        }
        return m_options->setNumber(std::string(option->name), value);
    };
    const Status first = apply(kSleepOptions, sleep);
    const Status second = apply(kAutoOffOptions, autoOff);
    return first.ok() ? second : first;
}

} // namespace orva
