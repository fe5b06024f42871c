// Quality of recognised text over a truth set: characters, places of words, table cells. Reads what
// independent programs took out of the files, so that any recogniser can be measured alike.
#pragma once

#include <QString>

#include <string>

namespace truth {

/// `boxFile` is what `pdftotext -raw -bbox` says of a document that holds the pages of the set in
/// their order, each picture with its top left corner where the scan has it. Prints a Markdown
/// table: character error rate by language and layout, distance of word boxes. Throws
/// std::runtime_error.
///
/// Both texts are brought to Unicode form NFKC with plain quotation marks and dashes; white space
/// is left out, since recognisers put blanks between Chinese characters as they like. Word boxes
/// are compared only when `placesAsScanned`: when nothing turned or cut the pages.
void measureText(const QString& folder, const QString& boxFile, bool placesAsScanned);

/// `textFile` is what `pdftotext -raw` says of the same document: what a user copies, page by page.
/// Prints a Markdown table by language: character error rate with the blanks between words, each
/// run of white space as one, and word error rate where words have blanks.
void measureBlanks(const QString& folder, const QString& textFile);

/// `csvFolder` holds NAME.csv for each table page (as LibreOffice makes it of the xls file). Prints
/// how many of the true cells stand somewhere in the file, and how many in their row and column.
void measureCells(const QString& folder, const QString& csvFolder);

} // namespace truth
