#include "scanlib/writers/xml_text.h"

namespace orva {

std::string xmlEscaped(const std::string& text)
{
    std::string result;
    for (const char c : text) {
        switch (c) {
        case '&':
            result += "&amp;";
            break;
        case '<':
            result += "&lt;";
            break;
        case '>':
            result += "&gt;";
            break;
        default:
            result += static_cast<unsigned char>(c) < 0x20 ? ' ' : c;
        }
    }
    return result;
}

} // namespace orva
