// The paper sizes that a source offers, by what its largest area can hold. Shared by the drivers.
#pragma once

#include "scanlib/device/device.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

namespace orva {

inline constexpr double kMmPerInch = 25.4;

/// The device finds the size of the sheet by itself, or delivers its largest area.
inline constexpr std::string_view kPaperAuto = "自动";

struct NamedPaper
{
    std::string_view name;
    double widthMm;
    double heightMm;
};

inline constexpr std::array<NamedPaper, 7> kPapers { {
    { "A3", 297, 420 },
    { "A4", 210, 297 },
    { "A5", 148, 210 },
    { "B5", 176, 250 }, // ISO 216, as GB/T 148 has it
    { "Letter", 215.9, 279.4 },
    { "Legal", 215.9, 355.6 },
    { "名片", 90, 54 },
} };

/// Papers that fit, in the order of the table, "自动" last. Many devices stop a little short of the
/// paper that they are made for; such a paper is offered and clipped.
inline std::vector<PaperSize> papersWithin(double maxWidthMm, double maxHeightMm)
{
    constexpr double kShortfallMm = 3;
    std::vector<PaperSize> papers;
    for (const NamedPaper& paper : kPapers) {
        if (paper.widthMm <= maxWidthMm + kShortfallMm
            && paper.heightMm <= maxHeightMm + kShortfallMm) {
            papers.push_back({ std::string(paper.name), 0, 0, std::min(paper.widthMm, maxWidthMm),
                std::min(paper.heightMm, maxHeightMm) });
        }
    }
    papers.push_back({ std::string(kPaperAuto), 0, 0, maxWidthMm, maxHeightMm });
    return papers;
}

} // namespace orva
