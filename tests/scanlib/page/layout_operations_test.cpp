// Blank sides, punch holes, crop and deskew on drawn pages.
#include "scanlib/page/operations.h"
#include "scanlib/page/ops/blank.h"
#include "scanlib/page/ops/deskew.h"
#include "scanlib/page/ops/holes.h"
#include "scanlib/page/ops/reduced.h"
#include "scanlib/page/ops/resample.h"
#include "scanlib/page/ops/skew.h"
#include "tests/scanlib/page/drawn_pages.h"

#include <gtest/gtest.h>

#include <cmath>

namespace orva {
namespace {

constexpr int kWidth = 1654; // A4 at 200 dpi
constexpr int kHeight = 2339;

int mm(double millimetres, double dpi = 200)
{
    return static_cast<int>(std::lround(millimetres / 25.4 * dpi));
}

bool keptAt(int threshold, const Page& page)
{
    ImageSettings settings;
    settings.removeBlank = true;
    settings.blankThreshold = threshold;
    PageGroup group { page };
    EXPECT_TRUE(runOperations(group, settings).ok());
    return !group.empty();
}

/// A blank side with everything that paper collects in an office.
Page wornBlankPage(PixelFormat format)
{
    Page page = blankPage(kWidth, kHeight, format, { 243, 241, 232 });
    const Color shade = format == PixelFormat::kBlackWhite ? kWhite : Color { 205, 203, 196 };
    for (int line = 0; line < 30; ++line) {
        drawTextLine(page, 200, 300 + line * 50, 40, 24, shade); // the other side
    }
    std::mt19937 random(3);
    for (int i = 0; i < 150; ++i) { // dust of 0.25 mm
        fillRect(page, static_cast<int>(random() % (kWidth - 4)),
            static_cast<int>(random() % (kHeight - 4)), 2, 2, kBlack);
    }
    fillDisc(page, mm(12), mm(108), mm(2.75), { 25, 25, 25 });
    fillDisc(page, mm(12), mm(188), mm(2.75), { 25, 25, 25 });
    for (int y = 0; y < mm(18); ++y) { // folded corner
        fillRect(page, kWidth - mm(18) + y, y, mm(18) - y, 1, { 20, 20, 20 });
    }
    fillRect(page, 0, 0, 6, kHeight, { 20, 20, 20 }); // a rim of backing
    if (format != PixelFormat::kBlackWhite) {
        addNoise(page, 5);
    }
    return page;
}

TEST(Blank, wearDoesNotCountAndOneLineOfTextDoes)
{
    for (const PixelFormat format :
        { PixelFormat::kRgb, PixelFormat::kGray, PixelFormat::kBlackWhite }) {
        Page page = wornBlankPage(format);
        EXPECT_FALSE(keptAt(55, page)) << inkOn(page) << " mm2";
        Page number = page;
        drawTextLine(number, 800, 2200, 4, 22);
        EXPECT_TRUE(keptAt(55, number)) << "a page number, " << inkOn(number) << " mm2";
        drawTextLine(page, 300, 400, 12, 28);
        EXPECT_TRUE(keptAt(55, page)) << inkOn(page) << " mm2";
    }
}

TEST(Blank, tintedPaperIsBlankAndAPictureUpToTheEdgeIsNot)
{
    EXPECT_FALSE(keptAt(55, blankPage(kWidth, kHeight, PixelFormat::kRgb, { 250, 220, 130 })));
    Page picture = blankPage(kWidth, kHeight, PixelFormat::kRgb);
    fillRect(picture, 0, 0, kWidth, kHeight / 3, { 60, 90, 120 });
    EXPECT_TRUE(keptAt(55, picture));
    EXPECT_FALSE(keptAt(55, blankPage(1, 1, PixelFormat::kGray)));
}

TEST(Blank, thresholdDecidesHowMuchInkIsNothing)
{
    Page page = blankPage(kWidth, kHeight, PixelFormat::kGray);
    fillRect(page, 800, 1000, mm(4), mm(3), kBlack); // 12 mm2
    EXPECT_NEAR(inkOn(page), 12, 1);
    EXPECT_TRUE(keptAt(0, page));
    EXPECT_TRUE(keptAt(55, page));
    EXPECT_FALSE(keptAt(100, page));
    EXPECT_FALSE(keptAt(0, blankPage(kWidth, kHeight, PixelFormat::kGray)));
}

TEST(Blank, theOtherSideOfTheSheetStays)
{
    ImageSettings settings;
    settings.removeBlank = true;
    PageGroup group { blankPage(800, 800, PixelFormat::kGray),
        blankPage(800, 800, PixelFormat::kGray) };
    group[1].side = Side::kBack;
    group[1].number = 2;
    drawTextLine(group[1], 200, 300, 12, 28);
    ASSERT_TRUE(runOperations(group, settings).ok());
    ASSERT_EQ(group.size(), 1U);
    EXPECT_EQ(group[0].number, 2);
}

TEST(Holes, areCoveredAndWhatOnlyResemblesThemStays)
{
    for (const double dpi : { 150.0, 300.0 }) {
        for (const PixelFormat format :
            { PixelFormat::kRgb, PixelFormat::kGray, PixelFormat::kBlackWhite }) {
            const Color paper =
                format == PixelFormat::kBlackWhite ? kWhite : Color { 240, 235, 220 };
            Page page = blankPage(mm(210, dpi), mm(297, dpi), format, paper, dpi);
            fillDisc(page, mm(12, dpi), mm(108, dpi), mm(2.75, dpi), { 25, 25, 25 });
            fillDisc(page, mm(12, dpi), mm(188, dpi), mm(2.75, dpi), { 25, 25, 25 });
            fillRect(
                page, mm(10, dpi), mm(40, dpi), mm(6, dpi), mm(6, dpi), kBlack); // a ticked box
            fillDisc(page, mm(105, dpi), mm(150, dpi), mm(3, dpi), kBlack); // a dot in the middle
            drawTextLine(page, mm(17, dpi), mm(106, dpi), 10, mm(4, dpi));
            const Page before = page;
            removeHoles(page);
            for (const double y : { 108.0, 188.0 }) {
                for (const double x : { 9.5, 12.0, 14.5 }) {
                    const Color color = pixel(page, mm(x, dpi), mm(y, dpi));
                    EXPECT_NEAR(color.red, paper.red, 1) << x;
                }
            }
            EXPECT_TRUE(pixel(page, mm(13, dpi), mm(43, dpi)) == kBlack);
            EXPECT_TRUE(pixel(page, mm(105, dpi), mm(150, dpi)) == kBlack);
            for (int x = mm(17, dpi); x < mm(60, dpi); ++x) {
                ASSERT_TRUE(pixel(page, x, mm(107, dpi)) == pixel(before, x, mm(107, dpi)))
                    << "print stays";
            }
        }
    }
}

TEST(Holes, ofEveryPunchAreCoveredAtEveryEdge)
{
    struct Punch
    {
        int count;
        double pitch; ///< mm, as all below
        double fromEdge;
        double diameter;
    };
    constexpr Punch kPunches[] = { { 2, 80, 12, 6 }, { 3, 108, 12, 8 }, { 4, 80, 12, 6 },
        { 30, 9.5, 6.5, 5.5 } };
    constexpr Color kPaper { 240, 235, 220 };
    constexpr Color kHole { 25, 25, 25 };
    for (const Punch& punch : kPunches) {
        for (const char* edge : { "left", "right", "top" }) {
            SCOPED_TRACE(std::to_string(punch.count) + " holes, " + edge);
            const bool isTop = *edge == 't';
            Page page = blankPage(
                isTop ? kHeight : kWidth, isTop ? kWidth : kHeight, PixelFormat::kRgb, kPaper);
            const Page paper = page;
            const int length = isTop ? page.width : page.height;
            for (int i = 0; i < punch.count; ++i) {
                const int along = length / 2 + mm((i - (punch.count - 1) / 2.0) * punch.pitch);
                const int from = mm(punch.fromEdge);
                const int x = isTop ? along : *edge == 'r' ? page.width - from : from;
                fillDisc(page, x, isTop ? from : along, mm(punch.diameter / 2), kHole);
            }
            EXPECT_FALSE(page.pixels == paper.pixels);
            removeHoles(page);
            EXPECT_TRUE(page.pixels == paper.pixels);
        }
    }
}

/// A page as the scanner sees it: turned clockwise around its middle on a larger area of backing.
Page scannedTilted(const Page& page, double degrees, int width, int height, Color backing)
{
    Page scan = blankPage(width, height, page.format, backing, page.dpiX);
    const double angle = degrees * std::acos(-1.0) / 180;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const double dx = x + 0.5 - width / 2.0;
            const double dy = y + 0.5 - height / 2.0;
            const double px = dx * std::cos(angle) + dy * std::sin(angle) + page.width / 2.0;
            const double py = dy * std::cos(angle) - dx * std::sin(angle) + page.height / 2.0;
            if (px >= 0 && py >= 0 && px < page.width && py < page.height) {
                setPixel(scan, x, y, pixel(page, static_cast<int>(px), static_cast<int>(py)));
            }
        }
    }
    return scan;
}

