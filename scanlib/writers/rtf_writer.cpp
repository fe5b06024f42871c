// RTF 1.9: a section a page of the size of the scanned one, paragraphs in reading order with the
// font size, indents and distances of the scan. 7-bit: all other characters are written as \uN with
// a question mark for readers that do not know it. Lengths are twips, 1/1440 inch.
#include "scanlib/base/local_time.h"
#include "scanlib/base/units.h"
#include "scanlib/writers/encoders.h"
#include "scanlib/writers/flow_text.h"
#include "scanlib/writers/output_file.h"

#include <algorithm>
#include <cmath>
#include <ctime>

namespace orva {

namespace {

constexpr int kTwipsPerInch = 1440;
constexpr int kTwipsPerPoint = 20;
constexpr int kMaxPageTwips = 31680; // 22 inches: what word processors take
// Recognised text seldom breaks at the same places as the printed one; the room below takes the
// lines that come out longer.
constexpr int kBottomMargin = 360;
constexpr double kMinPoints = 5;
constexpr double kMaxPoints = 72;
constexpr double kLineSpacing = 1.2; // of a paragraph of one line, in font sizes
constexpr double kCentredIndent = 0.1; // at least, on both sides, in widths of the text block
constexpr double kCentredOffset = 0.02; // at most, of the paragraph's middle

std::string escaped(std::string_view utf8)
{
    std::string out;
    for (const char16_t unit : utf16Of(utf8)) {
        if (unit == u'\t') {
            out += "\\tab ";
        } else if (unit == u'\\' || unit == u'{' || unit == u'}') {
            out += '\\';
            out += static_cast<char>(unit);
        } else if (unit >= 0x20 && unit < 0x7F) {
            out += static_cast<char>(unit);
        } else if (unit >= 0x7F) {
            out += "\\u" + std::to_string(static_cast<std::int16_t>(unit)) + "?";
        }
    }
    return out;
}

std::string control(const char* word, long value)
{
    return "\\" + std::string(word) + std::to_string(value);
}

std::string header(const DocumentInfo& info)
{
    const std::tm parts = localTime(info.createdUnixSeconds);
    // Code page and character set 134 are those of Simplified Chinese.
    return "{\\rtf1\\ansi\\ansicpg936\\uc1\\deff0\\deflang1033\\deflangfe2052\n"
           "{\\fonttbl{\\f0\\froman\\fcharset0 Times New Roman;}"
           "{\\f1\\fnil\\fcharset134 SimSun{\\*\\falt Noto Serif CJK SC};}}\n"
           "{\\info{\\title "
        + escaped(info.title) + "}{\\creatim" + control("yr", parts.tm_year + 1900)
        + control("mo", parts.tm_mon + 1) + control("dy", parts.tm_mday)
        + control("hr", parts.tm_hour) + control("min", parts.tm_min) + control("sec", parts.tm_sec)
        + "}{\\doccomm " + escaped(info.producer) + "}}\n{\\*\\generator " + escaped(info.producer)
        + ";}\n\\nowidctlpar\n";
}

double medianOf(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// One page's text in twips.
class PageLayout
{
public:
    PageLayout(const EncodedPage& page, const PageText& text)
        : m_text(text)
        , m_scaleX(kTwipsPerInch / (page.dpiX > 0 ? page.dpiX : units::kAssumedDpi))
        , m_scaleY(kTwipsPerInch / (page.dpiY > 0 ? page.dpiY : units::kAssumedDpi))
        , m_width(length(page.width, m_scaleX))
        , m_height(length(page.height, m_scaleY))
        , m_left(m_width)
        , m_top(m_height)
    {
        for (const Paragraph& paragraph : text.paragraphs) {
            m_left = std::min(m_left, x(paragraph.box.left));
            m_top = std::min(m_top, y(paragraph.box.top));
            m_right = std::max(m_right, x(paragraph.box.right));
        }
        if (text.paragraphs.empty()) {
            m_left = m_top = m_right = 0;
        }
    }

    std::string section() const
    {
        return "\\sectd\\sbkpage" + control("pgwsxn", m_width) + control("pghsxn", m_height)
            + (m_width > m_height ? "\\lndscpsxn" : "") + control("marglsxn", m_left)
            + control("margrsxn", std::max(0, m_width - m_right)) + control("margtsxn", m_top)
            + control("margbsxn", std::min(kBottomMargin, m_height / 10)) + "\n";
    }

    std::string paragraphs() const
    {
        std::string out;
        int bottom = m_top;
        for (const Paragraph& paragraph : m_text.paragraphs) {
            const std::vector<std::string> lines = typedLines(paragraph);
            if (lines.empty()) {
                continue;
            }
            out += properties(paragraph, y(paragraph.box.top) - bottom);
            for (std::size_t i = 0; i < lines.size(); ++i) {
                out += (i > 0 ? "\\line " : "") + escaped(lines[i]);
            }
            out += "\\par\n";
            bottom = y(paragraph.box.bottom);
        }
        return out;
    }

private:
    static int length(int pixels, double scale)
    {
        return std::clamp(static_cast<int>(std::lround(pixels * scale)), 1, kMaxPageTwips);
    }
    int x(int pixels) const { return std::clamp(round(pixels * m_scaleX), 0, m_width); }
    int y(int pixels) const { return std::clamp(round(pixels * m_scaleY), 0, m_height); }
    static int round(double value) { return static_cast<int>(std::lround(value)); }

    /// In half points.
    int fontSize(const Paragraph& paragraph) const
    {
        std::vector<double> ems;
        for (const TextLine& line : paragraph.lines) {
            ems.push_back(emPixels(line));
        }
        const double points = medianOf(std::move(ems)) * m_scaleY / kTwipsPerPoint;
        return round(std::clamp(points, kMinPoints, kMaxPoints) * 2);
    }

    /// Distance of two base lines.
    int lineTwips(const Paragraph& paragraph, int halfPoints) const
    {
        std::vector<double> pitches;
        for (std::size_t i = 1; i < paragraph.lines.size(); ++i) {
            const double pitch =
                paragraph.lines[i].baselineLeft - paragraph.lines[i - 1].baselineLeft;
            if (pitch > 0) {
                pitches.push_back(pitch);
            }
        }
        const int least = halfPoints * kTwipsPerPoint / 2;
        const int own = round(least * kLineSpacing);
        return pitches.empty()
            ? own
            : std::clamp(round(medianOf(std::move(pitches)) * m_scaleY), least, 3 * own);
    }

    bool isCentred(const Paragraph& paragraph) const
    {
        const double block = m_right - m_left;
        const double before = x(paragraph.box.left) - m_left;
        const double behind = m_right - x(paragraph.box.right);
        return std::min(before, behind) > kCentredIndent * block
            && std::abs(before - behind) / 2 < kCentredOffset * block;
    }

    std::string properties(const Paragraph& paragraph, int distance) const
    {
        const int halfPoints = fontSize(paragraph);
        const int pitch = lineTwips(paragraph, halfPoints);
        std::string out = "\\pard\\plain\\nowidctlpar";
        if (isCentred(paragraph)) {
            out += "\\qc";
        } else {
            const int indent = x(paragraph.box.left) - m_left;
            const int first = x(paragraph.lines.front().box.left) - x(paragraph.box.left);
            out += "\\ql" + control("li", indent) + control("fi", first);
            for (const int stop : tabStops(paragraph)) {
                out += control("tx", x(stop) - m_left);
            }
        }
        // Below zero: exactly so much, whatever the font asks for. It already holds the leading.
        const int leading = pitch - halfPoints * kTwipsPerPoint / 2;
        out += control("sb", std::max(0, distance - leading)) + control("sl", -pitch)
            + "\\slmult0\\loch\\f0\\hich\\f0\\dbch\\f1" + control("fs", halfPoints) + " ";
        return out;
    }

    const PageText& m_text;
    const double m_scaleX; ///< twips a pixel
    const double m_scaleY;
    const int m_width;
    const int m_height;
    int m_left; ///< of all text
    int m_top;
    int m_right = 0;
};

class RtfWriter : public DocumentWriter
{
public:
    Status begin(const std::filesystem::path& path, const DocumentInfo& info) override
    {
        if (Status status = m_file.open(path); !status.ok()) {
            return status;
        }
        return put(header(info));
    }

    Status addPage(const EncodedPage& page) override
    {
        PageText text;
        if (Status status = readText(page, text); !status.ok()) {
            return status;
        }
        const PageLayout layout(page, text);
        const std::string paragraphs = layout.paragraphs();
        const std::string all = (m_pages > 0 ? "\\sect" : "") + layout.section()
            + (paragraphs.empty() ? "\\pard\\plain\\par\n" : paragraphs);
        ++m_pages;
        return put(all);
    }

    Status finish() override
    {
        if (m_pages == 0) {
            return { kInternal, "file without a page" };
        }
        const Status status = put("}\n");
        return status.ok() ? m_file.finish() : status;
    }

private:
    Status put(const std::string& text) { return m_file.write(text.data(), text.size()); }

    OutputFile m_file;
    int m_pages = 0;
};

} // namespace

std::unique_ptr<DocumentWriter> makeRtfWriter()
{
    return std::make_unique<RtfWriter>();
}

} // namespace orva
