#include "scanlib/base/text.h"

#include <cstring>

namespace orva {

namespace {

constexpr char32_t kUnknownLetter = 0xFFFD;

} // namespace

std::string_view utf8Prefix(std::string_view text, std::size_t maxBytes)
{
    if (text.size() <= maxBytes) {
        return text;
    }
    std::size_t end = maxBytes;
    // A byte 10xxxxxx continues a character: go back to where it began.
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) {
        --end;
    }
    return text.substr(0, end);
}

void copyText(std::string_view text, char* out, std::size_t size)
{
    const std::string_view fitting = utf8Prefix(text, size - 1);
    std::memcpy(out, fitting.data(), fitting.size());
    out[fitting.size()] = '\0';
}

bool isTerminated(const char* array, std::size_t size)
{
    return strnlen(array, size) < size;
}

char32_t nextLetter(std::string_view text, std::size_t& at)
{
    const auto first = static_cast<unsigned char>(text[at++]);
    if (first < 0x80) {
        return first;
    }
    const int more = first >= 0xF0 && first < 0xF8 ? 3 : first >= 0xE0 ? 2 : first >= 0xC2 ? 1 : 0;
    if (more == 0 || first >= 0xF8) {
        return kUnknownLetter;
    }
    char32_t code = first & (0x3FU >> static_cast<unsigned>(more));
    for (int i = 0; i < more; ++i) {
        if (at >= text.size() || (static_cast<unsigned char>(text[at]) & 0xC0U) != 0x80U) {
            return kUnknownLetter;
        }
        code = (code << 6U) | (static_cast<unsigned char>(text[at++]) & 0x3FU);
    }
    constexpr char32_t kLeast[] = { 0, 0x80, 0x800, 0x10000 };
    const bool surrogate = code >= 0xD800 && code < 0xE000;
    return code < kLeast[more] || code > 0x10FFFF || surrogate ? kUnknownLetter : code;
}

std::vector<char32_t> codePoints(std::string_view text)
{
    std::vector<char32_t> letters;
    for (std::size_t at = 0; at < text.size();) {
        const char32_t letter = nextLetter(text, at);
        const bool isText = letter >= 0x20 && (letter & 0xFFFEU) != 0xFFFE;
        letters.push_back(isText ? letter : kUnknownLetter);
    }
    return letters;
}

} // namespace orva
