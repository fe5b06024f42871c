// PNG, written straight on top of zlib. Scans hold noise in which no repeated strings are found, so
// looking for them (what every level of the usual encoders does) costs most of the time and saves
// almost nothing. Rows become differences to their neighbours; runs and a Huffman code do the rest.
#include "scanlib/base/units.h"
#include "scanlib/writers/encoders.h"

#include <zlib.h>

#include <cmath>
#include <cstring>

namespace orva {

namespace {

constexpr std::size_t kChunkBytes = std::size_t { 1 } << 20;
constexpr std::uint8_t kFilterNone = 0;
constexpr std::uint8_t kFilterUp = 2;

void putBigEndian(std::vector<std::uint8_t>& out, std::uint32_t value)
{
    for (int shift = 24; shift >= 0; shift -= 8) {
        out.push_back(static_cast<std::uint8_t>(value >> shift));
    }
}

/// Length, name, data, check sum over name and data.
void putChunk(
    std::vector<std::uint8_t>& out, const char* name, const std::uint8_t* data, std::size_t size)
{
    putBigEndian(out, static_cast<std::uint32_t>(size));
    const std::size_t start = out.size();
    out.insert(out.end(), name, name + 4);
    out.insert(out.end(), data, data + size);
    const uLong sum = crc32(0, out.data() + start, static_cast<uInt>(out.size() - start));
    putBigEndian(out, static_cast<std::uint32_t>(sum));
}

void putHeader(const Page& page, std::vector<std::uint8_t>& out)
{
    static constexpr std::uint8_t kSignature[] = { 0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n' };
    out.assign(std::begin(kSignature), std::end(kSignature));
    std::vector<std::uint8_t> data;
    putBigEndian(data, static_cast<std::uint32_t>(page.width));
    putBigEndian(data, static_cast<std::uint32_t>(page.height));
    data.push_back(page.format == PixelFormat::kBlackWhite ? 1 : 8); // bits a sample
    data.push_back(page.format == PixelFormat::kRgb ? 2 : 0); // colour or grey
    data.insert(data.end(), { 0, 0, 0 }); // deflate, standard filters, not interlaced
    putChunk(out, "IHDR", data.data(), data.size());
    if (page.dpiX > 0 && page.dpiY > 0) {
        data.clear();
        putBigEndian(
            data, static_cast<std::uint32_t>(std::lround(page.dpiX * units::kInchesPerMetre)));
        putBigEndian(
            data, static_cast<std::uint32_t>(std::lround(page.dpiY * units::kInchesPerMetre)));
        data.push_back(1); // pixels a metre
        putChunk(out, "pHYs", data.data(), data.size());
    }
}

class Deflate
{
public:
    Deflate(std::vector<std::uint8_t>& out, int level, int strategy)
        : m_out(out)
        , m_buffer(kChunkBytes)
    {
        m_ready = deflateInit2(&m_stream, level, Z_DEFLATED, 15, 9, strategy) == Z_OK;
        m_stream.next_out = m_buffer.data();
        m_stream.avail_out = static_cast<uInt>(m_buffer.size());
    }
    ~Deflate()
    {
        if (m_ready) {
            deflateEnd(&m_stream);
        }
    }
    Deflate(const Deflate&) = delete;
    Deflate& operator=(const Deflate&) = delete;

    bool put(std::uint8_t* data, std::size_t size, int flush)
    {
        if (!m_ready) {
            return false;
        }
        m_stream.next_in = data;
        m_stream.avail_in = static_cast<uInt>(size);
        int result = Z_OK;
        do {
            if (m_stream.avail_out == 0) {
                emit();
            }
            result = deflate(&m_stream, flush);
        } while (result == Z_OK && (m_stream.avail_in > 0 || flush == Z_FINISH));
        if (result == Z_STREAM_END) {
            emit();
        }
        return result == Z_OK || result == Z_STREAM_END;
    }

private:
    void emit()
    {
        putChunk(m_out, "IDAT", m_buffer.data(), m_buffer.size() - m_stream.avail_out);
        m_stream.next_out = m_buffer.data();
        m_stream.avail_out = static_cast<uInt>(m_buffer.size());
    }

    std::vector<std::uint8_t>& m_out;
    std::vector<std::uint8_t> m_buffer;
    z_stream m_stream {};
    bool m_ready = false;
};

/// Filter byte and row. PNG calls 0 black, a page calls it white.
void filterRow(const Page& page, int y, std::uint8_t* out)
{
    const std::uint8_t* const row = page.row(y);
    const std::size_t size = page.stride();
    std::uint8_t* const data = out + 1;
    if (page.format == PixelFormat::kBlackWhite) {
        out[0] = kFilterNone;
        for (std::size_t i = 0; i < size; ++i) {
            data[i] = static_cast<std::uint8_t>(~row[i]);
        }
    } else if (y == 0) {
        out[0] = kFilterNone;
        std::memcpy(data, row, size);
    } else {
        const std::uint8_t* const above = page.row(y - 1);
        out[0] = kFilterUp;
        for (std::size_t i = 0; i < size; ++i) {
            data[i] = static_cast<std::uint8_t>(row[i] - above[i]);
        }
    }
}

class PngEncoder : public PageEncoderBase
{
protected:
    Status encodeBytes(const Page& page, const EncodeOptions& /*options*/,
        std::vector<std::uint8_t>& out) const override
    {
        putHeader(page, out);
        // Black-and-white rows do repeat: there the search for strings pays.
        const bool bits = page.format == PixelFormat::kBlackWhite;
        Deflate deflate(out, bits ? 6 : 1, bits ? Z_DEFAULT_STRATEGY : Z_RLE);
        std::vector<std::uint8_t> row(page.stride() + 1);
        for (int y = 0; y < page.height; ++y) {
            filterRow(page, y, row.data());
            if (!deflate.put(
                    row.data(), row.size(), y + 1 == page.height ? Z_FINISH : Z_NO_FLUSH)) {
                return { kNoMemory, "PNG: no memory for the compressor" };
            }
        }
        putChunk(out, "IEND", nullptr, 0);
        return {};
    }
};

} // namespace

std::unique_ptr<PageEncoder> makePngEncoder()
{
    return std::make_unique<PngEncoder>();
}

} // namespace orva
