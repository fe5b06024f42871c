// One page as a TIFF in memory, and as bare CCITT group 4 data.
#include "scanlib/writers/encoders.h"
#include "scanlib/writers/tiff_stream.h"

#include <algorithm>
#include <limits>

namespace orva {

namespace {

constexpr std::size_t kStripBytes = std::size_t { 512 } * 1024;
constexpr int kDeflateLevel = 4;

Status failed(const TiffMemory& memory)
{
    return { memory.outOfMemory() ? kNoMemory : kInternal, memory.message() };
}

/// Tags and strips of one directory.
bool putPage(const Page& page, TIFF* tiff)
{
    const bool bits = page.format == PixelFormat::kBlackWhite;
    const bool color = page.format == PixelFormat::kRgb;
    const std::size_t rowBytes = page.stride();
    // Group 4 codes a row by the one above: one strip. The others in strips that a reader can hold.
    const int rows = bits ? page.height
                          : static_cast<int>(std::clamp<std::size_t>(
                              kStripBytes / rowBytes, 1, static_cast<std::size_t>(page.height)));
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, static_cast<std::uint32_t>(page.width));
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, static_cast<std::uint32_t>(page.height));
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, bits ? 1 : 8);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, color ? 3 : 1);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC,
        bits        ? PHOTOMETRIC_MINISWHITE
            : color ? PHOTOMETRIC_RGB
                    : PHOTOMETRIC_MINISBLACK);
    TIFFSetField(
        tiff, TIFFTAG_COMPRESSION, bits ? COMPRESSION_CCITTFAX4 : COMPRESSION_ADOBE_DEFLATE);
    if (!bits) {
        TIFFSetField(tiff, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
        TIFFSetField(tiff, TIFFTAG_ZIPQUALITY, kDeflateLevel);
    }
    TIFFSetField(tiff, TIFFTAG_FILLORDER, FILLORDER_MSB2LSB);
    TIFFSetField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, static_cast<std::uint32_t>(rows));
    if (page.dpiX > 0 && page.dpiY > 0) {
        TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
        TIFFSetField(tiff, TIFFTAG_XRESOLUTION, page.dpiX);
        TIFFSetField(tiff, TIFFTAG_YRESOLUTION, page.dpiY);
    }
    std::vector<std::uint8_t> strip; // the predictor works in place: never on the page itself
    std::uint32_t number = 0;
    for (int y = 0; y < page.height; y += rows, ++number) {
        const int count = std::min(rows, page.height - y);
        strip.assign(page.row(y), page.row(y) + rowBytes * static_cast<std::size_t>(count));
        if (TIFFWriteEncodedStrip(tiff, number, strip.data(), static_cast<tmsize_t>(strip.size()))
            < 0) {
            return false;
        }
    }
    return TIFFWriteDirectory(tiff) != 0;
}

Status encodeTiff(const Page& page, std::vector<std::uint8_t>& out)
{
    constexpr std::uint64_t kMax = std::numeric_limits<std::uint32_t>::max();
    if (static_cast<std::uint64_t>(page.stride()) * static_cast<std::uint64_t>(page.height)
        > kMax) {
        return { kPageTooLarge, "a page of 4 GiB does not fit into TIFF 6.0" };
    }
    out.clear();
    TiffMemory memory(out);
    const TiffHandle tiff = memory.open("wl"); // little-endian, as both processors are
    if (!tiff || !putPage(page, tiff.get())) {
        return failed(memory);
    }
    return {};
}

class TiffEncoder : public PageEncoderBase
{
protected:
    Status encodeBytes(const Page& page, const EncodeOptions& /*options*/,
        std::vector<std::uint8_t>& out) const override
    {
        return encodeTiff(page, out);
    }
};

class FaxEncoder : public PageEncoderBase
{
protected:
    Status encodeBytes(const Page& page, const EncodeOptions& /*options*/,
        std::vector<std::uint8_t>& out) const override
    {
        if (page.format != PixelFormat::kBlackWhite) {
            return { kInternal, "group 4 is for black-and-white" };
        }
        std::vector<std::uint8_t> file;
        if (Status status = encodeTiff(page, file); !status.ok()) {
            return status;
        }
        TiffMemory memory(file);
        const TiffHandle tiff = memory.open("r");
        if (!tiff) {
            return failed(memory);
        }
        out.resize(static_cast<std::size_t>(TIFFRawStripSize64(tiff.get(), 0)));
        const auto size = static_cast<tmsize_t>(out.size());
        return TIFFReadRawStrip(tiff.get(), 0, out.data(), size) == size ? Status {}
                                                                         : failed(memory);
    }
};

} // namespace

std::unique_ptr<PageEncoder> makeTiffEncoder()
{
    return std::make_unique<TiffEncoder>();
}
std::unique_ptr<PageEncoder> makeFaxEncoder()
{
    return std::make_unique<FaxEncoder>();
}

} // namespace orva
