// Frames of every kind that SANE can deliver, as bytes in, pixels out.
#include "scanlib/device/sane/frame_assembler.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using orva::FrameAssembler;
using orva::FrameFormat;
using orva::FrameShape;
using orva::Page;
using orva::PixelFormat;
using testing::ElementsAre;

FrameShape shape(FrameFormat format, int width, int lines, int depth)
{
    const int samples = width * (format == FrameFormat::kRgb ? 3 : 1);
    return { format, (samples * depth + 7) / 8, width, lines, depth };
}

orva::Status feed(FrameAssembler& assembler, const FrameShape& frame, const std::string& bytes)
{
    if (orva::Status status = assembler.begin(frame); !status.ok()) {
        return status;
    }
    for (std::size_t i = 0; i < bytes.size(); i += 3) { // lines do not end where reads do
        const std::string piece = bytes.substr(i, 3);
        const auto* data = reinterpret_cast<const std::uint8_t*>(piece.data());
        if (orva::Status status = assembler.add(data, piece.size()); !status.ok()) {
            return status;
        }
    }
    return assembler.end();
}

Page assembled(const FrameShape& frame, const std::string& bytes)
{
    FrameAssembler assembler;
    EXPECT_EQ(feed(assembler, frame, bytes).code(), orva::kOk);
    EXPECT_FALSE(assembler.wantsFrame());
    Page page;
    assembler.finish(page);
    return page;
}

orva::ResultCode refused(const FrameShape& frame, const std::string& bytes)
{
    FrameAssembler assembler;
    return feed(assembler, frame, bytes).code();
}

TEST(FrameAssembler, LayoutsOfOneFrame)
{
    const auto letters = ElementsAre('a', 'b', 'c', 'd', 'e', 'f');
    EXPECT_THAT(assembled(shape(FrameFormat::kGray, 3, 2, 8), "abcdef").pixels, letters);
    FrameShape padded = shape(FrameFormat::kGray, 3, 2, 8);
    padded.bytesPerLine = 4;
    EXPECT_THAT(assembled(padded, "abc-def-").pixels, letters);
    Page page = assembled(shape(FrameFormat::kRgb, 1, 2, 8), "abcdef");
    EXPECT_EQ(page.format, PixelFormat::kRgb);
    EXPECT_THAT(page.pixels, letters);
    page = assembled(shape(FrameFormat::kGray, 10, 2, 1), "\x80\x40\xff\xc0");
    EXPECT_EQ(page.format, PixelFormat::kBlackWhite);
    EXPECT_THAT(page.pixels, ElementsAre(0x80, 0x40, 0xff, 0xc0));
    const std::uint16_t samples[] = { 0x12ff, 0xab00 };
    const std::string bytes(reinterpret_cast<const char*>(samples), sizeof samples);
    EXPECT_THAT(
        assembled(shape(FrameFormat::kGray, 2, 1, 16), bytes).pixels, ElementsAre(0x12, 0xab));
}

TEST(FrameAssembler, ThreePassesInAnyOrderMakeOneColorPage)
{
    FrameAssembler assembler;
    ASSERT_EQ(feed(assembler, shape(FrameFormat::kBlue, 2, 1, 8), "bB").code(), orva::kOk);
    EXPECT_TRUE(assembler.wantsFrame());
    ASSERT_EQ(feed(assembler, shape(FrameFormat::kRed, 2, 1, 8), "rR").code(), orva::kOk);
    ASSERT_EQ(feed(assembler, shape(FrameFormat::kGreen, 2, 1, 8), "gG").code(), orva::kOk);
    EXPECT_FALSE(assembler.wantsFrame());
    Page page;
    assembler.finish(page);
    EXPECT_THAT(page.pixels, ElementsAre('r', 'g', 'b', 'R', 'G', 'B'));
    FrameAssembler other;
    ASSERT_EQ(feed(other, shape(FrameFormat::kRed, 2, 1, 8), "rR").code(), orva::kOk);
    EXPECT_EQ(feed(other, shape(FrameFormat::kGreen, 3, 1, 8), "ggg").code(), orva::kDeviceIo);
}

TEST(FrameAssembler, APageThatNeverEndsIsStopped)
{
    FrameAssembler assembler;
    ASSERT_EQ(assembler.begin(shape(FrameFormat::kGray, 100, -1, 8)).code(), orva::kOk);
    const std::vector<std::uint8_t> piece(1U << 20);
    orva::ResultCode code = orva::kOk;
    for (int i = 0; i < 1000 && code == orva::kOk; ++i) {
        code = assembler.add(piece.data(), piece.size()).code();
    }
    EXPECT_EQ(code, orva::kPageTooLarge);
}

TEST(FrameAssembler, MissingDataAndImpossibleParametersAreRefused)
{
    const FrameShape hundred = shape(FrameFormat::kGray, 3, 100, 8);
    // drivers that round the height
    EXPECT_EQ(assembled(hundred, std::string(3 * 99, 'x')).height, 99);
    EXPECT_EQ(assembled(hundred, std::string(3 * 120, 'x')).height, 100);
    EXPECT_EQ(assembled(shape(FrameFormat::kGray, 3, -1, 8), "abcdefghi").height, 3);
    FrameShape narrow = shape(FrameFormat::kRgb, 10, 5, 8);
    narrow.bytesPerLine = 20;
    FrameShape unknown = shape(FrameFormat::kGray, 5, 5, 8);
    unknown.format = static_cast<FrameFormat>(11);
    for (const FrameShape& wrong : { hundred, shape(FrameFormat::kGray, 3, -1, 8),
             shape(FrameFormat::kGray, 0, 5, 8), shape(FrameFormat::kGray, 5, 0, 8),
             shape(FrameFormat::kGray, 5, 5, 12), narrow, unknown }) {
        EXPECT_EQ(refused(wrong, ""), orva::kDeviceIo);
    }
    EXPECT_EQ(refused(hundred, std::string(3 * 50, 'x')), orva::kDeviceIo);
    EXPECT_EQ(refused(shape(FrameFormat::kRgb, 90000, 90000, 8), ""), orva::kPageTooLarge);
}

} // namespace
