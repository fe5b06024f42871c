// Automatic levels, colour dropout, background and noise on drawn pages.
#include "scanlib/page/operations.h"
#include "scanlib/page/ops/blobs.h"
#include "scanlib/page/ops/denoise.h"
#include "scanlib/page/ops/dropout.h"
#include "scanlib/page/ops/tone.h"
#include "tests/scanlib/page/drawn_pages.h"

#include <gtest/gtest.h>

#include <cstdio>

namespace orva {
namespace {

void autoLevels(Page& page)
{
    ToneRequest request;
    request.autoLevels = true;
    applyTones(page, request);
}

void removeBackground(Page& page)
{
    ToneRequest request;
    request.removeBackground = true;
    applyTones(page, request);
}

TEST(AutoLevels, stretchesInkAndPaperAndIgnoresSpecks)
{
    Page page = blankPage(400, 400, PixelFormat::kGray, { 190, 190, 190 });
    fillRect(page, 50, 50, 100, 100, { 70, 70, 70 }); // 6 percent ink
    setPixel(page, 0, 0, kBlack);
    setPixel(page, 1, 0, kWhite);
    autoLevels(page);
    EXPECT_EQ(pixel(page, 300, 300).red, 255);
    EXPECT_EQ(pixel(page, 100, 100).red, 0);
    Page middle = blankPage(100, 100, PixelFormat::kRgb, { 200, 200, 200 });
    fillRect(middle, 0, 0, 100, 30, { 100, 100, 100 });
    fillRect(middle, 0, 90, 10, 10, { 150, 160, 150 });
    autoLevels(middle);
    EXPECT_NEAR(pixel(middle, 5, 95).red, 127, 1) << "half way stays half way";
    EXPECT_NEAR(pixel(middle, 5, 95).green, 153, 1);
}

TEST(AutoLevels, leavesAnEmptyPageAlone)
{
    Page page = blankPage(300, 300, PixelFormat::kGray, { 225, 225, 225 });
    addNoise(page, 6);
    const auto before = page.pixels;
    autoLevels(page);
    EXPECT_EQ(page.pixels, before);
}

Page formWithInk()
{
    Page page = blankPage(60, 10, PixelFormat::kRgb, { 250, 250, 250 });
    fillRect(page, 0, 0, 10, 10, { 230, 60, 50 }); // red rule
    fillRect(page, 10, 0, 10, 10, { 40, 180, 60 }); // green
    fillRect(page, 20, 0, 10, 10, { 50, 70, 200 }); // blue ballpoint
    fillRect(page, 30, 0, 10, 10, { 20, 20, 20 }); // print
    fillRect(page, 40, 0, 10, 10, { 110, 80, 85 }); // dull dark red
    return page;
}

TEST(Dropout, takesItsOwnColourAndKeepsPrint)
{
    struct Case
    {
        ColorDropout color;
        int gone;
    };
    for (const auto& [color, gone] : { Case { ColorDropout::kRed, 0 }, { ColorDropout::kGreen, 10 },
             { ColorDropout::kBlue, 20 } }) {
        Page page = formWithInk();
        dropColor(page, color, false, false);
        ASSERT_EQ(page.format, PixelFormat::kGray);
        for (const int x : { 0, 10, 20 }) {
            if (x == gone) {
                EXPECT_GE(pixel(page, x, 5).red, 180) << x;
            } else {
                EXPECT_LE(pixel(page, x, 5).red, 70) << x;
            }
        }
        EXPECT_EQ(pixel(page, 35, 5).red, 20);
        EXPECT_EQ(pixel(page, 55, 5).red, 250);
    }
}

TEST(Dropout, reinforcedReachesDullShades)
{
    Page page = formWithInk();
    dropColor(page, ColorDropout::kRed, true, false);
    EXPECT_EQ(pixel(page, 5, 5).red, 250) << "as the paper";
    EXPECT_GE(pixel(page, 45, 5).red, 230);
    EXPECT_EQ(pixel(page, 35, 5).red, 20);
    Page color = formWithInk();
    dropColor(color, ColorDropout::kRed, false, true);
    EXPECT_TRUE(pixel(color, 5, 5) == (Color { 250, 250, 250 }));
    EXPECT_TRUE(pixel(color, 25, 5) == (Color { 50, 70, 200 })) << "other colours stay";
}

TEST(Dropout, blackWhiteScanLosesTheFormAndKeepsThePrint)
{
    ImageSettings settings;
    settings.mode = ColorMode::kBlackWhite;
    settings.dropout = ColorDropout::kRed;
    PageGroup group { formWithInk() };
    ASSERT_TRUE(runOperations(group, settings).ok());
    EXPECT_TRUE(pixel(group[0], 5, 5) == kWhite);
    EXPECT_TRUE(pixel(group[0], 25, 5) == kBlack);
    EXPECT_TRUE(pixel(group[0], 35, 5) == kBlack);
}

TEST(Background, tintedPaperAndShowThroughBecomeWhiteAndInkStays)
{
    Page page = blankPage(300, 300, PixelFormat::kRgb, { 240, 225, 180 });
    fillRect(page, 20, 20, 200, 40, { 230, 214, 170 }); // the other side
    fillRect(page, 20, 100, 100, 10, { 15, 12, 10 });
    fillRect(page, 20, 200, 60, 60, { 180, 30, 30 }); // stamp
    addNoise(page, 4);
    removeBackground(page);
    EXPECT_TRUE(pixel(page, 280, 280) == kWhite);
    EXPECT_TRUE(pixel(page, 100, 40) == kWhite);
    EXPECT_LT(pixel(page, 50, 105).red, 30);
    const Color stamp = pixel(page, 50, 230);
    EXPECT_GT(stamp.red - stamp.green, 120);
}

TEST(Background, leavesAPictureAlone)
{
    Page page = noisePage(200, 200, PixelFormat::kRgb);
    const auto before = page.pixels;
    removeBackground(page);
    EXPECT_EQ(page.pixels, before);
}

TEST(Background, unevenLightLeavesNoShadowInColourAndNoBlackCornerInText)
{
    // Light falls to 55 percent towards the right, as in the fold of a book; ink is a sixth of it.
    Page lit = blankPage(1200, 800, PixelFormat::kGray);
    const auto lightAt = [](int x) { return 240 - 108 * x / 1200; };
    for (int x = 0; x < lit.width; ++x) {
        fillRect(lit, x, 0, 1, lit.height, { lightAt(x), lightAt(x), lightAt(x) });
    }
    const auto isInk = [](int x, int y) { return y % 40 < 4 && x % 60 < 44; };
    for (int y = 100; y < 700; ++y) {
        for (int x = 60; x < 1140; ++x) {
            if (isInk(x, y)) {
                setPixel(lit, x, y, { lightAt(x) / 6, lightAt(x) / 6, lightAt(x) / 6 });
            }
        }
    }
    addNoise(lit, 5);
    Page even = lit;
    removeBackground(even);
    ImageSettings settings;
    settings.mode = ColorMode::kBlackWhite;
    settings.threshold = 150;
    settings.document = DocumentType::kText;
    PageGroup text { lit };
    ASSERT_TRUE(runOperations(text, settings).ok());
    settings.document = DocumentType::kTextAndPictures;
    PageGroup fixed { lit };
    ASSERT_TRUE(runOperations(fixed, settings).ok());
    int dark = 0;
    int wrong = 0;
    int wrongWhenFixed = 0;
    for (int y = 0; y < lit.height; ++y) {
        for (int x = 0; x < lit.width; ++x) {
            const bool ink = y >= 100 && y < 700 && x >= 60 && x < 1140 && isInk(x, y);
            dark += !ink && pixel(even, x, y).red < 250 ? 1 : 0;
            wrong += (pixel(text[0], x, y) == kBlack) != ink ? 1 : 0;
            wrongWhenFixed += (pixel(fixed[0], x, y) == kBlack) != ink ? 1 : 0;
        }
    }
    std::printf("uneven light: %.2f %% of the paper left dark; black-and-white: %.3f %% of pixels "
                "wrong for text, %.1f %% with a fixed threshold\n",
        100.0 * dark / (1200 * 800), 100.0 * wrong / (1200 * 800),
        100.0 * wrongWhenFixed / (1200 * 800));
    EXPECT_LT(dark, 1200 * 800 / 200);
    EXPECT_LT(wrong, 1200 * 800 / 1000);
    EXPECT_GT(wrongWhenFixed, 1200 * 800 / 20) << "or the page would not be uneven enough to tell";
}

TEST(DenoiseOperation, takesSingleDotsAndKeepsStrokesAndEdges)
{
    for (const PixelFormat format :
        { PixelFormat::kGray, PixelFormat::kRgb, PixelFormat::kBlackWhite }) {
        Page clean = blankPage(101, 60, format);
        fillRect(clean, 20, 10, 4, 40, kBlack);
        fillRect(clean, 60, 10, 30, 30, kBlack);
        Page dirty = clean;
        for (const auto& [x, y] : { std::pair { 0, 0 }, { 100, 59 }, { 40, 30 }, { 50, 5 } }) {
            setPixel(dirty, x, y, kBlack);
        }
        denoise(dirty, Denoise::kNormal);
        for (const auto& [x, y] : { std::pair { 0, 0 }, { 100, 59 }, { 40, 30 }, { 50, 5 } }) {
            EXPECT_TRUE(pixel(dirty, x, y) == kWhite) << x;
        }
        for (int y = 12; y < 38; ++y) {
            for (int x = 0; x < 101; ++x) {
                if (x != 40) {
                    ASSERT_TRUE(pixel(dirty, x, y) == pixel(clean, x, y)) << x << ", " << y;
                }
            }
        }
    }
}

TEST(DenoiseOperation, medianIsTheFifthOfNine)
{
    Page page = noisePage(37, 21, PixelFormat::kRgb, 9);
    const Page before = page;
    denoise(page, Denoise::kNormal);
    for (int y = 1; y < 20; ++y) {
        for (int x = 1; x < 36; ++x) {
            std::vector<int> nine;
            for (int dy = -1; dy <= 1; ++dy) {
                for (int dx = -1; dx <= 1; ++dx) {
                    nine.push_back(pixel(before, x + dx, y + dy).green);
                }
            }
            std::sort(nine.begin(), nine.end());
            ASSERT_EQ(pixel(page, x, y).green, nine[4]) << x << ", " << y;
        }
    }
    Page dot = blankPage(1, 1, PixelFormat::kGray, { 9, 9, 9 });
    denoise(dot, Denoise::kStrong);
    EXPECT_EQ(dot.pixels[0], 9);
}

TEST(DenoiseOperation, strongTakesLargerSpecks)
{
    Page page = blankPage(40, 20, PixelFormat::kBlackWhite);
    fillRect(page, 10, 10, 3, 2, kBlack);
    Page strong = page;
    denoise(page, Denoise::kNormal);
    EXPECT_TRUE(pixel(page, 11, 10) == kBlack);
    denoise(strong, Denoise::kStrong);
    EXPECT_TRUE(pixel(strong, 11, 10) == kWhite);
}

TEST(Blobs, joinsWhatTouches)
{
    Page page = blankPage(40, 30, PixelFormat::kBlackWhite);
    fillRect(page, 2, 2, 3, 10, kBlack); // a U, whose arms meet only below
    fillRect(page, 10, 2, 3, 10, kBlack);
    fillRect(page, 2, 12, 11, 2, kBlack);
    setPixel(page, 13, 14, kBlack); // touches at a corner
    setPixel(page, 30, 3, kBlack);
    const Blobs found = findBlobs(page);
    ASSERT_EQ(found.blobs.size(), 2U);
    EXPECT_EQ(found.blobs[0].area, 30 + 30 + 22 + 1);
    EXPECT_EQ(found.blobs[0].width(), 12);
    EXPECT_EQ(found.blobs[0].height(), 13);
    EXPECT_EQ(found.blobs[1].area, 1);
}

} // namespace
} // namespace orva
