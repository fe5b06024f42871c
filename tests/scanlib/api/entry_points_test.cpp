// The library as a program loads it: arguments are checked, and a job of the virtual scanner runs
// from the entry points to the files.
#include "scanlib/base/library_paths.h"
#include "sdk/codes.h"
#include "sdk/records.h"
#include "sdk/result_codes.h"
#include "tests/scanlib/temporary_folder.h"
#include "tests/support/wait.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <mutex>
#include <string>
#include <vector>

using namespace orva;

namespace {

/// One member per entry point, by its symbol.
struct Library
{
#define ORVA_ENTRY(number, operation, symbol, required, parameters, arguments)                     \
    int(*symbol) parameters = nullptr;
#include "sdk/entry_points.def"

    Library()
    {
        handle = dlopen(ORVA_LIBRARY_FILE, RTLD_NOW | RTLD_LOCAL);
        EXPECT_NE(handle, nullptr) << dlerror();
#define ORVA_ENTRY(number, operation, symbol, required, parameters, arguments)                     \
    symbol = reinterpret_cast<int(*) parameters>(dlsym(handle, #symbol));
#include "sdk/entry_points.def"
    }
    void* handle = nullptr;
};

std::mutex g_mutex;
std::vector<int> g_states;
std::vector<std::string> g_files;
std::vector<int> g_errors;

void onState(int state, int /*page*/, std::string file)
{
    const std::lock_guard<std::mutex> lock(g_mutex);
    g_states.push_back(state);
    if (!file.empty()) {
        g_files.push_back(std::move(file));
    }
}

int onError(int code)
{
    const std::lock_guard<std::mutex> lock(g_mutex);
    g_errors.push_back(code);
    return 0;
}

class EntryPoints : public ::testing::Test
{
protected:
    EntryPoints()
    {
        g_states.clear();
        g_files.clear();
        g_errors.clear();
        // No drivers of real scanners: they would search the network.
        writeFile(saneConfig.path() / "dll.conf", "");
        setenv("SANE_CONFIG_DIR", saneConfig.path().c_str(), 1);
        const LibraryPaths paths = installedLibraryPaths();
        std::filesystem::remove_all(paths.virtualScanner);
        std::filesystem::create_directories(paths.virtualScanner / "tray");
        EXPECT_EQ(library.Init(), kOk);
    }
    ~EntryPoints() override { EXPECT_EQ(library.UnInit(), kOk); }

    bool selectVirtual()
    {
        const int count = library.GetScannerCount();
        for (int i = 0; i < count; ++i) {
            char cls[64] = "";
            if (library.SelectScanner(i) == kOk && library.GetScannerClass(cls) == kOk
                && std::strcmp(cls, "AvH4") == 0) {
                return true;
            }
        }
        return false;
    }

    TemporaryFolder saneConfig;
    Library library;
};

int entriesOf(const char* folder)
{
    return static_cast<int>(namesIn(folder).size());
}

FileParam outputTo(const std::filesystem::path& folder)
{
    FileParam file {};
    std::strncpy(file.szFilePath, folder.c_str(), sizeof(file.szFilePath) - 1);
    std::strcpy(file.szIndex, "08");
    return file;
}

/// Two sheets in the tray: small grey pictures in the PGM format.
void loadTray()
{
    for (const char* name : { "sheet-1.pgm", "sheet-2.pgm" }) {
        std::string picture = "P5\n200 300\n255\n";
        for (int i = 0; i < 200 * 300; ++i) {
            picture += static_cast<char>(i / 600 % 2 == 0 ? 0xFF : 0x20);
        }
        writeFile(installedLibraryPaths().virtualScanner / "tray" / name, picture);
    }
}

} // namespace

TEST_F(EntryPoints, nullPointersAndSizesAreRefused)
{
    ASSERT_TRUE(selectVirtual());
    char text[8] = "";
    EXPECT_EQ(library.GetCurScannerName(nullptr), kBadArgument);
    EXPECT_EQ(library.GetScannerName(0, nullptr), kBadArgument);
    EXPECT_EQ(library.GetScannerSN(nullptr, 64), kBadArgument);
    EXPECT_EQ(library.GetScannerSN(text, 0), kBadArgument);
    EXPECT_EQ(library.GetScannerSN(text, -1), kBadArgument);
    EXPECT_EQ(library.GetScannerVersion(text, 8, nullptr, 16), kBadArgument);
    EXPECT_EQ(library.GetPaperName(0, nullptr), kBadArgument);
    EXPECT_EQ(library.GetResolutionName(0, nullptr), kBadArgument);
    EXPECT_EQ(library.GetPrefeed(nullptr), kBadArgument);
    EXPECT_EQ(library.GetPageParameters(nullptr), kBadArgument);
    EXPECT_EQ(library.UpLoad(0, nullptr), kBadArgument);
    EXPECT_EQ(library.GetDevInfo(nullptr, 1024), kBadArgument);
    EXPECT_EQ(library.GetDevInfo(text, 8), kBadArgument) << "half a text is of no use";
    EXPECT_EQ(library.SetLogInfo(true, nullptr), kBadArgument);
}

TEST_F(EntryPoints, indicesAreCheckedEverywhere)
{
    ASSERT_TRUE(selectVirtual());
    char name[256] = "";
    double d = 0;
    int x = 0;
    for (const int index :
        { -1, 1000, std::numeric_limits<int>::max(), std::numeric_limits<int>::min() }) {
        EXPECT_EQ(library.GetScannerName(index, name), kIndexOutOfRange);
        EXPECT_EQ(library.SelectScanner(index), kIndexOutOfRange);
        EXPECT_EQ(library.GetScanSourceName(index, name), kIndexOutOfRange);
        EXPECT_EQ(library.SetScanSource(index), kIndexOutOfRange);
        EXPECT_EQ(library.GetPaperName(index, name), kIndexOutOfRange);
        EXPECT_EQ(library.GetPaperSize(index, d, d, d, d), kIndexOutOfRange);
        EXPECT_EQ(library.GetResolutionName(index, name), kIndexOutOfRange);
        EXPECT_EQ(library.GetResolution(index, x, x), kIndexOutOfRange);
    }
}

TEST_F(EntryPoints, aJobBecomesFiles)
{
    const TemporaryFolder output;
    loadTray();
    ASSERT_TRUE(selectVirtual());
    library.SetStateCallback(onState, nullptr);
    library.SetErrorCallback(onError, nullptr);
    ASSERT_EQ(library.SetScanSource(1), kOk);
    EXPECT_EQ(library.HavePaper(), 1);
    double left = 0;
    double top = 0;
    double width = 0;
    double height = 0;
    EXPECT_EQ(library.GetPaperSize(1, left, top, width, height), kOk);
    EXPECT_EQ(width, 210);
    EXPECT_EQ(height, 297);
    EXPECT_EQ(library.SetPaperSize(1, 2, 30, 40, -1), kOk);
    EXPECT_EQ(library.GetCurPaperSize(left, top, width, height), kOk);
    EXPECT_EQ(
        (std::vector<double> { left, top, width, height }), (std::vector<double> { 1, 2, 30, 40 }));
    ASSERT_EQ(library.SetColorMode(1), kOk);
    FileParam file = outputTo(output.path());
    std::strcpy(file.szFileName, "doc");
    std::strcpy(file.szSeparator, "-");
    ASSERT_EQ(library.SetFileParam(file), kOk);
    EXPECT_EQ(library.Scan(), kOk);
    EXPECT_EQ(g_errors, std::vector<int> {});
    EXPECT_EQ(g_states.back(), -1);
    EXPECT_EQ(namesIn(output.path()), (std::vector<std::string> { "doc-08.jpg", "doc-09.jpg" }));
    EXPECT_EQ(g_files,
        (std::vector<std::string> {
            (output.path() / "doc-08.jpg").string(), (output.path() / "doc-09.jpg").string() }));
    EXPECT_EQ(contentOf(output.path() / "doc-08.jpg").substr(0, 3), "\xFF\xD8\xFF");
    _tagPageParameter page {};
    EXPECT_EQ(library.GetPageParameters(&page), kOk);
    EXPECT_EQ(page.nPage, 2);
    EXPECT_EQ(library.ClearTmpData(), kOk);
    EXPECT_TRUE(namesIn(installedLibraryPaths().spool).empty());

    // the next life knows nothing of this one: neither its last page nor its folder
    ASSERT_EQ(library.UnInit(), kOk);
    ASSERT_EQ(library.Init(), kOk);
    ASSERT_TRUE(selectVirtual());
    EXPECT_EQ(library.GetPageParameters(&page), kOk);
    EXPECT_EQ(page.nPage, 0);
    EXPECT_EQ(library.Scan(), kBadFileName);
}

TEST_F(EntryPoints, beforeASelectionNothingIsAnsweredAndTextsAreEmpty)
{
    char name[64] = "old";
    EXPECT_EQ(library.GetCurScannerName(name), kNoScannerSelected);
    EXPECT_STREQ(name, "");
    std::strcpy(name, "old");
    EXPECT_EQ(library.GetScannerName(1000, name), kIndexOutOfRange);
    EXPECT_STREQ(name, "");
    double d = 7;
    int x = 7;
    float seconds = 7;
    _tagPageParameter page {};
    EXPECT_EQ(library.GetPaperSizeMax(d, d), kNoScannerSelected);
    EXPECT_EQ(library.GetCurPaperSize(d, d, d, d), kNoScannerSelected);
    EXPECT_EQ(library.GetCurResolution(x, x), kNoScannerSelected);
    EXPECT_EQ(library.GetPrefeed(&seconds), kNoScannerSelected);
    EXPECT_EQ(library.GetScannerSleepTime(x, x), kNoScannerSelected);
    EXPECT_EQ(library.GetPageParameters(&page), kNoScannerSelected);
    EXPECT_EQ(d + x + static_cast<double>(seconds), 21) << "values stay as they were";
    EXPECT_EQ(library.GetOverScan(), kNoScannerSelected);

    ASSERT_TRUE(selectVirtual());
    EXPECT_EQ(library.GetScannerState(), 0);
    char serial[64] = "";
    EXPECT_EQ(library.GetScannerSN(serial, 3), kOk);
    EXPECT_STREQ(serial, "AV") << "as much as there is room for";
    char json[1024] = "";
    EXPECT_EQ(library.GetDevInfo(json, sizeof(json)), kOk);
    EXPECT_NE(std::string(json).find("\"IsHigh\""), std::string::npos);
    std::vector<stFileTypeParam> rows;
    EXPECT_EQ(library.GetImageParam(rows), kOk);
    EXPECT_EQ(rows.size(), 3U);
    EXPECT_EQ(library.GetPageParameters(&page), kOk);
    EXPECT_EQ(page.nPage, 0) << "nothing was scanned yet";
    EXPECT_EQ(library.GetPaperSizeMax(d, d), kOk);
    EXPECT_GT(d, 290);
    for (const int answer : { library.SetScanSpeed(1), library.GetOverScan(),
             library.SetOverScanValue(1, 1), library.UpLoad(0, "/tmp") }) {
        EXPECT_EQ(answer, kNotSupported);
    }
}

TEST_F(EntryPoints, tenLivesLeaveNothingOpen)
{
    const TemporaryFolder output;
    int descriptors = 0;
    int threads = 0;
    for (int life = 0; life < 10; ++life) {
        loadTray();
        ASSERT_TRUE(selectVirtual());
        library.SetStateCallback(onState, nullptr);
        library.SetFileParam(outputTo(output.path()));
        EXPECT_EQ(library.Scan(), kOk);
        EXPECT_EQ(library.UnInit(), kOk);
        EXPECT_EQ(library.GetScannerCount(), kNotInitialised);
        if (life == 0) { // what the process opens once for all
            descriptors = entriesOf("/proc/self/fd");
            threads = entriesOf("/proc/self/task");
        }
        EXPECT_EQ(entriesOf("/proc/self/fd"), descriptors) << "life " << life;
        // a thread that was joined may be listed a moment longer
        EXPECT_TRUE(waitUntil([&] { return entriesOf("/proc/self/task") <= threads; }))
            << "life " << life << ": " << entriesOf("/proc/self/task") << " threads";
        // As the application does at its end; the next start binds anew.
        EXPECT_EQ(dlclose(library.handle), 0);
        library = Library();
        EXPECT_EQ(library.Init(), kOk);
    }
    EXPECT_EQ(namesIn(output.path()).size(), 20U);
}

TEST_F(EntryPoints, aDroppedColourIsGoneFromGreyFiles)
{
    const TemporaryFolder output;
    std::string stamp = "P6\n200 300\n255\n";
    for (int i = 0; i < 200 * 300; ++i) {
        const int third = i / 200 / 100; // paper, a red stamp, black
        stamp += third == 0 ? "\xF0\xF0\xF0" : third == 1 ? "\xE0\x20\x20" : "\x20\x20\x20";
    }
    writeFile(installedLibraryPaths().virtualScanner / "tray" / "sheet.ppm", stamp);
    ASSERT_TRUE(selectVirtual());
    library.SetScanSource(1);
    ASSERT_EQ(library.SetColorMode(1), kOk);
    ImageParam image {};
    image.nGamma = 1.0F;
    image.nColorDropout = static_cast<int>(ColorDropout::kRed);
    ASSERT_EQ(library.SetImageParam(image), kOk);
    FileParam file = outputTo(output.path());
    file.nFormatIndex = static_cast<int>(FileFormat::kBmp);
    ASSERT_EQ(library.SetFileParam(file), kOk);
    EXPECT_EQ(library.Scan(), kOk);
    const std::string bmp = contentOf(output.path() / "08.bmp");
    ASSERT_GT(bmp.size(), 100'000U);
    EXPECT_EQ(bmp[28], 8) << "bits a pixel";
    const auto pixels = bmp.substr(54 + 256 * 4);
    const auto shareBetween = [&](int low, int high) {
        return static_cast<double>(std::count_if(pixels.begin(), pixels.end(),
                   [&](unsigned char level) { return level >= low && level <= high; }))
            / static_cast<double>(pixels.size());
    };
    // Red is as light as the paper; its grey would be 89.
    EXPECT_GT(shareBetween(230, 255), 0.6);
    EXPECT_GT(shareBetween(20, 45), 0.25);
    EXPECT_LT(shareBetween(60, 200), 0.02);
}
