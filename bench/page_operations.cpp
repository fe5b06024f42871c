// Clean-up of one A4 page at 300 dpi in colour (deskew, crop, median, background, levels) on one
// core, beside copying the page's memory and beside unpaper, in turns.
//   bench_page_operations FOLDER [ROUNDS]     FOLDER takes unpaper's pictures
//   bench_page_operations sheets FOLDER COUNT a sheet so tilted as so many PPM files, for jobs
#include "bench/drawn_page.h"
#include "scanlib/page/operations.h"
#include "scanlib/page/ops/resample.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>

namespace {

using namespace orva;

template <typename Work>
double millisecondsOf(Work work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
        .count();
}

/// The page tilted by two degrees on dark backing; the area is the page's rectangle.
Page scanOf(const Page& page, const TiltedRect& area)
{
    Page scan = extracted(page, area);
    for (int y = 0; y < scan.height; ++y) {
        std::uint8_t* const row = scan.row(y);
        for (int x = 0; x < scan.width; ++x) {
            if (row[3 * x] == 255 && row[3 * x + 1] == 255 && row[3 * x + 2] == 255) {
                std::memset(row + 3 * x, 34, 3);
            }
        }
    }
    return scan;
}

void writePpm(const Page& page, const std::string& file)
{
    std::ofstream(file, std::ios::binary) << "P6\n"
                                          << page.width << ' ' << page.height << "\n255\n"
                                          << std::string(page.pixels.begin(), page.pixels.end());
}

/// "name=median name_least=… name_most=… " of the values.
void print(const char* name, std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    std::printf("%s=%.2f %s_least=%.2f %s_most=%.2f ", name, values[values.size() / 2], name,
        values.front(), name, values.back());
}

Page tiltedPage()
{
    return scanOf(bench::drawnPage(PixelFormat::kRgb, 1), { -40, 60, 2600, 3640, -2 });
}

/// A sheet of 200 x 284 mm in an area of A4: the virtual scanner takes pictures for A4 that do not
/// tell their resolution.
Page tiltedSheet()
{
    const Page page = bench::drawnPage(PixelFormat::kRgb, 1);
    return scanOf(extracted(page, { 0, 0, 2360, 3350, 0 }), { -120, -35, 2480, 3508, -2 });
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 2) {
        std::fprintf(stderr, "usage: bench_page_operations FOLDER [ROUNDS]\n");
        return 1;
    }
    if (argc == 4 && std::string(argv[1]) == "sheets") {
        const Page sheet = tiltedSheet();
        for (int number = 1; number <= std::atoi(argv[3]); ++number) {
            writePpm(sheet, std::string(argv[2]) + "/tilted-" + std::to_string(number) + ".ppm");
        }
        return 0;
    }
    const std::string folder = argv[1];
    const int rounds = argc > 2 ? std::max(1, std::atoi(argv[2])) : 5;
    const Page page = tiltedPage();
    writePpm(page, folder + "/page.ppm");
    const std::string peer = "unpaper --overwrite -q --dpi 300 '" + folder + "/page.ppm' '" + folder
        + "/out.ppm' >/dev/null 2>&1";
    ImageSettings settings;
    settings.autoCropDeskew = settings.removeBackground = settings.autoLevel = true;
    settings.denoise = Denoise::kNormal;
    std::vector<std::uint8_t> target(page.pixels.size());
    std::vector<double> ours;
    std::vector<double> copies; // of the page, that one clean-up takes
    std::vector<double> ratios; // to unpaper
    for (int round = 0; round <= rounds; ++round) {
        PageGroup group { page };
        const double copy =
            millisecondsOf([&] { std::memcpy(target.data(), page.pixels.data(), target.size()); });
        bool well = true;
        const double own = millisecondsOf([&] { well = runOperations(group, settings).ok(); });
        const double other = millisecondsOf([&] { well = std::system(peer.c_str()) == 0 && well; });
        if (!well) {
            std::fprintf(stderr, "a program failed\n");
            return 1;
        }
        if (round > 0) { // the first one warms the caches
            ours.push_back(own);
            copies.push_back(own / copy);
            ratios.push_back(other / own);
        }
    }
    print("clean_ms", ours);
    print("copies", copies);
    print("unpaper_ratio", ratios);
    std::printf("\n");
    return 0;
}
