// Words are put on the ink of a drawn line, from places that are off by up to a letter.
#include "scanlib/ocr/letter_cells.h"

#include <gtest/gtest.h>

#include <cstdlib>

using namespace orva;

namespace {

constexpr int kEm = 40;
constexpr int kTop = 100;

/// A line of words that are drawn as they would be printed, and said to stand elsewhere.
class DrawnLine
{
public:
    DrawnLine()
    {
        m_picture.width = 1400;
        m_picture.height = 300;
        m_picture.dpi = 300;
        m_picture.pixels.assign(static_cast<std::size_t>(m_picture.width) * m_picture.height, 240);
    }
    /// Chinese letters: two strokes each in a square cell, with a gap between the strokes.
    void chinese(const std::string& text, int letters, int off)
    {
        const int left = m_at + 2;
        for (int i = 0; i < letters; ++i, m_at += kEm) {
            stroke(m_at + 2, m_at + 16, 34);
            stroke(m_at + 20, m_at + 37, 34);
        }
        word(text, left, m_at - 3, off);
    }
    /// A full-width mark: a dot at the left of its cell.
    void mark(const std::string& text, int off)
    {
        stroke(m_at + 4, m_at + 10, 8);
        word(text, m_at + 4, m_at + 10, off);
        m_at += kEm;
    }
    void latin(const std::string& text, int off)
    {
        const int left = m_at;
        for (std::size_t i = 0; i < text.size(); ++i, m_at += 21) {
            stroke(m_at, m_at + 17, 24);
        }
        word(text, left, m_at - 4, off);
    }
    void blank(int pixels) { m_at += pixels; }

    /// The farthest that an end of a word stands from its ink, pixels.
    int worstAfterPlacing()
    {
        TextLine line;
        line.box = { m_words.front().box.left, kTop, m_at, kTop + kEm };
        line.baselineLeft = line.baselineRight = kTop + 36;
        line.words = m_words;
        PageText text;
        text.paragraphs.push_back({ line.box, { line } });
        placeWordsOnInk(m_picture, text);
        int worst = 0;
        const std::vector<Word>& placed = text.paragraphs[0].lines[0].words;
        for (std::size_t i = 0; i < placed.size(); ++i) {
            worst = std::max({ worst, std::abs(placed[i].box.left - m_printed[i].left),
                std::abs(placed[i].box.right - m_printed[i].right) });
        }
        return worst;
    }

private:
    void stroke(int left, int right, int height)
    {
        for (int y = kTop + 36 - height; y < kTop + 36; ++y) {
            for (int x = left; x < right; ++x) {
                m_picture.pixels[static_cast<std::size_t>(y) * m_picture.width + x] = 30;
            }
        }
    }
    void word(const std::string& text, int left, int right, int off)
    {
        m_printed.push_back({ left, kTop, right, kTop + kEm });
        m_words.push_back({ { left + off, kTop, right + off, kTop + kEm }, 90, text });
    }

    GrayPicture m_picture;
    int m_at = 60;
    std::vector<Word> m_words;
    std::vector<TextBox> m_printed;
};

} // namespace

TEST(LetterCells, wordsStandOnTheirInk)
{
    DrawnLine plain;
    DrawnLine mixed;
    for (int i = 0; i < 4; ++i) {
        plain.chinese("档案", 2, 25 - 10 * i);
        plain.chinese("整理室", 3, 30);
        plain.mark("，", -20);
        mixed.chinese("档案", 2, 20);
        mixed.blank(i % 2 == 0 ? 38 : 10); // wide as in justified lines, and narrow
        mixed.latin("order", 15);
        mixed.blank(12);
    }
    mixed.chinese("整", 1, 25);
    EXPECT_LE(plain.worstAfterPlacing(), 4);
    EXPECT_LE(mixed.worstAfterPlacing(), 6);
}

TEST(LetterCells, linesWithoutChineseOrInkStayAsTheyAre)
{
    DrawnLine latin;
    latin.latin("order", 0);
    latin.blank(14);
    latin.latin("desk", 0);
    EXPECT_EQ(latin.worstAfterPlacing(), 0);

    PageText text;
    const TextBox box { 1390, 280, 1500, 320 }; // partly beside the picture
    text.paragraphs.push_back({ box, { { box, 310, 310, { { box, 90, "档案" } } } } });
    GrayPicture empty;
    empty.width = 1400;
    empty.height = 300;
    empty.pixels.assign(static_cast<std::size_t>(empty.width) * empty.height, 255);
    placeWordsOnInk(empty, text);
    EXPECT_EQ(text.paragraphs[0].lines[0].words[0].box.left, box.left);
}
