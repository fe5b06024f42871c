#include "scanlib/device/sane_host/sane_words.h"

#include <algorithm>
#include <cctype>

namespace orva {

namespace {

struct Spelling
{
    std::string_view word;
    SourceWord meaning;
};

constexpr Spelling kSpellings[] = {
    { "Flatbed", SourceWord::kFlatbed },
    { "FlatBed", SourceWord::kFlatbed },
    { "Document Table", SourceWord::kFlatbed },
    { "Platen", SourceWord::kFlatbed },
    { "FB", SourceWord::kFlatbed },
    { "fb", SourceWord::kFlatbed },
    { "Normal", SourceWord::kFlatbed },
    { "ADF", SourceWord::kFeeder },
    { "ADF Front", SourceWord::kFeeder },
    { "ADF Simplex", SourceWord::kFeeder },
    { "Automatic Document Feeder", SourceWord::kFeeder },
    { "Document Feeder", SourceWord::kFeeder },
    { "adf", SourceWord::kFeeder },
    { "ADF Duplex", SourceWord::kDuplex },
    { "Duplex", SourceWord::kDuplex },
    { "ADF Both", SourceWord::kDuplex },
    { "Automatic Document Feeder(left aligned,Duplex)", SourceWord::kDuplex },
    { "Automatic Document Feeder(centrally aligned,Duplex)", SourceWord::kDuplex },
};

} // namespace

int buttonOfText(const std::string& text)
{
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
        [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    for (const ButtonOption& button : kButtonOptions) {
        if (lower == button.option) {
            return button.value;
        }
    }
    return 0;
}

SourceWord sourceWord(std::string_view word)
{
    for (const Spelling& spelling : kSpellings) {
        if (spelling.word == word) {
            return spelling.meaning;
        }
    }
    std::string lower(word);
    std::transform(lower.begin(), lower.end(), lower.begin(),
        [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    const auto holds = [&](const Words& parts) {
        return std::any_of(parts.begin(), parts.end(),
            [&](std::string_view part) { return lower.find(part) != std::string::npos; });
    };
    if (holds({ "back", "rear", "card", "transparen", "film", "slide", "negative", "tpu" })) {
        return SourceWord::kUnknown;
    }
    if (holds({ "duplex", "both side", "double side", "double-side", "two-side", "2-side" })) {
        return SourceWord::kDuplex;
    }
    if (holds({ "feeder", "adf", "sheetfed", "sheet-fed" })) {
        return SourceWord::kFeeder;
    }
    if (holds({ "flatbed", "flat bed", "platen", "table", "glass" })) {
        return SourceWord::kFlatbed;
    }
    return SourceWord::kUnknown;
}

} // namespace orva
