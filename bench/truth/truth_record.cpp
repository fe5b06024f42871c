#include "bench/truth/truth_record.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>
#include <stdexcept>

namespace truth {

namespace {

/// Tenths of a pixel are enough and keep the files small.
double tenth(double value)
{
    return std::round(value * 10) / 10;
}

QJsonArray rectJson(const QRectF& r)
{
    return { tenth(r.x()), tenth(r.y()), tenth(r.width()), tenth(r.height()) };
}

QRectF rectOf(const QJsonArray& a)
{
    return { a[0].toDouble(), a[1].toDouble(), a[2].toDouble(), a[3].toDouble() };
}

template <typename Item, typename Convert>
QJsonArray arrayJson(const QVector<Item>& items, Convert convert)
{
    QJsonArray array;
    for (const Item& item : items) {
        array.append(convert(item));
    }
    return array;
}

template <typename Item, typename Convert>
QVector<Item> vectorOf(const QJsonValue& value, Convert convert)
{
    QVector<Item> items;
    const QJsonArray array = value.toArray();
    for (const auto& entry : array) {
        items.append(convert(entry));
    }
    return items;
}

QJsonValue wordJson(const Word& word)
{
    return QJsonObject { { "text", word.text }, { "boxes", arrayJson(word.boxes, rectJson) } };
}

Word wordOf(const QJsonValue& value)
{
    const QJsonObject object = value.toObject();
    return { object["text"].toString(),
        vectorOf<QRectF>(
            object["boxes"], [](const QJsonValue& box) { return rectOf(box.toArray()); }) };
}

QJsonValue lineJson(const Line& line)
{
    return QJsonObject { { "paragraph", line.paragraph },
        { "words", arrayJson(line.words, wordJson) } };
}

Line lineOf(const QJsonValue& value)
{
    const QJsonObject object = value.toObject();
    return { object["paragraph"].toInt(), vectorOf<Word>(object["words"], wordOf) };
}

QJsonValue holeJson(const Hole& hole)
{
    return QJsonArray { tenth(hole.center.x()), tenth(hole.center.y()), hole.radius };
}

Hole holeOf(const QJsonValue& value)
{
    const QJsonArray a = value.toArray();
    return { { a[0].toDouble(), a[1].toDouble() }, a[2].toDouble() };
}

QJsonValue speckJson(const Speck& speck)
{
    return QJsonArray { speck.x, speck.y, speck.size };
}

Speck speckOf(const QJsonValue& value)
{
    const QJsonArray a = value.toArray();
    return { a[0].toInt(), a[1].toInt(), a[2].toInt() };
}

QStringList stringsOf(const QJsonValue& value)
{
    QStringList strings;
    const QJsonArray array = value.toArray();
    for (const auto& entry : array) {
        strings.append(entry.toString());
    }
    return strings;
}

QJsonArray cornersJson(const QTransform& pageToScan)
{
    QJsonArray corners;
    for (const QPointF& corner : { QPointF(0, 0), QPointF(kPageWidth, 0),
             QPointF(kPageWidth, kPageHeight), QPointF(0, kPageHeight) }) {
        const QPointF at = pageToScan.map(corner);
        corners.append(QJsonArray { tenth(at.x()), tenth(at.y()) });
    }
    return corners;
}

} // namespace

QRectF Word::box() const
{
    QRectF all;
    for (const QRectF& one : boxes) {
        all = all.united(one);
    }
    return all;
}

QVector<Word> PageTruth::words() const
{
    QVector<Word> all;
    for (const Line& line : lines) {
        all += line.words;
    }
    return all + tableWords;
}

QString PageTruth::text() const
{
    QString all;
    for (const Line& line : lines) {
        for (const Word& word : line.words) {
            all += word.text + ' ';
        }
        all += '\n';
    }
    for (const Word& word : tableWords) {
        all += word.text + ' ';
    }
    return all;
}

void writeTruth(const PageTruth& page, const QString& folder)
{
    const QTransform& t = page.pageToScan;
    const QJsonObject object { { "name", page.name }, { "language", page.language },
        { "layout", page.layout }, { "blank", page.blank }, { "degrees", page.degrees },
        { "backing", page.backing },
        { "pageToScan", QJsonArray { t.m11(), t.m12(), t.m21(), t.m22(), t.dx(), t.dy() } },
        { "corners", cornersJson(t) }, { "scan", QJsonArray { page.scanWidth, page.scanHeight } },
        { "lines", arrayJson(page.lines, lineJson) },
        { "table", arrayJson(page.table, QJsonArray::fromStringList) },
        { "tableWords", arrayJson(page.tableWords, wordJson) },
        { "photos", arrayJson(page.photos, rectJson) },
        { "holes", arrayJson(page.holes, holeJson) },
        { "specks", arrayJson(page.specks, speckJson) }, { "stampColor", page.stampColor } };
    QFile file(folder + '/' + page.name + ".json");
    const QByteArray text = QJsonDocument(object).toJson(QJsonDocument::Compact);
    if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size()) {
        throw std::runtime_error("cannot write " + file.fileName().toStdString());
    }
}

PageTruth readTruth(const QString& jsonFile)
{
    QFile file(jsonFile);
    if (!file.open(QIODevice::ReadOnly)) {
        throw std::runtime_error("cannot read " + jsonFile.toStdString());
    }
    const QJsonObject o = QJsonDocument::fromJson(file.readAll()).object();
    PageTruth page;
    page.name = o["name"].toString();
    page.language = o["language"].toString();
    page.layout = o["layout"].toString();
    page.blank = o["blank"].toBool();
    page.degrees = o["degrees"].toDouble();
    page.backing = o["backing"].toString();
    const QJsonArray m = o["pageToScan"].toArray();
    page.pageToScan = QTransform(m[0].toDouble(), m[1].toDouble(), m[2].toDouble(), m[3].toDouble(),
        m[4].toDouble(), m[5].toDouble());
    page.scanWidth = o["scan"].toArray()[0].toInt();
    page.scanHeight = o["scan"].toArray()[1].toInt();
    page.lines = vectorOf<Line>(o["lines"], lineOf);
    page.table = vectorOf<QStringList>(o["table"], stringsOf);
    page.tableWords = vectorOf<Word>(o["tableWords"], wordOf);
    page.photos =
        vectorOf<QRectF>(o["photos"], [](const QJsonValue& box) { return rectOf(box.toArray()); });
    page.holes = vectorOf<Hole>(o["holes"], holeOf);
    page.specks = vectorOf<Speck>(o["specks"], speckOf);
    page.stampColor = o["stampColor"].toString();
    return page;
}

QVector<PageTruth> readTruthSet(const QString& folder)
{
    QVector<PageTruth> pages;
    const QStringList names = QDir(folder).entryList({ "*.json" }, QDir::Files, QDir::Name);
    for (const QString& name : names) {
        pages.append(readTruth(folder + '/' + name));
    }
    if (pages.isEmpty()) {
        throw std::runtime_error("no truth in " + folder.toStdString());
    }
    return pages;
}

} // namespace truth
