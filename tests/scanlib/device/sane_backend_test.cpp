// The real SANE library with its "test" driver: pictures compared with what scanimage makes of the
// same settings, the feeder of ten pages, faults in the middle, slow reads.
#include "tests/scanlib/device/image_files.h"
#include "tests/scanlib/device/test_backend.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <thread>

namespace {

using namespace device_tests;
using namespace std::chrono_literals;
using orva::Page;

class SaneTestDriver : public testing::Test
{
protected:
    void open(const BackendWishes& wishes)
    {
        wish(wishes);
        m_driver = orva::makeSaneDriver(testBackendParts());
        const auto found = m_driver->enumerate(20s);
        ASSERT_EQ(found.size(), 1U);
        EXPECT_EQ(found[0].name, "Noname frontend-tester");
        m_device = m_driver->create(found[0]);
        ASSERT_EQ(m_device->open().code(), orva::kOk);
    }

    orva::Status configure(std::size_t source, orva::ColorMode mode)
    {
        orva::AcquireSettings settings;
        settings.source = source;
        settings.area = { "名片", 0, 0, 90, 54 };
        settings.dpiX = settings.dpiY = 100;
        settings.mode = mode;
        return m_device->configure(settings);
    }

    /// Pages delivered and the code at the end, 1000 for the end of feed.
    std::pair<int, int> runJob()
    {
        for (int pages = 0;; ++pages) {
            Page page;
            bool end = false;
            const orva::Status status = m_device->nextPage(page, end, m_token);
            if (!status.ok() || end) {
                m_device->endBatch();
                return { pages, status.ok() ? 1000 : status.code() };
            }
            EXPECT_EQ(page.pixels.size(), page.stride() * static_cast<std::size_t>(page.height));
        }
    }

    std::unique_ptr<orva::Driver> m_driver;
    std::unique_ptr<orva::Device> m_device;
    orva::CancelToken m_token;
};

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

TEST_F(SaneTestDriver, PicturesAreThoseThatScanimageMakes)
{
    for (const char* picture : { "Solid black", "Solid white", "Color pattern", "Grid" }) {
        open({ { "test-picture", picture } });
        for (const bool color : { true, false }) {
            SCOPED_TRACE(std::string(picture) + (color ? " in color" : " in gray"));
            ASSERT_EQ(configure(0, color ? orva::ColorMode::kColor : orva::ColorMode::kGray).code(),
                orva::kOk);
            Page page;
            bool end = false;
            ASSERT_EQ(m_device->nextPage(page, end, m_token).code(), orva::kOk);
            m_device->endBatch();
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
            if (std::string(picture) == "Solid black" || std::string(picture) == "Solid white") {
                const int value = std::string(picture) == "Solid black" ? 0 : 255;
                EXPECT_EQ(std::count(page.pixels.begin(), page.pixels.end(), value),
                    static_cast<std::ptrdiff_t>(pixels));
            }
        }
        m_device.reset();
    }
}

TEST_F(SaneTestDriver, ThreePassesAndPagesWithoutAnEndGiveTheSamePicture)
{
    std::vector<std::vector<std::uint8_t>> pictures;
    for (const auto& option : std::vector<std::pair<std::string, std::string>> {
             { "three-pass", "0" }, { "three-pass", "1" }, { "hand-scanner", "1" } }) {
        SCOPED_TRACE(option.first + option.second);
        // mode first: three-pass is offered in colour only
        open({ { "mode", "Color" }, { "test-picture", "Color pattern" }, option });
        ASSERT_EQ(configure(0, orva::ColorMode::kColor).code(), orva::kOk);
        Page page;
        bool end = false;
        ASSERT_EQ(m_device->nextPage(page, end, m_token).code(), orva::kOk);
        m_device->endBatch();
        ASSERT_EQ(page.format, orva::PixelFormat::kRgb);
        pictures.push_back(page.pixels);
        m_device.reset();
    }
    EXPECT_EQ(pictures[0], pictures[1]);
    EXPECT_FALSE(pictures[2].empty()); // as wide as the hand scanner, so not the same size
}

TEST_F(SaneTestDriver, TheFeederHoldsTenPagesAndTheGlassOne)
{
    open({});
    ASSERT_EQ(configure(1, orva::ColorMode::kGray).code(), orva::kOk);
    EXPECT_EQ(runJob(), (std::pair<int, int> { 10, 1000 }));
    ASSERT_EQ(configure(0, orva::ColorMode::kGray).code(), orva::kOk);
    EXPECT_EQ(runJob(), (std::pair<int, int> { 1, 1000 }));
}

TEST_F(SaneTestDriver, FaultsInTheMiddleEndTheJobWithTheirCode)
{
    const std::vector<std::pair<const char*, int>> rows {
        { "SANE_STATUS_UNSUPPORTED", orva::kNotSupported },
        { "SANE_STATUS_CANCELLED", orva::kCancelled },
        { "SANE_STATUS_DEVICE_BUSY", orva::kDeviceBusy },
        { "SANE_STATUS_INVAL", orva::kDeviceBadParameter },
        { "SANE_STATUS_EOF", orva::kDeviceIo }, // ends before a single byte
        { "SANE_STATUS_JAMMED", orva::kPaperJam },
        { "SANE_STATUS_NO_DOCS", 1000 },
        { "SANE_STATUS_COVER_OPEN", orva::kCoverOpen },
        { "SANE_STATUS_IO_ERROR", orva::kDeviceIo },
        { "SANE_STATUS_NO_MEM", orva::kNoMemory },
        { "SANE_STATUS_ACCESS_DENIED", orva::kAccessDenied },
    };
    for (const auto& [name, code] : rows) {
        SCOPED_TRACE(name);
        open({ { "fault-at-start", "4" }, { "fault", name } });
        ASSERT_EQ(configure(1, orva::ColorMode::kGray).code(), orva::kOk);
        EXPECT_EQ(runJob(), (std::pair<int, int> { 3, code }));
        m_device.reset();
    }
}

TEST_F(SaneTestDriver, ASlowDeviceIsCancelledWithinASecondOrTwo)
{
    // 64 bytes every 0.2 s: the page would take minutes
    open({ { "read-limit", "1" }, { "read-limit-size", "64" }, { "read-delay", "1" },
        { "read-delay-duration", "200000" } });
    ASSERT_EQ(configure(1, orva::ColorMode::kColor).code(), orva::kOk);
    std::thread canceller([&] {
        std::this_thread::sleep_for(300ms);
        m_token.cancel();
    });
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(runJob(), (std::pair<int, int> { 0, orva::kCancelled }));
    EXPECT_LT(std::chrono::steady_clock::now() - start, 3s);
    canceller.join();
}

} // namespace
