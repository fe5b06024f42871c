#include "scanlib/writers/flow_text.h"

#include "scanlib/base/text.h"

#include <algorithm>
#include <cstdint>

namespace orva {

namespace {

// Parts of the em square, as common text fonts have them.
constexpr double kCjkHeight = 0.92;
constexpr double kCjkGap = 0.08; // beside the ink of a letter
constexpr double kCapitalAscent = 0.72;
constexpr double kSmallAscent = 0.5;
/// Wider gaps than this stand between columns, not between words.
constexpr double kColumnGapEm = 2.0;

bool isIdeograph(char32_t c)
{
    return c >= 0x4E00 && c <= 0x9FFF;
}

bool isTall(char32_t c)
{
    constexpr std::string_view kAscenders = "bdfhijklt";
    return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9')
        || (c < 0x80 && kAscenders.find(static_cast<char>(c)) != std::string_view::npos);
}

bool isColumnGap(const Word& before, const Word& after, double em)
{
    return after.box.left - before.box.right > kColumnGapEm * em;
}

std::string textWithTabs(const TextLine& line, bool& hasTabs)
{
    const double em = emPixels(line);
    std::string text;
    for (std::size_t i = 0; i < line.words.size(); ++i) {
        if (i > 0) {
            const Word& before = line.words[i - 1];
            const bool gap = isColumnGap(before, line.words[i], em);
            hasTabs = hasTabs || gap;
            text += gap ? "\t" : isBlankBetween(before, line.words[i]) ? " " : "";
        }
        text += line.words[i].text;
    }
    return text;
}

/// Whether the line is full: the next one's first word found no room on it.
bool goesOn(const TextLine& line, const TextLine& next, int rightEdge)
{
    return rightEdge - line.box.right < next.words.front().box.width() + emPixels(line);
}

} // namespace

bool isBlankAtBreak(const Word& last, const Word& first)
{
    return isBlankBetween(last, first) && last.text.back() != '-' && last.text.back() != '/';
}

double emPixels(const TextLine& line)
{
    bool tall = false;
    bool hasCjk = false;
    std::vector<double> squares; // as words of ideographs tell them
    std::vector<double> single; // words of one, which may be a narrow one
    for (const Word& word : line.words) {
        const std::vector<char32_t> letters = codePoints(word.text);
        hasCjk = hasCjk || std::any_of(letters.begin(), letters.end(), isCjk);
        tall = tall || std::any_of(letters.begin(), letters.end(), isTall);
        // Side by side they tell their size better than by their height, which a bracket raises.
        if (std::all_of(letters.begin(), letters.end(), isIdeograph)) {
            const double count = std::max(1.0, static_cast<double>(letters.size()));
            (count > 1 ? squares : single).push_back(word.box.width() / (count - kCjkGap));
        }
    }
    squares = squares.empty() ? single : squares;
    if (hasCjk) {
        double em = line.box.height() / kCjkHeight;
        if (!squares.empty()) {
            const auto middle = squares.begin() + static_cast<std::ptrdiff_t>(squares.size() / 2);
            std::nth_element(squares.begin(), middle, squares.end());
            em = std::min(em, *middle);
        }
        return std::max(1.0, em);
    }
    const double baseline = (line.baselineLeft + line.baselineRight) / 2.0;
    return std::max(1.0, (baseline - line.box.top) / (tall ? kCapitalAscent : kSmallAscent));
}

std::vector<std::string> typedLines(const Paragraph& paragraph)
{
    int rightEdge = 0;
    for (const TextLine& line : paragraph.lines) {
        rightEdge = std::max(rightEdge, line.box.right);
    }
    std::vector<std::string> typed;
    const TextLine* before = nullptr; // whose text the line goes on with
    for (const TextLine& line : paragraph.lines) {
        if (line.words.empty()) {
            continue;
        }
        bool hasTabs = false;
        std::string text = textWithTabs(line, hasTabs);
        if (before != nullptr && !hasTabs && goesOn(*before, line, rightEdge)) {
            const bool blank = isBlankAtBreak(before->words.back(), line.words.front());
            typed.back() += (blank ? " " : "") + text;
        } else {
            typed.push_back(std::move(text));
        }
        before = hasTabs ? nullptr : &line;
    }
    return typed;
}

std::vector<int> tabStops(const Paragraph& paragraph)
{
    std::vector<int> stops;
    for (const TextLine& line : paragraph.lines) {
        const double em = emPixels(line);
        for (std::size_t i = 1; i < line.words.size(); ++i) {
            if (isColumnGap(line.words[i - 1], line.words[i], em)) {
                stops.push_back(line.words[i].box.left);
            }
        }
    }
    std::sort(stops.begin(), stops.end());
    stops.erase(std::unique(stops.begin(), stops.end()), stops.end());
    return stops;
}

std::u16string utf16Of(std::string_view utf8)
{
    std::u16string units;
    for (std::size_t at = 0; at < utf8.size();) {
        const char32_t c = nextLetter(utf8, at);
        if (c < 0x10000) {
            units += static_cast<char16_t>(c);
        } else {
            units += static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10U));
            units += static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FFU));
        }
    }
    return units;
}

} // namespace orva
