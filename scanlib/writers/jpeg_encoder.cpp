// JPEG through libjpeg-turbo.
#include "scanlib/writers/encoders.h"

#include <turbojpeg.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>
#include <memory>

namespace orva {

namespace {

constexpr int kMaxSide = 65500; // what the codec takes; the format itself ends at 65,535
constexpr int kFullColorQuality = 90;

struct FreeHandle
{
    void operator()(void* handle) const { tjDestroy(handle); }
};
struct FreeBuffer
{
    void operator()(unsigned char* buffer) const { tjFree(buffer); }
};

/// A compressor and the memory for its worst case, of which only what a page needs is ever touched.
/// A thread keeps them: growing the memory anew for each page costs a twentieth of the encoding.
struct Compressor
{
    std::unique_ptr<void, FreeHandle> handle { tjInitCompress() };
    std::unique_ptr<unsigned char, FreeBuffer> buffer;
    unsigned long size = 0;

    bool reserve(unsigned long bytes)
    {
        if (size < bytes) {
            buffer.reset(); // before the larger one is taken
            size = 0;
            buffer.reset(tjAlloc(static_cast<int>(bytes)));
            size = buffer ? bytes : 0;
        }
        return size >= bytes;
    }
};

std::vector<std::uint8_t> grayOfBits(const Page& page)
{
    const auto width = static_cast<std::size_t>(page.width);
    std::vector<std::uint8_t> gray(width * static_cast<std::size_t>(page.height));
    for (int y = 0; y < page.height; ++y) {
        const std::uint8_t* const bits = page.row(y);
        std::uint8_t* const out = gray.data() + width * static_cast<std::size_t>(y);
        for (std::size_t x = 0; x < width; ++x) {
            out[x] = ((bits[x >> 3] >> (7 - (x & 7))) & 1) != 0 ? 0 : 255;
        }
    }
    return gray;
}

/// The compressor leaves the density of the JFIF header at "unknown". Layout: SOI, APP0, length,
/// "JFIF\0", version (2), unit, density x (2), density y (2).
void setDensity(std::vector<std::uint8_t>& jpeg, double dpiX, double dpiY)
{
    constexpr std::size_t kUnit = 13;
    if (jpeg.size() < kUnit + 5 || std::memcmp(jpeg.data() + 6, "JFIF", 5) != 0 || dpiX < 1
        || dpiY < 1) {
        return;
    }
    const auto put = [&jpeg](std::size_t at, double dpi) {
        const auto value = static_cast<unsigned>(std::lround(std::min(dpi, 65535.0)));
        jpeg[at] = static_cast<std::uint8_t>(value >> 8);
        jpeg[at + 1] = static_cast<std::uint8_t>(value);
    };
    jpeg[kUnit] = 1; // dots per inch
    put(kUnit + 1, dpiX);
    put(kUnit + 3, dpiY);
}

class JpegEncoder : public PageEncoderBase
{
public:
    explicit JpegEncoder(bool progressive)
        : m_flags(progressive ? TJFLAG_PROGRESSIVE : 0)
    {
    }

protected:
    Status encodeBytes(const Page& page, const EncodeOptions& options,
        std::vector<std::uint8_t>& out) const override
    {
        if (page.width > kMaxSide || page.height > kMaxSide) {
            return { kPageTooLarge, "JPEG ends at 65,500 pixels" };
        }
        thread_local Compressor compressor;
        if (!compressor.handle) {
            compressor.handle.reset(tjInitCompress());
        }
        std::vector<std::uint8_t> expanded;
        const std::uint8_t* pixels = page.pixels.data();
        if (page.format == PixelFormat::kBlackWhite) {
            expanded = grayOfBits(page);
            pixels = expanded.data();
        }
        const bool color = page.format == PixelFormat::kRgb;
        const int quality = std::clamp(options.jpegQuality, 1, 100);
        const int sampling = !color        ? TJSAMP_GRAY
            : quality >= kFullColorQuality ? TJSAMP_444
                                           : TJSAMP_420;

        if (!compressor.handle) {
            return { kNoMemory, "no JPEG compressor" };
        }
        // A page whose worst case is too much for this machine goes into memory that grows.
        const unsigned long bound = tjBufSize(page.width, page.height, sampling);
        const bool kept = bound <= INT_MAX && compressor.reserve(bound);
        unsigned char* jpeg = kept ? compressor.buffer.get() : nullptr;
        unsigned long size = kept ? compressor.size : 0;
        const int failed = tjCompress2(compressor.handle.get(), pixels, page.width, 0, page.height,
            color ? TJPF_RGB : TJPF_GRAY, &jpeg, &size, sampling, quality,
            m_flags | (kept ? TJFLAG_NOREALLOC : 0));
        const std::unique_ptr<unsigned char, FreeBuffer> grown(kept ? nullptr : jpeg);
        if (failed != 0) {
            return { kInternal, std::string("JPEG: ") + tjGetErrorStr2(compressor.handle.get()) };
        }
        out.assign(jpeg, jpeg + size);
        setDensity(out, page.dpiX, page.dpiY);
        return {};
    }

private:
    const int m_flags;
};

} // namespace

std::unique_ptr<PageEncoder> makeJpegEncoder()
{
    return std::make_unique<JpegEncoder>(false);
}

std::unique_ptr<PageEncoder> makeSmallJpegEncoder()
{
    return std::make_unique<JpegEncoder>(true);
}

} // namespace orva
