// The real SANE library with its "test" driver: pictures compared with what scanimage makes of the
// same settings.
#include "tests/scanlib/device/test_backend.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstdio>

namespace {

using namespace device_tests;
using namespace std::chrono_literals;
using orva::Page;

/// The picture of scanimage as one PNM text.
std::string scanimage(const std::string& mode, const std::string& picture)
{
    // the sanitizers' runtime of this process is not for that one
    const std::string line = "env -u LD_PRELOAD SANE_CONFIG_DIR='" + testBackendFolder()
        + "' scanimage -d test:0 --source Flatbed --mode " + mode + " --depth 8 --test-picture '"
        + picture + "' --resolution 100 -l 0 -t 0 -x 90 -y 54 --format=pnm 2>/dev/null";
    std::FILE* const pipe = ::popen(line.c_str(), "r");
    std::array<char, 65536> buffer {};
    std::string text;
    while (const std::size_t count = std::fread(buffer.data(), 1, buffer.size(), pipe)) {
        text.append(buffer.data(), count);
    }
    ::pclose(pipe);
    return text;
}

TEST(SaneTestDriver, PicturesAreThoseThatScanimageMakes)
{
    for (const char* picture : { "Solid black", "Color pattern", "Grid" }) {
        wish({ { "test-picture", picture } });
        const auto driver = orva::makeSaneDriver(testBackendParts());
        const auto found = driver->enumerate(20s);
        ASSERT_EQ(found.size(), 1U);
        EXPECT_EQ(found[0].name, "Noname frontend-tester");
        const auto device = driver->create(found[0]);
        ASSERT_EQ(device->open().code(), orva::kOk);
        for (const bool color : { true, false }) {
            SCOPED_TRACE(std::string(picture) + (color ? " in color" : " in gray"));
            orva::AcquireSettings settings;
            settings.area = { "名片", 0, 0, 90, 54 };
            settings.dpiX = settings.dpiY = 100;
            settings.mode = color ? orva::ColorMode::kColor : orva::ColorMode::kGray;
            ASSERT_EQ(device->configure(settings).code(), orva::kOk);
            Page page;
            bool end = false;
            ASSERT_EQ(device->nextPage(page, end, {}).code(), orva::kOk);
            device->endBatch();
            EXPECT_EQ(page.format, color ? orva::PixelFormat::kRgb : orva::PixelFormat::kGray);
            EXPECT_DOUBLE_EQ(page.dpiX, 100);
            const std::string expected = scanimage(color ? "Color" : "Gray", picture);
            const std::size_t pixels = page.pixels.size();
            ASSERT_GT(expected.size(), pixels);
            EXPECT_NE(expected.find(std::to_string(page.width) + " " + std::to_string(page.height)
                          + "\n255\n"),
                std::string::npos);
            EXPECT_TRUE(std::equal(page.pixels.begin(), page.pixels.end(),
                reinterpret_cast<const std::uint8_t*>(expected.data()) + expected.size() - pixels));
        }
    }
}

} // namespace
