#include "scanlib/writers/pdf_text_layer.h"

#include "scanlib/writers/text_placing.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

namespace orva {

namespace {

constexpr unsigned kFirstSurrogate = 0xD800;
constexpr unsigned kSurrogates = 0x800;
constexpr unsigned kUnknownLetter = 0xFFFD;
/// ISO 32000-1, 9.10.3: a CMap holds at most this many ranges in a row.
constexpr std::size_t kRangesInARow = 100;
/// ISO 19005-2, 6.1.13: a string ends at 32,767 bytes.
constexpr std::size_t kLettersInAString = 16000;

std::string operand(double value)
{
    char text[32] = "";
    std::snprintf(text, sizeof text, "%.3f", value);
    std::string result = text;
    std::replace(result.begin(), result.end(), ',', '.'); // the host may run under any locale
    return result + ' ';
}

std::string hexCode(unsigned value)
{
    char text[16] = "";
    std::snprintf(text, sizeof text, "%04X", value);
    return text;
}

std::string utf16Code(char32_t letter)
{
    if (letter < 0x10000) {
        return hexCode(letter);
    }
    const unsigned rest = letter - 0x10000U;
    return hexCode(0xD800U + (rest >> 10U)) + hexCode(0xDC00U + (rest & 0x3FFU));
}

/// A word that leaves its height by little is laid level: programs that take text out begin a new
/// word wherever the base line moves by a fraction of a point ("ran dom").
bool levelled(const LayerLine& line, const LayerRun& run)
{
    constexpr double kMostDrift = 0.5; // of the font's size
    return !line.vertical && std::abs(line.slope) * run.length < kMostDrift * line.size;
}

} // namespace

unsigned PdfTextLayer::codeOf(char32_t letter)
{
    unsigned code = letter;
    if (letter > 0xFFFF) {
        const auto next = static_cast<unsigned>(m_beyond.size());
        if (m_beyond.count(letter) == 0 && next >= kSurrogates) {
            code = kUnknownLetter;
        } else {
            return m_beyond.emplace(letter, kFirstSurrogate + next).first->second;
        }
    }
    m_rows.insert(code >> 8U);
    return code;
}

std::string PdfTextLayer::content(
    const PageText& text, double height, double unitsPerPixelX, double unitsPerPixelY)
{
    std::string out;
    for (const Paragraph& paragraph : text.paragraphs) {
        for (const TextLine& line : paragraph.lines) {
            const LayerLine place = layerLine(line);
            const double across = place.vertical ? unitsPerPixelX : unitsPerPixelY;
            const double along = place.vertical ? unitsPerPixelY : unitsPerPixelX;
            const double size = place.size * across;
            out += "/F0 " + operand(size) + "Tf\n";
            for (const LayerRun& run : place.runs) {
                const double slope = levelled(place, run) ? 0 : place.slope;
                const double angle = std::atan(slope * unitsPerPixelY / unitsPerPixelX);
                const std::string turn = place.vertical
                    ? "0 -1 1 0 "
                    : operand(std::cos(angle)) + operand(-std::sin(angle))
                        + operand(std::sin(angle)) + operand(std::cos(angle));
                const double x = place.vertical ? place.base : run.start;
                const double y = place.vertical
                    ? run.start
                    : place.base + place.slope * run.start + (place.slope - slope) * run.length / 2;
                const double natural = size * static_cast<double>(run.letters.size());
                out += turn + operand(x * unitsPerPixelX) + operand(height - y * unitsPerPixelY)
                    + "Tm " + operand(100 * run.length * along / (natural * std::cos(angle)))
                    + "Tz <";
                for (std::size_t i = 0; i < run.letters.size(); ++i) {
                    out += i > 0 && i % kLettersInAString == 0 ? "> Tj <" : "";
                    out += hexCode(codeOf(run.letters[i]));
                }
                out += "> Tj\n";
            }
        }
    }
    return out.empty() ? out : "BT 3 Tr\n" + out + "ET\n";
}

QPDFObjectHandle PdfTextLayer::font(QPDF& pdf)
{
    if (!m_font.isInitialized()) {
        m_font = pdf.makeIndirectObject(QPDFObjectHandle::newDictionary());
    }
    return m_font;
}

std::string PdfTextLayer::unicodeMap() const
{
    std::vector<std::string> ranges;
    for (const unsigned row : m_rows) {
        const std::string first = hexCode(row << 8U);
        std::string& range = ranges.emplace_back("<");
        range.append(first).append("> <").append(hexCode((row << 8U) | 0xFFU));
        range.append("> <").append(first).append(">\n");
    }
    for (const auto& [letter, code] : m_beyond) {
        ranges.push_back(
            "<" + hexCode(code) + "> <" + hexCode(code) + "> <" + utf16Code(letter) + ">\n");
    }
    std::string map = "/CIDInit /ProcSet findresource begin\n12 dict begin\nbegincmap\n"
                      "/CIDSystemInfo << /Registry (Adobe) /Ordering (UCS) /Supplement 0 >> def\n"
                      "/CMapName /Adobe-Identity-UCS def\n/CMapType 2 def\n"
                      "1 begincodespacerange\n<0000> <FFFF>\nendcodespacerange\n";
    for (std::size_t at = 0; at < ranges.size(); at += kRangesInARow) {
        const std::size_t count = std::min(kRangesInARow, ranges.size() - at);
        map += std::to_string(count) + " beginbfrange\n";
        for (std::size_t i = at; i < at + count; ++i) {
            map += ranges[i];
        }
        map += "endbfrange\n";
    }
    return map + "endcmap\nCMapName currentdict /CMap defineresource pop\nend\nend\n";
}

void PdfTextLayer::finish(QPDF& pdf)
{
    if (!m_font.isInitialized()) {
        return;
    }
    QPDFObjectHandle descriptor = QPDFObjectHandle::parse(
        "<< /Type /FontDescriptor /FontName /Invisible /Flags 4 /FontBBox [0 -200 1000 800]"
        " /ItalicAngle 0 /Ascent 800 /Descent -200 /CapHeight 800 /StemV 80 >>");
    QPDFObjectHandle letters = QPDFObjectHandle::parse(
        "<< /Type /Font /Subtype /CIDFontType2 /BaseFont /Invisible /DW 1000"
        " /CIDSystemInfo << /Registry (Adobe) /Ordering (Identity) /Supplement 0 >> >>");
    letters.replaceKey("/FontDescriptor", pdf.makeIndirectObject(descriptor));
    QPDFObjectHandle letterList = QPDFObjectHandle::newArray();
    letterList.appendItem(pdf.makeIndirectObject(letters));
    m_font.replaceKey("/Type", QPDFObjectHandle::newName("/Font"));
    m_font.replaceKey("/Subtype", QPDFObjectHandle::newName("/Type0"));
    m_font.replaceKey("/BaseFont", QPDFObjectHandle::newName("/Invisible"));
    m_font.replaceKey("/Encoding", QPDFObjectHandle::newName("/Identity-H"));
    m_font.replaceKey("/DescendantFonts", letterList);
    m_font.replaceKey("/ToUnicode", QPDFObjectHandle::newStream(&pdf, unicodeMap()));
}

} // namespace orva
