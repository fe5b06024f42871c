// The one source of the row loops (row_loops.h). It is compiled for several processors, so nothing
// in it may be shared between files: internal linkage only, and no template of the standard
// library, whose one kept copy could be the one for the newest processor.
// kLanes, before it is included, is the number of 16-bit values in a vector register.

namespace orva {

namespace {

// The compiler's own vectors: the same source becomes SSE2, AVX2 or NEON.
using Bytes = std::uint8_t __attribute__((vector_size(kLanes)));
using Words = std::uint16_t __attribute__((vector_size(2 * kLanes)));

Words wordsAt(const std::uint8_t* from)
{
    Bytes bytes;
    std::memcpy(&bytes, from, sizeof bytes);
    return __builtin_convertvector(bytes, Words);
}

std::uint8_t least(std::uint8_t a, std::uint8_t b)
{
    return a < b ? a : b;
}

std::uint8_t greatest(std::uint8_t a, std::uint8_t b)
{
    return a < b ? b : a;
}

std::uint8_t middleOf(std::uint8_t a, std::uint8_t b, std::uint8_t c)
{
    return greatest(least(a, b), least(greatest(a, b), c));
}

/// a x 256 + (b - a) x part stays within 16 bits, whatever the steps in between do.
void mixLanes(const std::uint8_t* a, const std::uint8_t* b, const std::uint16_t* parts,
    std::uint16_t base, std::uint8_t* out)
{
    Words part;
    std::memcpy(&part, parts, sizeof part);
    part = (part + base) >> 8U;
    const Words from = wordsAt(a);
    const Words sum = ((from << 8U) + 128) + (wordsAt(b) - from) * part;
    const Bytes bytes = __builtin_convertvector(sum >> 8U, Bytes);
    std::memcpy(out, &bytes, sizeof bytes);
}

void mix(const std::uint8_t* a, const std::uint8_t* b, const std::uint16_t* parts,
    std::uint16_t base, std::uint8_t* out, std::size_t count, std::size_t spare)
{
    std::size_t i = 0;
    const std::size_t end = count + spare;
    for (; i < count && i + kLanes <= end; i += kLanes) {
        mixLanes(a + i, b + i, parts + i, base, out + i);
    }
    for (; i < count; ++i) {
        const unsigned part = static_cast<std::uint16_t>(parts[i] + base) >> 8U;
        out[i] = static_cast<std::uint8_t>((a[i] * (256U - part) + b[i] * part + 128U) >> 8U);
    }
}

void sort(const std::uint8_t* above, const std::uint8_t* here, const std::uint8_t* below,
    std::uint8_t* __restrict low, std::uint8_t* __restrict middle, std::uint8_t* __restrict high,
    std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint8_t a = above[i];
        const std::uint8_t b = here[i];
        const std::uint8_t c = below[i];
        low[i] = least(least(a, b), c);
        high[i] = greatest(greatest(a, b), c);
        middle[i] = middleOf(a, b, c);
    }
}

// The median of nine is the middle of: the largest low, the middle of the middles, the smallest
// high of three sorted columns.
void medianOfNine(const std::uint8_t* low, const std::uint8_t* middle, const std::uint8_t* high,
    std::uint8_t* out, std::size_t count, std::size_t step)
{
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t centre = i + step;
        const std::size_t right = i + 2 * step;
        out[i] = middleOf(greatest(greatest(low[i], low[centre]), low[right]),
            middleOf(middle[i], middle[centre], middle[right]),
            least(least(high[i], high[centre]), high[right]));
    }
}

// Written so that only 16 bits a value are needed: the product's upper half, then 5 bits of
// fraction.
void lighten(std::uint8_t* row, const std::uint16_t* gains, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i) {
        const auto wide = static_cast<std::uint16_t>(row[i] << 8U);
        const auto product =
            static_cast<std::uint16_t>((static_cast<std::uint32_t>(wide) * gains[i]) >> 16U);
        const auto rounded =
            static_cast<std::uint16_t>(static_cast<std::uint16_t>(product + 16U) >> 5U);
        row[i] = static_cast<std::uint8_t>(rounded > 255 ? std::uint16_t { 255 } : rounded);
    }
}

void stretch(std::uint8_t* row, int dark, int light, std::size_t count)
{
    const auto from = static_cast<std::uint8_t>(dark);
    const auto to = static_cast<std::uint8_t>(light);
    const auto slope = static_cast<std::uint16_t>(65280 / (light - dark));
    for (std::size_t i = 0; i < count; ++i) {
        const auto above = static_cast<std::uint8_t>(least(greatest(row[i], from), to) - from);
        row[i] = static_cast<std::uint8_t>(static_cast<std::uint16_t>(above * slope + 128U) >> 8U);
    }
}

void add(std::uint16_t* sums, const std::uint8_t* row, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i) {
        sums[i] = static_cast<std::uint16_t>(sums[i] + row[i]);
    }
}

constexpr RowLoops kLoops { mix, sort, medianOfNine, lighten, stretch, add };

} // namespace

} // namespace orva
