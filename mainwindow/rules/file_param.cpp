#include "mainwindow/rules/file_param.h"

#include "mainwindow/rules/naming_rules.h"

#include <QByteArray>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstring>

namespace rules {

namespace {

/// Copies the text with its terminator; false, and nothing is written, when it does not fit or
/// holds a NUL character, which would end it early.
template <std::size_t size>
bool copyText(const QByteArray& text, char (&array)[size])
{
    if (static_cast<std::size_t>(text.size()) >= size || text.contains('\0')) {
        return false;
    }
    std::memset(array, 0, size);
    std::memcpy(array, text.constData(), static_cast<std::size_t>(text.size()));
    return true;
}

/// A part of a file name: it must not lead into another folder.
template <std::size_t size>
bool copyNamePart(const QString& text, char (&array)[size])
{
    const bool refused = std::any_of(text.begin(), text.end(),
        [](QChar c) { return c == QLatin1Char('/') || c.category() == QChar::Other_Control; });
    return !refused && copyText(text.toUtf8(), array);
}

FileParamFault fillNames(const FileControls& controls, FileParam* param)
{
    if (!copyNamePart(controls.prefix, param->szFileName)) {
        return FileParamFault::kPrefixRefused;
    }
    if (!copyNamePart(controls.separator, param->szSeparator)) {
        return FileParamFault::kSeparatorRefused;
    }
    if (param->bTimeNamed == 1) {
        param->nTimeNamedType = controls.dateOrder;
        return FileParamFault::kNone;
    }
    // without a digit count nothing is sent, whatever a template left in the field
    const QString start = defStartBit(controls.serialStart, controls.serialDigits);
    return copyNamePart(start, param->szIndex) ? FileParamFault::kNone
                                               : FileParamFault::kSerialRefused;
}

std::string line(const char* name, int value)
{
    return std::string("# SDK SET ") + name + " = " + std::to_string(value) + " #";
}

std::string line(const char* name, const char* value)
{
    return std::string("# SDK SET ") + name + " = " + value + " #";
}

std::string line(const char* name, double value)
{
    char digits[400]; // the longest double in %lf has 309 digits in front of the point
    std::snprintf(digits, sizeof(digits), "%lf", value);
    return line(name, digits);
}

} // namespace

FileParamFault fillFileParam(const FileControls& controls, bool preview, FileParam* param)
{
    // Byte by byte, so that the padding, which the library receives too, is zero.
    std::memset(param, 0, sizeof(*param));

    param->nDocType = controls.docType;
    param->bTimeNamed = controls.timeNamed ? 1 : 0;
    param->bSameNameCover = controls.coverSameName ? 1 : 0;
    param->nFormatIndex = preview ? 0 : controls.fileFormat;
    param->nMultiPage = preview ? 0 : controls.multiPage;

    const FileParamFault fault = fillNames(controls, param);
    if (fault != FileParamFault::kNone) {
        std::memset(param, 0, sizeof(*param));
    }
    return fault;
}

FileParamFault setFolder(const QString& folder, FileParam* param)
{
    return copyText(folder.toUtf8(), param->szFilePath) ? FileParamFault::kNone
                                                        : FileParamFault::kFolderTooLong;
}

bool isOutputFolder(const QString& folder)
{
    FileParam probe {};
    return folder.isEmpty()
        || (folder.startsWith(QLatin1Char('/'))
            && setFolder(folder, &probe) == FileParamFault::kNone);
}

Notice faultNotice(FileParamFault fault)
{
    switch (fault) {
    case FileParamFault::kNone:
        break;
    case FileParamFault::kFolderTooLong:
        return { QStringLiteral("路径异常"), QStringLiteral("当前目录路径过长\n请重新选择路径!") };
    case FileParamFault::kPrefixRefused:
        return { QStringLiteral("名称异常"),
            QStringLiteral("名称前缀仅支持英文或数字，最多19个字符\n请重新输入!") };
    case FileParamFault::kSeparatorRefused:
        return { QStringLiteral("名称异常"), QStringLiteral("分隔符不可用\n请重新选择!") };
    case FileParamFault::kSerialRefused:
        return { QStringLiteral("名称异常"), QStringLiteral("起始位最多10位数字\n请重新输入!") };
    }
    return {};
}

std::vector<std::string> sentParameterLines(
    int colorMode, int jpgQuality, const ImageParam& image, const FileParam& file)
{
    return {
        line("color_mode", colorMode),
        line("JPGQulity", jpgQuality),
        line("bAutoCropDeskew", image.bAutoCropDeskew),
        line("bAutoLevel", image.bAutoLevel),
        line("nContrast", image.nContrast),
        line("nThresold", image.nThresold),
        line("nBrightness", image.nBrightness),
        line("nGamma", static_cast<double>(image.nGamma)),
        line("m_fileName.bTimeNamed", file.bTimeNamed),
        line("m_fileName.nTimeNamedType", file.nTimeNamedType),
        line("m_fileName.szIndex", file.szIndex),
        line("m_fileName.bSameNameCover", file.bSameNameCover),
        line("m_fileName.nFormatIndex", file.nFormatIndex),
        line("m_fileName.szFileName", file.szFileName),
        line("m_fileName.szSeparator", file.szSeparator),
        line("m_fileName.nMultiPage", file.nMultiPage),
        line("m_fileName.szFilePath", file.szFilePath),
    };
}

std::string blankPageLine(const ImageParam& image)
{
    return "bRemoveBlank=" + std::to_string(image.bRemoveBlank)
        + ",nBlankThresoldValue=" + std::to_string(image.nBlankThresoldValue) + "\n";
}

} // namespace rules
