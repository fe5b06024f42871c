#include "bench/truth/documents.h"

#include <QFile>
#include <QRegularExpression>
#include <QXmlStreamReader>

#include <stdexcept>

namespace truth {

namespace {

class Reader
{
public:
    explicit Reader(QFile& file)
        : m_xml(&file)
    {
    }

    QVector<Block> read()
    {
        while (!m_xml.atEnd()) {
            if (m_xml.readNext() == QXmlStreamReader::StartElement) {
                startElement();
            } else if (m_xml.isEndElement() && m_xml.name() == "li") {
                --m_lists;
            }
        }
        if (m_xml.hasError()) {
            throw std::runtime_error(m_xml.errorString().toStdString());
        }
        return m_blocks;
    }

private:
    void startElement()
    {
        const QStringRef name = m_xml.name();
        const QString kind = m_xml.attributes().value("class").toString();
        if (name == "head" || name == "pre" || name == "dl" || kind == "navheader"
            || kind == "navfooter" || kind == "toc" || kind == "footnotes") {
            m_xml.skipCurrentElement();
        } else if (name == "li") {
            ++m_lists;
        } else if (kind == "title" && name != "p") {
            add(Block::Kind::kHeading, elementText());
        } else if (name == "p") {
            add(m_lists > 0 ? Block::Kind::kItem : Block::Kind::kParagraph, elementText());
        } else if (name == "table" && kind == "table") {
            table();
        }
    }

    /// White space made single; none between Chinese characters, where it was a line break.
    QString elementText()
    {
        static const QRegularExpression between("(?<=[\\x{3000}-\\x{9fff}\\x{ff00}-\\x{ffef}]) "
                                                "(?=[\\x{3000}-\\x{9fff}\\x{ff00}-\\x{ffef}])");
        QString text = m_xml.readElementText(QXmlStreamReader::IncludeChildElements);
        return text.simplified().replace(between, QString());
    }

    void add(Block::Kind kind, const QString& text)
    {
        if (!text.isEmpty()) {
            m_blocks.append({ kind, text, {} });
        }
    }

    void table()
    {
        Block block { Block::Kind::kTable, {}, {} };
        while (!m_xml.atEnd()) {
            m_xml.readNext();
            if (m_xml.isEndElement() && m_xml.name() == "table") {
                break;
            }
            if (m_xml.isStartElement() && m_xml.name() == "tr") {
                block.rows.append(QStringList());
            } else if (m_xml.isStartElement() && (m_xml.name() == "td" || m_xml.name() == "th")) {
                block.rows.last().append(elementText());
            }
        }
        m_blocks.append(block);
    }

    QXmlStreamReader m_xml;
    QVector<Block> m_blocks;
    int m_lists = 0;
};

} // namespace

QVector<Block> readDocument(const QString& file)
{
    QFile input(file);
    if (!input.open(QIODevice::ReadOnly)) {
        throw std::runtime_error("cannot read " + file.toStdString());
    }
    return Reader(input).read();
}

} // namespace truth
