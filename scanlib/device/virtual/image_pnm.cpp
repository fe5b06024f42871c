// PBM, PGM and PPM, plain and raw. The raw 8-bit forms go from the file into the page without a
// second copy; that is the path of bulk feeding.
#include "scanlib/device/virtual/image_formats.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace orva {

namespace {

struct PnmHeader
{
    int kind = 0; ///< 1 to 6
    std::uint64_t width = 0;
    std::uint64_t height = 0;
    std::uint32_t maxValue = 1;

    bool plain() const { return kind <= 3; }
    bool bitmap() const { return kind == 1 || kind == 4; }
    int channels() const { return kind == 3 || kind == 6 ? 3 : 1; }
};

/// Next unsigned number after blanks and comments. The one character after it is consumed.
bool readNumber(std::FILE* stream, std::uint64_t& value)
{
    int c = std::getc(stream);
    while (c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f' || c == '\v' || c == '#') {
        if (c == '#') {
            while (c != '\n' && c != EOF) {
                c = std::getc(stream);
            }
        } else {
            c = std::getc(stream);
        }
    }
    if (c < '0' || c > '9') {
        return false;
    }
    value = 0;
    for (; c >= '0' && c <= '9'; c = std::getc(stream)) {
        value = value * 10 + static_cast<std::uint64_t>(c - '0');
        if (value > 1'000'000'000) {
            return false;
        }
    }
    return true;
}

bool readHeader(std::FILE* stream, PnmHeader& header)
{
    std::uint64_t maxValue = 1;
    std::getc(stream); // 'P'
    header.kind = std::getc(stream) - '0';
    if (!readNumber(stream, header.width) || !readNumber(stream, header.height)) {
        return false;
    }
    if (!header.bitmap() && !readNumber(stream, maxValue)) {
        return false;
    }
    header.maxValue = static_cast<std::uint32_t>(maxValue);
    return maxValue >= 1 && maxValue <= 65535;
}

/// Fills the page's pixels from the file as they are: one read into memory that is there. Appending
/// piece by piece, the way for a page without memory, touches every byte once where resize would
/// write it a first time with zeros.
bool readPixels(std::FILE* stream, Page& page, std::size_t bytes)
{
    if (page.pixels.capacity() >= bytes && page.pixels.size() > bytes / 2) {
        page.pixels.resize(bytes); // zeros, if any, for the end only
        return std::fread(page.pixels.data(), 1, bytes, stream) == bytes;
    }
    page.pixels.clear();
    page.pixels.reserve(bytes);
    std::vector<std::uint8_t> piece(std::size_t { 128 } * 1024);
    while (page.pixels.size() < bytes) {
        const std::size_t wanted = std::min(piece.size(), bytes - page.pixels.size());
        if (std::fread(piece.data(), 1, wanted, stream) != wanted) {
            return false;
        }
        page.pixels.insert(
            page.pixels.end(), piece.begin(), piece.begin() + static_cast<std::ptrdiff_t>(wanted));
    }
    return true;
}

/// One line of samples scaled to 8 bits; a bitmap's 1 is black.
bool readSamples(std::FILE* stream, const PnmHeader& header, std::vector<std::uint8_t>& raw,
    std::uint8_t* samples)
{
    const std::size_t count =
        static_cast<std::size_t>(header.width) * static_cast<std::size_t>(header.channels());
    const auto scaled = [&](std::uint64_t value) {
        const std::uint64_t limited = std::min<std::uint64_t>(value, header.maxValue);
        return static_cast<std::uint8_t>((limited * 255 + header.maxValue / 2) / header.maxValue);
    };
    if (header.kind == 1) { // digits need no blank between them
        for (std::size_t i = 0; i < count; ++i) {
            int c = std::getc(stream);
            while (c == ' ' || c == '\t' || c == '\r' || c == '\n') {
                c = std::getc(stream);
            }
            if (c != '0' && c != '1') {
                return false;
            }
            samples[i] = c == '1' ? 0 : 255;
        }
        return true;
    }
    if (header.plain()) {
        for (std::size_t i = 0; i < count; ++i) {
            std::uint64_t value = 0;
            if (!readNumber(stream, value)) {
                return false;
            }
            samples[i] = scaled(value);
        }
        return true;
    }
    if (header.bitmap()) {
        raw.resize((count + 7) / 8);
        if (std::fread(raw.data(), 1, raw.size(), stream) != raw.size()) {
            return false;
        }
        for (std::size_t i = 0; i < count; ++i) {
            samples[i] = ((raw[i / 8] >> (7 - i % 8)) & 1) != 0 ? 0 : 255;
        }
        return true;
    }
    const bool wide = header.maxValue > 255;
    raw.resize(wide ? count * 2 : count);
    if (std::fread(raw.data(), 1, raw.size(), stream) != raw.size()) {
        return false;
    }
    for (std::size_t i = 0; i < count; ++i) {
        samples[i] = wide ? scaled(raw[2 * i] * 256U + raw[2 * i + 1]) : scaled(raw[i]);
    }
    return true;
}

void storeLine(const std::uint8_t* samples, int channels, Page& page, int y)
{
    std::uint8_t* to = page.row(y);
    for (int x = 0; x < page.width; ++x) {
        const std::uint8_t* from = samples + static_cast<std::ptrdiff_t>(x) * channels;
        if (page.format == PixelFormat::kGray) {
            *to++ = channels == 1 ? from[0] : grayOf(from[0], from[1], from[2]);
        } else {
            *to++ = from[0];
            *to++ = from[channels == 1 ? 0 : 1];
            *to++ = from[channels == 1 ? 0 : 2];
        }
    }
}

} // namespace

Status readPnm(const std::filesystem::path& file, std::FILE* stream, PixelFormat wanted, Page& page)
{
    PnmHeader header;
    if (!readHeader(stream, header)) {
        return damaged(file, "damaged PNM header");
    }
    if (Status size = checkSize(file, header.width, header.height); !size.ok()) {
        return size;
    }
    const std::size_t samplesPerLine =
        static_cast<std::size_t>(header.width) * static_cast<std::size_t>(header.channels());
    if (!header.plain()) { // before memory is taken for a header that promises too much
        const std::size_t lineBytes = header.bitmap()
            ? (samplesPerLine + 7) / 8
            : samplesPerLine * (header.maxValue > 255 ? 2 : 1);
        std::error_code error;
        const std::uintmax_t size = std::filesystem::file_size(file, error);
        if (!error && size < lineBytes * header.height) {
            return damaged(file, "shorter than its header says");
        }
    }
    page.width = static_cast<int>(header.width);
    page.height = static_cast<int>(header.height);
    page.format = wanted;
    setResolution(page, 0, 0);
    const bool sameLayout = !header.plain() && header.maxValue == 255
        && header.kind == (wanted == PixelFormat::kGray ? 5 : 6);
    if (sameLayout) {
        const std::size_t bytes = page.stride() * static_cast<std::size_t>(page.height);
        return readPixels(stream, page, bytes) ? Status() : damaged(file, "ends too early");
    }
    page.allocate(page.width, page.height, wanted);
    std::vector<std::uint8_t> raw;
    std::vector<std::uint8_t> samples(samplesPerLine);
    for (int y = 0; y < page.height; ++y) {
        if (!readSamples(stream, header, raw, samples.data())) {
            return damaged(file, "ends too early");
        }
        storeLine(samples.data(), header.channels(), page, y);
    }
    return {};
}

} // namespace orva
