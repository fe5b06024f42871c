#include "scanlib/ocr/orientation.h"

#include <algorithm>
#include <array>

namespace orva {

namespace {

/// Over 38 degraded pages in four turns no guess from here on was wrong (the surest wrong one had
/// 0.85), and pages of text mostly get there.
constexpr double kSureConfidence = 1.0;
/// Characters of print keep their shapes down to this.
constexpr int kReducedDpi = 150;
/// The fast mode's part of the page, from the middle.
constexpr double kFastPart = 0.6;
/// What is read for a comparison: enough lines to tell, not more.
constexpr double kReadPart = 0.4;
/// By how much the best turn must read better than the second.
constexpr double kClearlyBetter = 1.15;

TextBox middleOf(const Page& page, double part)
{
    const auto width = static_cast<int>(page.width * part);
    const auto height = static_cast<int>(page.height * part);
    const int left = (page.width - width) / 2;
    const int top = (page.height - height) / 2;
    return { left, top, left + width, top + height };
}

/// Letters of a word: its characters.
auto letterCount(const Word& word)
{
    return std::count_if(word.text.begin(), word.text.end(),
        [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; });
}

/// How much was read, and how surely: letters count by their confidence, poor ones not at all.
double scoreOf(const PageText& text)
{
    constexpr double kPoor = 60;
    double score = 0;
    for (const Paragraph& paragraph : text.paragraphs) {
        for (const TextLine& line : paragraph.lines) {
            for (const Word& word : line.words) {
                score += word.confidence > kPoor
                    ? (word.confidence - kPoor) * static_cast<double>(letterCount(word))
                    : 0;
            }
        }
    }
    return score;
}

} // namespace

bool isSure(const OrientationGuess& guess)
{
    return guess.confidence >= kSureConfidence;
}

OrientationGuess guessOrientation(
    const Page& page, TextOrientation mode, TextEngine& engine, GrayPicture& picture)
{
    if (mode == TextOrientation::kFast) {
        const int reduction = std::max(1, static_cast<int>(page.dpiY / kReducedDpi));
        takeGray(page, middleOf(page, kFastPart), reduction, picture);
    } else {
        takeGray(page, wholePage(page), 1, picture);
    }
    return picture.pixels.empty() ? OrientationGuess() : engine.guessOrientation(picture);
}

Status readTurns(const Page& page, TextEngine& engine, GrayPicture& picture, const StopWish& stop,
    RotateAngle& out)
{
    constexpr std::array kTurns { RotateAngle::kNone, RotateAngle::kRight90, RotateAngle::k180,
        RotateAngle::kLeft90 };
    out = RotateAngle::kNone;
    takeGray(page, middleOf(page, kReadPart), 1, picture);
    double best = 0;
    double second = 0;
    RotateAngle bestTurn = RotateAngle::kNone;
    for (const RotateAngle turn : kTurns) {
        PageText text;
        if (Status status = engine.read(picture, stop, text); !status.ok()) {
            return status;
        }
        const double score = scoreOf(text);
        if (score > best) {
            second = best;
            best = score;
            bestTurn = turn;
        } else {
            second = std::max(second, score);
        }
        turnRight(picture);
    }
    if (best > second * kClearlyBetter) {
        out = bestTurn;
    }
    return {};
}

} // namespace orva
