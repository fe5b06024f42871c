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

std::string textOfArray(const char* array, std::size_t size)
{
    return { array, strnlen(array, size) };
}

bool isTerminated(const char* array, std::size_t size)
{
    return strnlen(array, size) < size;
}

} // namespace orva
