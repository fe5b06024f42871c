#include "bench/truth/page_layout.h"

#include <QGlyphRun>
#include <QPainter>
#include <QRawFont>
#include <QTextLayout>

#include <algorithm>
#include <stdexcept>

namespace truth {

namespace {

constexpr double kPixelsPerPoint = 300.0 / 72;
constexpr double kMargin = 25 * kPixelsPerMm;
constexpr int kMostRows = 22;

class Typesetter
{
public:
    Typesetter(PrintedPage& page, const LayoutWish& wish)
        : m_page(page)
        , m_wish(wish)
        , m_painter(&page.ink)
    {
        m_painter.setRenderHint(QPainter::TextAntialiasing);
    }

    void setArea(const QRectF& area)
    {
        m_area = area;
        m_y = area.top();
    }

    void leaveRoomForPhoto()
    {
        const QRectF room(m_area.left(), m_y, m_area.width(), m_area.width() * 0.55);
        m_page.photos.append(room);
        m_y = room.bottom() + 40;
    }

    /// false when the rest of the area is too small.
    bool add(const Block& block)
    {
        const bool heading = block.kind == Block::Kind::kHeading;
        const double size = m_wish.points * (heading ? 1.35 : 1);
        double indent = block.kind == Block::Kind::kItem ? 2 * pixels(size) : 0;
        if (block.kind == Block::Kind::kParagraph && m_wish.language == "zh") {
            indent = -2 * pixels(size); // the first line only
        }
        const bool whole = set(block.text, font(size, heading), indent, heading);
        m_y += pixels(size) * 0.55;
        ++m_paragraph;
        return whole;
    }

    void addTable(const Block& block)
    {
        const int columns = block.rows.first().size();
        const QVector<double> edges = columnEdges(block, columns);
        const double top = m_y;
        const QPen rule(Qt::black, 4);
        QVector<double> rowEdges { m_y };
        for (int row = 0; row < std::min<int>(kMostRows, block.rows.size()); ++row) {
            if (m_y > m_area.bottom() - 400 || block.rows[row].size() != columns) {
                break;
            }
            addRow(block.rows[row], edges, row == 0);
            rowEdges.append(m_y);
            m_page.table.append(block.rows[row]);
        }
        m_painter.setPen(rule);
        for (const double y : rowEdges) {
            m_painter.drawLine(QPointF(edges.first(), y), QPointF(edges.last(), y));
        }
        for (const double x : edges) {
            m_painter.drawLine(QPointF(x, top), QPointF(x, m_y));
        }
        m_y += 60;
        ++m_paragraph;
    }

private:
    static double pixels(double points) { return points * kPixelsPerPoint; }

    QFont font(double points, bool bold) const
    {
        const bool sans = m_wish.sans || bold;
        QFont result(m_wish.language == "zh" ? (sans ? "Noto Sans CJK SC" : "Noto Serif CJK SC")
                                             : (sans ? "Liberation Sans" : "Liberation Serif"));
        result.setPixelSize(static_cast<int>(pixels(points)));
        result.setBold(bold);
        result.setHintingPreference(QFont::PreferNoHinting);
        return result;
    }

    /// A negative indent is that of the first line alone.
    bool set(const QString& text, const QFont& face, double indent, bool heading)
    {
        QTextLayout layout(text, face);
        QTextOption option(heading ? Qt::AlignLeft : Qt::AlignJustify);
        option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
        layout.setTextOption(option);
        layout.beginLayout();
        bool whole = true;
        for (bool first = true;; first = false) {
            QTextLine line = layout.createLine();
            if (!line.isValid()) {
                break;
            }
            const double left = indent > 0 || (first && indent < 0) ? std::abs(indent) : 0;
            line.setLineWidth(m_area.width() - left);
            if (m_y + line.height() > m_area.bottom()) {
                whole = false;
                break;
            }
            line.setPosition({ m_area.left() + left, m_y });
            m_y += line.height() * (m_wish.language == "zh" ? 1.08 : 1.22);
        }
        layout.endLayout();
        for (int i = 0; i < layout.lineCount() - (whole ? 0 : 1); ++i) {
            layout.lineAt(i).draw(&m_painter, {});
            m_page.lines.append({ m_paragraph, wordsOf(text, layout.lineAt(i)) });
        }
        return whole;
    }

    /// QGlyphRun::boundingRect would be as high as the line.
    static QRectF inkOf(const QGlyphRun& run)
    {
        QRectF ink;
        for (int i = 0; i < run.glyphIndexes().size(); ++i) {
            ink = ink.united(
                run.rawFont().boundingRect(run.glyphIndexes()[i]).translated(run.positions()[i]));
        }
        return ink;
    }

