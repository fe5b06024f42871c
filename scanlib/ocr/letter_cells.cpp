#include "scanlib/ocr/letter_cells.h"

#include "scanlib/base/text.h"
#include "scanlib/ocr/cell_borders.h"
#include "scanlib/ocr/ink_profile.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

namespace orva {

namespace {

constexpr double kNewPart = 1.5; // heights of the line: a gap between words that divides it
constexpr int kLeastHeight = 8; // pixels of a line: letters below have no shape

bool isFullWidthMark(char32_t letter)
{
    return (letter >= 0x3000 && letter <= 0x303F) || (letter >= 0xFF00 && letter <= 0xFF65)
        || (letter >= 0xFE30 && letter <= 0xFE4F);
}

Cell cellOf(char32_t letter)
{
    if (isFullWidthMark(letter)) {
        return { 1, 0.2, true };
    }
    if (isCjk(letter)) {
        return { 1, 0.08 };
    }
    const auto isOneOf = [letter](const char* letters) {
        return letter < 0x80
            && std::char_traits<char>::find(
                   letters, std::char_traits<char>::length(letters), static_cast<char>(letter))
            != nullptr;
    };
    if (isOneOf("ijl.,:;'|!()[]ftrI")) {
        return { 0.32, 0.12 };
    }
    if (isOneOf("mwMW@%")) {
        return { 0.82, 0.15 };
    }
    if (letter == 0x201C || letter == 0x201D || letter == 0x2018 || letter == 0x2019) {
        return { 0.6, 0.35, true };
    }
    return { letter >= 'A' && letter <= 'Z' ? 0.66 : 0.54, 0.12 };
}

/// The words of a line that follow each other without a wide gap.
struct Part
{
    std::vector<Word>::iterator begin;
    std::vector<Word>::iterator end;
};

std::vector<Part> partsOf(TextLine& line)
{
    std::vector<Part> parts;
    for (auto word = line.words.begin(); word != line.words.end(); ++word) {
        const bool divided =
            parts.empty() || word->box.left - (word - 1)->box.right > kNewPart * line.box.height();
        if (divided) {
            parts.push_back({ word, word + 1 });
        }
        parts.back().end = word + 1;
    }
    return parts;
}

std::vector<Cell> cellsOf(const Part& part)
{
    std::vector<Cell> cells;
    for (auto word = part.begin; word != part.end; ++word) {
        if (word != part.begin && isBlankBetween(*(word - 1), *word)) {
            cells.push_back({ 0.25, 0.35, false, true, static_cast<double>(word->box.left) });
        }
        const std::size_t first = cells.size();
        double total = 0;
        for (const char32_t letter : codePoints(word->text)) {
            cells.push_back(cellOf(letter));
            total += cells.back().width;
        }
        double done = 0;
        for (std::size_t i = first; i < cells.size(); ++i) {
            done += cells[i].width;
            cells[i].expected = word->box.left + word->box.width() * done / total;
        }
        cells.back().endsWord = true;
    }
    return cells;
}

void placePart(const GrayPicture& picture, const TextLine& line, const Part& part)
{
    const std::vector<Cell> cells = cellsOf(part);
    const auto chinese = std::count_if(
        cells.begin(), cells.end(), [](const Cell& cell) { return cell.width >= 1 && !cell.mark; });
    if (chinese < 2) {
        return;
    }
    const int height = line.box.height();
    const int around = height * 2 / 3; // what the recogniser is off at most
    const InkProfile ink = inkProfileOf(
        picture, line, part.begin->box.left - around, (part.end - 1)->box.right + around);
    const std::vector<int> borders = cellBorders(ink, cells, height);
    if (borders.empty()) {
        return;
    }
    std::size_t cell = 0;
    for (auto word = part.begin; word != part.end; ++word) {
        if (word != part.begin && isBlankBetween(*(word - 1), *word)) {
            ++cell;
        }
        word->box.left = ink.inkFrom(borders[cell]);
        while (!cells[cell].endsWord) {
            ++cell;
        }
        ++cell;
        word->box.right = std::max(word->box.left + 1, ink.inkUntil(borders[cell]));
    }
}

} // namespace

void placeWordsOnInk(const GrayPicture& picture, PageText& text)
{
    for (Paragraph& paragraph : text.paragraphs) {
        for (TextLine& line : paragraph.lines) {
            const int height = line.box.height();
            if (height >= kLeastHeight && height < 2 * line.box.width()) {
                for (const Part& part : partsOf(line)) {
                    placePart(picture, line, part);
                }
            }
        }
    }
}

} // namespace orva
