// Recognised pages made by hand: words at known places, 40 pixels high at 200 dpi.
#pragma once

#include "scanlib/base/page_text.h"

#include <algorithm>
#include <string>
#include <vector>

namespace orva {

inline constexpr int kWordHeight = 37; // of an em of 40
inline constexpr int kLinePitch = 60;

struct PlacedWord
{
    int left;
    std::string text;
};

/// Chinese characters are an em wide, others half of it.
inline int widthOf(const std::string& text)
{
    int width = 0;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        width += byte >= 0xE0 ? 40 : byte < 0x80 ? 20 : 0;
    }
    return width;
}

inline void include(TextBox& box, const TextBox& other)
{
    const bool first = box.right == 0;
    box.left = first ? other.left : std::min(box.left, other.left);
    box.top = first ? other.top : std::min(box.top, other.top);
    box.right = std::max(box.right, other.right);
    box.bottom = std::max(box.bottom, other.bottom);
}

/// `rise`: how much lower the text lies for each 1,000 pixels to the right.
inline void addParagraph(
    PageText& page, int top, const std::vector<std::vector<PlacedWord>>& lines, int rise = 0)
{
    Paragraph& paragraph = page.paragraphs.emplace_back();
    for (const auto& words : lines) {
        TextLine& line = paragraph.lines.emplace_back();
        for (const PlacedWord& word : words) {
            const int y = top + word.left * rise / 1000;
            line.words.push_back(
                { { word.left, y, word.left + widthOf(word.text), y + kWordHeight }, 90,
                    word.text });
            include(line.box, line.words.back().box);
        }
        const int foot = top + kWordHeight - 5;
        line.baselineLeft = foot + line.box.left * rise / 1000;
        line.baselineRight = foot + line.box.right * rise / 1000;
        include(paragraph.box, line.box);
        top += kLinePitch;
    }
}

} // namespace orva
