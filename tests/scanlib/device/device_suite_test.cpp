// What every device must do, run on the virtual scanner and on SANE's "test" driver.
#include "scanlib/device/papers.h"
#include "scanlib/device/virtual/virtual_driver.h"
#include "tests/scanlib/device/image_files.h"
#include "tests/scanlib/device/test_backend.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>

namespace {

using namespace device_tests;
using orva::Page;

struct Kind
{
    const char* name;
    std::function<std::unique_ptr<orva::Driver>(const std::filesystem::path&)> makeDriver;
};

class EveryDevice : public testing::TestWithParam<Kind>
{
protected:
    void SetUp() override
    {
        m_driver = GetParam().makeDriver(m_folder.path());
        const auto found = m_driver->enumerate(std::chrono::seconds(20));
        ASSERT_EQ(found.size(), 1U);
        EXPECT_FALSE(found[0].name.empty());
        m_device = m_driver->create(found[0]);
        ASSERT_EQ(m_device->open().code(), orva::kOk);
    }

    orva::AcquireSettings settings(std::size_t source) const
    {
        orva::AcquireSettings result;
        result.source = source;
        for (const orva::PaperSize& paper : m_device->sources().at(source).papers) {
            if (paper.name == "名片") {
                result.area = paper;
            }
        }
        result.dpiX = result.dpiY = 150;
        return result;
    }

    TemporaryFolder m_folder;
    std::unique_ptr<orva::Driver> m_driver;
    std::unique_ptr<orva::Device> m_device;
    orva::CancelToken m_token;
};

TEST_P(EveryDevice, OffersUsableSources)
{
    ASSERT_FALSE(m_device->sources().empty());
    for (const orva::PaperSource& source : m_device->sources()) {
        SCOPED_TRACE(source.name);
        EXPECT_GT(source.maxWidthMm, 0);
        ASSERT_FALSE(source.papers.empty());
        EXPECT_EQ(source.papers.back().name, orva::kPaperAuto);
        for (const orva::PaperSize& paper : source.papers) {
            EXPECT_LE(paper.leftMm + paper.widthMm, source.maxWidthMm + 0.01) << paper.name;
            EXPECT_LE(paper.topMm + paper.heightMm, source.maxHeightMm + 0.01) << paper.name;
        }
        ASSERT_FALSE(source.resolutions.empty());
        EXPECT_GE(source.resolutions.front(), 75);
        EXPECT_LE(source.resolutions.back(), 600);
        EXPECT_TRUE(std::is_sorted(source.resolutions.begin(), source.resolutions.end()));
    }
}

TEST_P(EveryDevice, OpeningAgainIsHarmless)
{
    EXPECT_EQ(m_device->open().code(), orva::kOk);
}

TEST_P(EveryDevice, PagesHaveTheSizeResolutionAndFormatAskedFor)
{
    for (const bool color : { true, false }) {
        for (std::size_t source = 0; source < m_device->sources().size(); ++source) {
            orva::AcquireSettings wanted = settings(source);
            wanted.mode = color ? orva::ColorMode::kColor : orva::ColorMode::kGray;
            ASSERT_EQ(m_device->configure(wanted).code(), orva::kOk);
            Page page;
            bool end = false;
            ASSERT_EQ(m_device->nextPage(page, end, m_token).code(), orva::kOk);
            ASSERT_FALSE(end);
            EXPECT_EQ(page.format, color ? orva::PixelFormat::kRgb : orva::PixelFormat::kGray);
            EXPECT_NEAR(page.width, 90 / 25.4 * 150, 1);
            EXPECT_NEAR(page.height, 54 / 25.4 * 150, 1);
            EXPECT_DOUBLE_EQ(page.dpiX, 150);
            EXPECT_EQ(page.pixels.size(), page.stride() * static_cast<std::size_t>(page.height));
            EXPECT_EQ(page.sheet, 1);
            EXPECT_EQ(page.side, orva::Side::kFront);
            m_device->endBatch();
        }
    }
}

TEST_P(EveryDevice, TheFlatbedGivesOnePageAndTheFeederEnds)
{
    for (std::size_t source = 0; source < m_device->sources().size(); ++source) {
        ASSERT_EQ(m_device->configure(settings(source)).code(), orva::kOk);
        int pages = 0;
        bool end = false;
        while (!end && pages < 50) {
            Page page;
            ASSERT_EQ(m_device->nextPage(page, end, m_token).code(), orva::kOk);
            pages += end ? 0 : 1;
        }
        m_device->endBatch();
        EXPECT_TRUE(end);
        if (m_device->sources()[source].kind == orva::SourceKind::kFlatbed) {
            EXPECT_EQ(pages, 1);
        }
    }
}

TEST_P(EveryDevice, ACancelledJobEndsAndTheNextOneRuns)
{
    for (const bool byToken : { true, false }) {
        ASSERT_EQ(m_device->configure(settings(1)).code(), orva::kOk);
        orva::CancelToken token;
        byToken ? token.cancel() : m_device->requestCancel();
        Page page;
        bool end = false;
        EXPECT_EQ(m_device->nextPage(page, end, token).code(), orva::kCancelled);
        EXPECT_FALSE(end);
        m_device->endBatch();
    }
    ASSERT_EQ(m_device->configure(settings(1)).code(), orva::kOk);
    Page page;
    bool end = false;
    EXPECT_EQ(m_device->nextPage(page, end, m_token).code(), orva::kOk);
    m_device->endBatch();
}

TEST_P(EveryDevice, MisuseHasACode)
{
    Page page;
    bool end = false;
    EXPECT_NE(m_device->nextPage(page, end, m_token).code(), orva::kOk);
    m_device->endBatch();
    m_device->endBatch();
    orva::AcquireSettings wrong = settings(0);
    wrong.source = 99;
    EXPECT_EQ(m_device->configure(wrong).code(), orva::kIndexOutOfRange);
    wrong = settings(0);
    wrong.area.widthMm = 0;
    EXPECT_EQ(m_device->configure(wrong).code(), orva::kDeviceBadParameter);
    int button = -1;
    EXPECT_EQ(m_device->pressedButton(button).code(), orva::kOk);
    EXPECT_EQ(button, 0);
    bool paper = false;
    EXPECT_EQ(m_device->hasPaper(paper).code(), orva::kOk);
    EXPECT_TRUE(paper);
}

std::unique_ptr<orva::Driver> makeVirtual(const std::filesystem::path& folder)
{
    orva::LibraryPaths paths;
    paths.virtualScanner = folder / "scanner";
    paths.sampleSheets = folder / "samples";
    std::filesystem::create_directories(paths.sampleSheets);
    for (const char* name : { "1-front.jpg", "1-back.jpg", "2.jpg" }) {
        writeJpeg(paths.sampleSheets / name, quarters(600, 400, orva::PixelFormat::kRgb, 150));
    }
    return orva::makeVirtualDriver(paths);
}

std::unique_ptr<orva::Driver> makeSane(const std::filesystem::path&)
{
    wish({});
    return orva::makeSaneDriver(testBackendParts());
}

INSTANTIATE_TEST_SUITE_P(Drivers, EveryDevice,
    testing::Values(Kind { "virtual", makeVirtual }, Kind { "sane", makeSane }),
    [](const testing::TestParamInfo<Kind>& tested) { return tested.param.name; });

} // namespace
