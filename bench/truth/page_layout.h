// Sets blocks of text as an A4 page at 300 dpi and notes where every letter went.
#pragma once

#include "bench/truth/documents.h"
#include "bench/truth/truth_record.h"

#include <QImage>

namespace truth {

struct LayoutWish
{
    QString language; ///< "zh" or "en"
    QString layout; ///< as PageTruth::layout
    double points = 10.5; ///< size of the body text
    bool sans = false;
};

struct PrintedPage
{
    QImage ink; ///< grey: text and rules, black on white
    QVector<Line> lines;
    QVector<QStringList> table;
    QVector<Word> tableWords;
    QVector<QRectF> photos; ///< room left for them, in page pixels
};

/// Starts with the block of that number and stops where the page is full. A table page starts with
/// the next table of three or four columns. Needs a QGuiApplication.
PrintedPage printPage(const QVector<Block>& blocks, int start, const LayoutWish& wish);

} // namespace truth
