#include "scanlib/base/page_text.h"

#include "scanlib/base/text.h"

#include <array>
#include <cstddef>
#include <cstdlib>

namespace orva {

namespace {

void addRecord(std::string& out, char kind, const TextBox& box)
{
    out += kind;
    for (const int value : { box.left, box.top, box.right, box.bottom }) {
        out += ' ';
        out += std::to_string(value);
    }
}

/// Reads whole numbers behind the letter of a record.
class Record
{
public:
    explicit Record(const char* at)
        : m_at(at)
    {
    }
    int number()
    {
        char* end = nullptr;
        const long value = std::strtol(m_at, &end, 10);
        m_good = m_good && end != m_at;
        m_at = end;
        return static_cast<int>(value);
    }
    TextBox box()
    {
        TextBox box;
        box.left = number();
        box.top = number();
        box.right = number();
        box.bottom = number();
        return box;
    }
    /// What is left behind one blank.
    std::string rest()
    {
        m_good = m_good && *m_at == ' ' && m_at[1] != '\0';
        return m_good ? m_at + 1 : "";
    }
    bool good() const { return m_good; }

private:
    const char* m_at;
    bool m_good = true;
};

bool addTo(PageText& text, const std::string& line)
{
    Record record(line.c_str() + 1);
    switch (line[0]) {
    case 'P':
        text.paragraphs.emplace_back();
        text.paragraphs.back().box = record.box();
        return record.good();
    case 'L': {
        if (text.paragraphs.empty()) {
            return false;
        }
        TextLine& added = text.paragraphs.back().lines.emplace_back();
        added.box = record.box();
        added.baselineLeft = record.number();
        added.baselineRight = record.number();
        return record.good();
    }
    case 'W': {
        if (text.paragraphs.empty() || text.paragraphs.back().lines.empty()) {
            return false;
        }
        Word& word = text.paragraphs.back().lines.back().words.emplace_back();
        word.box = record.box();
        word.confidence = record.number();
        word.text = record.rest();
        return record.good();
    }
    default:
        return false;
    }
}

} // namespace

bool isCjk(char32_t letter)
{
    constexpr std::array<std::array<char32_t, 2>, 6> kRanges { { { 0x2E80, 0x30FF },
        { 0x31C0, 0x4DBF }, { 0x4E00, 0x9FFF }, { 0xF900, 0xFAFF }, { 0xFE30, 0xFFEF },
        { 0x20000, 0x3FFFF } } };
    for (const auto& range : kRanges) {
        if (letter >= range[0] && letter <= range[1]) {
            return true;
        }
    }
    return false;
}

bool isBlankBetween(const Word& before, const Word& after)
{
    const std::vector<char32_t> left = codePoints(before.text);
    const std::vector<char32_t> right = codePoints(after.text);
    return left.empty() || right.empty() || !isCjk(left.back()) || !isCjk(right.front());
}

std::string lineText(const TextLine& line)
{
    std::string text;
    for (std::size_t i = 0; i < line.words.size(); ++i) {
        if (i > 0 && isBlankBetween(line.words[i - 1], line.words[i])) {
            text += ' ';
        }
        text += line.words[i].text;
    }
    return text;
}

std::string serialised(const PageText& text)
{
    std::string out;
    for (const Paragraph& paragraph : text.paragraphs) {
        addRecord(out, 'P', paragraph.box);
        out += '\n';
        for (const TextLine& line : paragraph.lines) {
            addRecord(out, 'L', line.box);
            out += ' ' + std::to_string(line.baselineLeft) + ' '
                + std::to_string(line.baselineRight) + '\n';
            for (const Word& word : line.words) {
                addRecord(out, 'W', word.box);
                out += ' ' + std::to_string(static_cast<int>(word.confidence)) + ' ' + word.text
                    + '\n';
            }
        }
    }
    return out;
}

Status parsePageText(const std::string& serialisedText, PageText& out)
{
    out = {};
    for (std::size_t at = 0; at < serialisedText.size();) {
        const std::size_t end = serialisedText.find('\n', at);
        if (end == std::string::npos || end == at
            || !addTo(out, serialisedText.substr(at, end - at))) {
            return { kDamagedPage, "recognised text of a page cannot be read" };
        }
        at = end + 1;
    }
    return {};
}

} // namespace orva
