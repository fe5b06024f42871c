#include "log/log_file_reader.h"

#include <QFileInfo>
#include <QTextCodec>

#include <algorithm>

namespace {

/// Control characters but the tab, and what a text view takes for a line break.
bool needsCare(ushort c)
{
    return (c < 0x20 && c != '\t') || (c >= 0x7f && c < 0xa0) || c == QChar::LineSeparator
        || c == QChar::ParagraphSeparator;
}

} // namespace

LogFileReader::LogFileReader(const QString& path)
    : m_file(path)
    , m_decoder(QTextCodec::codecForName("UTF-8")->makeDecoder(QTextCodec::ConvertInvalidToNull))
{
    // A pipe or a device of that name would never end.
    if (!QFileInfo(path).isFile() || !m_file.open(QIODevice::ReadOnly)) {
        return;
    }
    m_size = m_file.size();
    if (m_size > kMaxBytes) {
        m_skipped = m_size - kMaxBytes;
        m_file.seek(m_skipped);
        m_cutStart = true;
    }
    m_atEnd = m_size == 0;
}

int LogFileReader::percentRead() const
{
    const qint64 wanted = m_size - m_skipped;
    return wanted <= 0 ? 100 : static_cast<int>((m_file.pos() - m_skipped) * 100 / wanted);
}

QString LogFileReader::next()
{
    const qint64 left = m_size - m_file.pos();
    const QByteArray bytes = m_file.read(std::min(kPortionBytes, left));
    m_atEnd = bytes.isEmpty() || m_file.pos() >= m_size;
    QByteArray wanted = bytes;
    if (m_cutStart) {
        const int lineEnd = bytes.indexOf('\n');
        wanted = bytes.mid(lineEnd + 1);
        m_cutStart = false;
    }
    QString text = m_decoder->toUnicode(wanted);
    if (m_atEnd && m_decoder->needsMoreData()) {
        text += QChar::ReplacementCharacter;
    }
    return cleaned(text);
}

QString LogFileReader::cleaned(QString text)
{
    // Nearly always there is nothing to do: one quick look decides.
    bool clean = true;
    int lineLength = m_lineLength;
    for (const ushort *c = text.utf16(), *end = c + text.size(); c != end; ++c) {
        lineLength = *c == '\n' ? 0 : lineLength + 1;
        clean = clean && lineLength <= kMaxLine && (*c == '\n' || !needsCare(*c));
    }
    if (clean) {
        m_lineLength = lineLength;
        return text;
    }
    QString out;
    out.reserve(text.size() + text.size() / kMaxLine + 1);
    for (const QChar c : qAsConst(text)) {
        if (c == QLatin1Char('\r')) {
            continue;
        }
        if (c == QLatin1Char('\n')) {
            m_lineLength = 0;
            out += c;
            continue;
        }
        if (m_lineLength >= kMaxLine && !c.isLowSurrogate()) {
            out += QLatin1Char('\n');
            m_lineLength = 0;
        }
        out += needsCare(c.unicode()) ? QChar(QChar::ReplacementCharacter) : c;
        ++m_lineLength;
    }
    return out;
}
