// Opening, and what the scanner offers.
#include "scanlib/base/library_log.h"
#include "scanlib/device/papers.h"
#include "scanlib/device/sane_host/sane_scanner.h"

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

} // namespace

void logProblem(const Status& status)
{
    if (!status.ok()) {
        libraryLog("sane: %s", status.detail().c_str());
    }
}

Status SaneScanner::open(const OpenRequest& request)
{
    if (isOpen() && !m_distrusted) {
        return {};
    }
    close();
    SANE_Handle handle = nullptr;
    const SANE_Status status = m_api.open(request.key.c_str(), &handle);
    if (status == SANE_STATUS_INVAL) { // of sane_open: there is no such device (now)
        return { kDeviceNotFound, "sane_open: " + request.key + " is not there" };
    }
    if (status != SANE_STATUS_GOOD) {
        return saneFailure(status, "sane_open");
    }
    m_handle = handle;
    m_overrides = request.overrides;
    m_options = std::make_unique<SaneOptions>(m_api, m_handle);
    if (Status loaded = m_options->reload(); !loaded.ok()) {
        close();
        return loaded;
    }
    findSources(request.type);
    rememberButtons();
    return {};
}

void SaneScanner::close()
{
    m_distrusted = false;
    if (!isOpen()) {
        return;
    }
    finishBatch();
    m_options.reset();
    m_api.close(m_handle);
    m_handle = nullptr;
}

const std::string* SaneScanner::overrideOf(const std::string& key) const
{
    const auto found = std::find_if(m_overrides.begin(), m_overrides.end(),
        [&](const auto& entry) { return entry.first == key; });
    return found != m_overrides.end() ? &found->second : nullptr;
}

std::string SaneScanner::findDuplexOption() const
{
    for (const std::string_view name : kDuplexSwitches) {
        const SaneOption* option = m_options->find(name);
        if (option != nullptr && (option->type == SANE_TYPE_BOOL || !option->texts.empty())) {
            return std::string(name);
        }
    }
    return {};
}

/// The driver's word for the source: what the administrator says, else what is known. Empty: none.
std::string SaneScanner::sourceTextFor(SourceKind kind, const std::vector<std::string>& texts) const
{
    const bool flatbed = kind == SourceKind::kFlatbed;
    const bool feeder = kind == SourceKind::kFeeder;
    const std::string* const said = overrideOf(flatbed ? "source.flatbed"
            : feeder                                   ? "source.feeder"
                                                       : "source.duplex");
    const SourceWord wanted = flatbed ? SourceWord::kFlatbed
        : feeder                      ? SourceWord::kFeeder
                                      : SourceWord::kDuplex;
    const auto text = std::find_if(texts.begin(), texts.end(), [&](const std::string& candidate) {
        return said != nullptr ? candidate == *said : sourceWord(candidate) == wanted;
    });
    return text != texts.end() ? *text : "";
}

void SaneScanner::findSources(const std::string& type)
{
    m_sources.clear();
    m_plans.clear();
    logProblem(setMode(ColorMode::kGray)); // some options are active in grey only
    const SaneOption* sourceOption = m_options->findSettable("source");
    const std::vector<std::string> texts =
        sourceOption != nullptr ? sourceOption->texts : std::vector<std::string>();
    const std::string duplexOption = findDuplexOption();
    std::string feederText;
    for (const SourceKind kind :
        { SourceKind::kFlatbed, SourceKind::kFeeder, SourceKind::kDuplex }) {
        const std::string text = sourceTextFor(kind, texts);
        if (!text.empty()) {
            addSource(kind, { text, kind == SourceKind::kFeeder ? duplexOption : "", false });
            feederText = kind == SourceKind::kFeeder ? text : feederText;
        } else if (kind == SourceKind::kDuplex && !feederText.empty() && !duplexOption.empty()) {
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
    const SaneOption* dropout = m_options->findAny(kDropoutOptions);
    source.dropsColor = dropout != nullptr && dropout->settable()
        && !allowedWord(*dropout, kDropRed).empty() && !allowedWord(*dropout, kDropGreen).empty()
        && !allowedWord(*dropout, kDropBlue).empty();
    m_sources.push_back(std::move(source));
    m_plans.push_back(std::move(plan));
}

} // namespace orva
