#include "scanlib/ocr/cell_borders.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace orva {

namespace {

// Lengths are in ems, the width of a Chinese letter, unless they are called pixels.
constexpr double kReach = 3.5; // how far a border is searched around where it would usually be
constexpr double kFineReach = 0.6; // the same, once the borders are roughly known
constexpr double kRoughStep = 0.05;
constexpr double kOverhang = 0.6; // blank that a punctuation mark has in its cell
constexpr double kLeastEm = 0.6; // in heights of the line
constexpr double kMostEm = 1.6;
// What speaks against a border, beside an unusual width.
constexpr double kCutCost = 25; // ink all the way
constexpr double kAnchorCost = 0.15; // an em beside where a word was recognised
constexpr double kEmptyCost = 12; // a letter without ink, a blank that is full of it

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
    Division(const InkProfile& profile, const std::vector<Cell>& cells, int inkLeft, int inkRight)
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

    const InkProfile& m_profile;
    const std::vector<Cell>& m_cells;
    const int m_inkLeft;
    const int m_inkRight;
    double m_em = 1;
    int m_step = 1; ///< pixels
    double m_widths = 0; ///< of all cells, as far as they hold ink
    std::vector<Column> m_columns;
};

} // namespace

std::vector<int> cellBorders(const InkProfile& ink, const std::vector<Cell>& cells, int lineHeight)
{
    const int inkLeft = ink.inkFrom(ink.left);
    const int inkRight = ink.inkUntil(ink.right());
    if (inkLeft >= inkRight) {
        return {};
    }
    Division division(ink, cells, inkLeft, inkRight);
    const double em = division.em() / lineHeight;
    return em < kLeastEm || em > kMostEm ? std::vector<int> {} : division.borders();
}

} // namespace orva
