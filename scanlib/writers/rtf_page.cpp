// Lengths are twips, 1/1440 inch.
#include "scanlib/writers/rtf_page.h"

#include "scanlib/base/units.h"
#include "scanlib/writers/flow_text.h"
#include "scanlib/writers/page_rulings.h"
#include "scanlib/writers/ruled_rows.h"
#include "scanlib/writers/ruled_table.h"
#include "scanlib/writers/text_rows.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace orva {

namespace {

constexpr int kTwipsPerInch = 1440;
constexpr int kTwipsPerHalfPoint = 10;
constexpr int kMaxPageTwips = 31680; // 22 inches: what word processors take
// Recognised text seldom breaks at the same places as the printed one; the room below takes the
// lines that come out longer.
constexpr int kBottomMargin = 360;
constexpr double kMinPoints = 5;
constexpr double kMaxPoints = 72;
constexpr double kLineSpacing = 1.2; // of a paragraph of one line, in font sizes
constexpr double kCentredIndent = 0.1; // at least, on both sides, in widths of the text block
constexpr double kCentredOffset = 0.02; // at most, of the paragraph's middle
constexpr double kBodySize = 0.2; // share by which a line of the body may seem off its size
constexpr double kLeastIndent = 0.6; // em squares; less is the edge of a letter
constexpr double kColumnJump = 5; // em squares up the page, from column to column
constexpr int kCellMargin = 80;

double medianOf(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// Lines of one size that are set as one paragraph.
struct Block
{
    Paragraph text;
    int halfPoints = 0;
};

class PageSetter
{
public:
    PageSetter(const EncodedPage& page, const PageText& text)
        : m_scaleX(kTwipsPerInch / (page.dpiX > 0 ? page.dpiX : units::kAssumedDpi))
        , m_scaleY(kTwipsPerInch / (page.dpiY > 0 ? page.dpiY : units::kAssumedDpi))
        , m_width(length(page.width, m_scaleX))
        , m_height(length(page.height, m_scaleY))
    {
        const double slope = textSlope(text);
        m_straight = straightened(text, slope);
        measureEdges();
        m_tables = findRuledTables(
            findRulings(page, slope), page.dpiX > 0 ? page.dpiX : units::kAssumedDpi);
        PageText rest = m_straight;
        for (const RuledTable& table : m_tables) {
            removeTable(rest, table);
        }
        makeBlocks(rest);
    }

    std::string section() const
    {
        const std::size_t second = secondColumn();
        std::string out = "\\sectd\\sbkpage" + rtfControl("pgwsxn", m_width)
            + rtfControl("pghsxn", m_height) + (m_width > m_height ? "\\lndscpsxn" : "")
            + rtfControl("marglsxn", m_left)
            + rtfControl("margrsxn", std::max(0, m_width - m_right)) + rtfControl("margtsxn", m_top)
            + rtfControl("margbsxn", std::min(kBottomMargin, m_height / 10));
        if (second == 0) {
            return out + "\n" + blocks(0, m_blocks.size(), m_left, m_right);
        }
        const int left = leftOf(second, m_blocks.size());
        const int gap = left - rightOf(0, second);
        out += "\\cols2\\colno1" + rtfControl("colw", left - gap - m_left)
            + rtfControl("colsr", gap) + "\\colno2" + rtfControl("colw", m_right - left) + "\n";
        return out + blocks(0, second, m_left, left - gap) + "\\column\n"
            + blocks(second, m_blocks.size(), left, m_right);
    }

private:
    static int round(double value) { return static_cast<int>(std::lround(value)); }
    static int length(int pixels, double scale)
    {
        return std::clamp(round(pixels * scale), 1, kMaxPageTwips);
    }
    int x(double pixels) const { return std::clamp(round(pixels * m_scaleX), 0, m_width); }
    int y(double pixels) const { return std::clamp(round(pixels * m_scaleY), 0, m_height); }

    void measureEdges()
    {
        m_left = m_straight.paragraphs.empty() ? 0 : m_width;
        m_top = m_straight.paragraphs.empty() ? 0 : m_height;
        for (const Paragraph& paragraph : m_straight.paragraphs) {
            m_left = std::min(m_left, x(paragraph.box.left));
            m_top = std::min(m_top, y(paragraph.box.top));
            m_right = std::max(m_right, x(paragraph.box.right));
        }
    }

    /// In half points, as measured.
    double sizeOf(const TextLine& line) const
    {
        const double points = emPixels(line) * m_scaleY / kTwipsPerHalfPoint / 2;
        return std::clamp(points, kMinPoints, kMaxPoints) * 2;
    }

    /// The size that most of the text has.
    double bodySize(const PageText& text) const
    {
        std::vector<std::pair<double, int>> sizes;
        int all = 0;
        for (const Paragraph& paragraph : text.paragraphs) {
            for (const TextLine& line : paragraph.lines) {
                if (!line.words.empty()) {
                    sizes.emplace_back(sizeOf(line), line.box.width());
                    all += line.box.width();
                }
            }
        }
        std::sort(sizes.begin(), sizes.end());
        int passed = 0;
        for (const auto& [size, width] : sizes) {
            passed += width;
            if (2 * passed >= all) {
                return size;
            }
        }
        return 2 * kMinPoints;
    }

    /// Cuts paragraphs where a heading was taken for one of their lines.
    void makeBlocks(const PageText& text)
    {
        m_body = bodySize(text);
        for (const Paragraph& paragraph : text.paragraphs) {
            bool wasLarge = false;
            bool isNew = true;
            for (const TextLine& line : paragraph.lines) {
                if (line.words.empty()) {
                    continue;
                }
                const bool isLarge = sizeOf(line) > m_body * (1 + kBodySize);
                if (isNew || isLarge != wasLarge) {
                    m_blocks.emplace_back();
                }
                isNew = false;
                wasLarge = isLarge;
                m_blocks.back().text.lines.push_back(line);
            }
        }
        for (Block& block : m_blocks) {
            finishBlock(block);
        }
        m_bodyPitch = bodyPitch();
    }

    void finishBlock(Block& block) const
    {
        PageText alone { { std::move(block.text) } };
        fitBoxes(alone);
        block.text = std::move(alone.paragraphs.front());
        std::vector<double> sizes;
        std::transform(block.text.lines.begin(), block.text.lines.end(), std::back_inserter(sizes),
            [this](const TextLine& line) { return sizeOf(line); });
        const double size = medianOf(std::move(sizes));
        const bool isBody = std::abs(size - m_body) <= kBodySize * m_body;
        // Headings of one level come out alike in whole points.
        block.halfPoints = isBody ? round(m_body) : 2 * round(size / 2);
    }

    /// Of paragraphs of the body.
    int bodyPitch() const
    {
        std::vector<double> pitches;
        for (const Block& block : m_blocks) {
            for (std::size_t i = 1; i < block.text.lines.size(); ++i) {
                const double pitch =
                    block.text.lines[i].baselineLeft - block.text.lines[i - 1].baselineLeft;
                if (pitch > 0 && block.halfPoints == round(m_body)) {
                    pitches.push_back(pitch * m_scaleY);
                }
            }
        }
        const int least = round(m_body * kTwipsPerHalfPoint);
        const int own = round(least * kLineSpacing);
        return pitches.empty() ? own : std::clamp(round(medianOf(pitches)), least, 3 * own);
    }

    int pitchOf(const Block& block) const
    {
        return block.halfPoints == round(m_body)
            ? m_bodyPitch
            : round(block.halfPoints * kTwipsPerHalfPoint * kLineSpacing);
    }

    int leftOf(std::size_t from, std::size_t to) const
    {
        int left = m_width;
        for (std::size_t i = from; i < to; ++i) {
            left = std::min(left, x(m_blocks[i].text.box.left));
        }
        return left;
    }
    int rightOf(std::size_t from, std::size_t to) const
    {
        int right = 0;
        for (std::size_t i = from; i < to; ++i) {
            right = std::max(right, x(m_blocks[i].text.box.right));
        }
        return right;
    }

    /// The first block of the second column of a page that has two from top to bottom; else 0.
    std::size_t secondColumn() const
    {
        for (std::size_t i = 1; i < m_blocks.size() && m_tables.empty(); ++i) {
            const double up = m_blocks[i - 1].text.box.top - m_blocks[i].text.box.top;
            if (up * m_scaleY > kColumnJump * m_body * kTwipsPerHalfPoint) {
                return leftOf(i, m_blocks.size()) > rightOf(0, i) ? i : 0;
            }
        }
        return 0;
    }

    /// Blocks in reading order, each table before what stands below its upper edge.
    std::string blocks(std::size_t from, std::size_t to, int left, int right) const
    {
        std::string out;
        int bottom = m_top;
        std::size_t table = 0;
        for (std::size_t i = from; i < to; ++i) {
            const Paragraph& text = m_blocks[i].text;
            while (table < m_tables.size() && m_tables[table].edgesY.front() < text.box.top) {
                out += tableText(m_tables[table], left, bottom);
                ++table;
            }
            out += blockText(m_blocks[i], y(text.box.top) - bottom, left, right);
            bottom = y(text.box.bottom);
        }
        for (; table < m_tables.size(); ++table) {
            out += tableText(m_tables[table], left, bottom);
        }
        return out.empty() ? "\\pard\\plain\\par\n" : out;
    }

    std::string blockText(const Block& block, int distance, int left, int right) const
    {
        const std::vector<std::string> lines = typedLines(block.text);
        std::string out = properties(block, distance, left, right);
        for (std::size_t i = 0; i < lines.size(); ++i) {
            out += (i > 0 ? "\\line " : "") + rtfText(lines[i]);
        }
        return out + "\\par\n";
    }

    static std::string fonts(int halfPoints)
    {
        return "\\loch\\f0\\hich\\f0\\dbch\\f1" + rtfControl("fs", halfPoints) + " ";
    }

    bool isCentred(const Paragraph& paragraph, int left, int right) const
    {
        const double block = right - left;
        const double before = x(paragraph.box.left) - left;
        const double behind = right - x(paragraph.box.right);
        return std::min(before, behind) > kCentredIndent * block
            && std::abs(before - behind) / 2 < kCentredOffset * block;
    }

    std::string properties(const Block& block, int distance, int left, int right) const
    {
        const Paragraph& paragraph = block.text;
        const int em = block.halfPoints * kTwipsPerHalfPoint;
        std::string out = "\\pard\\plain\\nowidctlpar";
        if (isCentred(paragraph, left, right)) {
            out += "\\qc";
        } else {
            const auto indent = [em](int twips) {
                return std::abs(twips) < kLeastIndent * em ? 0 : twips;
            };
            const int own = indent(x(paragraph.box.left) - left);
            const int first = indent(x(paragraph.lines.front().box.left) - x(paragraph.box.left));
            out += "\\ql" + rtfControl("li", own) + rtfControl("fi", first);
            for (const int stop : tabStops(paragraph)) {
                out += rtfControl("tx", x(stop) - left);
            }
        }
        // Below zero: exactly so much, whatever the font asks for. It already holds the leading.
        const int pitch = pitchOf(block);
        out += rtfControl("sb", std::max(0, distance - (pitch - em))) + rtfControl("sl", -pitch)
            + "\\slmult0" + fonts(block.halfPoints);
        return out;
    }

    std::string tableText(const RuledTable& table, int left, int& bottom) const
    {
        std::vector<double> sizes;
        for (const RuledCell& cell : table.cells) {
            for (const TextLine& line : textInBox(m_straight, cell).lines) {
                sizes.push_back(sizeOf(line));
            }
        }
        const int halfPoints = sizes.empty() ? round(m_body) : round(medianOf(std::move(sizes)));
        std::string out = "\\pard\\plain"
            + rtfControl("sl", -std::max(20, y(table.edgesY.front()) - bottom)) + "\\slmult0"
            + rtfControl("fs", 2) + "\\par\n";
        std::vector<int> spanned(table.edgesX.size(), 0); // rows that a cell above still reaches
        for (const TableRow& row : ruledRows(m_straight, table)) {
            out += rowText(table, row, left, halfPoints, spanned);
        }
        bottom = y(table.edgesY.back());
        return out;
    }

    /// Every column has a cell, or belongs to one that spans it.
    std::string rowText(const RuledTable& table, const TableRow& row, int left, int halfPoints,
        std::vector<int>& spanned) const
    {
        std::string head = "\\trowd" + rtfControl("trgaph", kCellMargin)
            + rtfControl("trleft", x(table.edgesX.front()) - left);
        std::string cells;
        auto next = row.cells.begin();
        for (std::size_t column = 0; column + 1 < table.edgesX.size();) {
            const bool isCell = next != row.cells.end() && next->column == static_cast<int>(column);
            const std::size_t columns = isCell ? static_cast<std::size_t>(next->columns) : 1;
            const bool isBelow = !isCell && spanned[column] > 0;
            const bool isTop = isCell && next->rows > 1;
            for (std::size_t i = column; i < column + columns; ++i) {
                spanned[i] = isCell ? next->rows - 1 : std::max(0, spanned[i] - 1);
            }
            column += columns;
            head += std::string(isTop ? "\\clvmgf"
                            : isBelow ? "\\clvmrg"
                                      : "")
                + "\\clbrdrt\\brdrs\\brdrw10\\clbrdrl\\brdrs\\brdrw10\\clbrdrb\\brdrs\\brdrw10"
                  "\\clbrdrr\\brdrs\\brdrw10"
                + rtfControl("cellx", x(table.edgesX[column]) - left);
            cells += "\\pard\\plain\\intbl\\ql" + fonts(halfPoints)
                + (isCell ? rtfText(next->text) : "") + "\\cell\n";
            next += isCell ? 1 : 0;
        }
        return head + "\n" + cells + "\\row\n";
    }

    const double m_scaleX; ///< twips a pixel
    const double m_scaleY;
    const int m_width;
    const int m_height;
    PageText m_straight;
    std::vector<RuledTable> m_tables;
    std::vector<Block> m_blocks; ///< outside of tables
    double m_body = 0; ///< half points
    int m_bodyPitch = 0;
    int m_left = 0; ///< of all text
    int m_top = 0;
    int m_right = 0;
};

} // namespace

std::string rtfText(std::string_view utf8)
{
    std::string out;
    for (const char16_t unit : utf16Of(utf8)) {
        if (unit == u'\t') {
            out += "\\tab ";
        } else if (unit == u'\n') {
            out += "\\line ";
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

std::string rtfControl(const char* word, long value)
{
    return "\\" + std::string(word) + std::to_string(value);
}

std::string rtfPage(const EncodedPage& page, const PageText& text)
{
    return PageSetter(page, text).section();
}

} // namespace orva
