#include "scanlib/writers/pdf_metadata.h"

#include "scanlib/writers/xml_text.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace orva {

namespace {

std::tm localParts(std::int64_t unixSeconds)
{
    const auto seconds = static_cast<std::time_t>(unixSeconds);
    std::tm parts {};
    localtime_r(&seconds, &parts);
    return parts;
}

std::string xmpDate(std::int64_t unixSeconds)
{
    const std::tm parts = localParts(unixSeconds);
    const long minutes = parts.tm_gmtoff / 60;
    std::array<char, 64> text {};
    std::snprintf(text.data(), text.size(), "%04d-%02d-%02dT%02d:%02d:%02d%c%02ld:%02ld",
        parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday, parts.tm_hour, parts.tm_min,
        parts.tm_sec, minutes < 0 ? '-' : '+', std::labs(minutes) / 60, std::labs(minutes) % 60);
    return text.data();
}

} // namespace

std::string pdfDate(std::int64_t unixSeconds)
{
    const std::tm parts = localParts(unixSeconds);
    const long minutes = parts.tm_gmtoff / 60;
    std::array<char, 64> text {};
    std::snprintf(text.data(), text.size(), "D:%04d%02d%02d%02d%02d%02d%c%02ld'%02ld'",
        parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday, parts.tm_hour, parts.tm_min,
        parts.tm_sec, minutes < 0 ? '-' : '+', std::labs(minutes) / 60, std::labs(minutes) % 60);
    return text.data();
}

std::string xmpPacket(const DocumentInfo& info)
{
    const std::string date = xmpDate(info.createdUnixSeconds);
    return "<?xpacket begin=\"\xEF\xBB\xBF\" id=\"W5M0MpCehiHzreSzNTczkc9d\"?>\n"
           "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\">\n"
           "<rdf:RDF xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\">\n"
           "<rdf:Description rdf:about=\"\" xmlns:dc=\"http://purl.org/dc/elements/1.1/\""
           " xmlns:xmp=\"http://ns.adobe.com/xap/1.0/\" xmlns:pdf=\"http://ns.adobe.com/pdf/1.3/\""
           " xmlns:pdfaid=\"http://www.aiim.org/pdfa/ns/id/\">\n"
           "<pdfaid:part>2</pdfaid:part><pdfaid:conformance>B</pdfaid:conformance>\n"
           "<dc:title><rdf:Alt><rdf:li xml:lang=\"x-default\">"
        + xmlEscaped(info.title)
        + "</rdf:li></rdf:Alt></dc:title>\n"
          "<pdf:Producer>"
        + xmlEscaped(info.producer) + "</pdf:Producer>\n<xmp:CreateDate>" + date
        + "</xmp:CreateDate>\n"
          "</rdf:Description>\n</rdf:RDF>\n</x:xmpmeta>\n<?xpacket end=\"w\"?>";
}

} // namespace orva
