// What is known of a page of the truth set, and its JSON form beside the picture. All boxes are in
// page pixels (the upright sheet at 300 dpi, top left is 0, 0); pageToScan leads to the scan's.
#pragma once

#include <QPointF>
#include <QRectF>
#include <QString>
#include <QStringList>
#include <QTransform>
#include <QVector>

namespace truth {

inline constexpr int kPageWidth = 2480; ///< A4 at 300 dpi
inline constexpr int kPageHeight = 3508;
inline constexpr double kPixelsPerMm = 300 / 25.4;

/// One word as printed: its letters and, for each, the rectangle of its ink.
struct Word
{
    QString text;
    QVector<QRectF> boxes;

    QRectF box() const;
};

struct Line
{
    int paragraph = 0; ///< from 0, in reading order
    QVector<Word> words;
};

/// A circle of the sheet that the backing shows through.
struct Hole
{
    QPointF center;
    double radius = 0;
};

/// A dark square on the scan, in scan pixels.
struct Speck
{
    int x = 0;
    int y = 0;
    int size = 0;
};

struct PageTruth
{
    QString name; ///< NAME.jpg, NAME.json, NAME-ink.png; NAME-stamp.png when there is one
    QString language; ///< "zh" or "en"
    QString layout; ///< text, columns, table, photo, line or blank
    bool blank = false;
    double degrees = 0; ///< clockwise, how far the lines of print run downhill
    QString backing; ///< dark, white, noisy or none
    QTransform pageToScan;
    int scanWidth = 0;
    int scanHeight = 0;
    QVector<Line> lines; ///< in reading order, without what is in tables
    QVector<QStringList> table; ///< rows of cell texts
    QVector<Word> tableWords; ///< the words of the table, row by row
    QVector<QRectF> photos;
    QVector<Hole> holes;
    QVector<Speck> specks;
    QString stampColor; ///< empty without a stamp

    /// Every word in reading order, the table's after the lines.
    QVector<Word> words() const;
    /// The words with a blank between them and a line feed after each line.
    QString text() const;
};

/// Throws std::runtime_error when the file cannot be written or read.
void writeTruth(const PageTruth& page, const QString& folder);
PageTruth readTruth(const QString& jsonFile);
/// All pages of a folder, by name.
QVector<PageTruth> readTruthSet(const QString& folder);

} // namespace truth
