// Page images of every format, whole and damaged, as the virtual scanner reads them.
#include "scanlib/device/virtual/image_file.h"
#include "scanlib/device/virtual/sheet_placing.h"
#include "tests/scanlib/device/image_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

namespace {

using namespace device_tests;
using orva::Page;
using orva::PixelFormat;
using orva::readImage;
using testing::HasSubstr;
namespace fs = std::filesystem;

class VirtualImages : public testing::Test
{
protected:
    fs::path file(const std::string& name) const { return m_folder.path() / name; }

    void expectQuarters(const Page& page, int tolerance) const
    {
        const std::vector<std::vector<int>> colors = { { 255, 0, 0 }, { 0, 255, 0 }, { 0, 0, 255 },
            { 255, 255, 255 } };
        for (int q = 0; q < 4; ++q) {
            const std::vector<int> seen = quarterColor(page, q);
            for (std::size_t c = 0; c < seen.size(); ++c) {
                EXPECT_NEAR(seen[c], colors[static_cast<std::size_t>(q)][c], tolerance)
                    << "quarter " << q;
            }
        }
    }

    TemporaryFolder m_folder;
};

TEST_F(VirtualImages, EveryFormatGivesItsPixelsAndItsResolution)
{
    const Page picture = quarters(64, 48, PixelFormat::kRgb, 150);
    writeConverted(file("a.jpg"), { picture }, "-quality 95");
    writePng(file("a.png"), picture);
    writeConverted(file("a.tif"), { picture }, "-compress LZW");
    writePnm(file("a.ppm"), picture);
    for (const char* name : { "a.jpg", "a.png", "a.tif", "a.ppm" }) {
        SCOPED_TRACE(name);
        Page page;
        ASSERT_EQ(readImage(file(name), 0, PixelFormat::kRgb, page).code(), orva::kOk);
        EXPECT_EQ(page.width, 64);
        EXPECT_EQ(page.height, 48);
        ASSERT_EQ(page.pixels.size(), 64U * 48 * 3);
        expectQuarters(page, std::string(name) == "a.jpg" ? 4 : 0);
        // PNM carries no resolution: 64 pixels across 210 mm
        EXPECT_NEAR(page.dpiX, std::string(name) == "a.ppm" ? 64 * 25.4 / 210 : 150, 0.02);
        ASSERT_EQ(readImage(file(name), 0, PixelFormat::kGray, page).code(), orva::kOk);
        ASSERT_EQ(page.pixels.size(), 64U * 48);
        for (const auto& [quarter, gray] :
            { std::pair(0, 76), { 1, 150 }, { 2, 29 }, { 3, 255 } }) {
            EXPECT_NEAR(quarterColor(page, quarter)[0], gray, 3) << "quarter " << quarter;
        }
    }
}

TEST_F(VirtualImages, BitmapsComeOutAsBlackInkOnWhite)
{
    writeConverted(file("g4.tif"), { quarters(64, 48, PixelFormat::kGray, 200) },
        "-threshold 50% -compress Group4");
    writeFile(file("raw.pbm"), std::string("P4\n10 2\n") + "\x80\x40" + std::string("\x00\x00", 2));
    writeFile(file("plain.pbm"), "P1\n# ink\n3 2\n101\n0 1 0\n");
    Page page;
    ASSERT_EQ(readImage(file("g4.tif"), 0, PixelFormat::kGray, page).code(), orva::kOk);
    EXPECT_DOUBLE_EQ(page.dpiX, 200);
    EXPECT_EQ(quarterColor(page, 0)[0], 0);
    EXPECT_EQ(quarterColor(page, 1)[0], 0);
    EXPECT_EQ(quarterColor(page, 2)[0], 255);
    ASSERT_EQ(readImage(file("raw.pbm"), 0, PixelFormat::kGray, page).code(), orva::kOk);
    EXPECT_THAT(std::vector<int>(page.pixels.begin(), page.pixels.begin() + 10),
        testing::ElementsAre(0, 255, 255, 255, 255, 255, 255, 255, 255, 0));
    ASSERT_EQ(readImage(file("plain.pbm"), 0, PixelFormat::kRgb, page).code(), orva::kOk);
    EXPECT_THAT(page.pixels,
        testing::ElementsAre(
            0, 0, 0, 255, 255, 255, 0, 0, 0, 255, 255, 255, 0, 0, 0, 255, 255, 255));
}

TEST_F(VirtualImages, AFileCutOffAnywhereIsRefusedWithItsName)
{
    const Page picture = quarters(200, 160, PixelFormat::kRgb, 150);
    writeConverted(file("a.jpg"), { picture }, "-quality 95");
    writePng(file("a.png"), picture);
    writeConverted(file("a.tif"), { picture }, "-compress LZW");
    writeConverted(file("g4.tif"), { quarters(200, 160, PixelFormat::kGray, 150) },
        "-threshold 50% -compress Group4");
    writePnm(file("a.ppm"), picture);
    writeFile(file("a.pgm"), "P2\n200 200\n255\n1 2 3 4");
    for (const char* name : { "a.jpg", "a.png", "a.tif", "g4.tif", "a.ppm", "a.pgm" }) {
        const auto whole = fs::file_size(file(name));
        for (const double share : { 0.75, 0.5, 0.25, 0.05, 0.0 }) {
            SCOPED_TRACE(std::string(name) + " cut to " + std::to_string(share));
            const fs::path cut = file(std::string("cut-") + name);
            fs::copy_file(file(name), cut, fs::copy_options::overwrite_existing);
            fs::resize_file(cut, static_cast<std::uintmax_t>(static_cast<double>(whole) * share));
            Page page;
            const orva::Status status = readImage(cut, 0, PixelFormat::kRgb, page);
            EXPECT_EQ(status.code(), orva::kDamagedPage);
            EXPECT_THAT(status.detail(), HasSubstr(cut.string()));
        }
    }
}

/// Every single byte of a small file is changed: no crash, no endless loop, a code of the table.
TEST_F(VirtualImages, BrokenBytesNeverDoMoreThanRefuseThePage)
{
    const Page picture = quarters(24, 16, PixelFormat::kRgb, 150);
    writeConverted(file("a.jpg"), { picture }, "-quality 95");
    writePng(file("a.png"), picture);
    writeConverted(file("a.tif"), { picture, picture }, "-compress LZW");
    writePnm(file("a.ppm"), picture);
    for (const char* name : { "a.jpg", "a.png", "a.tif", "a.ppm" }) {
        std::ifstream stream(file(name), std::ios::binary);
        const std::string whole((std::istreambuf_iterator<char>(stream)), {});
        for (std::size_t i = 0; i < whole.size(); i += 3) {
            std::string broken = whole;
            broken[i] = static_cast<char>(broken[i] ^ (i % 2 == 0 ? 0xff : 0x10));
            writeFile(file("broken"), broken);
            Page page;
            int count = 0;
            const orva::ResultCode code =
                readImage(file("broken"), 0, PixelFormat::kRgb, page).code();
            EXPECT_TRUE(
                code == orva::kOk || code == orva::kDamagedPage || code == orva::kPageTooLarge)
                << name << " byte " << i << ": " << code;
            (void)orva::countImages(file("broken"), count).ok();
        }
    }
}

TEST_F(VirtualImages, SizesPastTheLimitTakeNoMemory)
{
    writeFile(file("wide.ppm"), "P6\n900000 2\n255\nxxxxxxxx");
    writeFile(file("huge.pgm"), "P2\n29000 29000\n255\n1 2 3");
    writeFile(file("liar.ppm"), "P6\n12000 12000\n255\nxxxxxxxx");
    writePng(file("big.png"), plain(31000, 2, 9, 0));
    Page page;
    EXPECT_EQ(readImage(file("wide.ppm"), 0, PixelFormat::kRgb, page).code(), orva::kPageTooLarge);
    EXPECT_EQ(readImage(file("huge.pgm"), 0, PixelFormat::kGray, page).code(), orva::kPageTooLarge);
    EXPECT_EQ(readImage(file("big.png"), 0, PixelFormat::kGray, page).code(), orva::kPageTooLarge);
    EXPECT_EQ(readImage(file("liar.ppm"), 0, PixelFormat::kRgb, page).code(), orva::kDamagedPage);
    EXPECT_LT(page.pixels.capacity(), 1000U * 1000);
    writeFile(file("text.png"), "not an image at all");
    EXPECT_EQ(readImage(file("text.png"), 0, PixelFormat::kGray, page).code(), orva::kDamagedPage);
}

TEST(SheetPlacing, CutAndPaddedInTheSameResolution)
{
    Page page = quarters(100, 60, PixelFormat::kGray, 254); // 10 x 6 mm
    orva::placeSheet(page, { 4, 2, 8, 8, 254, 254 });
    ASSERT_EQ(page.width, 80);
    ASSERT_EQ(page.height, 80);
    EXPECT_EQ(page.row(0)[0], 0); // 4 mm, 2 mm: first quarter
    EXPECT_EQ(page.row(0)[10], 80); // 5 mm: second quarter
    EXPECT_EQ(page.row(10)[9], 160); // 3 mm down: third quarter
    EXPECT_EQ(page.row(0)[59], 80);
    EXPECT_EQ(page.row(0)[60], 255); // past the right edge of the sheet
    EXPECT_EQ(page.row(40)[0], 255); // past its lower edge
}

TEST(SheetPlacing, ResamplingKeepsPositionsColorsAndWhite)
{
    for (const double dpi : { 100.0, 600.0 }) {
        SCOPED_TRACE(dpi);
        Page page = quarters(300, 300, PixelFormat::kRgb, 300);
        orva::placeSheet(page, { 0, 0, 25.4, 25.4, dpi, dpi });
        ASSERT_EQ(page.width, static_cast<int>(dpi));
        EXPECT_DOUBLE_EQ(page.dpiX, dpi);
        EXPECT_EQ(quarterColor(page, 0), (std::vector<int> { 255, 0, 0 }));
        EXPECT_EQ(quarterColor(page, 2), (std::vector<int> { 0, 0, 255 }));
        EXPECT_EQ(page.row(page.height - 1)[3 * page.width - 1], 255);
        // the edge between the quarters stays in the middle, one output pixel wide at the most
        const int middle = page.width / 2;
        EXPECT_GT(page.row(5)[3 * (middle - 3)], 250);
        EXPECT_LT(page.row(5)[3 * (middle + 2)], 5);
    }
}

} // namespace
