#include "app/xml_guard.h"

#include <QFile>
#include <QFileInfo>
#include <QTextCodec>

#include <tinyxml.h>

namespace {

/// The parser goes down one call a level and would run out of stack. What stands in comments is
/// counted as well: far from the limit that does not matter.
bool isNestedTooDeeply(const QByteArray& xml)
{
    constexpr int kDeepest = 1000;
    int depth = 0;
    for (int at = xml.indexOf('<'); at >= 0 && depth <= kDeepest;) {
        const int next = xml.indexOf('<', at + 1);
        const QByteArray tag = xml.mid(at + 1, next < 0 ? -1 : next - at - 1);
        if (tag.startsWith('/')) {
            --depth;
        } else if (!tag.startsWith('!') && !tag.startsWith('?') && !tag.contains("/>")) {
            ++depth;
        }
        at = next;
    }
    return depth > kDeepest;
}

/// Of a sequence that is cut off the parser would read beyond the end; bytes that are not UTF-8 it
/// has to take one by one.
TiXmlEncoding encodingOf(const QByteArray& xml)
{
    QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
    QTextCodec::codecForName("UTF-8")->toUnicode(xml.constData(), xml.size(), &state);
    const bool isUtf8 = state.invalidChars == 0 && state.remainingChars == 0;
    return isUtf8 ? TIXML_ENCODING_UTF8 : TIXML_ENCODING_LEGACY;
}

} // namespace

std::string readXmlFile(const QString& path, TiXmlDocument& document)
{
    QFile source(path);
    // a pipe of that name would never end
    if (!QFileInfo(path).isFile() || !source.open(QIODevice::ReadOnly)) {
        return path.toStdString() + " cannot be read";
    }
    const QByteArray xml = source.readAll();
    if (isNestedTooDeeply(xml)) {
        return path.toStdString() + " is nested too deeply";
    }
    document.Parse(xml.constData(), nullptr, encodingOf(xml));
    return document.Error() ? document.ErrorDesc() : std::string();
}
