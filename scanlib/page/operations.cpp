// The order of the operations. Each takes the pages of the group as the ones before it left them.
#include "scanlib/page/operations.h"

#include "scanlib/base/library_log.h"
#include "scanlib/page/ops/arrange.h"
#include "scanlib/page/ops/blank.h"
#include "scanlib/page/ops/color_conversion.h"
#include "scanlib/page/ops/denoise.h"
#include "scanlib/page/ops/deskew.h"
#include "scanlib/page/ops/dropout.h"
#include "scanlib/page/ops/holes.h"
#include "scanlib/page/ops/rotate.h"
#include "scanlib/page/ops/threshold.h"
#include "scanlib/page/ops/tone.h"

#include <algorithm>
#include <limits>
#include <new>

namespace orva {

namespace {

struct Operation
{
    const char* name; ///< for the library's log
    bool (*wanted)(const ImageSettings& settings);
    void (*run)(PageGroup& group, const ImageSettings& settings);
};

template <typename Change>
void forEachPage(PageGroup& group, Change change)
{
    for (Page& page : group) {
        change(page);
    }
}

bool staysInColor(const ImageSettings& settings)
{
    return settings.mode == ColorMode::kColor || settings.mode == ColorMode::kMultiStream;
}

Direction directionOf(int code)
{
    return code == 1 ? Direction::kTopBottom : Direction::kLeftRight;
}

/// Front before back; a side that came alone stays as it is.
void mergeSides(PageGroup& group, const ImageSettings& settings)
{
    if (group.size() != 2) {
        return;
    }
    std::sort(group.begin(), group.end(), [](const Page& a, const Page& b) {
        return a.side == Side::kFront && b.side == Side::kBack;
    });
    Page sheet = merged(std::move(group[0]), std::move(group[1]), directionOf(settings.merge));
    group.clear();
    group.push_back(std::move(sheet));
}

void splitPages(PageGroup& group, const ImageSettings& settings)
{
    const Direction direction = directionOf(settings.split);
    PageGroup result;
    for (Page& page : group) {
        if ((direction == Direction::kTopBottom ? page.height : page.width) < 2) {
            result.push_back(std::move(page));
            continue;
        }
        auto [first, second] = halves(page, direction);
        result.push_back(std::move(first));
        result.push_back(std::move(second));
    }
    group = std::move(result);
}

/// Says in the log what went and why: a page that is missed must be explainable.
void dropBlankPages(PageGroup& group, const ImageSettings& settings)
{
    const double limit = blankLimit(settings.blankThreshold);
    const auto isBlank = [limit](const Page& page) {
        const double ink = inkOn(page);
        const bool blank = ink <= limit;
        libraryLog("side %d (sheet %d, %s): %.2f mm2 of ink, %s at %.2f", page.number, page.sheet,
            page.side == Side::kFront ? "front" : "back", ink, blank ? "dropped as blank" : "kept",
            limit);
        return blank;
    };
    group.erase(std::remove_if(group.begin(), group.end(), isBlank), group.end());
}

void changeTones(PageGroup& group, const ImageSettings& settings)
{
    ToneRequest request;
    request.removeBackground = settings.removeBackground;
    request.autoLevels = settings.autoLevel;
    request.brightness = settings.brightness;
    request.contrast = settings.contrast;
    request.gamma = settings.gamma;
    forEachPage(group, [&](Page& page) { applyTones(page, request); });
}

void cutAtThreshold(Page& page, const ImageSettings& settings)
{
    if (settings.document == DocumentType::kText) {
        toBlackWhiteByPaper(page, settings.threshold);
    } else {
        toBlackWhite(page, settings.threshold);
    }
}

/// Every page in colour, grey and black-and-white.
void makeStreams(PageGroup& group, const ImageSettings& settings)
{
    PageGroup result;
    for (Page& page : group) {
        Page gray = page;
        toGray(gray);
        Page bits = gray;
        cutAtThreshold(bits, settings);
        page.stream = kColorStream;
        gray.stream = kGrayStream;
        bits.stream = kBlackWhiteStream;
        result.push_back(std::move(page));
        result.push_back(std::move(gray));
        result.push_back(std::move(bits));
    }
    group = std::move(result);
}

// Noise goes first, while it is still single pixels. What looks at the picture comes before what
// changes its tones; what changes the tones works in colour until grey is enough; pages are turned
// before they are put together or cut, since that is meant as the reader sees them.
constexpr Operation kOperations[] = {
    { "denoise", [](const ImageSettings& s) { return s.denoise != Denoise::kOff; },
        [](PageGroup& group, const ImageSettings& s) {
            forEachPage(group, [&](Page& page) { denoise(page, s.denoise); });
        } },
    { "crop and deskew", [](const ImageSettings& s) { return s.autoCropDeskew; },
        [](PageGroup& group, const ImageSettings&) { forEachPage(group, cropAndDeskew); } },
    { "holes", [](const ImageSettings& s) { return s.removeHoles; },
        [](PageGroup& group, const ImageSettings&) { forEachPage(group, removeHoles); } },
    { "blank", [](const ImageSettings& s) { return s.removeBlank; }, dropBlankPages },
    { "dropout", [](const ImageSettings& s) { return s.dropout != ColorDropout::kNone; },
        [](PageGroup& group, const ImageSettings& s) {
            forEachPage(group, [&](Page& page) {
                dropColor(page, s.dropout, s.reinforcedDropout, staysInColor(s));
            });
        } },
    { "grey",
        [](const ImageSettings& s) {
            return s.mode == ColorMode::kGray || s.mode == ColorMode::kBlackWhite;
        },
        [](PageGroup& group, const ImageSettings& s) {
            forEachPage(group, [&](Page& page) {
                // A page that is black-and-white already needs no detour on its way there.
                if (page.format == PixelFormat::kRgb || s.mode == ColorMode::kGray) {
                    toGray(page);
                }
            });
        } },
    { "tones",
        [](const ImageSettings& s) {
            return s.removeBackground || s.autoLevel || s.brightness != 0 || s.contrast != 0
                || s.gamma != 1.0;
        },
        changeTones },
    { "threshold", [](const ImageSettings& s) { return s.mode == ColorMode::kBlackWhite; },
        [](PageGroup& group, const ImageSettings& s) {
            forEachPage(group, [&](Page& page) { cutAtThreshold(page, s); });
        } },
    { "rotate", [](const ImageSettings& s) { return s.rotate != RotateAngle::kNone; },
        [](PageGroup& group, const ImageSettings& s) {
            forEachPage(group, [&](Page& page) { rotate(page, s.rotate); });
        } },
    { "text orientation", // behind the fixed turn, so that text ends upright whatever that was
        [](const ImageSettings& s) {
            return s.textOrientation != TextOrientation::kOff && s.uprightTurn;
        },
        [](PageGroup& group, const ImageSettings& s) {
            forEachPage(group, [&](Page& page) { rotate(page, s.uprightTurn(page)); });
        } },
    { "merge", [](const ImageSettings& s) { return s.merge != 0; }, mergeSides },
    { "split", [](const ImageSettings& s) { return s.split != 0; }, splitPages },
    { "streams", [](const ImageSettings& s) { return s.mode == ColorMode::kMultiStream; },
        makeStreams },
};

/// The operations rely on what a page promises of itself.
Status check(const Page& page)
{
    if (page.width <= 0 || page.height <= 0) {
        return { kDamagedPage, "page without pixels" };
    }
    const std::size_t stride = page.stride();
    if (stride
        > std::numeric_limits<std::ptrdiff_t>::max() / static_cast<std::size_t>(page.height)) {
        return { kPageTooLarge, "page larger than memory can be" };
    }
    if (page.pixels.size() != stride * static_cast<std::size_t>(page.height)) {
        return { kDamagedPage, "page with missing or surplus rows" };
    }
    return {};
}

} // namespace

bool needsWholeSheet(const ImageSettings& settings)
{
    return settings.merge != 0;
}

Status runOperations(PageGroup& group, const ImageSettings& settings)
{
    for (const Page& page : group) {
        if (Status status = check(page); !status.ok()) {
            return status;
        }
    }
    try {
        for (const Operation& operation : kOperations) {
            if (operation.wanted(settings)) {
                operation.run(group, settings);
            }
        }
    } catch (const std::bad_alloc&) {
        return { kNoMemory, "no memory for the page" };
    }
    return {};
}

} // namespace orva
