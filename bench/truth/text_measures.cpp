#include "bench/truth/text_measures.h"

#include "bench/truth/alignment.h"
#include "bench/truth/truth_record.h"

#include <QFile>
#include <QHash>
#include <QSet>
#include <QTextStream>
#include <QXmlStreamReader>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <stdexcept>

namespace truth {

namespace {

struct FoundWord
{
    QString text;
    QRectF box; ///< scan pixels
};

using FoundPage = QVector<FoundWord>;

QVector<FoundPage> readBoxes(const QString& fileName)
{
    constexpr double kPixelsPerPoint = 300.0 / 72;
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        throw std::runtime_error("cannot read " + fileName.toStdString());
    }
    QVector<FoundPage> pages;
    QXmlStreamReader xml(&file);
    while (!xml.atEnd()) {
        xml.readNext();
        if (xml.isStartElement() && xml.name() == "page") {
            pages.append(FoundPage());
        } else if (xml.isStartElement() && xml.name() == "word") {
            const QXmlStreamAttributes a = xml.attributes();
            const auto number = [&a](const char* name) {
                return a.value(QLatin1String(name)).toDouble() * kPixelsPerPoint;
            };
            const QRectF box(
                QPointF(number("xMin"), number("yMin")), QPointF(number("xMax"), number("yMax")));
            pages.last().append({ xml.readElementText(), box });
        }
    }
    if (xml.hasError()) {
        throw std::runtime_error(fileName.toStdString() + ": " + xml.errorString().toStdString());
    }
    return pages;
}

/// The text of a page without its blanks, and for each character where it is printed on the scan.
struct Letters
{
    QString text;
    QVector<QRectF> boxes;
    QVector<int> line;
};

Letters lettersOf(const PageTruth& page)
{
    Letters letters;
    int line = 0;
    const auto add = [&](const Word& word) {
        for (int i = 0; i < word.text.size(); ++i) {
            const QString plain = normalised(word.text.mid(i, 1));
            letters.text += plain;
            for (int copies = 0; copies < plain.size(); ++copies) {
                letters.boxes.append(page.pageToScan.mapRect(word.boxes[i]));
                letters.line.append(line);
            }
        }
    };
    for (const Line& printed : page.lines) {
        std::for_each(printed.words.begin(), printed.words.end(), add);
        ++line;
    }
    for (const Word& word : page.tableWords) {
        add(word);
        ++line;
    }
    return letters;
}

struct TextScore
{
    long edits = 0;
    long letters = 0;
    std::vector<double> distancesMm; ///< between the middles of found and printed words
};

/// Distance of each found word whose letters all stand in one printed line, one after the other.
void scoreBoxes(
    const FoundPage& found, const Letters& letters, const Alignment& alignment, TextScore& score)
{
    int at = 0;
    for (const FoundWord& word : found) {
        const int length = normalised(word.text).size();
        const auto first = alignment.match.begin() + at;
        const bool whole =
            length > 0 && std::all_of(first, first + length, [](int match) { return match >= 0; });
        if (whole && letters.line[*first] == letters.line[*(first + length - 1)]) {
            QRectF printed;
            for (auto match = first; match != first + length; ++match) {
                printed = printed.united(letters.boxes[*match]);
            }
            const QPointF off = printed.center() - word.box.center();
            score.distancesMm.push_back(std::hypot(off.x(), off.y()) / kPixelsPerMm);
        }
        at += length;
    }
}

void printScore(const std::string& name, TextScore score)
{
    std::printf("| %s | %ld | %.2f %% |", name.c_str(), score.letters,
        score.letters == 0 ? 0 : 100.0 * score.edits / static_cast<double>(score.letters));
    if (score.distancesMm.empty()) {
        std::printf(" | |\n");
        return;
    }
    std::sort(score.distancesMm.begin(), score.distancesMm.end());
    double sum = 0;
    for (const double distance : score.distancesMm) {
        sum += distance;
    }
    const std::size_t count = score.distancesMm.size();
    std::printf(" %.2f mm | %.2f mm (%zu words) |\n", sum / static_cast<double>(count),
        score.distancesMm[count * 95 / 100], count);
}

struct BlankScore
{
    long letters = 0;
    long letterEdits = 0;
    long words = 0;
    long wordEdits = 0;
};

QStringList plainWords(const QString& text)
{
    QStringList words;
    for (const QString& word : text.simplified().split(' ', Qt::SkipEmptyParts)) {
        words.append(normalised(word));
    }
    return words;
}

/// Each word as one character, so that words can be aligned like letters.
QString asLetters(const QStringList& words, QHash<QString, QChar>& known)
{
    QString letters;
    for (const QString& word : words) {
        const QChar next(static_cast<ushort>(known.size() + 1));
        auto at = known.find(word);
        letters += at == known.end() ? *known.insert(word, next) : *at;
    }
    return letters;
}

void scoreBlanks(const QStringList& wanted, const QStringList& got, BlankScore& score)
{
    const QString letters = wanted.join(' ');
    QHash<QString, QChar> known;
    const QString words = asLetters(wanted, known);
    score.letters += letters.size();
    score.letterEdits += aligned(letters, got.join(' ')).edits;
    score.words += words.size();
    score.wordEdits += aligned(words, asLetters(got, known)).edits;
}

std::string percent(long part, long all)
{
    const double share =
        all == 0 ? 0 : 100.0 * static_cast<double>(part) / static_cast<double>(all);
    return QString::number(share, 'f', 2).toStdString() + " %";
}

QStringList csvCells(const QString& line)
{
    QStringList cells { QString() };
    bool quoted = false;
    for (const QChar letter : line) {
        if (letter == '"') {
            quoted = !quoted;
        } else if (letter == ',' && !quoted) {
            cells.append(QString());
        } else {
            cells.last() += letter;
        }
    }
    return cells;
}

/// Cells count as found when at most a tenth of their characters differ.
bool sameCell(const QString& wanted, const QString& got)
{
    const QString a = normalised(wanted);
    const QString b = normalised(got);
    return std::abs(a.size() - b.size()) <= a.size() / 10 + 1
        && aligned(a, b).edits * 10 <= a.size();
}

QVector<QStringList> readCsv(const QString& fileName)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        throw std::runtime_error("cannot read " + fileName.toStdString());
    }
    QVector<QStringList> rows;
    QTextStream stream(&file);
    stream.setCodec("UTF-8");
    while (!stream.atEnd()) {
        QString line = stream.readLine();
        while (line.count('"') % 2 == 1 && !stream.atEnd()) { // a cell of several lines
            line += stream.readLine();
        }
        rows.append(csvCells(line));
    }
    return rows;
}

