// What text recognition found on a page: paragraphs in reading order, down to words with their
// places. Also the form in which it waits in the spool. No recognition here, and no layout.
#pragma once

#include "scanlib/base/status.h"

#include <string>
#include <vector>

namespace orva {

/// Pixels of the page as it is written to the file, from its top left; right and bottom lie
/// outside.
struct TextBox
{
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;

    int width() const { return right - left; }
    int height() const { return bottom - top; }
};

struct Word
{
    TextBox box;
    double confidence = 0; ///< percent, 0..100
    std::string text; ///< UTF-8, without blanks, never empty
};

struct TextLine
{
    TextBox box;
    int baselineLeft = 0; ///< y of the base line at the left end of the box, pixels
    int baselineRight = 0; ///< y of the base line at the right end
    std::vector<Word> words; ///< in reading order
};

struct Paragraph
{
    TextBox box;
    std::vector<TextLine> lines; ///< in reading order
};

struct PageText
{
    std::vector<Paragraph> paragraphs; ///< in reading order
};

/// The words of a line as a reader would type them: a blank between two words, unless both sides of
/// the gap are Chinese (CJK writes without blanks).
std::string lineText(const TextLine& line);

/// Han letters with their punctuation and full-width forms, Kana; not Hangul, which has blanks.
bool isCjk(char32_t letter);

/// true when a blank stands between two words that follow each other on a line.
bool isBlankBetween(const Word& before, const Word& after);

/// One record a line: P (paragraph), L (line), W (word), each with its box; for the spool.
std::string serialised(const PageText& text);
/// The other way. kDamagedPage when the text is not what serialised() makes.
Status parsePageText(const std::string& serialisedText, PageText& out);

} // namespace orva