    static QVector<Word> wordsOf(const QString& text, const QTextLine& line)
    {
        QVector<Word> words;
        bool inWord = false;
        for (int at = line.textStart(); at < line.textStart() + line.textLength(); ++at) {
            if (text[at].isSpace()) {
                inWord = false;
                continue;
            }
            if (!inWord) {
                words.append(Word {});
            }
            inWord = true;
            QRectF ink;
            for (const QGlyphRun& run : line.glyphRuns(at, 1)) {
                ink = ink.united(inkOf(run));
            }
            words.last().text += text[at];
            words.last().boxes.append(ink);
        }
        return words;
    }

    /// Columns as wide as their longest cells ask for, between limits.
    QVector<double> columnEdges(const Block& block, int columns) const
    {
        QVector<double> wish(columns, 0);
        const QFontMetricsF metrics(font(m_wish.points * 0.9, false));
        for (const QStringList& row : block.rows.mid(0, kMostRows)) {
            for (int i = 0; i < std::min<int>(columns, row.size()); ++i) {
                wish[i] =
                    std::max(wish[i], std::min(metrics.horizontalAdvance(row[i]), 900.0) + 60);
            }
        }
        double sum = 0;
        for (const double width : wish) {
            sum += width;
        }
        QVector<double> edges { m_area.left() };
        for (const double width : wish) {
            edges.append(edges.last() + width * std::min(1.0, m_area.width() / sum));
        }
        return edges;
    }

    void addRow(const QStringList& cells, const QVector<double>& edges, bool heading)
    {
        const QRectF area = m_area;
        const double top = m_y;
        double bottom = top;
        for (int i = 0; i < cells.size(); ++i) {
            m_area.setLeft(edges[i] + 24);
            m_area.setRight(edges[i + 1] - 16);
            m_y = top + 16;
            const int before = m_page.lines.size();
            set(cells[i], font(m_wish.points * 0.9, heading), 0, true);
            for (const Line& line : m_page.lines.mid(before)) {
                m_page.tableWords += line.words;
            }
            m_page.lines.resize(before);
            bottom = std::max(bottom, m_y + 16);
        }
        m_area = area;
        m_y = bottom;
    }

    PrintedPage& m_page;
    const LayoutWish& m_wish;
    QPainter m_painter;
    QRectF m_area;
    double m_y = 0;
    int m_paragraph = 0;
};

int nextTable(const QVector<Block>& blocks, int start)
{
    for (int i = start; i < blocks.size(); ++i) {
        const QVector<QStringList>& rows = blocks[i].rows;
        if (rows.size() >= 6 && rows.first().size() >= 3 && rows.first().size() <= 4) {
            return i;
        }
    }
    throw std::runtime_error("no table in this document");
}

void fill(Typesetter& setter, const QVector<Block>& blocks, int& next, int most)
{
    for (int set = 0; next < blocks.size() && set < most; ++next) {
        if (blocks[next].kind == Block::Kind::kTable) {
            continue;
        }
        ++set;
        if (!setter.add(blocks[next])) {
            return;
        }
    }
}

} // namespace

PrintedPage printPage(const QVector<Block>& blocks, int start, const LayoutWish& wish)
{
    PrintedPage page;
    page.ink = QImage(kPageWidth, kPageHeight, QImage::Format_Grayscale8);
    page.ink.fill(Qt::white);
    if (wish.layout == "blank") {
        return page;
    }
    Typesetter setter(page, wish);
    const QRectF area(kMargin, kMargin, kPageWidth - 2 * kMargin, kPageHeight - 2 * kMargin);
    setter.setArea(area);
    if (wish.layout == "line") {
        setter.add({ Block::Kind::kParagraph,
            blocks[start].text.left(wish.language == "zh" ? 20 : 45), {} });
        return page;
    }
    if (wish.layout == "columns") {
        const double width = (area.width() - 120) / 2;
        setter.setArea({ area.left(), area.top(), width, area.height() });
        fill(setter, blocks, start, blocks.size());
        ++start;
        setter.setArea({ area.right() - width, area.top(), width, area.height() });
    } else if (wish.layout == "table") {
        const int table = nextTable(blocks, start);
        fill(setter, blocks, start, 4);
        setter.addTable(blocks[table]);
        return page;
    } else if (wish.layout == "photo") {
        fill(setter, blocks, start, 3);
        setter.leaveRoomForPhoto();
    }
    fill(setter, blocks, start, blocks.size());
    return page;
}

} // namespace truth
