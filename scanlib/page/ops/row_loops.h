// The loops over bytes in which the time of a page goes, compiled once for every processor of the
// architecture and, on x86-64, once more for those with AVX2. Both come from the same source,
// row_loops_source.inc, and give the same bytes.
#pragma once

#include <cstddef>
#include <cstdint>

namespace orva {

/// Rows do not overlap unless they are the same row. Nothing is checked, nothing is allocated.
/// Any thread.
struct RowLoops
{
    /// out = a + (b - a) x part, byte by byte; the part of byte i is (parts[i] + base) modulo 65536
    /// in 1/65536, of which the upper 8 bits count. `spare` bytes behind `count` may be read in
    /// all rows and take any value in `out`; short rows are much faster with 15 of them.
    void (*mix)(const std::uint8_t* a, const std::uint8_t* b, const std::uint16_t* parts,
        std::uint16_t base, std::uint8_t* out, std::size_t count, std::size_t spare);
    /// Least, middle and greatest of three rows, place by place.
    void (*sort)(const std::uint8_t* above, const std::uint8_t* here, const std::uint8_t* below,
        std::uint8_t* low, std::uint8_t* middle, std::uint8_t* high, std::size_t count);
    /// The median of the nine bytes of three sorted columns `step` bytes apart, the first of which
    /// stands at the output's own place.
    void (*medianOfNine)(const std::uint8_t* low, const std::uint8_t* middle,
        const std::uint8_t* high, std::uint8_t* out, std::size_t count, std::size_t step);
    /// row = row x gain / 8192, at most 255.
    void (*lighten)(std::uint8_t* row, const std::uint16_t* gains, std::size_t count);
    /// dark..light to 0..255; `dark` < `light`.
    void (*stretch)(std::uint8_t* row, int dark, int light, std::size_t count);
    /// sums += row
    void (*add)(std::uint16_t* sums, const std::uint8_t* row, std::size_t count);
};

/// What the processor does best.
const RowLoops& rowLoops();
/// For every processor.
const RowLoops& plainRowLoops();
/// With AVX2; null where the processor has none or this is not x86-64.
const RowLoops* wideRowLoops();

} // namespace orva
