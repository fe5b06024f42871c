#include "scanlib/writers/ruled_table.h"

#include "scanlib/base/units.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>
#include <string_view>
#include <utility>

namespace orva {

namespace {

constexpr double kTouchMm = 1.5; // lines that end so near to each other meet
constexpr double kSameEdgeMm = 1.2; // lines at the same place of the grid
constexpr double kCoverShare = 0.6; // of a border that a line must cover to divide
constexpr double kMarkShare = 0.4; // of its height that a mark may be off the line it stands for
constexpr std::size_t kLeastCells = 4;

/// Lines of both directions that hang together.
std::vector<Rulings> connected(const Rulings& rulings, double touch)
{
    const std::size_t across = rulings.across.size();
    std::vector<std::size_t> leader(across + rulings.down.size());
    std::iota(leader.begin(), leader.end(), std::size_t { 0 });
    const auto leaderOf = [&leader](std::size_t i) {
        while (leader[i] != i) {
            i = leader[i] = leader[leader[i]];
        }
        return i;
    };
    const auto within = [touch](double place, const Ruling& ruling) {
        return place > ruling.from - touch && place < ruling.to + touch;
    };
    for (std::size_t a = 0; a < across; ++a) {
        for (std::size_t d = 0; d < rulings.down.size(); ++d) {
            if (within(rulings.down[d].at, rulings.across[a])
                && within(rulings.across[a].at, rulings.down[d])) {
                leader[leaderOf(across + d)] = leaderOf(a);
            }
        }
    }
    std::vector<Rulings> groups(leader.size());
    for (std::size_t i = 0; i < leader.size(); ++i) {
        Rulings& group = groups[leaderOf(i)];
        if (i < across) {
            group.across.push_back(rulings.across[i]);
        } else {
            group.down.push_back(rulings.down[i - across]);
        }
    }
    return groups;
}

std::vector<double> edgesOf(const std::vector<Ruling>& rulings, double same)
{
    std::vector<double> places;
    std::transform(rulings.begin(), rulings.end(), std::back_inserter(places),
        [](const Ruling& ruling) { return ruling.at; });
    std::sort(places.begin(), places.end());
    std::vector<double> edges;
    for (const double place : places) {
        if (edges.empty() || place - edges.back() > same) {
            edges.push_back(place);
        }
    }
    return edges;
}

bool divides(const std::vector<Ruling>& rulings, double at, double from, double to, double same)
{
    double covered = 0;
    for (const Ruling& ruling : rulings) {
        if (std::abs(ruling.at - at) <= same) {
            covered += std::max(0.0, std::min(ruling.to, to) - std::max(ruling.from, from));
        }
    }
    return covered > kCoverShare * (to - from);
}

class Grid
{
public:
    Grid(const Rulings& rulings, double same)
        : m_rulings(rulings)
        , m_same(same)
    {
        m_table.edgesX = edgesOf(rulings.down, same);
        m_table.edgesY = edgesOf(rulings.across, same);
    }

    RuledTable table()
    {
        const std::size_t columns = m_table.edgesX.size();
        const std::size_t rows = m_table.edgesY.size();
        if (columns < 2 || rows < 2) {
            return {};
        }
        m_taken.assign(columns * rows, false);
        for (std::size_t row = 0; row + 1 < rows; ++row) {
            for (std::size_t column = 0; column + 1 < columns; ++column) {
                if (!isTaken(row, column)) {
                    takeBox(row, column);
                }
            }
        }
        return std::move(m_table);
    }

private:
    bool isTaken(std::size_t row, std::size_t column) const
    {
        return m_taken[row * m_table.edgesX.size() + column];
    }
    bool isOpenRight(std::size_t row, std::size_t column) const
    {
        return !divides(m_rulings.down, m_table.edgesX[column + 1], m_table.edgesY[row],
            m_table.edgesY[row + 1], m_same);
    }
    bool isOpenBelow(std::size_t row, std::size_t column) const
    {
        return !divides(m_rulings.across, m_table.edgesY[row + 1], m_table.edgesX[column],
            m_table.edgesX[column + 1], m_same);
    }

