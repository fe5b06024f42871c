// The text of a book that Debian packages ship as XHTML made from DocBook, as blocks in reading
// order.
#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

namespace truth {

struct Block
{
    enum class Kind
    {
        kHeading,
        kParagraph,
        kItem, ///< of a list
        kTable
    };

    Kind kind = Kind::kParagraph;
    QString text; ///< without line breaks; empty for a table
    QVector<QStringList> rows; ///< of a table, the heading row first
};

/// Navigation, contents, code samples and footnotes are left out. Throws std::runtime_error when
/// the file is missing or no XML.
QVector<Block> readDocument(const QString& file);

} // namespace truth
