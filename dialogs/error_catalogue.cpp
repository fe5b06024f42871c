#include "dialogs/error_catalogue.h"

#include "app/xml_guard.h"
#include "log/Log.h"

#include <QFileInfo>

#include <tinyxml.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <optional>

namespace {

/// A decimal integer that fits into int; blanks may surround it. Nothing for any other text.
std::optional<int> decimal(const char* text)
{
    if (text == nullptr) {
        return std::nullopt;
    }
    char* end = nullptr;
    errno = 0;
    const long value = std::strtol(text, &end, 10);
    if (end == text || errno == ERANGE || value < INT_MIN || value > INT_MAX) {
        return std::nullopt;
    }
    return int(value);
}

/// All text inside the element, that of elements within it too.
QByteArray wholeText(const TiXmlNode& element)
{
    QByteArray text;
    for (const TiXmlNode* node = element.FirstChild(); node != nullptr;
         node = node->NextSibling()) {
        text += node->ToText() != nullptr ? QByteArray(node->Value()) : wholeText(*node);
    }
    return text;
}

/// The element's text. One that begins with markup has none by itself.
QByteArray message(const TiXmlElement& element)
{
    const char* text = element.GetText();
    return text != nullptr ? QByteArray(text) : wholeText(element);
}

} // namespace

void ErrorCatalogue::getErrorCode(const QString& path)
{
    const QByteArray file = path.toUtf8();
    if (!QFileInfo(path).isFile()) {
        runLog("[func:%s]ErrorCode - filePath() = %s  is not exist!", __func__, file.constData());
        return;
    }
    m_entries.clear();
    TiXmlDocument document;
    if (const std::string fault = readXmlFile(path, document); !fault.empty()) {
        runLog("[func:%s] ErrorDesc() = %s", __func__, fault.c_str());
        return;
    }
    const TiXmlElement* root = document.RootElement();
    if (root == nullptr) {
        runLog("[func:%s] Failed to load file: No root element.", __func__);
        return;
    }
    for (const TiXmlElement* element = root->FirstChildElement(); element != nullptr;
         element = element->NextSiblingElement()) {
        const std::optional<int> code = decimal(element->Attribute("id"));
        const std::optional<int> isError = decimal(element->Attribute("ierror"));
        if (!code || !isError) {
            runLog(
                "[func:%s]entry in line %d has no usable id or ierror", __func__, element->Row());
            continue;
        }
        auto entry = std::make_unique<ErrorEntry>();
        entry->isError = *isError != 0;
        entry->isShow = QString::fromLocal8Bit(element->Attribute("ishow"));
        entry->contents = QString::fromLocal8Bit(message(*element));
        m_entries[*code] = std::move(entry);
    }
}

const ErrorEntry* ErrorCatalogue::find(int code) const
{
    const auto found = m_entries.find(code);
    return found == m_entries.end() ? nullptr : found->second.get();
}
