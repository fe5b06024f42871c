// The borders of a line's cells are found together: of all ways to divide the line, the one that
// goes through least ink with cells closest to their letters' usual widths (dynamic programming).
#include "scanlib/ocr/letter_cells.h"

#include "scanlib/base/text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>

namespace orva {

namespace {

// Lengths are in ems, the width of a Chinese letter, unless they are called pixels.
constexpr double kReach = 3.5; ///< how far a border is searched around where it would usually be
constexpr double kFineReach = 0.6; ///< the same, once the borders are roughly known
constexpr double kRoughStep = 0.05;
constexpr double kNewPart = 1.5; ///< a gap between words that divides a line
constexpr double kCutCost = 25; ///< for a border that runs through ink all the way
constexpr double kAnchorCost =
    0.15; ///< for a word that begins an em beside where it was recognised
constexpr double kEmptyCost = 12; ///< for a letter without ink, and for a blank that is full of it
constexpr double kSomeInk = 0.03; ///< part of the height: less is dust
constexpr double kOverhang = 0.6; ///< blank that a punctuation mark has in its cell

constexpr int kLeastHeight = 8; ///< pixels of a line: letters below have no shape

/// A letter, or the blank before a word.
struct Cell
{
    double width = 1; ///< usual
    double slack = 0.1; ///< standard deviation of the width
    bool mark = false; ///< full-width punctuation: ink in a part of the cell
    bool blank = false;
    double expected = 0; ///< pixel at which the recogniser lets it end
    bool endsWord = false;
};

bool isFullWidthMark(char32_t letter)
{
    return (letter >= 0x3000 && letter <= 0x303F) || (letter >= 0xFF00 && letter <= 0xFF65)
        || (letter >= 0xFE30 && letter <= 0xFE4F);
}

Cell cellOf(char32_t letter)
{
    if (isFullWidthMark(letter)) {
        return { 1, 0.2, true, false, 0, false };
    }
    if (isCjk(letter)) {
        return { 1, 0.08, false, false, 0, false };
    }
    const auto isOneOf = [letter](const char* letters) {
        return letter < 0x80
            && std::char_traits<char>::find(
                   letters, std::char_traits<char>::length(letters), static_cast<char>(letter))
            != nullptr;
    };
    if (isOneOf("ijl.,:;'|!()[]ftrI")) {
        return { 0.32, 0.12, false, false, 0, false };
    }
    if (isOneOf("mwMW@%")) {
        return { 0.82, 0.15, false, false, 0, false };
    }
    if (letter == 0x201C || letter == 0x201D || letter == 0x2018 || letter == 0x2019) {
        return { 0.6, 0.35, true, false, 0, false };
    }
    return { letter >= 'A' && letter <= 'Z' ? 0.66 : 0.54, 0.12, false, false, 0, false };
}

/// The words of a line that follow each other without a wide gap.
struct Part
{
    std::vector<Word>::iterator begin;
    std::vector<Word>::iterator end;
};

std::vector<Part> partsOf(TextLine& line)
{
    std::vector<Part> parts;
    for (auto word = line.words.begin(); word != line.words.end(); ++word) {
        const bool divided =
            parts.empty() || word->box.left - (word - 1)->box.right > kNewPart * line.box.height();
        if (divided) {
            parts.push_back({ word, word + 1 });
        }
        parts.back().end = word + 1;
    }
    return parts;
}

std::vector<Cell> cellsOf(const Part& part)
{
    std::vector<Cell> cells;
    for (auto word = part.begin; word != part.end; ++word) {
        if (word != part.begin && isBlankBetween(*(word - 1), *word)) {
            const Cell blank { 0.25, 0.35, false, true, static_cast<double>(word->box.left),
                false };
            cells.push_back(blank);
        }
        const std::size_t first = cells.size();
        double total = 0;
        for (const char32_t letter : codePoints(word->text)) {
            cells.push_back(cellOf(letter));
            total += cells.back().width;
        }
        double done = 0;
        for (std::size_t i = first; i < cells.size(); ++i) {
            done += cells[i].width;
            cells[i].expected = word->box.left + word->box.width() * done / total;
        }
        cells.back().endsWord = true;
    }
    return cells;
}

/// For each column from `left` on the part of a line's height that is ink.
struct Profile
{
    int left = 0;
    std::vector<double> ink;

