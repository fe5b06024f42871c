#include "scanlib/base/text.h"

#include <cstring>

namespace orva {

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

std::vector<char32_t> codePoints(std::string_view text)
{
    std::vector<char32_t> letters;
    for (std::size_t at = 0; at < text.size();) {
        const auto first = static_cast<unsigned char>(text[at++]);
        const int more = first >= 0xF0 ? 3 : first >= 0xE0 ? 2 : first >= 0xC0 ? 1 : 0;
        char32_t code = more == 0 ? first : first & (0x3FU >> static_cast<unsigned>(more));
        int got = 0;
        for (; got < more && at < text.size(); ++got, ++at) {
            const auto next = static_cast<unsigned char>(text[at]);
            if ((next & 0xC0U) != 0x80U) {
                break;
            }
            code = (code << 6U) | (next & 0x3FU);
        }
        const bool good = got == more && (more > 0 || first < 0x80) && code >= 0x20
            && code <= 0x10FFFF && !(code >= 0xD800 && code <= 0xDFFF)
            && (code & 0xFFFEU) != 0xFFFE;
        letters.push_back(good ? code : U'\uFFFD');
    }
    return letters;
}

} // namespace orva
