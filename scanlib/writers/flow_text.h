// How recognised text reads on: what the formats without a picture share. No layout of pages.
#pragma once

#include "scanlib/base/page_text.h"

#include <string>
#include <string_view>
#include <vector>

namespace orva {

/// The paragraph as its author typed it, in UTF-8 without line feeds: a line that had room for the
/// first word of the next one ends there, the others go on. Wide gaps (tables) become a tab, and
/// such a line always ends. A hyphen at the end of a line stays: nobody can tell which kind it is.
std::vector<std::string> typedLines(const Paragraph& paragraph);

/// Where the words behind such gaps begin, pixels, from left to right, none twice.
std::vector<int> tabStops(const Paragraph& paragraph);

/// Whether a blank takes the place of the line end between the last word of a line and the first of
/// the next: not after a hyphen or a slash, and not between Chinese characters.
bool isBlankAtBreak(const Word& last, const Word& first);

/// Side of the em square that the line was set in, pixels; at least 1. From the width of Chinese
/// words, else from the height of Chinese characters, else from the ascent of capitals, digits or
/// small letters.
double emPixels(const TextLine& line);

/// What is no UTF-8 becomes U+FFFD.
std::u16string utf16Of(std::string_view utf8);

} // namespace orva