    std::vector<double> sums; ///< of the ink before a column
    std::vector<int> empty; ///< columns without ink before a column

    std::size_t index(int x) const
    {
        return static_cast<std::size_t>(std::clamp(x, left, right()) - left);
    }
    /// Ink between two columns, in heights of the line x pixels.
    double between(int from, int to) const { return sums[index(to)] - sums[index(from)]; }
    int emptyBetween(int from, int to) const { return empty[index(to)] - empty[index(from)]; }
    int right() const { return left + static_cast<int>(ink.size()); }
    double at(int x) const
    {
        return x < left || x >= right() ? 0 : ink[static_cast<std::size_t>(x - left)];
    }
    /// The first column with ink from here on, and the one behind the last before.
    int inkFrom(int x) const
    {
        while (x < right() && at(x) <= kSomeInk) {
            ++x;
        }
        return x;
    }
    int inkUntil(int x) const
    {
        while (x > left && at(x - 1) <= kSomeInk) {
            --x;
        }
        return x;
    }
    /// On the border between two columns.
    double cut(int x) const { return (at(x - 1) + at(x)) / 2; }
};

/// The grey between paper and ink, from the levels that a hundredth and half of the pixels pass.
int inkLevel(const std::array<int, 256>& histogram, int count)
{
    const auto level = [&](int pixels) {
        int sum = 0;
        int value = 0;
        while (value < 255 && (sum += histogram[static_cast<std::size_t>(value)]) < pixels) {
            ++value;
        }
        return value;
    };
    const int black = level(count / 50);
    const int paper = level(count * 2 / 3);
    return paper - black < 40 ? 0 : (black + paper) / 2;
}

Profile profileOf(const GrayPicture& picture, const TextLine& line, int left, int right)
{
    Profile profile;
    profile.left = std::clamp(left, 0, picture.width);
    right = std::clamp(right, profile.left, picture.width);
    const double slope =
        static_cast<double>(line.baselineRight - line.baselineLeft) / std::max(1, line.box.width());
    const auto forEachPixel = [&](auto&& visit) {
        for (int x = profile.left; x < right; ++x) {
            const int down = static_cast<int>(std::lround(slope * (x - line.box.left)));
            const int base = line.baselineLeft + down;
            const int top = std::max(0, std::max(line.box.top, base - line.box.height()));
            const int bottom =
                std::min({ picture.height, line.box.bottom, base + line.box.height() / 4 });
            for (int y = top; y < bottom; ++y) {
                visit(x, picture.pixels[static_cast<std::size_t>(y) * picture.width + x]);
            }
        }
    };
    std::array<int, 256> histogram {};
    int count = 0;
    forEachPixel([&](int, std::uint8_t value) {
        ++histogram[value];
        ++count;
    });
    const int level = inkLevel(histogram, count);
    profile.ink.assign(static_cast<std::size_t>(right - profile.left), 0);
    const double part = 1.0 / std::max(1, line.box.height());
    forEachPixel([&](int x, std::uint8_t value) {
        if (value < level) {
            profile.ink[static_cast<std::size_t>(x - profile.left)] += part;
        }
    });
    profile.sums.assign(1, 0);
    profile.empty.assign(1, 0);
    for (const double ink : profile.ink) {
        profile.sums.push_back(profile.sums.back() + ink);
        profile.empty.push_back(profile.empty.back() + (ink > kSomeInk ? 0 : 1));
    }
    return profile;
}

/// Huber's: the square near 0, a line further out, so that one letter too many does not tear all.
double misfit(double deviation)
{
    constexpr double kBend = 2;
    const double size = std::abs(deviation);
    return size < kBend ? size * size : kBend * (2 * size - kBend);
}

class Division
{
public:
    Division(const Profile& profile, const std::vector<Cell>& cells, int inkLeft, int inkRight)
        : m_profile(profile)
        , m_cells(cells)
        , m_inkLeft(inkLeft)
        , m_inkRight(inkRight)
    {
        for (const Cell& cell : cells) {
            m_widths += cell.width;
        }
        if (cells.front().mark) {
            m_widths -= kOverhang / 2;
        }
        if (cells.back().mark) {
            m_widths -= kOverhang / 2;
        }
        m_widths = std::max(0.5, m_widths - 0.08);
        m_em = (inkRight - inkLeft) / m_widths;
    }