double skewOf(const Page& page)
{
    return textSkewDegrees(reducedGray(page, 100).gray);
}

Page letter(PixelFormat format)
{
    Page page = blankPage(1200, 1700, format, { 240, 240, 238 });
    for (int line = 0; line < 28; ++line) {
        drawTextLine(page, 150, 200 + line * 48, 30 - line % 7, 24);
    }
    return page;
}

/// Where the dark square of this size is centred that lies nearest to a place.
std::pair<double, double> centreOfInk(const Page& page, int left, int top, int size)
{
    double sumX = 0;
    double sumY = 0;
    int count = 0;
    for (int y = std::max(0, top); y < std::min(page.height, top + size); ++y) {
        for (int x = std::max(0, left); x < std::min(page.width, left + size); ++x) {
            if (pixel(page, x, y).green < 128) {
                sumX += x + 0.5;
                sumY += y + 0.5;
                ++count;
            }
        }
    }
    return { sumX / count, sumY / count };
}

TEST(Deskew, cutsTheSheetOutOfItsDarkBacking)
{
    for (const PixelFormat format :
        { PixelFormat::kRgb, PixelFormat::kGray, PixelFormat::kBlackWhite }) {
        for (const double degrees : { -15.0, -5.0, -0.7, 0.0, 2.3, 10.0, 15.0 }) {
            Page sheet = letter(format);
            const std::pair<int, int> marks[] = { { 60, 60 }, { 1100, 60 }, { 60, 1600 },
                { 1100, 1600 } };
            for (const auto& [x, y] : marks) {
                fillRect(sheet, x, y, 40, 40, kBlack);
            }
            Page scan = scannedTilted(sheet, degrees, 1654, 2000, { 18, 18, 18 });
            if (format != PixelFormat::kBlackWhite) {
                addNoise(scan, 6);
            }
            cropAndDeskew(scan);
            EXPECT_NEAR(scan.width, 1200, 6) << degrees;
            EXPECT_NEAR(scan.height, 1700, 6) << degrees;
            for (const auto& [x, y] : marks) {
                const auto [foundX, foundY] = centreOfInk(scan, x - 15, y - 15, 70);
                EXPECT_NEAR(foundX, x + 20, 4) << degrees;
                EXPECT_NEAR(foundY, y + 20, 4) << degrees;
            }
            EXPECT_TRUE(pixel(scan, 1, scan.height / 2).red > 150) << "no rim of backing";
            EXPECT_TRUE(pixel(scan, scan.width / 2, scan.height - 2).red > 150);
        }
    }
}

