// What is left of letters, specks, stamps and paper after an operation that leaves a page in place.
#pragma once

#include "bench/truth/scan_page.h"

#include <functional>

namespace truth {

/// Good ones of all that were looked at.
struct Share
{
    long good = 0;
    long all = 0;

    void count(bool isGood)
    {
        good += isGood ? 1 : 0;
        ++all;
    }
    Share& operator+=(const Share& other)
    {
        good += other.good;
        all += other.all;
        return *this;
    }
    double value() const
    {
        return all == 0 ? 0 : static_cast<double>(good) / static_cast<double>(all);
    }
};

using LetterFilter = std::function<bool(QChar letter, const QRectF& box)>;

/// Letters that are still dark (luminance below 140 somewhere in their box), of those that were
/// before. `toBefore` and `toAfter` lead from page pixels to those of the pages.
Share lettersKept(const orva::Page& before, const QTransform& toBefore, const orva::Page& after,
    const QTransform& toAfter, const PageTruth& truth, const LetterFilter& filter);
/// Full stops, commas and their kind, Chinese and Latin.
bool isSmallMark(QChar letter, const QRectF& box);

/// Specks that are as light as the paper around them, but for 60 levels; of those that do not lie
/// on print.
Share specksGone(const orva::Page& after, const QImage& ink, const PageTruth& truth);
/// Holes whose mean differs from the paper around them by at most 12 levels.
Share holesFilled(const orva::Page& after, const PageTruth& truth);
/// Pixels of the stamp, clear of print, that are as light as the paper, but for 40 levels.
Share stampGone(
    const orva::Page& after, const QImage& ink, const QImage& stamp, const PageTruth& truth);
/// Samples of unprinted paper that are lighter than `level`; a millimetre or more from any print,
/// stamp, hole and edge.
Share paperAbove(int level, const orva::Page& after, const QImage& ink, const PageTruth& truth);
/// Agreement of black pixels with the print: 2 hits / (2 hits + misses + false ones).
double inkAgreement(const orva::Page& after, const QImage& ink, const PageTruth& truth);

} // namespace truth