    double em() const { return m_em; }

    /// The ends of all cells, the first one's beginning before them. Empty when there is no way.
    std::vector<int> borders()
    {
        m_step = std::max(1, pixels(kRoughStep));
        std::vector<int> rough = search(usualBorders(), kReach);
        if (!rough.empty()) {
            m_em = usualWidth(rough);
            m_step = 1;
            rough = search(rough, kFineReach);
        }
        return rough;
    }

private:
    /// The borders that can be reached, a step apart.
    struct Column
    {
        int first = 0; ///< pixel
        std::vector<double> cost;
        std::vector<int> from; ///< index into the column before
    };

    /// Where the cells would end if nothing were stretched.
    std::vector<int> usualBorders() const
    {
        std::vector<int> borders { m_inkLeft };
        double done = 0;
        for (const Cell& cell : m_cells) {
            done += cell.width;
            borders.push_back(m_inkLeft
                + static_cast<int>(std::lround((m_inkRight - m_inkLeft) * done / m_widths)));
        }
        return borders;
    }

    /// What most Chinese letters turned out to have.
    double usualWidth(const std::vector<int>& borders) const
    {
        std::vector<int> widths;
        for (std::size_t i = 0; i < m_cells.size(); ++i) {
            if (m_cells[i].width >= 1 && !m_cells[i].mark) {
                widths.push_back(borders[i + 1] - borders[i]);
            }
        }
        const auto middle = widths.begin() + static_cast<std::ptrdiff_t>(widths.size() / 2);
        std::nth_element(widths.begin(), middle, widths.end());
        return *middle;
    }

    std::vector<int> search(const std::vector<int>& around, double reach)
    {
        m_columns.clear();
        const int before = pixels(m_cells.front().mark ? kOverhang : 0.1);
        const int behind = pixels(m_cells.back().mark ? kOverhang : 0.1);
        m_columns.push_back(column(m_inkLeft - before, m_inkLeft + 1));
        for (std::size_t i = 0; i < m_columns[0].cost.size(); ++i) {
            const double off = (pixelOf(m_columns[0], i) - m_inkLeft) / m_em;
            m_columns[0].cost[i] = m_cells.front().mark ? 0 : misfit((off + 0.04) / 0.05);
        }
        for (std::size_t i = 0; i < m_cells.size(); ++i) {
            const bool last = i + 1 == m_cells.size();
            const int at = around[i + 1];
            m_columns.push_back(last ? column(m_inkRight, m_inkRight + behind + 1)
                                     : column(at - pixels(reach), at + pixels(reach)));
            advance(m_cells[i], m_columns[i], m_columns[i + 1], last);
        }
        return traced();
    }

    int pixels(double ems) const { return static_cast<int>(std::lround(ems * m_em)); }

    int pixelOf(const Column& column, std::size_t index) const
    {
        return column.first + static_cast<int>(index) * m_step;
    }

    Column column(int first, int last) const
    {
        const auto size = static_cast<std::size_t>(std::max(0, last - first) / m_step + 1);
        return { first, std::vector<double>(size, std::numeric_limits<double>::infinity()),
            std::vector<int>(size, -1) };
    }

    /// The least ink that a border goes through within a step.
    double cut(int x) const
    {
        double least = m_profile.cut(x);
        for (int i = 1; i < m_step; ++i) {
            least = std::min(least, m_profile.cut(x + i));
        }
        return least;
    }

