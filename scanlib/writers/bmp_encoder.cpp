// BMP: file header, information header of 40 bytes, palette, rows from the bottom up in multiples
// of four bytes, all numbers little-endian.
#include "scanlib/base/units.h"
#include "scanlib/writers/encoders.h"

#include <cmath>
#include <cstring>
#include <limits>

namespace orva {

namespace {

constexpr std::uint32_t kHeadersBytes = 14 + 40;

class LittleEndian
{
public:
    explicit LittleEndian(std::uint8_t* at)
        : m_at(at)
    {
    }
    void put16(std::uint32_t value) { put(value, 2); }
    void put32(std::uint32_t value) { put(value, 4); }

private:
    void put(std::uint32_t value, int bytes)
    {
        for (int i = 0; i < bytes; ++i) {
            *m_at++ = static_cast<std::uint8_t>(value >> (8 * i));
        }
    }
    std::uint8_t* m_at;
};

std::uint32_t dotsPerMetre(double dpi)
{
    return dpi > 0 ? static_cast<std::uint32_t>(std::lround(dpi * units::kInchesPerMetre)) : 0;
}

void putRow(const Page& page, int y, std::uint8_t* out)
{
    const std::uint8_t* const in = page.row(y);
    if (page.format != PixelFormat::kRgb) {
        std::memcpy(out, in, page.stride());
        return;
    }
    for (int x = 0; x < page.width; ++x) {
        out[3 * x] = in[3 * x + 2];
        out[3 * x + 1] = in[3 * x + 1];
        out[3 * x + 2] = in[3 * x];
    }
}

class BmpEncoder : public PageEncoderBase
{
protected:
    Status encodeBytes(const Page& page, const EncodeOptions& /*options*/,
        std::vector<std::uint8_t>& out) const override
    {
        const std::uint32_t colors = page.format == PixelFormat::kBlackWhite ? 2
            : page.format == PixelFormat::kGray                              ? 256
                                                                             : 0;
        const std::uint64_t rowBytes = (page.stride() + 3) / 4 * 4;
        const std::uint64_t pixelBytes = rowBytes * static_cast<std::uint64_t>(page.height);
        const std::uint32_t start = kHeadersBytes + colors * 4;
        if (pixelBytes + start > std::numeric_limits<std::uint32_t>::max()) {
            return { kPageTooLarge, "BMP ends at 4 GiB" };
        }
        out.assign(static_cast<std::size_t>(pixelBytes + start), 0);

        LittleEndian header(out.data());
        header.put16(0x4D42); // "BM"
        header.put32(static_cast<std::uint32_t>(pixelBytes + start));
        header.put32(0);
        header.put32(start);
        header.put32(40);
        header.put32(static_cast<std::uint32_t>(page.width));
        header.put32(static_cast<std::uint32_t>(page.height)); // positive: bottom row first
        header.put16(1); // planes
        header.put16(static_cast<std::uint32_t>(bitsPerPixel(page.format)));
        header.put32(0); // not compressed
        header.put32(static_cast<std::uint32_t>(pixelBytes));
        header.put32(dotsPerMetre(page.dpiX));
        header.put32(dotsPerMetre(page.dpiY));
        header.put32(colors);
        header.put32(0);
        // Bit 1 is black in a page, so the palette starts with white there.
        for (std::uint32_t i = 0; i < colors; ++i) {
            const std::uint32_t level = colors == 2 ? (i == 0 ? 255U : 0U) : i;
            header.put32(level << 16 | level << 8 | level);
        }
        for (int y = 0; y < page.height; ++y) {
            putRow(page, page.height - 1 - y,
                out.data() + start + rowBytes * static_cast<std::size_t>(y));
        }
        return {};
    }
};

} // namespace

std::unique_ptr<PageEncoder> makeBmpEncoder()
{
    return std::make_unique<BmpEncoder>();
}

} // namespace orva
