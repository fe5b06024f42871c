// Settings, tones, colour conversion and quarter turns on drawn pages.
#include "scanlib/page/operations.h"
#include "scanlib/page/ops/color_conversion.h"
#include "scanlib/page/ops/rotate.h"
#include "scanlib/page/ops/threshold.h"
#include "scanlib/page/ops/tone.h"
#include "tests/scanlib/page/drawn_pages.h"

#include <gtest/gtest.h>

#include <cmath>

namespace orva {
namespace {

ImageParam emptyParam()
{
    return ImageParam {};
}

TEST(ImageSettings, takesWhatTheRecordSaysAndPutsTheRestInRange)
{
    ImageParam param = emptyParam();
    param.nBrightness = 500;
    param.nContrast = -101;
    param.nThresold = 300;
    param.nGamma = 9.0F;
    param.nRotateAngle = 4;
    param.nColorDropout = -1;
    param.bAdvColorDropout = 1;
    param.nSplit = 3;
    param.nMerge = 2;
    param.nDenoise = 2;
    param.nBlankThresoldValue = -5;
    const ImageSettings settings = imageSettingsFrom(param, ColorMode::kBlackWhite);
    EXPECT_EQ(settings.brightness, 100);
    EXPECT_EQ(settings.contrast, -100);
    EXPECT_EQ(settings.threshold, 255);
    EXPECT_DOUBLE_EQ(settings.gamma, 5.0);
    EXPECT_EQ(settings.rotate, RotateAngle::kNone);
    EXPECT_EQ(settings.dropout, ColorDropout::kNone);
    EXPECT_FALSE(settings.reinforcedDropout) << "nothing to reinforce without a dropout colour";
    EXPECT_EQ(settings.split, 0);
    EXPECT_EQ(settings.merge, 2);
    EXPECT_EQ(settings.denoise, Denoise::kOff);
    EXPECT_EQ(settings.blankThreshold, 0);
}

TEST(ImageSettings, gammaZeroAndNotANumberLeaveTheTonesAlone)
{
    for (const float gamma : { 0.0F, -1.0F, std::nanf(""), INFINITY }) {
        ImageParam param = emptyParam();
        param.nGamma = gamma;
        EXPECT_DOUBLE_EQ(imageSettingsFrom(param, ColorMode::kBlackWhite).gamma, 1.0) << gamma;
    }
}

TEST(ImageSettings, thresholdOutsideBlackWhiteModeIsTheMiddle)
{
    // The record holds 0 there, which would make the black-and-white stream all white.
    EXPECT_EQ(imageSettingsFrom(emptyParam(), ColorMode::kMultiStream).threshold, 128);
    EXPECT_EQ(imageSettingsFrom(emptyParam(), ColorMode::kBlackWhite).threshold, 0);
}

TEST(Tone, endsAndMiddlesOfTheTable)
{
    const ToneTable same = toneTable(0, 0, 1.0);
    for (std::size_t level = 0; level < 256; ++level) {
        ASSERT_EQ(same[level], level);
    }
    EXPECT_EQ(toneTable(100, 0, 1.0)[0], 255);
    EXPECT_EQ(toneTable(-100, 0, 1.0)[255], 0);
    EXPECT_EQ(toneTable(20, 0, 1.0)[100], 151) << "20 percent of 255 are 51";
    EXPECT_EQ(toneTable(-20, 0, 1.0)[40], 0);
    EXPECT_EQ(toneTable(0, -100, 1.0)[0], 128);
    EXPECT_EQ(toneTable(0, -100, 1.0)[255], 128);
    EXPECT_EQ(toneTable(0, 100, 1.0)[127], 0);
    EXPECT_EQ(toneTable(0, 100, 1.0)[128], 255);
    EXPECT_EQ(toneTable(0, 50, 1.0)[153], 179) << "twice as far from the middle: 127.5 + 2 x 25.5";
    EXPECT_EQ(toneTable(0, 0, 2.0)[64], 128) << "255 x sqrt(64 / 255) = 127.7";
    EXPECT_EQ(toneTable(0, 0, 0.5)[128], 64) << "255 x (128 / 255)^2 = 64.3";
    EXPECT_EQ(toneTable(0, 0, 5.0)[0], 0);
    EXPECT_EQ(toneTable(0, 0, 0.1)[255], 255);
}

TEST(Tone, reachesEveryByteOfColourPagesAndNoBitOfBlackWhiteOnes)
{
    Page page = blankPage(5, 3, PixelFormat::kRgb, { 10, 100, 200 });
    ToneRequest brighter;
    brighter.brightness = 20;
    applyTones(page, brighter);
    EXPECT_TRUE(pixel(page, 4, 2) == (Color { 61, 151, 251 }));
    Page bits = noisePage(13, 4, PixelFormat::kBlackWhite);
    const auto before = bits.pixels;
    brighter.brightness = 100;
    applyTones(bits, brighter);
    EXPECT_EQ(bits.pixels, before);
}

TEST(ColorConversion, weighsTheChannelsAndKeepsGrey)
{
    Page page = blankPage(6, 1, PixelFormat::kRgb);
    setPixel(page, 0, 0, { 255, 0, 0 });
    setPixel(page, 1, 0, { 0, 255, 0 });
    setPixel(page, 2, 0, { 0, 0, 255 });
    setPixel(page, 3, 0, { 77, 77, 77 });
    setPixel(page, 4, 0, kBlack);
    toGray(page);
    ASSERT_EQ(page.format, PixelFormat::kGray);
    ASSERT_EQ(page.pixels.size(), 6U);
    EXPECT_NEAR(page.pixels[0], 255 * 0.299, 1.0);
    EXPECT_NEAR(page.pixels[1], 255 * 0.587, 1.0);
    EXPECT_NEAR(page.pixels[2], 255 * 0.114, 1.0);
    EXPECT_EQ(page.pixels[3], 77);
    EXPECT_EQ(page.pixels[4], 0);
    EXPECT_EQ(page.pixels[5], 255);
}

TEST(Threshold, blackIsWhatLiesBelowIt)
{
    for (const int width : { 1, 7, 8, 9, 64, 1001 }) {
        Page page = noisePage(width, 3, PixelFormat::kGray, static_cast<unsigned>(width));
        const Page gray = page;
        toBlackWhite(page, 100);
        ASSERT_EQ(page.pixels.size(), bytesPerLine(width, PixelFormat::kBlackWhite) * 3);
        for (int y = 0; y < 3; ++y) {
            for (int x = 0; x < width; ++x) {
                ASSERT_TRUE(pixel(page, x, y) == (gray.row(y)[x] < 100 ? kBlack : kWhite))
                    << width << ": " << x << ", " << y;
            }
            if (width % 8 != 0) {
                EXPECT_EQ(page.row(y)[width / 8] & (0xFF >> (width % 8)), 0)
                    << "padding stays white";
            }
        }
    }
}

TEST(Threshold, endsOfTheScaleAndColour)
{
    Page none = noisePage(40, 5, PixelFormat::kGray);
    toBlackWhite(none, 0);
    EXPECT_EQ(none.pixels, std::vector<std::uint8_t>(25, 0)) << "no grey lies below 0";
    Page white = blankPage(8, 1, PixelFormat::kGray, kWhite);
    setPixel(white, 3, 0, { 254, 254, 254 });
    toBlackWhite(white, 255);
    EXPECT_EQ(white.pixels[0], 0x10);
    Page colour = blankPage(2, 1, PixelFormat::kRgb, { 255, 0, 0 });
    setPixel(colour, 1, 0, { 0, 255, 0 });
    toBlackWhite(colour, 128);
    EXPECT_EQ(colour.pixels[0], 0x80) << "pure red is dark, pure green is light";
}

class Turn : public testing::TestWithParam<PixelFormat>
{
};

TEST_P(Turn, putsEveryPixelWhereItBelongs)
{
    for (const auto& [width, height] :
        { std::pair { 1, 1 }, { 1, 9 }, { 9, 1 }, { 8, 8 }, { 17, 5 }, { 33, 64 }, { 70, 41 } }) {
        Page start = noisePage(width, height, GetParam());
        start.dpiX = 300;
        start.dpiY = 200;
        Page right = start;
        rotate(right, RotateAngle::kRight90);
        Page left = start;
        rotate(left, RotateAngle::kLeft90);
        Page over = start;
        rotate(over, RotateAngle::k180);
        ASSERT_EQ(right.width, height);
        ASSERT_EQ(right.height, width);
        ASSERT_EQ(right.dpiX, 200);
        ASSERT_EQ(right.dpiY, 300);
        ASSERT_EQ(over.dpiX, 300);
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                const Color color = pixel(start, x, y);
                ASSERT_TRUE(pixel(right, height - 1 - y, x) == color) << width << " x " << height;
                ASSERT_TRUE(pixel(left, y, width - 1 - x) == color) << width << " x " << height;
                ASSERT_TRUE(pixel(over, width - 1 - x, height - 1 - y) == color)
                    << width << " x " << height;
            }
        }
        rotate(right, RotateAngle::kRight90);
        EXPECT_EQ(right.pixels, over.pixels);
        rotate(right, RotateAngle::k180);
        EXPECT_EQ(right.pixels, start.pixels) << "padding bits are white again";
    }
}

