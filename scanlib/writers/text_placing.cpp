#include "scanlib/writers/text_placing.h"

#include <algorithm>
#include <cstddef>
#include <string>

namespace orva {

namespace {

constexpr char32_t kUnknownLetter = 0xFFFD;
/// A line that is so much higher than wide runs downwards.
constexpr double kVerticalRatio = 2;

/// What is no UTF-8, and what neither PDF nor XML can hold, becomes the unknown letter.
std::vector<char32_t> codePoints(const std::string& text)
{
    std::vector<char32_t> letters;
    for (std::size_t at = 0; at < text.size();) {
        const auto first = static_cast<unsigned char>(text[at++]);
        const int more = first >= 0xF0 ? 3 : first >= 0xE0 ? 2 : first >= 0xC0 ? 1 : 0;
        char32_t code = more == 0 ? first : first & (0x3FU >> static_cast<unsigned>(more));
        int got = 0;
        for (; got < more && at < text.size(); ++got, ++at) {
            const auto next = static_cast<unsigned char>(text[at]);
            if ((next & 0xC0U) != 0x80U) {
                break;
            }
            code = (code << 6U) | (next & 0x3FU);
        }
        const bool good = got == more && (more > 0 || first < 0x80) && code >= 0x20
            && code <= 0x10FFFF && !(code >= 0xD800 && code <= 0xDFFF)
            && (code & 0xFFFEU) != 0xFFFE;
        letters.push_back(good ? code : kUnknownLetter);
    }
    return letters;
}

double startOf(const TextBox& box, bool vertical)
{
    return vertical ? box.top : box.left;
}

double endOf(const TextBox& box, bool vertical)
{
    return vertical ? box.bottom : box.right;
}

bool isVertical(const TextLine& line)
{
    return line.words.size() > 1 && line.box.height() > line.box.width() * kVerticalRatio;
}

void placeBase(const TextLine& line, LayerLine& out)
{
    if (out.vertical) {
        out.size = std::max(1, line.box.width());
        out.base = line.box.left + kDescent * out.size;
        return;
    }
    const double width = std::max(1, line.box.width());
    out.slope = (line.baselineRight - line.baselineLeft) / width;
    out.base = line.baselineLeft - out.slope * line.box.left;
    double above = 0;
    for (const Word& word : line.words) {
        const double middle = (word.box.left + word.box.right) / 2.0;
        above = std::max(above, out.base + out.slope * middle - word.box.top);
    }
    const double height = std::max(1, line.box.height());
    out.size = std::clamp(above / kAscent, height / 2, height * 2);
}

/// Puts a run behind the last one. The models' places of Chinese words overlap now and then, and a
/// reader that sorts letters by place would mix them up: such words share the place of both.
void follow(LayerLine& line, LayerRun run, bool blank)
{
    constexpr double kLetterPart = 0.25;
    LayerRun& last = line.runs.back();
    const double gap = run.start - (last.start + last.length);
    if (gap < -kLetterPart * line.size && !blank) {
        const double end = std::max(last.start + last.length, run.start + run.length);
        last.start = std::min(last.start, run.start);
        last.length = end - last.start;
        last.letters.insert(last.letters.end(), run.letters.begin(), run.letters.end());
        return;
    }
    const bool joins = !blank && gap < line.size;
    if (gap < 0 || joins) {
        last.length = std::max(1.0, last.length + gap);
    }
    if (blank) {
        const double end = last.start + last.length;
        line.runs.push_back({ { U' ' }, end, std::max(1.0, run.start - end) });
    }
    line.runs.push_back(std::move(run));
}

} // namespace

LayerLine layerLine(const TextLine& line)
{
    LayerLine out;
    out.vertical = isVertical(line);
    placeBase(line, out);
    const Word* before = nullptr;
    for (const Word& word : line.words) {
        LayerRun run;
        run.letters = codePoints(word.text);
        run.start = startOf(word.box, out.vertical);
        run.length = std::max(1.0, endOf(word.box, out.vertical) - run.start);
        if (run.letters.empty()) {
            continue;
        }
        if (before == nullptr) {
            out.runs.push_back(std::move(run));
        } else {
            follow(out, std::move(run), isBlankBetween(*before, word));
        }
        before = &word;
    }
    return out;
}

} // namespace orva