TEST(Deskew, aLightLineAlongTheRimIsNotTheEdgeOfTheSheet)
{
    for (const double degrees : { -1.5, 2.2 }) {
        // The sheet runs out of the area at one corner, so that the line touches it.
        Page scan = scannedTilted(letter(PixelFormat::kRgb), degrees, 1220, 1740, { 38, 38, 38 });
        for (int line = 0; line < 2; ++line) {
            fillRect(scan, line * (scan.width - 2), 0, 2, scan.height, kWhite);
            fillRect(scan, 0, line * (scan.height - 2), scan.width, 2, kWhite);
        }
        cropAndDeskew(scan);
        EXPECT_NEAR(skewOf(scan), 0, 0.1);
        for (const int along : { 2, 25, 50, 75, 98 }) {
            const int x = scan.width * along / 100;
            const int y = scan.height * along / 100;
            for (const int in : { 2, 8 }) {
                EXPECT_GT(pixel(scan, x, in).red, 150) << degrees << " top " << along;
                EXPECT_GT(pixel(scan, x, scan.height - 1 - in).red, 150) << degrees;
                EXPECT_GT(pixel(scan, in, y).red, 150) << degrees << " left " << along;
                EXPECT_GT(pixel(scan, scan.width - 1 - in, y).red, 150) << degrees;
            }
        }
    }
}

