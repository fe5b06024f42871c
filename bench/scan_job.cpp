// What the measurements of bench/run need of the scanner library: sheets to feed, a whole job
// through the installed library as the application runs it, and the encoder alone on the same
// sheets.
//
//   bench_scan_job sheets FOLDER COUNT
//   bench_scan_job encode FOLDER ROUNDS
//   bench_scan_job scan LIBRARY DEVICE SOURCE QUALITY FORMAT pages|document WIDTH HEIGHT FOLDER
//     [deskew] [bw]
//
// Each prints one line of "name=value". Times are seconds, memory is kilobytes.
#include "bench/drawn_page.h"
#include "sdk/codes.h"
#include "sdk/records.h"

#include <dlfcn.h>
#include <sys/resource.h>
#include <turbojpeg.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

/// Processor time of this thread: other programs' share of the machine is not in it.
double threadSeconds()
{
    timespec time {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

double seconds(const timeval& time)
{
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

rusage usage(int who)
{
    rusage result {};
    getrusage(who, &result);
    return result;
}

void require(bool condition, const std::string& what)
{
    if (!condition) {
        throw std::runtime_error(what);
    }
}

// --- sheets
// ---------------------------------------------------------------------------------------

int makeSheets(const std::filesystem::path& folder, int count)
{
    std::filesystem::create_directories(folder);
    for (int number = 1; number <= count; ++number) {
        const orva::Page page =
            bench::drawnPage(orva::PixelFormat::kRgb, static_cast<unsigned>(number));
        char name[32];
        std::snprintf(name, sizeof name, "sheet-%04d.ppm", number);
        std::ofstream file(folder / name, std::ios::binary);
        file << "P6\n" << page.width << ' ' << page.height << "\n255\n";
        file.write(reinterpret_cast<const char*>(page.pixels.data()),
            static_cast<std::streamsize>(page.bytes()));
        require(file.good(), "cannot write " + (folder / name).string());
    }
    return 0;
}

// --- the encoder alone
// ----------------------------------------------------------------------------

int encodeSheets(const std::filesystem::path& folder, int rounds)
{
    const std::size_t bytes = std::size_t { 2480 } * 3508 * 3;
    std::vector<std::filesystem::path> files(
        std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator {});
    std::sort(files.begin(), files.end());
    require(!files.empty(), "no sheets");

    const tjhandle handle = tjInitCompress();
    unsigned long size = tjBufSize(2480, 3508, TJSAMP_420);
    std::vector<unsigned char> jpeg(size);
    std::vector<char> pixels(bytes);
    std::vector<double> times;
    unsigned long long written = 0;
    for (int round = 0; round < rounds; ++round) {
        for (const std::filesystem::path& path : files) {
            std::ifstream file(path, std::ios::binary);
            std::string line;
            for (int i = 0; i < 3; ++i) {
                std::getline(file, line);
            }
            file.read(pixels.data(), static_cast<std::streamsize>(bytes));
            require(file.good(), "cannot read " + path.string());
            const double start = threadSeconds();
            unsigned char* out = jpeg.data();
            size = jpeg.size();
            const int failed = tjCompress2(handle, reinterpret_cast<unsigned char*>(pixels.data()),
                2480, 0, 3508, TJPF_RGB, &out, &size, TJSAMP_420, 70, TJFLAG_NOREALLOC);
            require(failed == 0, "the encoder failed");
            times.push_back(threadSeconds() - start);
            written += size;
        }
    }
    tjDestroy(handle);
    std::sort(times.begin(), times.end());
    std::printf("sides=%zu median=%.6f best=%.6f bytes=%llu\n", times.size(),
        times[times.size() / 2], times.front(), written / times.size());
    return 0;
}

// --- a job through the library
// --------------------------------------------------------------------

class Library
{
public:
    explicit Library(const char* file)
        : m_handle(dlopen(file, RTLD_NOW | RTLD_LOCAL))
    {
        require(m_handle != nullptr, "cannot load the library");
#define ORVA_ENTRY(number, operation, symbol, kind, parameters, arguments)                         \
    symbol = reinterpret_cast<int(*) parameters>(dlsym(m_handle, #symbol));                        \
    require(symbol != nullptr, #symbol " is missing");
#include "sdk/entry_points.def"
    }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;
    ~Library()
    {
        dlclose(m_handle);
    }

#define ORVA_ENTRY(number, operation, symbol, kind, parameters, arguments)                         \
    int(*symbol) parameters = nullptr;
#include "sdk/entry_points.def"

private:
    void* m_handle;
};

std::atomic<int> g_sides { 0 };
std::atomic<int> g_files { 0 };

void onState(int state, int /*page*/, std::string /*fileName*/)
{
    g_sides += state == static_cast<int>(orva::JobState::kSideScanned) ? 1 : 0;
    g_files += state == static_cast<int>(orva::JobState::kFileSaved) ? 1 : 0;
}

int onError(int code)
{
    std::fprintf(stderr, "error %d\n", code);
    return 0;
}

using NameEntry = int (*)(int, char*);

/// Index of the first name that holds the text.
int indexOf(int count, NameEntry nameAt, const std::string& text)
{
    for (int index = 0; index < count; ++index) {
        char name[64] = "";
        nameAt(index, name);
        if (std::string(name).find(text) != std::string::npos) {
            return index;
        }
    }
    throw std::runtime_error(text + " is not offered");
}

void expectOk(int code, const char* what)
{
    require(code == 0, std::string(what) + ": " + std::to_string(code));
}

long statusKilobytes(const std::string& field)
{
    std::ifstream file("/proc/self/status");
    std::string line;
    while (std::getline(file, line)) {
        if (line.rfind(field + ":", 0) == 0) {
            return std::strtol(line.c_str() + field.size() + 1, nullptr, 10);
        }
    }
    return 0;
}

struct JobWish
{
    const char* device;
    const char* source;
    int quality; ///< index
    int format; ///< orva::FileFormat
    bool document; ///< all pages in one file
    double widthMm;
    double heightMm;
    const char* folder;
    bool deskew = false; ///< and crop
    bool blackWhite = false;
    bool clean = false; ///< crop, deskew, median, background, automatic levels
};

int scan(const char* file, const JobWish& wish)
{
    const Library sdk(file);
    expectOk(sdk.Init(), "Init");
    expectOk(sdk.SelectScanner(indexOf(sdk.GetScannerCount(), sdk.GetScannerName, wish.device)),
        "SelectScanner");
    expectOk(
        sdk.SetScanSource(indexOf(sdk.GetScanSourceCount(), sdk.GetScanSourceName, wish.source)),
        "SetScanSource");
    expectOk(sdk.SetColorMode(static_cast<int>(
                 wish.blackWhite ? orva::ColorMode::kBlackWhite : orva::ColorMode::kColor)),
        "SetColorMode");
    expectOk(sdk.SetResolution(300, 300), "SetResolution");
    expectOk(sdk.SetPaperSize(0, 0, wish.widthMm, wish.heightMm, -1), "SetPaperSize");
    expectOk(sdk.SetJPGQulity(wish.quality), "SetJPGQulity");
    ImageParam image {};
    image.nGamma = wish.blackWhite ? 0 : 1;
    image.nThresold = wish.blackWhite ? 128 : 0;
    image.bAutoCropDeskew = wish.deskew || wish.clean ? 1 : 0;
    if (wish.clean) {
        image.nDenoise = static_cast<int>(orva::Denoise::kNormal);
        image.nBackGround = 1;
        image.bAutoLevel = 1;
    }
    expectOk(sdk.SetImageParam(image), "SetImageParam");
    FileParam files {};
    std::snprintf(files.szFilePath, sizeof files.szFilePath, "%s", wish.folder);
    std::snprintf(files.szFileName, sizeof files.szFileName, "bench");
    std::snprintf(files.szIndex, sizeof files.szIndex, "0001");
    std::snprintf(files.szSeparator, sizeof files.szSeparator, "-");
    files.bSameNameCover = 1;
    files.nMultiPage = wish.document ? 1 : 0;
    files.nFormatIndex = wish.format;
    expectOk(sdk.SetFileParam(files), "SetFileParam");
    expectOk(sdk.SetStateCallback(onState, nullptr), "SetStateCallback");
    expectOk(sdk.SetErrorCallback(onError, nullptr), "SetErrorCallback");

    const rusage before = usage(RUSAGE_SELF);
    const Clock::time_point start = Clock::now();
    expectOk(sdk.Scan(), "Scan");
    const double elapsed = secondsSince(start);
    const rusage after = usage(RUSAGE_SELF);
    expectOk(sdk.UnInit(), "UnInit");
    std::printf("sides=%d files=%d seconds=%.4f user=%.4f system=%.4f peak_kb=%ld\n",
        g_sides.load(), g_files.load(), elapsed, seconds(after.ru_utime) - seconds(before.ru_utime),
        seconds(after.ru_stime) - seconds(before.ru_stime), statusKilobytes("VmHWM"));
    return 0;
}

int run(const std::vector<std::string>& words)
{
    const std::string command = words.empty() ? "" : words[0];
    if (command == "sheets" && words.size() == 3) {
        return makeSheets(words[1], std::stoi(words[2]));
    }
    if (command == "encode" && words.size() == 3) {
        return encodeSheets(words[1], std::stoi(words[2]));
    }
    if (command == "scan" && words.size() >= 10) {
        JobWish wish { words[2].c_str(), words[3].c_str(), std::stoi(words[4]), std::stoi(words[5]),
            words[6] == "document", std::stod(words[7]), std::stod(words[8]), words[9].c_str() };
        const auto has = [&words](const char* option) {
            return std::find(words.begin() + 10, words.end(), option) != words.end();
        };
        wish.deskew = has("deskew");
        wish.blackWhite = has("bw");
        wish.clean = has("clean");
        return scan(words[1].c_str(), wish);
    }
    throw std::runtime_error("usage: see the head of the source");
}

} // namespace

int main(int argc, char** argv)
{
    try {
        return run(std::vector<std::string>(argv + 1, argv + argc));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