    /// The largest rectangle from here that no line divides: first to the right, then down.
    void takeBox(std::size_t row, std::size_t column)
    {
        std::size_t right = column + 1;
        while (right + 1 < m_table.edgesX.size() && !isTaken(row, right)
            && isOpenRight(row, right - 1)) {
            ++right;
        }
        std::size_t below = row + 1;
        while (below + 1 < m_table.edgesY.size() && isFree(below, column, right)) {
            ++below;
        }
        for (std::size_t y = row; y < below; ++y) {
            for (std::size_t x = column; x < right; ++x) {
                m_taken[y * m_table.edgesX.size() + x] = true;
            }
        }
        m_table.cells.push_back({ static_cast<int>(row), static_cast<int>(column),
            static_cast<int>(below - row), static_cast<int>(right - column), m_table.edgesX[column],
            m_table.edgesY[row], m_table.edgesX[right], m_table.edgesY[below] });
    }

    bool isFree(std::size_t row, std::size_t column, std::size_t right) const
    {
        for (std::size_t x = column; x < right; ++x) {
            if (isTaken(row, x) || !isOpenBelow(row - 1, x)
                || (x + 1 < right && !isOpenRight(row, x))) {
                return false;
            }
        }
        return right + 1 >= m_table.edgesX.size() || !isOpenRight(row, right - 1);
    }

    const Rulings& m_rulings;
    double m_same;
    RuledTable m_table;
    std::vector<bool> m_taken; ///< row by row, as many in each as edges
};

bool contains(double left, double top, double right, double bottom, const TextBox& box)
{
    const double x = (box.left + box.right) / 2.0;
    const double y = (box.top + box.bottom) / 2.0;
    return x >= left && x < right && y >= top && y < bottom;
}

/// A printed line beside a word is read as one of these.
bool isLineMark(const Word& word, const RuledCell& box)
{
    constexpr std::string_view kMarks[] = { "|", "｜", "丨", "[", "]", "{", "}" };
    const double near = word.box.height() * kMarkShare;
    return (word.box.left - box.left < near || box.right - word.box.right < near)
        && word.box.width() * 5 < word.box.height() * 3
        && std::find(std::begin(kMarks), std::end(kMarks), word.text) != std::end(kMarks);
}

} // namespace

std::vector<RuledTable> findRuledTables(const Rulings& rulings, double dpi)
{
    const double millimetre = dpi / units::kMillimetresPerInch;
    std::vector<RuledTable> tables;
    for (const Rulings& group : connected(rulings, kTouchMm * millimetre)) {
        RuledTable table = Grid(group, kSameEdgeMm * millimetre).table();
        if (table.cells.size() >= kLeastCells) {
            tables.push_back(std::move(table));
        }
    }
    std::sort(tables.begin(), tables.end(), [](const RuledTable& a, const RuledTable& b) {
        return a.edgesY.front() < b.edgesY.front();
    });
    return tables;
}

Paragraph textInBox(const PageText& straight, const RuledCell& box)
{
    Paragraph text;
    for (const Paragraph& paragraph : straight.paragraphs) {
        for (const TextLine& line : paragraph.lines) {
            TextLine part = line;
            part.words.clear();
            for (const Word& word : line.words) {
                if (contains(box.left, box.top, box.right, box.bottom, word.box)
                    && !isLineMark(word, box)) {
                    part.words.push_back(word);
                }
            }
            if (!part.words.empty()) {
                text.lines.push_back(std::move(part));
            }
        }
    }
    return text;
}

void removeTable(PageText& straight, const RuledTable& table)
{
    const auto inTable = [&table](const Word& word) {
        return contains(table.edgesX.front(), table.edgesY.front(), table.edgesX.back(),
            table.edgesY.back(), word.box);
    };
    for (Paragraph& paragraph : straight.paragraphs) {
        for (TextLine& line : paragraph.lines) {
            line.words.erase(
                std::remove_if(line.words.begin(), line.words.end(), inTable), line.words.end());
        }
    }
}

} // namespace orva
