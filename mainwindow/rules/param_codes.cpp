#include "mainwindow/rules/param_codes.h"

#include "sdk/codes.h"

#include <array>
#include <cstddef>
#include <string_view>

namespace rules {

namespace {

bool equals(const QString& text, std::string_view utf8)
{
    return text == QString::fromUtf8(utf8.data(), static_cast<int>(utf8.size()));
}

/// Place of the text in a table of texts, or `otherwise`.
template <std::size_t size>
int placeOf(const QString& text, const std::array<std::string_view, size>& texts, int otherwise)
{
    for (std::size_t i = 0; i < size; ++i) {
        if (equals(text, texts[i])) {
            return static_cast<int>(i);
        }
    }
    return otherwise;
}

const QString& blackWhite()
{
    static const QString text = QStringLiteral("黑白");
    return text;
}

const orva::FormatName* formatOf(const QString& text)
{
    for (const orva::FormatName& name : orva::kFormatNames) {
        if (equals(text, name.text)) {
            return &name;
        }
    }
    return nullptr;
}

} // namespace

int colorModeCode(const QString& text)
{
    return placeOf(text, orva::kColorModeTexts, 0);
}

bool isBlackWhite(const QString& colorModeText)
{
    return colorModeText == blackWhite();
}

bool holdsBlackWhite(const QString& colorModeText)
{
    return colorModeText.contains(blackWhite());
}

int fileFormatCode(const QString& text)
{
    const orva::FormatName* name = formatOf(text);
    return name != nullptr ? static_cast<int>(name->format) : 0;
}

bool holdsPages(const QString& fileTypeText)
{
    const orva::FormatName* name = formatOf(fileTypeText);
    return name != nullptr && name->holdsPages;
}

int rotateCode(const QString& text)
{
    return placeOf(text, orva::kRotateTexts, 0);
}

int dropoutCode(const QString& text)
{
    return placeOf(text, orva::kDropoutTexts, 0);
}

int splitCode(const QString& mergeListText)
{
    const int place = placeOf(mergeListText, orva::kMergeTexts, 0);
    return place <= 2 ? place : 0;
}

int mergeCode(const QString& mergeListText)
{
    const int place = placeOf(mergeListText, orva::kMergeTexts, 0);
    return place > 2 ? place - 2 : 0;
}

int textModeCode(bool textOrientationOn, const QString& text)
{
    return textOrientationOn ? placeOf(text, orva::kTextOrientationTexts, -1) + 1 : 0;
}

int denoiseCode(int index)
{
    switch (index) {
    case 1:
        return static_cast<int>(orva::Denoise::kNormal);
    case 2:
        return static_cast<int>(orva::Denoise::kStrong);
    default:
        return static_cast<int>(orva::Denoise::kOff);
    }
}

int multiPageCode(bool singleChecked, bool multiChecked)
{
    return !singleChecked && multiChecked ? 1 : 0;
}

int timeNamedCode(bool timeChecked, bool serialChecked)
{
    return timeChecked || !serialChecked ? 1 : 0;
}

int timeNameTypeCode(const QString& text)
{
    // The order of the codes, which is not the order of the list.
    static constexpr std::array<std::string_view, 3> kOrders { "年月日", "月日年", "日月年" };
    return placeOf(text, kOrders, static_cast<int>(orva::DateOrder::kUnknown));
}

} // namespace rules
