// Merging, splitting and several streams.
#include "scanlib/page/operations.h"
#include "tests/scanlib/page/drawn_pages.h"

#include <gtest/gtest.h>

namespace orva {
namespace {

class Arrange : public testing::TestWithParam<PixelFormat>
{
protected:
    static ImageSettings settings()
    {
        ImageSettings result;
        result.mode = GetParam() == PixelFormat::kRgb ? ColorMode::kColor
            : GetParam() == PixelFormat::kGray        ? ColorMode::kGray
                                                      : ColorMode::kBlackWhite;
        return result;
    }
};

TEST_P(Arrange, mergedSidesStandInOrderWithWhiteAroundTheSmallerOne)
{
    for (const int code : { 1, 2 }) {
        Page front = noisePage(21, 10, GetParam(), 1);
        Page back = noisePage(13, 12, GetParam(), 2);
        back.side = Side::kBack;
        back.number = 2;
        ImageSettings merge = settings();
        merge.merge = code;
        EXPECT_TRUE(needsWholeSheet(merge));
        PageGroup group { back, front };
        ASSERT_TRUE(runOperations(group, merge).ok());
        ASSERT_EQ(group.size(), 1U);
        const Page& sheet = group[0];
        EXPECT_EQ(sheet.width, code == 1 ? 21 : 34);
        EXPECT_EQ(sheet.height, code == 1 ? 22 : 12);
        EXPECT_EQ(sheet.number, 1);
        for (int y = 0; y < sheet.height; ++y) {
            for (int x = 0; x < sheet.width; ++x) {
                const int backX = code == 1 ? x : x - 21;
                const int backY = code == 1 ? y - 10 : y;
                const Color expected = x < 21 && y < 10 ? pixel(front, x, y)
                    : backX >= 0 && backX < 13 && backY >= 0 && backY < 12
                    ? pixel(back, backX, backY)
                    : kWhite;
                ASSERT_TRUE(pixel(sheet, x, y) == expected) << code << ": " << x << ", " << y;
            }
        }
    }
}

TEST_P(Arrange, splitHalvesHoldEveryPixelOnce)
{
    for (const int code : { 1, 2 }) {
        const Page whole = noisePage(27, 15, GetParam(), 3);
        ImageSettings split = settings();
        split.split = code;
        PageGroup group { whole };
        ASSERT_TRUE(runOperations(group, split).ok());
        ASSERT_EQ(group.size(), 2U);
        EXPECT_EQ(group[0].width, code == 2 ? 13 : 27);
        EXPECT_EQ(group[1].width, code == 2 ? 14 : 27);
        EXPECT_EQ(group[0].height + group[1].height, code == 1 ? 15 : 30);
        for (int y = 0; y < 15; ++y) {
            for (int x = 0; x < 27; ++x) {
                const bool second = code == 1 ? y >= 7 : x >= 13;
                ASSERT_TRUE(pixel(group[second ? 1 : 0], second && code == 2 ? x - 13 : x,
                                second && code == 1 ? y - 7 : y)
                    == pixel(whole, x, y));
            }
        }
        EXPECT_EQ(group[1].number, whole.number);
        EXPECT_EQ(group[1].dpiX, whole.dpiX);
    }
}

INSTANTIATE_TEST_SUITE_P(Formats, Arrange,
    testing::Values(PixelFormat::kBlackWhite, PixelFormat::kGray, PixelFormat::kRgb));

TEST(ArrangeGroup, aLoneSideIsNotMergedAndALineOfPixelsIsNotSplit)
{
    ImageSettings settings;
    settings.merge = 1;
    settings.split = 2;
    PageGroup group { noisePage(1, 9, PixelFormat::kRgb) };
    const auto before = group[0].pixels;
    ASSERT_TRUE(runOperations(group, settings).ok());
    ASSERT_EQ(group.size(), 1U);
    EXPECT_EQ(group[0].pixels, before);
}

TEST(ArrangeGroup, pagesAreTurnedBeforeTheyAreCut)
{
    ImageSettings settings;
    settings.rotate = RotateAngle::kRight90;
    settings.split = 1;
    PageGroup group { blankPage(40, 20, PixelFormat::kRgb) };
    fillRect(group[0], 0, 0, 20, 20, { 255, 0, 0 }); // the left half comes to lie on top
    ASSERT_TRUE(runOperations(group, settings).ok());
    ASSERT_EQ(group.size(), 2U);
    EXPECT_EQ(group[0].width, 20);
    EXPECT_EQ(group[0].height, 20);
    EXPECT_TRUE(pixel(group[0], 10, 10) == (Color { 255, 0, 0 }));
    EXPECT_TRUE(pixel(group[1], 10, 10) == kWhite);
}

TEST(Streams, eachSideGivesColourGreyAndBlackWhite)
{
    ImageSettings settings = imageSettingsFrom(ImageParam {}, ColorMode::kMultiStream);
    PageGroup group { blankPage(11, 4, PixelFormat::kRgb, { 200, 60, 60 }) };
    group[0].sheet = 7;
    ASSERT_TRUE(runOperations(group, settings).ok());
    ASSERT_EQ(group.size(), 3U);
    EXPECT_EQ(group[0].format, PixelFormat::kRgb);
    EXPECT_EQ(group[1].format, PixelFormat::kGray);
    EXPECT_EQ(group[2].format, PixelFormat::kBlackWhite);
    EXPECT_EQ(group[0].stream, "color");
    EXPECT_EQ(group[1].stream, "gray");
    EXPECT_EQ(group[2].stream, "bw");
    EXPECT_NEAR(pixel(group[1], 3, 3).red, 102, 1);
    EXPECT_TRUE(pixel(group[2], 3, 3) == kBlack) << "102 lies below the middle";
    EXPECT_EQ(group[2].sheet, 7);
}

} // namespace
} // namespace orva
