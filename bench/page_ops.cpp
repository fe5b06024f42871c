// Page operations and encoders on one drawn A4 page at 300 dpi. Every figure is also given as a
// multiple of copying the page's memory, measured in the same run, so that machines compare.
#include "bench/drawn_page.h"
#include "scanlib/page/operations.h"
#include "scanlib/writers/writer.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstring>

namespace {

using namespace orva;

const Page& samplePage(bool color)
{
    static const Page gray = bench::drawnPage(PixelFormat::kGray, 1);
    static const Page rgb = bench::drawnPage(PixelFormat::kRgb, 1);
    return color ? rgb : gray;
}

double seconds(std::chrono::steady_clock::duration time)
{
    return std::chrono::duration<double>(time).count();
}

/// The best of several copies into memory that is already there.
double copySeconds(const Page& page)
{
    std::vector<std::uint8_t> target(page.pixels.size());
    double best = 1;
    for (int i = 0; i < 10; ++i) {
        const auto start = std::chrono::steady_clock::now();
        std::memcpy(target.data(), page.pixels.data(), page.pixels.size());
        benchmark::ClobberMemory();
        best = std::min(best, seconds(std::chrono::steady_clock::now() - start));
    }
    return best;
}

void report(benchmark::State& state, const Page& page, double total)
{
    const double each = total / static_cast<double>(state.iterations());
    state.counters["copies"] = each / copySeconds(page);
    state.SetBytesProcessed(static_cast<std::int64_t>(page.bytes()) * state.iterations());
}

void runOperation(benchmark::State& state, bool color, const ImageSettings& settings)
{
    const Page& page = samplePage(color);
    double total = 0;
    for ([[maybe_unused]] auto _ : state) {
        PageGroup group { page };
        const auto start = std::chrono::steady_clock::now();
        if (const Status status = runOperations(group, settings); !status.ok()) {
            state.SkipWithError(status.detail().c_str());
            return;
        }
        const double time = seconds(std::chrono::steady_clock::now() - start);
        state.SetIterationTime(time);
        total += time;
        benchmark::DoNotOptimize(group);
    }
    report(state, page, total);
}

void runEncoder(benchmark::State& state, FileFormat format, bool color)
{
    const Page& page = samplePage(color);
    const auto encoder = findOutputFormat(format)->makeEncoder();
    double total = 0;
    std::size_t size = 0;
    for ([[maybe_unused]] auto _ : state) {
        EncodedPage out;
        const auto start = std::chrono::steady_clock::now();
        if (const Status status = encoder->encode(page, {}, out); !status.ok()) {
            state.SkipWithError(status.detail().c_str());
            return;
        }
        const double time = seconds(std::chrono::steady_clock::now() - start);
        state.SetIterationTime(time);
        total += time;
        size = out.bytes.size();
    }
    report(state, page, total);
    state.counters["bytes"] = static_cast<double>(size);
}

void addOperation(const std::string& name, void (*choose)(ImageSettings&))
{
    for (const bool color : { false, true }) {
        benchmark::RegisterBenchmark((name + (color ? "/colour" : "/grey")).c_str(),
            [color, choose](benchmark::State& state) {
                ImageSettings settings;
                choose(settings);
                runOperation(state, color, settings);
            })
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
    }
}

void addEncoder(const std::string& name, FileFormat format)
{
    for (const bool color : { false, true }) {
        benchmark::RegisterBenchmark((name + (color ? "/colour" : "/grey")).c_str(),
            [color, format](benchmark::State& state) { runEncoder(state, format, color); })
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
    }
}

} // namespace

int main(int argc, char** argv)
{
    addOperation("tone", [](ImageSettings& s) { s.brightness = 10; });
    addOperation("threshold", [](ImageSettings& s) { s.mode = ColorMode::kBlackWhite; });
    addOperation("to grey", [](ImageSettings& s) { s.mode = ColorMode::kGray; });
    addOperation("rotate 90", [](ImageSettings& s) { s.rotate = RotateAngle::kRight90; });
    addOperation("rotate 180", [](ImageSettings& s) { s.rotate = RotateAngle::k180; });
    addOperation("levels", [](ImageSettings& s) { s.autoLevel = true; });
    addOperation("dropout", [](ImageSettings& s) { s.dropout = ColorDropout::kRed; });
    addOperation("background", [](ImageSettings& s) { s.removeBackground = true; });
    addOperation("denoise", [](ImageSettings& s) { s.denoise = Denoise::kNormal; });
    addOperation("blank", [](ImageSettings& s) { s.removeBlank = true; });
    addOperation("holes", [](ImageSettings& s) { s.removeHoles = true; });
    addOperation("crop and deskew", [](ImageSettings& s) { s.autoCropDeskew = true; });
    addEncoder("jpg", FileFormat::kJpg);
    addEncoder("bmp", FileFormat::kBmp);
    addEncoder("png", FileFormat::kPng);
    addEncoder("tif", FileFormat::kTif);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