INSTANTIATE_TEST_SUITE_P(Formats, Turn,
    testing::Values(PixelFormat::kBlackWhite, PixelFormat::kGray, PixelFormat::kRgb));

TEST(Operations, toneComesBeforeTheThreshold)
{
    ImageSettings settings;
    settings.mode = ColorMode::kBlackWhite;
    settings.brightness = 20; // 100 becomes 151
    PageGroup group { blankPage(9, 2, PixelFormat::kRgb, { 100, 100, 100 }) };
    group[0].sheet = 3;
    group[0].number = 5;
    group[0].side = Side::kBack;
    ASSERT_TRUE(runOperations(group, settings).ok());
    ASSERT_EQ(group.size(), 1U);
    EXPECT_EQ(group[0].format, PixelFormat::kBlackWhite);
    EXPECT_EQ(group[0].pixels, std::vector<std::uint8_t>(4, 0));
    EXPECT_EQ(group[0].sheet, 3);
    EXPECT_EQ(group[0].number, 5);
    EXPECT_EQ(group[0].side, Side::kBack);
}

TEST(Operations, refuseAPageThatIsNotWhole)
{
    ImageSettings settings;
    settings.rotate = RotateAngle::k180;
    PageGroup torn { blankPage(20, 20, PixelFormat::kGray) };
    torn[0].pixels.pop_back();
    EXPECT_EQ(runOperations(torn, settings).code(), kDamagedPage);
    PageGroup nothing { Page {} };
    EXPECT_EQ(runOperations(nothing, settings).code(), kDamagedPage);
}

} // namespace
} // namespace orva
