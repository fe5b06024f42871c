#include "scanlib/page/ops/paper_map.h"

#include "scanlib/base/units.h"
#include "scanlib/page/ops/color_conversion.h"
#include "scanlib/page/ops/histogram.h"
#include "scanlib/page/ops/page_sample.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <deque>

namespace orva {

namespace {

constexpr double kCellMm = 8;
constexpr int kDarkestBackground = 96; // grey level of the page's paper
constexpr int kPaperSpread = 16; // levels to either side of the page's paper
constexpr double kLeastPaperShare = 0.15;
constexpr double kDarkestShare = 0.5; // of a square's paper, of the page's
constexpr int kCellSpread = 8; // levels to either side of a square's paper
constexpr double kLeastCellShare = 0.3;
constexpr int kColumnsAlike = 8; // pixels; less than a level apart
constexpr float kMostJump = 10; // levels from square to square
constexpr float kSeedDistance = 12; // levels from the page's paper

enum class CellState : std::uint8_t
{
    kEmpty, ///< no light tone prevails
    kLight, ///< one does; whether it is the paper is open
    kPaper
};

struct Grid
{
    PaperMap map;
    std::vector<CellState> states;

    std::size_t at(int column, int row) const
    {
        return static_cast<std::size_t>(row) * static_cast<std::size_t>(map.columns)
            + static_cast<std::size_t>(column);
    }
    template <typename Visit>
    void forNeighbours(std::size_t cell, Visit visit) const
    {
        const int column = static_cast<int>(cell) % map.columns;
        const int row = static_cast<int>(cell) / map.columns;
        for (const auto& [dx, dy] : { std::pair { -1, 0 }, { 1, 0 }, { 0, -1 }, { 0, 1 } }) {
            if (column + dx >= 0 && column + dx < map.columns && row + dy >= 0
                && row + dy < map.rows) {
                visit(at(column + dx, row + dy));
            }
        }
    }
};

/// The prevailing light tone of the samples in a square, if there is one.
bool lightTone(
    const PageSample& sample, int left, int top, int size, int darkest, std::array<float, 4>& tone)
{
    const int right = std::min(left + size, sample.width);
    const int bottom = std::min(top + size, sample.height);
    Histogram histogram {};
    for (int y = top; y < bottom; ++y) {
        for (int x = left; x < right; ++x) {
            ++histogram[sample.luma(x, y)];
        }
    }
    const int peak = mostFrequentLevel(histogram, darkest);
    std::array<long, 4> sums {};
    long count = 0;
    for (int y = top; y < bottom; ++y) {
        for (int x = left; x < right; ++x) {
            const int luma = sample.luma(x, y);
            if (std::abs(luma - peak) <= kCellSpread) {
                ++count;
                for (std::size_t c = 0; c < 3; ++c) {
                    sums[c] += sample.color(x, y)[sample.channels == 3 ? c : 0];
                }
                sums[3] += luma;
            }
        }
    }
    if (count < kLeastCellShare * (right - left) * (bottom - top) || count == 0) {
        return false;
    }
    for (std::size_t c = 0; c < 4; ++c) {
        tone[c] = static_cast<float>(sums[c]) / static_cast<float>(count);
    }
    return true;
}

Grid gridOf(const PageSample& sample, int cellSamples, int darkest)
{
    Grid grid;
    grid.map.columns = (sample.width + cellSamples - 1) / cellSamples;
    grid.map.rows = (sample.height + cellSamples - 1) / cellSamples;
    grid.map.cell = cellSamples * sample.step;
    const auto count =
        static_cast<std::size_t>(grid.map.columns) * static_cast<std::size_t>(grid.map.rows);
    grid.map.levels.resize(count);
    grid.states.assign(count, CellState::kEmpty);
    for (int row = 0; row < grid.map.rows; ++row) {
        for (int column = 0; column < grid.map.columns; ++column) {
            const std::size_t cell = grid.at(column, row);
            if (lightTone(sample, column * cellSamples, row * cellSamples, cellSamples, darkest,
                    grid.map.levels[cell])) {
                grid.states[cell] = CellState::kLight;
            }
        }
    }
    return grid;
}

/// Walks from the squares that have the page's paper to those that join on.
void growPaper(Grid& grid, int paper)
{
    std::deque<std::size_t> open;
    for (std::size_t cell = 0; cell < grid.states.size(); ++cell) {
        if (grid.states[cell] == CellState::kLight
            && std::abs(grid.map.levels[cell][3] - static_cast<float>(paper)) <= kSeedDistance) {
            grid.states[cell] = CellState::kPaper;
            open.push_back(cell);
        }
    }
    while (!open.empty()) {
        const std::size_t cell = open.front();
        open.pop_front();
        grid.forNeighbours(cell, [&](std::size_t next) {
            if (grid.states[next] == CellState::kLight
                && std::abs(grid.map.levels[next][3] - grid.map.levels[cell][3]) <= kMostJump) {
                grid.states[next] = CellState::kPaper;
                open.push_back(next);
            }
        });
    }
}

/// Ring by ring, squares without paper take the mean of their neighbours'. False without any paper.
bool fillGaps(Grid& grid)
{
    for (bool open = true; open;) {
        open = false;
        bool filled = false;
        std::vector<CellState> states = grid.states;
        for (std::size_t cell = 0; cell < states.size(); ++cell) {
            if (grid.states[cell] == CellState::kPaper) {
                continue;
            }
            open = true;
            std::array<float, 4> sum {};
            float count = 0;
            grid.forNeighbours(cell, [&](std::size_t next) {
                if (grid.states[next] == CellState::kPaper) {
                    ++count;
                    for (std::size_t c = 0; c < 4; ++c) {
                        sum[c] += grid.map.levels[next][c];
                    }
                }
            });
            if (count > 0) {
                for (std::size_t c = 0; c < 4; ++c) {
                    grid.map.levels[cell][c] = sum[c] / count;
                }
                states[cell] = CellState::kPaper;
                filled = true;
            }
        }
        if (open && !filled) {
            return false;
        }
        grid.states = std::move(states);
    }
    return true;
}

/// Each square with its neighbours, so that the noise of one makes no patch.
void smooth(Grid& grid)
{
    const std::vector<std::array<float, 4>> before = grid.map.levels;
    for (std::size_t cell = 0; cell < before.size(); ++cell) {
        std::array<float, 4> sum = before[cell];
        float count = 1;
        grid.forNeighbours(cell, [&](std::size_t next) {
            ++count;
            for (std::size_t c = 0; c < 4; ++c) {
                sum[c] += before[next][c];
            }
        });
        for (std::size_t c = 0; c < 4; ++c) {
            grid.map.levels[cell][c] = sum[c] / count;
            grid.map.mean[c] += sum[c] / count / static_cast<float>(before.size());
        }
    }
}

} // namespace

PaperMap paperMapOf(const Page& page)
{
    if (page.format == PixelFormat::kBlackWhite) {
        return {};
    }
    const PageSample sample = sampleOf(page);
    const Histogram histogram = sample.histogram();
    const int paper = mostFrequentLevel(histogram, kDarkestBackground);
    std::uint64_t alike = 0;
    for (int level = paper - kPaperSpread; level <= std::min(255, paper + kPaperSpread); ++level) {
        alike += histogram[static_cast<std::size_t>(level)];
    }
    if (static_cast<double>(alike)
        < kLeastPaperShare * static_cast<double>(pixelCount(histogram))) {
        return {};
    }
    const double dpi = page.dpiX > 0 ? page.dpiX : units::kAssumedDpi;
    const int cellSamples = std::max(
        4, static_cast<int>(std::lround(kCellMm / units::kMillimetresPerInch * dpi / sample.step)));
    Grid grid = gridOf(sample, cellSamples, static_cast<int>(paper * kDarkestShare));
    growPaper(grid, paper);
    if (!fillGaps(grid)) {
        return {};
    }
    smooth(grid);
    return std::move(grid.map);
}

void spreadOver(const PaperMap& map, const std::vector<std::uint16_t>& values, int channels, int y,
    int width, std::uint16_t* out)
{
    // 1/256 squares from the middle of the first one
    const auto place = [&map](int pixel) { return (2 * pixel + 1 - map.cell) * 128 / map.cell; };
    const int down = std::clamp(place(y), 0, (map.rows - 1) * 256);
    const int row = std::min(down >> 8, std::max(0, map.rows - 2));
    const int below = std::min(row + 1, map.rows - 1);
    const int partY = down - row * 256;
    std::vector<int> line(static_cast<std::size_t>(map.columns * channels));
    const int across = map.columns * channels;
    const auto* const topRow = &values[static_cast<std::size_t>(row) * line.size()];
    const auto* const bottomRow = &values[static_cast<std::size_t>(below) * line.size()];
    for (int i = 0; i < across; ++i) {
        const int top = topRow[i];
        const int bottom = bottomRow[i];
        line[static_cast<std::size_t>(i)] = (top * (256 - partY) + bottom * partY) >> 8;
    }
    for (int x = 0; x < width; x += kColumnsAlike) {
        const int along = std::clamp(place(x + kColumnsAlike / 2), 0, (map.columns - 1) * 256);
        const int column = std::min(along >> 8, std::max(0, map.columns - 2));
        const int next = std::min(column + 1, map.columns - 1);
        const int part = along - column * 256;
        const int* const here = line.data() + column * channels;
        const int* const beside = line.data() + next * channels;
        std::array<std::uint16_t, 3> value {};
        for (int c = 0; c < channels; ++c) {
            value[static_cast<std::size_t>(c)] =
                static_cast<std::uint16_t>((here[c] * (256 - part) + beside[c] * part) >> 8);
        }
        for (int i = std::min(kColumnsAlike, width - x); i > 0; --i) {
            out = std::copy_n(value.begin(), channels, out);
        }
    }
}

} // namespace orva
