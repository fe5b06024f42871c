// Recognised text laid straight and put into rows: what the search for tables begins with.
#pragma once

#include "scanlib/base/page_text.h"

#include <string>
#include <vector>

namespace orva {

/// Words of a row without a gap as wide as between cells.
struct RowPart
{
    int left = 0; ///< pixels, as are all places
    int right = 0;
    std::vector<const Word*> words; ///< from left to right
};

struct TextRow
{
    double baseline = 0;
    double em = 1; ///< em square of the largest print in it
    std::vector<const TextLine*> lines;
    std::vector<RowPart> parts;
};

/// How far the lines run downhill, as a tangent; 0 without text.
double textSlope(const PageText& text);

/// The page turned by that slope: lines run level, and what stands in one column of the paper has
/// the same x. Boxes of words keep their size; places may be negative.
PageText straightened(const PageText& text, double slope);

/// Boxes of lines and paragraphs that just hold their words; those of a tilted line are higher.
void fitBoxes(PageText& text);

/// Of straight text, from top to bottom. Points into the text.
std::vector<TextRow> rowsOf(const PageText& straight);

/// Words from left to right, cut where a gap is wider.
std::vector<RowPart> partsOf(std::vector<const Word*> words, double gap);

std::string textOf(const std::vector<const Word*>& words);

} // namespace orva
