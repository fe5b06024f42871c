// Every set of row loops that this processor can run, on random rows of every short length, against
// plain arithmetic: lengths around a vector's end and the bytes behind it are where they would
// part.
#include "scanlib/page/ops/row_loops.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <vector>

namespace orva {
namespace {

using Row = std::vector<std::uint8_t>;
using WordRow = std::vector<std::uint16_t>;

constexpr std::uint8_t kUntouched = 0xA5;

template <typename Value>
std::vector<Value> randomRow(std::mt19937& dice, std::size_t size, unsigned most)
{
    std::vector<Value> row(size);
    for (Value& value : row) {
        const unsigned kind = dice() % 8; // the ends of the range often
        value = static_cast<Value>(kind == 0 ? 0 : kind == 1 ? most : dice() % (most + 1));
    }
    return row;
}

template <typename Value>
Row expected(std::size_t count, std::size_t size, Value value)
{
    Row row(size, kUntouched);
    for (std::size_t i = 0; i < count; ++i) {
        row[i] = static_cast<std::uint8_t>(value(i));
    }
    return row;
}

class Loops : public testing::TestWithParam<const RowLoops*>
{
protected:
    /// Calls `check` for lengths from nothing to some vectors, with 20 bytes behind each.
    template <typename Check>
    void forLengths(Check check)
    {
        for (std::size_t count = 0; count < 140; ++count) {
            SCOPED_TRACE(count);
            check(count, count + 20);
        }
    }
    const RowLoops& m_loops = *GetParam();
    std::mt19937 m_dice { 7 };
};

TEST_P(Loops, mixAtEveryLengthWritesNothingBehindWhatItMay)
{
    forLengths([&](std::size_t count, std::size_t size) {
        const Row a = randomRow<std::uint8_t>(m_dice, size, 255);
        const Row b = randomRow<std::uint8_t>(m_dice, size, 255);
        const WordRow parts = randomRow<std::uint16_t>(m_dice, size, 65535);
        const auto base = static_cast<std::uint16_t>(m_dice());
        const Row right = expected(count, size, [&](std::size_t i) {
            const int part = ((parts[i] + base) % 65536) / 256;
            return static_cast<int>(std::floor(a[i] + (b[i] - a[i]) * part / 256.0 + 0.5));
        });
        for (const std::size_t spare : { 0U, 5U, 16U }) {
            Row out(size, kUntouched);
            m_loops.mix(a.data(), b.data(), parts.data(), base, out.data(), count, spare);
            const auto may = static_cast<std::ptrdiff_t>(count);
            EXPECT_TRUE(std::equal(out.begin(), out.begin() + may, right.begin()));
            EXPECT_TRUE(std::all_of(out.begin() + may + static_cast<std::ptrdiff_t>(spare),
                out.end(), [](std::uint8_t byte) { return byte == kUntouched; }));
        }
    });
}

TEST_P(Loops, medianOfNineInTwoSteps)
{
    forLengths([&](std::size_t count, std::size_t size) {
        std::array<Row, 3> rows;
        std::array<Row, 3> sorted;
        for (std::size_t r = 0; r < 3; ++r) {
            rows[r] = randomRow<std::uint8_t>(m_dice, size, 255);
            sorted[r].assign(size, kUntouched);
        }
        m_loops.sort(rows[0].data(), rows[1].data(), rows[2].data(), sorted[0].data(),
            sorted[1].data(), sorted[2].data(), count + 6);
        EXPECT_EQ(sorted[2].back(), kUntouched);
        for (const std::size_t step : { 1U, 3U }) {
            Row out(size, kUntouched);
            m_loops.medianOfNine(
                sorted[0].data(), sorted[1].data(), sorted[2].data(), out.data(), count, step);
            EXPECT_EQ(out, expected(count, size, [&](std::size_t i) {
                std::vector<std::uint8_t> nine;
                for (const Row& row : rows) {
                    nine.insert(nine.end(), { row[i], row[i + step], row[i + 2 * step] });
                }
                std::sort(nine.begin(), nine.end());
                return nine[4];
            }));
        }
    });
}

TEST_P(Loops, tonesAndSums)
{
    forLengths([&](std::size_t count, std::size_t size) {
        const Row row = randomRow<std::uint8_t>(m_dice, count, 255);
        const WordRow gains = randomRow<std::uint16_t>(m_dice, count, 65535);
        const int dark = static_cast<int>(m_dice() % 255);
        const int light = dark + 1 + static_cast<int>(m_dice() % static_cast<unsigned>(255 - dark));
        Row out = expected(count, size, [&](std::size_t i) { return row[i]; });
        m_loops.lighten(out.data(), gains.data(), count);
        EXPECT_EQ(out, expected(count, size, [&](std::size_t i) {
            return std::min(255, (row[i] * gains[i] / 256 + 16) / 32);
        }));
        out = expected(count, size, [&](std::size_t i) { return row[i]; });
        m_loops.stretch(out.data(), dark, light, count);
        EXPECT_EQ(out, expected(count, size, [&](std::size_t i) {
            const int level = std::clamp<int>(row[i], dark, light) - dark;
            return (level * (65280 / (light - dark)) + 128) / 256;
        }));
        WordRow sums = gains;
        m_loops.add(sums.data(), row.data(), count);
        for (std::size_t i = 0; i < count; ++i) {
            EXPECT_EQ(sums[i], (gains[i] + row[i]) % 65536);
        }
    });
}

std::vector<const RowLoops*> runnable()
{
    std::vector<const RowLoops*> sets { &plainRowLoops() };
    if (wideRowLoops() != nullptr) {
        sets.push_back(wideRowLoops());
    }
    return sets;
}

INSTANTIATE_TEST_SUITE_P(Processors, Loops, testing::ValuesIn(runnable()));

} // namespace
} // namespace orva