struct CellScore
{
    long cells = 0;
    long somewhere = 0;
    long inRow = 0; ///< in one row with the rest of their row, in the right order
};

void scoreTable(const PageTruth& page, const QVector<QStringList>& rows, CellScore& score)
{
    for (const QStringList& wanted : page.table) {
        int most = 0;
        QSet<int> anywhere;
        for (const QStringList& row : rows) {
            int next = 0;
            int inOrder = 0;
            for (int i = 0; i < wanted.size(); ++i) {
                for (int column = 0; column < row.size(); ++column) {
                    if (sameCell(wanted[i], row[column])) {
                        anywhere.insert(i);
                        if (column >= next) {
                            ++inOrder;
                            next = column + 1;
                            break;
                        }
                    }
                }
            }
            most = std::max(most, inOrder);
        }
        score.cells += wanted.size();
        score.somewhere += anywhere.size();
        score.inRow += most;
    }
}

} // namespace

void measureText(const QString& folder, const QString& boxFile, bool placesAsScanned)
{
    const QVector<PageTruth> truths = readTruthSet(folder);
    const QVector<FoundPage> found = readBoxes(boxFile);
    if (found.size() != truths.size()) {
        throw std::runtime_error("the document has " + std::to_string(found.size()) + " pages, not "
            + std::to_string(truths.size()));
    }
    std::map<std::string, TextScore> scores;
    for (int i = 0; i < truths.size(); ++i) {
        const Letters letters = lettersOf(truths[i]);
        if (letters.text.isEmpty()) {
            continue;
        }
        QString got;
        for (const FoundWord& word : found[i]) {
            got += normalised(word.text);
        }
        const Alignment alignment = aligned(letters.text, got);
        const std::string language = truths[i].language == "zh" ? "Chinese" : "English";
        for (const std::string& name :
            { language + ", all", language + ", " + truths[i].layout.toStdString() }) {
            TextScore& score = scores[name];
            score.edits += alignment.edits;
            score.letters += letters.text.size();
            if (placesAsScanned) {
                scoreBoxes(found[i], letters, alignment, score);
            }
        }
        std::fprintf(stderr, "%s %.2f %%\n", qPrintable(truths[i].name),
            100.0 * alignment.edits / letters.text.size());
    }
    std::printf("| Pages | Characters | Character error rate | Word boxes off, mean | 95 %% within "
                "|\n|---|---|---|---|---|\n");
    for (const auto& [name, score] : scores) {
        printScore(name, score);
    }
}

void measureBlanks(const QString& folder, const QString& textFile)
{
    QFile file(textFile);
    if (!file.open(QIODevice::ReadOnly)) {
        throw std::runtime_error("cannot read " + textFile.toStdString());
    }
    const QStringList pages = QString::fromUtf8(file.readAll()).split('\f');
    const QVector<PageTruth> truths = readTruthSet(folder);
    if (pages.size() < truths.size()) {
        throw std::runtime_error("pages are missing in " + textFile.toStdString());
    }
    std::map<QString, BlankScore> scores;
    for (int i = 0; i < truths.size(); ++i) {
        scoreBlanks(plainWords(truths[i].text()), plainWords(pages[i]), scores[truths[i].language]);
    }
    std::printf("| Pages | Characters and blanks | Error rate | Words | Error rate |\n"
                "|---|---|---|---|---|\n");
    for (const auto& [language, score] : scores) {
        const bool english = language != "zh"; // Chinese words have no blanks between them
        std::printf("| %s | %ld | %s | %s | %s |\n", english ? "English" : "Chinese", score.letters,
            percent(score.letterEdits, score.letters).c_str(),
            english ? std::to_string(score.words).c_str() : "",
            english ? percent(score.wordEdits, score.words).c_str() : "");
    }
}

void measureCells(const QString& folder, const QString& csvFolder)
{
    CellScore score;
    int pages = 0;
    for (const PageTruth& page : readTruthSet(folder)) {
        if (!page.table.isEmpty()) {
            CellScore own;
            scoreTable(page, readCsv(csvFolder + '/' + page.name + ".csv"), own);
            std::fprintf(stderr, "%s: %ld cells, %ld found, %ld in place\n", qPrintable(page.name),
                own.cells, own.somewhere, own.inRow);
            score.cells += own.cells;
            score.somewhere += own.somewhere;
            score.inRow += own.inRow;
            ++pages;
        }
    }
    std::printf("| Tables | Cells | Found | In their row and order |\n|---|---|---|---|\n"
                "| %d | %ld | %.1f %% | %.1f %% |\n",
        pages, score.cells, 100.0 * score.somewhere / static_cast<double>(score.cells),
        100.0 * score.inRow / static_cast<double>(score.cells));
}

} // namespace truth
