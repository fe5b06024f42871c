// Clean-up of one A4 page at 300 dpi in colour (deskew, crop, median, background, levels) on one
// core, beside copying the page's memory and beside unpaper, in turns.
//   bench_page_operations FOLDER [ROUNDS]     FOLDER takes unpaper's pictures
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

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

/// The drawn page tilted by two degrees on dark backing.
Page tiltedPage()
{
    Page page = bench::drawnPage(PixelFormat::kRgb, 1);
    Page scan = extracted(page, { -40, 60, 2600, 3640, -2 });
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

} // namespace

int main(int argc, char** argv)
{
    if (argc < 2) {
        std::fprintf(stderr, "usage: bench_page_operations FOLDER [ROUNDS]\n");
        return 1;
    }
    const std::string folder = argv[1];
    const int rounds = argc > 2 ? std::max(1, std::atoi(argv[2])) : 5;
    const Page page = tiltedPage();
    std::ofstream(folder + "/page.ppm", std::ios::binary)
        << "P6\n"
        << page.width << ' ' << page.height << "\n255\n"
        << std::string(page.pixels.begin(), page.pixels.end());
    const std::string peer = "unpaper --overwrite -q --dpi 300 '" + folder + "/page.ppm' '" + folder
        + "/out.ppm' >/dev/null 2>&1";
    ImageSettings settings;
    settings.autoCropDeskew = settings.removeBackground = settings.autoLevel = true;
    settings.denoise = Denoise::kNormal;
    std::vector<std::uint8_t> target(page.pixels.size());
    std::vector<double> copies;
    std::vector<double> ours;
    std::vector<double> theirs;
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
            copies.push_back(copy);
            ours.push_back(own);
            theirs.push_back(other);
        }
    }
    std::printf("copy_ms=%.2f clean_ms=%.1f unpaper_ms=%.0f copies=%.1f unpaper_ratio=%.1f\n",
        median(copies), median(ours), median(theirs), median(ours) / median(copies),
        median(theirs) / median(ours));
    return 0;
}
