#include "scanlib/writers/text_rows.h"

#include "scanlib/writers/flow_text.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace orva {

namespace {

constexpr double kCellGap =
    0.9; ///< em squares, at least between two cells; justified text has less
constexpr double kRowShare = 0.4; ///< of the lower line: base lines of one row differ by less

/// A turn about the page's top left corner.
class Turn
{
public:
    explicit Turn(double slope)
        : m_cos(1 / std::hypot(1.0, slope))
        , m_sin(slope / std::hypot(1.0, slope))
    {
    }
    double x(double x, double y) const { return m_cos * x + m_sin * y; }
    double y(double x, double y) const { return m_cos * y - m_sin * x; }
    TextBox box(const TextBox& box) const
    {
        const double middleX = (box.left + box.right) / 2.0;
        const double middleY = (box.top + box.bottom) / 2.0;
        const int left = round(x(middleX, middleY) - box.width() / 2.0);
        const int top = round(y(middleX, middleY) - box.height() / 2.0);
        return { left, top, left + box.width(), top + box.height() };
    }
    static int round(double value) { return static_cast<int>(std::lround(value)); }

private:
    double m_cos;
    double m_sin;
};

template <typename Item>
void fitBox(TextBox& box, const std::vector<Item>& items)
{
    if (items.empty()) {
        return;
    }
    box = items.front().box;
    for (const Item& item : items) {
        box = { std::min(box.left, item.box.left), std::min(box.top, item.box.top),
            std::max(box.right, item.box.right), std::max(box.bottom, item.box.bottom) };
    }
}

void finishRow(TextRow& row)
{
    std::vector<const Word*> words;
    for (const TextLine* const line : row.lines) {
        row.em = std::max(row.em, emPixels(*line));
        for (const Word& word : line->words) {
            words.push_back(&word);
        }
    }
    row.parts = partsOf(std::move(words), kCellGap * row.em);
}

} // namespace

double textSlope(const PageText& text)
{
    double rise = 0;
    double run = 0;
    for (const Paragraph& paragraph : text.paragraphs) {
        for (const TextLine& line : paragraph.lines) {
            rise += line.baselineRight - line.baselineLeft;
            run += line.box.width();
        }
    }
    return run > 0 ? rise / run : 0;
}

PageText straightened(const PageText& text, double slope)
{
    PageText straight = text;
    const Turn turn(slope);
    for (Paragraph& paragraph : straight.paragraphs) {
        for (TextLine& line : paragraph.lines) {
            const double middle = (line.box.left + line.box.right) / 2.0;
            line.baselineLeft = line.baselineRight =
                Turn::round(turn.y(middle, (line.baselineLeft + line.baselineRight) / 2.0));
            line.box = turn.box(line.box);
            for (Word& word : line.words) {
                word.box = turn.box(word.box);
            }
        }
    }
    fitBoxes(straight);
    return straight;
}

void fitBoxes(PageText& text)
{
    for (Paragraph& paragraph : text.paragraphs) {
        for (TextLine& line : paragraph.lines) {
            fitBox(line.box, line.words);
        }
        fitBox(paragraph.box, paragraph.lines);
    }
}

std::vector<TextRow> rowsOf(const PageText& straight)
{
    std::vector<const TextLine*> lines;
    for (const Paragraph& paragraph : straight.paragraphs) {
        for (const TextLine& line : paragraph.lines) {
            if (!line.words.empty()) {
                lines.push_back(&line);
            }
        }
    }
    std::stable_sort(lines.begin(), lines.end(),
        [](const TextLine* a, const TextLine* b) { return a->baselineLeft < b->baselineLeft; });
    std::vector<TextRow> rows;
    int height = 0; // of the lowest line in the row
    for (const TextLine* const line : lines) {
        const int own = std::max(1, line->box.height());
        if (rows.empty()
            || line->baselineLeft - rows.back().baseline > kRowShare * std::min(height, own)) {
            rows.emplace_back().baseline = line->baselineLeft;
            height = own;
        }
        height = std::min(height, own);
        rows.back().lines.push_back(line);
    }
    std::for_each(rows.begin(), rows.end(), finishRow);
    return rows;
}

std::vector<RowPart> partsOf(std::vector<const Word*> words, double gap)
{
    std::stable_sort(words.begin(), words.end(),
        [](const Word* a, const Word* b) { return a->box.left < b->box.left; });
    std::vector<RowPart> parts;
    for (const Word* const word : words) {
        if (parts.empty() || word->box.left - parts.back().right > gap) {
            parts.push_back({ word->box.left, word->box.right, {} });
        }
        parts.back().right = std::max(parts.back().right, word->box.right);
        parts.back().words.push_back(word);
    }
    return parts;
}

std::string textOf(const std::vector<const Word*>& words)
{
    TextLine line;
    for (const Word* const word : words) {
        line.words.push_back(*word);
    }
    return lineText(line);
}

} // namespace orva
