#include "scanlib/writers/text_placing.h"

#include "scanlib/base/text.h"

#include <algorithm>
#include <cstddef>
#include <string>

namespace orva {

namespace {

/// A line that is so much higher than wide runs downwards.
constexpr double kVerticalRatio = 2;

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