    void advance(const Cell& cell, const Column& before, Column& now, bool last) const
    {
        const int least = pixels(cell.width * (cell.width < 0.3 ? 0 : 0.4));
        const int most = pixels(cell.width * 2 + 0.3);
        const int count = static_cast<int>(before.cost.size());
        for (std::size_t i = 0; i < now.cost.size(); ++i) {
            const int x = pixelOf(now, i);
            const int lowest = std::max(0, x - most - before.first) / m_step;
            const int highest = std::min(count - 1, (x - least - before.first) / m_step);
            for (int k = lowest; k <= highest; ++k) {
                const int from = before.first + k * m_step;
                const double cost = before.cost[static_cast<std::size_t>(k)]
                    + misfit(((x - from) / m_em - cell.width) / cell.slack)
                    + emptiness(cell, from, x);
                if (cost < now.cost[i]) {
                    now.cost[i] = cost;
                    now.from[i] = k;
                }
            }
            const double off = (x - cell.expected) / m_em;
            now.cost[i] +=
                (last ? 0 : kCutCost * cut(x)) + (cell.endsWord ? kAnchorCost * off * off : 0);
        }
    }

    /// A letter has ink (the thinnest a tenth of a line's height, a stroke wide), a blank has none.
    double emptiness(const Cell& cell, int from, int to) const
    {
        constexpr double kThinnest = 0.004;
        constexpr double kInnerGap = 0.35;
        const double ink = m_profile.between(from, to) / m_em;
        if (cell.blank) {
            return kEmptyCost * std::min(1.0, ink / 0.1);
        }
        const double gap = m_profile.emptyBetween(from, to) / m_em;
        return ink < kThinnest            ? kEmptyCost
            : cell.width < 1 || cell.mark ? 0
                                          : kEmptyCost * std::max(0.0, gap - kInnerGap);
    }

    std::vector<int> traced() const
    {
        const std::vector<double>& ends = m_columns.back().cost;
        auto at = std::min_element(ends.begin(), ends.end()) - ends.begin();
        if (!std::isfinite(ends[static_cast<std::size_t>(at)])) {
            return {};
        }
        std::vector<int> borders(m_columns.size());
        for (std::size_t i = m_columns.size(); i-- > 0;) {
            borders[i] = pixelOf(m_columns[i], static_cast<std::size_t>(at));
            at = m_columns[i].from[static_cast<std::size_t>(at)];
        }
        return borders;
    }

    const Profile& m_profile;
    const std::vector<Cell>& m_cells;
    const int m_inkLeft;
    const int m_inkRight;
    double m_em = 1;
    int m_step = 1; ///< pixels
    double m_widths = 0; ///< of all cells, as far as they hold ink
    std::vector<Column> m_columns;
};

void placePart(const GrayPicture& picture, const TextLine& line, const Part& part)
{
    const std::vector<Cell> cells = cellsOf(part);
    const auto chinese = std::count_if(
        cells.begin(), cells.end(), [](const Cell& cell) { return cell.width >= 1 && !cell.mark; });
    if (chinese < 2) {
        return;
    }
    const int height = line.box.height();
    const int around = height * 2 / 3; // what the recogniser is off at most
    const Profile profile =
        profileOf(picture, line, part.begin->box.left - around, (part.end - 1)->box.right + around);
    const int inkLeft = profile.inkFrom(profile.left);
    const int inkRight = profile.inkUntil(profile.right());
    if (inkLeft >= inkRight) {
        return;
    }
    Division division(profile, cells, inkLeft, inkRight);
    if (height < kLeastHeight || division.em() < 0.6 * height || division.em() > 1.6 * height) {
        return;
    }
    const std::vector<int> borders = division.borders();
    if (borders.empty()) {
        return;
    }
    std::size_t cell = 0;
    for (auto word = part.begin; word != part.end; ++word) {
        if (word != part.begin && isBlankBetween(*(word - 1), *word)) {
            ++cell;
        }
        word->box.left = profile.inkFrom(borders[cell]);
        while (!cells[cell].endsWord) {
            ++cell;
        }
        ++cell;
        word->box.right = std::max(word->box.left + 1, profile.inkUntil(borders[cell]));
    }
}

} // namespace

void placeWordsOnInk(const GrayPicture& picture, PageText& text)
{
    for (Paragraph& paragraph : text.paragraphs) {
        for (TextLine& line : paragraph.lines) {
            if (line.box.height() < 2 * line.box.width()) {
                for (const Part& part : partsOf(line)) {
                    placePart(picture, line, part);
                }
            }
        }
    }
}

} // namespace orva