TEST(Deskew, aSmallSheetWithATornCornerIsStillFoundWhole)
{
    Page card = blankPage(680, 430, PixelFormat::kRgb, { 235, 240, 240 });
    drawTextLine(card, 60, 100, 10, 30);
    Page scan = scannedTilted(card, 3, kWidth, kHeight, { 30, 30, 30 });
    for (int y = 0; y < 60; ++y) { // torn off, at the place where the tilt puts the corner
        fillRect(scan, 480, 950 + y, 90 - y, 1, { 30, 30, 30 });
    }
    cropAndDeskew(scan);
    EXPECT_NEAR(scan.width, 680, 6);
    EXPECT_NEAR(scan.height, 430, 6);
}

TEST(Deskew, onWhiteBackingTheLinesTellTheAngleAndNothingIsCut)
{
    for (const double degrees : { -6.0, -1.2, 0.4, 3.0 }) {
        const Page scan =
            scannedTilted(letter(PixelFormat::kGray), degrees, 1654, 2000, { 240, 240, 238 });
        EXPECT_NEAR(skewOf(scan), degrees, 0.1);
        Page turned = scan;
        cropAndDeskew(turned);
        EXPECT_EQ(turned.width, 1654);
        EXPECT_EQ(turned.height, 2000);
        EXPECT_NEAR(skewOf(turned), 0, 0.1);
    }
}

TEST(Deskew, leavesAloneWhatIsStraightOrTellsNoAngle)
{
    Page straight = letter(PixelFormat::kGray);
    const auto before = straight.pixels;
    cropAndDeskew(straight);
    EXPECT_EQ(straight.pixels, before);
    Page empty = blankPage(1000, 1000, PixelFormat::kRgb);
    const auto white = empty.pixels;
    cropAndDeskew(empty);
    EXPECT_EQ(empty.pixels, white);
    Page dots = blankPage(1200, 1600, PixelFormat::kGray);
    std::mt19937 random(5);
    for (int i = 0; i < 400; ++i) {
        fillRect(dots, static_cast<int>(random() % 1150), static_cast<int>(random() % 1550), 16, 20,
            kBlack);
    }
    EXPECT_EQ(skewOf(dots), 0);
    Page dot = blankPage(1, 1, PixelFormat::kBlackWhite);
    cropAndDeskew(dot);
    EXPECT_EQ(dot.width, 1);
}

TEST(Deskew, aDarkPictureUpToTheEdgeIsNotTakenForBacking)
{
    Page page = letter(PixelFormat::kRgb);
    for (int y = 1150; y < 1700; ++y) {
        for (int x = 0; x < 1200; ++x) {
            const int shade = 10 + (x / 37 * 31 + y / 23 * 17) % 100;
            setPixel(page, x, y, { shade, shade, shade + 20 });
        }
    }
    const Page before = page;
    cropAndDeskew(page);
    EXPECT_EQ(page.width, before.width);
    EXPECT_EQ(page.height, before.height);
}

TEST(Resample, anUprightRectangleIsCopiedExactly)
{
    for (const PixelFormat format :
        { PixelFormat::kRgb, PixelFormat::kGray, PixelFormat::kBlackWhite }) {
        const Page page = noisePage(50, 40, format);
        const Page part = extracted(page, { 7, 5, 20, 18, 0 });
        ASSERT_EQ(part.width, 20);
        ASSERT_EQ(part.height, 18);
        for (int y = 0; y < 18; ++y) {
            for (int x = 0; x < 20; ++x) {
                ASSERT_TRUE(pixel(part, x, y) == pixel(page, x + 7, y + 5));
            }
        }
        EXPECT_TRUE(pixel(extracted(page, { -3, -3, 10, 10, 0 }), 0, 0) == kWhite);
    }
}

} // namespace
} // namespace orva
