#include "scanlib/writers/metadata.h"

#include "scanlib/base/local_time.h"
#include "scanlib/writers/xml_text.h"

#include <glib.h>
#include <zlib.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <ctime>

namespace orva {

namespace {

std::string xmpDate(std::int64_t unixSeconds)
{
    const std::tm parts = localTime(unixSeconds);
    char text[40] = "";
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S%z", &parts);
    return std::string(text).insert(std::strlen(text) - 2, ":");
}

/// The date that PNG recommends: RFC 1123, in UTC, with English names under any locale.
std::string mailDate(std::int64_t unixSeconds)
{
    static constexpr const char* kDays[] = { "Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat" };
    static constexpr const char* kMonths[] = { "Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul",
        "Aug", "Sep", "Oct", "Nov", "Dec" };
    const auto seconds = static_cast<std::time_t>(unixSeconds);
    std::tm parts {};
    gmtime_r(&seconds, &parts);
    std::array<char, 64> text {};
    std::snprintf(text.data(), text.size(), "%s, %02d %s %d %02d:%02d:%02d GMT",
        kDays[parts.tm_wday], parts.tm_mday, kMonths[parts.tm_mon], parts.tm_year + 1900,
        parts.tm_hour, parts.tm_min, parts.tm_sec);
    return text.data();
}

void putBigEndian(std::string& out, std::size_t value, int bytes)
{
    for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8) {
        out += static_cast<char>(static_cast<unsigned char>(value >> shift));
    }
}

/// International text: keyword, not compressed, no language, no translated keyword, UTF-8.
void putTextChunk(std::string& out, const std::string& keyword, const std::string& text)
{
    const std::string data = "iTXt" + keyword + std::string(5, '\0') + text;
    putBigEndian(out, data.size() - 4, 4);
    out += data;
    putBigEndian(out,
        crc32(0, reinterpret_cast<const Bytef*>(data.data()), static_cast<uInt>(data.size())), 4);
}

bool holds(const std::vector<std::uint8_t>& bytes, std::size_t at, const char* text)
{
    const std::size_t size = std::strlen(text);
    return bytes.size() >= at + size && std::memcmp(bytes.data() + at, text, size) == 0;
}

Splice jpegMetadata(const std::vector<std::uint8_t>& head, const DocumentInfo& info)
{
    constexpr std::size_t kHeader = 4; // SOI and the mark of APP0, whose length follows
    const std::string xmp =
        std::string("http://ns.adobe.com/xap/1.0/") + '\0' + xmpPacket(info, PdfClaim::kNone);
    Splice result;
    result.at = kHeader + static_cast<std::size_t>(head[kHeader]) * 256 + head[kHeader + 1];
    result.bytes = "\xFF\xE1";
    putBigEndian(result.bytes, xmp.size() + 2, 2);
    result.bytes += xmp;
    return result;
}

Splice pngMetadata(const DocumentInfo& info)
{
    Splice result;
    result.at = 8 + 12 + 13; // signature and IHDR
    putTextChunk(result.bytes, "Title", info.title);
    putTextChunk(result.bytes, "Creation Time", mailDate(info.createdUnixSeconds));
    putTextChunk(result.bytes, "Software", info.producer);
    return result;
}

} // namespace

std::string plainTitle(const std::string& fileName)
{
    gchar* const valid = g_utf8_make_valid(fileName.data(), static_cast<gssize>(fileName.size()));
    std::string title;
    const gchar* next = nullptr;
    for (const gchar* at = valid; *at != '\0'; at = next) {
        next = g_utf8_find_next_char(at, nullptr);
        const gunichar letter = g_utf8_get_char(at);
        if (g_unichar_iscntrl(letter) != 0) {
            title += ' ';
        } else if ((letter & 0xFFFEU) == 0xFFFEU) {
            title += "\xEF\xBF\xBD";
        } else {
            title.append(at, next);
        }
    }
    g_free(valid);
    return title;
}

Splice pictureMetadata(const std::vector<std::uint8_t>& head, const DocumentInfo& info)
{
    if (holds(head, 6, "JFIF")) {
        return jpegMetadata(head, info);
    }
    return holds(head, 1, "PNG") ? pngMetadata(info) : Splice();
}

std::string pdfDate(std::int64_t unixSeconds)
{
    const std::tm parts = localTime(unixSeconds);
    char text[40] = "";
    std::strftime(text, sizeof text, "D:%Y%m%d%H%M%S%z", &parts);
    return std::string(text).insert(std::strlen(text) - 2, "'") + "'";
}

std::string xmpPacket(const DocumentInfo& info, PdfClaim claim)
{
    const std::string date = xmpDate(info.createdUnixSeconds);
    return "<?xpacket begin=\"\xEF\xBB\xBF\" id=\"W5M0MpCehiHzreSzNTczkc9d\"?>\n"
           "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\">\n"
           "<rdf:RDF xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\">\n"
           "<rdf:Description rdf:about=\"\" xmlns:dc=\"http://purl.org/dc/elements/1.1/\""
           " xmlns:xmp=\"http://ns.adobe.com/xap/1.0/\" xmlns:pdf=\"http://ns.adobe.com/pdf/1.3/\""
           " xmlns:pdfaid=\"http://www.aiim.org/pdfa/ns/id/\">\n"
        + std::string(claim == PdfClaim::kPdfA2b
                ? "<pdfaid:part>2</pdfaid:part><pdfaid:conformance>B</pdfaid:conformance>\n"
                : "")
        + "<dc:title><rdf:Alt><rdf:li xml:lang=\"x-default\">" + xmlEscaped(info.title)
        + "</rdf:li></rdf:Alt></dc:title>\n"
          "<pdf:Producer>"
        + xmlEscaped(info.producer) + "</pdf:Producer>\n<xmp:CreatorTool>"
        + xmlEscaped(info.producer) + "</xmp:CreatorTool>\n<xmp:CreateDate>" + date
        + "</xmp:CreateDate>\n"
          "</rdf:Description>\n</rdf:RDF>\n</x:xmpmeta>\n<?xpacket end=\"w\"?>";
}

} // namespace orva
