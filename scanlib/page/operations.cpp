// The order of the operations. Each takes the pages of the group as the ones before it left them.
#include "scanlib/page/operations.h"

#include "scanlib/page/ops/color_conversion.h"
#include "scanlib/page/ops/rotate.h"
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

constexpr Operation kOperations[] = {
    { "tone",
        [](const ImageSettings& s) {
            return !s.autoLevel && (s.brightness != 0 || s.contrast != 0 || s.gamma != 1.0);
        },
        [](PageGroup& group, const ImageSettings& s) {
            const ToneTable table = toneTable(s.brightness, s.contrast, s.gamma);
            forEachPage(group, [&](Page& page) { applyTone(page, table); });
        } },
    { "rotate", [](const ImageSettings& s) { return s.rotate != RotateAngle::kNone; },
        [](PageGroup& group, const ImageSettings& s) {
            forEachPage(group, [&](Page& page) { rotate(page, s.rotate); });
        } },
    { "grey", [](const ImageSettings& s) { return s.mode == ColorMode::kGray; },
        [](PageGroup& group, const ImageSettings&) { forEachPage(group, toGray); } },
    { "threshold", [](const ImageSettings& s) { return s.mode == ColorMode::kBlackWhite; },
        [](PageGroup& group, const ImageSettings& s) {
            forEachPage(group, [&](Page& page) { toBlackWhite(page, s.threshold); });
        } },
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
