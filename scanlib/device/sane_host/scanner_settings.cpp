// Settings of a job, in the order in which drivers want them.
#include "scanlib/device/papers.h"
#include "scanlib/device/sane_host/sane_scanner.h"

#include <algorithm>

namespace orva {

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

/// Sensors for double feeds, and what else stops the device before paper is damaged. Names and
/// types differ; "double-feed" is a sensor with some drivers and cannot be set there.
void SaneScanner::setGuards(bool detect)
{
    for (const std::string_view name : kPaperGuards) {
        const SaneOption* option = m_options->findSettable(name);
        if (option == nullptr) {
            continue;
        }
        if (option->type == SANE_TYPE_BOOL) {
            logProblem(m_options->setNumber(option->name, detect ? 1 : 0));
        } else if (option->type == SANE_TYPE_STRING) {
            const std::string word = allowedWord(*option, detect ? kGuardOn : kGuardOff);
            if (!word.empty()) {
                logProblem(m_options->setText(option->name, word));
            }
        }
    }
}

/// A colour that is to be left out must be: the page would keep what the operator wanted gone.
Status SaneScanner::setDropout(ColorDropout dropout)
{
    const Words& words = dropout == ColorDropout::kRed ? kDropRed
        : dropout == ColorDropout::kGreen              ? kDropGreen
        : dropout == ColorDropout::kBlue               ? kDropBlue
                                                       : kDropNone;
    bool set = false;
    for (const std::string_view name : kDropoutOptions) { // both sides have one each, maybe
        const SaneOption* option = m_options->findSettable(name);
        const std::string word = option != nullptr ? allowedWord(*option, words) : "";
        if (word.empty()) {
            continue;
        }
        if (Status status = m_options->setText(std::string(name), word); !status.ok()) {
            return status;
        }
        set = true;
    }
    return set || dropout == ColorDropout::kNone
        ? Status()
        : Status(kDeviceBadParameter, "the device does not drop this colour");
}

Status SaneScanner::configure(const AcquireSettings& settings, unsigned batch)
{
    m_batch.store(batch);
    if (!isOpen()) {
        return { kNotInitialised, "not open" };
    }
    Status status = apply(settings);
    if (status.code() == kDeviceIo) {
        m_distrusted = true;
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
    setGuards(settings.detectDoubleFeed);
    if (Status status = setDropout(settings.dropout); !status.ok()) {
        return status;
    }
    m_settings = settings;
    m_configured = true;
    m_sides = 0;
    return {};
}

} // namespace orva
