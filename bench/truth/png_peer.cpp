#include "bench/truth/png_peer.h"

#include "bench/truth/dice.h"
#include "bench/truth/scan_page.h"
#include "bench/truth/thread_clock.h"
#include "scanlib/writers/writer.h"

#include <png.h>

#include <algorithm>
#include <cstdio>
#include <stdexcept>

namespace truth {

namespace {

void append(png_structp png, png_bytep data, png_size_t size)
{
    auto* out = static_cast<std::vector<std::uint8_t>*>(png_get_io_ptr(png));
    out->insert(out->end(), data, data + size);
}

void fail(png_structp /*png*/, png_const_charp text)
{
    throw std::runtime_error(text);
}

/// What a program gets that only asks for speed: level 1, filters and strategy as libpng chooses.
std::size_t plainPng(const orva::Page& page)
{
    std::vector<std::uint8_t> out;
    out.reserve(page.bytes());
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, fail, nullptr);
    png_infop info = png_create_info_struct(png);
    png_set_write_fn(png, &out, append, nullptr);
    png_set_IHDR(png, info, static_cast<png_uint_32>(page.width),
        static_cast<png_uint_32>(page.height), 8, PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
        PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_set_compression_level(png, 1);
    png_write_info(png, info);
    for (int y = 0; y < page.height; ++y) {
        png_write_row(png, page.row(y));
    }
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    return out.size();
}

std::size_t ourPng(const orva::Page& page)
{
    static const auto encoder = orva::findOutputFormat(orva::FileFormat::kPng)->makeEncoder();
    orva::EncodedPage out;
    const orva::Status status = encoder->encode(page, {}, out);
    if (!status.ok()) {
        throw std::runtime_error(status.detail());
    }
    return out.bytes.size();
}

/// Grain as a sensor adds it; the JPEG of the truth set has taken most of its own away.
void addGrain(orva::Page& page)
{
    Dice dice(7);
    const NoiseTable grain(3, dice);
    for (std::uint8_t& sample : page.pixels) {
        sample = static_cast<std::uint8_t>(
            std::clamp(static_cast<float>(sample) + grain.pick(dice) + 0.5F, 0.0F, 255.0F));
    }
}

constexpr int kPages = 8;

struct Ratios
{
    std::vector<double> values;

    double median()
    {
        std::sort(values.begin(), values.end());
        return values[values.size() / 2];
    }
};

} // namespace

void comparePng(const QString& folder, int rounds)
{
    for (const bool grainy : { true, false }) {
        Ratios speed;
        Ratios size;
        Ratios ourMs;
        for (const PageTruth& truth : readTruthSet(folder).mid(0, kPages)) {
            orva::Page page = straightened(readScan(folder, truth), truth);
            if (grainy) {
                addGrain(page);
            }
            for (int round = 0; round < rounds; ++round) {
                const double start = threadMs();
                const std::size_t ours = ourPng(page);
                const double middle = threadMs();
                const std::size_t theirs = plainPng(page);
                const double end = threadMs();
                ourMs.values.push_back(middle - start);
                speed.values.push_back((end - middle) / (middle - start));
                size.values.push_back(static_cast<double>(ours) / static_cast<double>(theirs));
            }
        }
        const double faster = speed.median();
        const double larger = size.median();
        const char* verdict = faster >= 2 && larger <= 1.005 ? "yes" : "NO";
        std::printf(
            "| PNG of an A4 page in colour, %s, %.0f ms: times as fast as libpng at level 1 "
            "(%.2f to %.2f); size of libpng's (%.2f to %.2f) | %.2f x, %.2f | %s | %s |\n",
            grainy ? "with a sensor's grain" : "its grain smoothed by JPEG", ourMs.median(),
            speed.values.front(), speed.values.back(), size.values.front(), size.values.back(),
            faster, larger, grainy ? ">= 2 x, <= 1.00" : "", grainy ? verdict : "");
    }
}

} // namespace truth
