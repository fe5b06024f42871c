// Scans from the choice of the device to files, read back by independent programs.
#include "tests/journeys/cards.h"
#include "tests/journeys/journey.h"
#include "tests/support/wait.h"

#include <QImageReader>

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <regex>

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

namespace {

constexpr int kSheets = 3;
constexpr int kSides = 2 * kSheets;

class ScanJourney : public Journey
{
protected:
    /// A whole session: choose the device, scan once, close.
    void scanOnce()
    {
        openMainWindow();
        ASSERT_FALSE(HasFatalFailure());
        pressScan();
        waitForFinishedJob();
        closeByKey();
        expectNoLeftovers();
    }
    std::string file(const std::string& name) const { return folder() + "/" + name; }
    /// What another program says about a file.
    static std::string ask(std::vector<std::string> words)
    {
        Command command;
        command.words = std::move(words);
        command.environment = { { "LC_ALL", "C.UTF-8" } };
        const Finished done = run(command);
        EXPECT_EQ(done.status, 0) << done.output;
        return done.output;
    }
    static int count(const std::string& text, const std::string& pattern)
    {
        const std::regex wanted(pattern);
        return static_cast<int>(std::distance(
            std::sregex_iterator(text.begin(), text.end(), wanted), std::sregex_iterator()));
    }
};

} // namespace

TEST_F(ScanJourney, sixSidesBecomeSixPictures)
{
    writeSettings({ { "ScanDPI", 5 } }); // 300
    loadSheets(kSheets, 300);
    scanOnce();
    ASSERT_FALSE(HasFatalFailure());
    ASSERT_THAT(namesIn(folder()),
        ElementsAre("Card-007.jpg", "Card-008.jpg", "Card-009.jpg", "Card-010.jpg", "Card-011.jpg",
            "Card-012.jpg"));
    for (int side = 1; side <= kSides; ++side) {
        const std::string name = file(namesIn(folder())[static_cast<std::size_t>(side - 1)]);
        const QImage page(QString::fromStdString(name));
        EXPECT_EQ(page.size(), QSize(1063, 638)) << name; // 90 x 54 mm
        EXPECT_LT(cards::distance(page, cards::picture(side, 300)), 2) << name;
        EXPECT_EQ(
            ask({ "identify", "-format", "%m %x %y %U", name }), "JPEG 300 300 PixelsPerInch");
    }
    EXPECT_EQ(setting("FileStartBit").toString(), "013") << "the next start goes on behind them";
}

TEST_F(ScanJourney, namesByTimeTellWhenAndAreAllDifferent)
{
    writeSettings({ { "IsTimeSave", true }, { "IsDefineFileCut", 2 }, { "ScanColorMode", 1 } });
    loadSheets(kSheets);
    const std::string before = ask({ "date", "-u", "+%Y_%m_%d_%H_%M_%S" });
    scanOnce();
    const std::string after = ask({ "date", "-u", "+%Y_%m_%d_%H_%M_%S" });
    const std::vector<std::string> names = namesIn(folder());
    ASSERT_EQ(names.size(), static_cast<std::size_t>(kSides));
    int side = 0;
    for (const std::string& name : names) {
        ASSERT_TRUE(std::regex_match(
            name, std::regex("Card_[0-9]{4}(_[0-9]{2}){5}_[0-9]{3}(_[0-9]+)?\\.jpg")))
            << name;
        const std::string stamp = name.substr(5, 19);
        EXPECT_GE(stamp, before.substr(0, 19));
        EXPECT_LE(stamp, after.substr(0, 19));
        const QImage page(QString::fromStdString(file(name)));
        EXPECT_TRUE(page.isGrayscale()) << name;
        const QImage gray = cards::picture(++side, 100).convertToFormat(QImage::Format_Grayscale8);
        EXPECT_LT(cards::distance(page, gray), 8) << name; // luma weights differ a little
    }
}

TEST_F(ScanJourney, multiPagePdfInColour)
{
    writeSettings({ { "FileFormat", 4 }, { "IsMultiPage", 1 }, { "ScanDPI", 5 } });
    loadSheets(kSheets, 300);
    scanOnce();
    ASSERT_THAT(namesIn(folder()), ElementsAre("Card-007.pdf"));
    const std::string pdf = file("Card-007.pdf");
    const std::string facts = ask({ "pdfinfo", "-l", "-1", pdf });
    EXPECT_EQ(count(facts, "Pages: +6\n"), 1) << facts;
    // 1063 and 638 pixels at 300 dpi, in points
    EXPECT_EQ(count(facts, "Page +[0-9]+ size: +255\\.1[0-9]* x 153\\.1[0-9]* pts"), kSides)
        << facts;
    const std::string images = ask({ "pdfimages", "-list", pdf });
    EXPECT_EQ(count(images, " image +1063 +638 +(rgb|icc) +3 +8 +jpeg .* 300 +300 "), kSides)
        << images;
    ask({ "qpdf", "--check", pdf });
    ask({ "pdftoppm", "-r", "300", "-f", "4", "-l", "4", "-singlefile", "-png", pdf,
        Sandbox::path("page") });
    const QImage page(QString::fromStdString(Sandbox::path("page.png")));
    EXPECT_EQ(page.size(), QSize(1063, 638));
    EXPECT_LT(cards::distance(page, cards::picture(4, 300)), 3) << "the fourth page";
    EXPECT_EQ(setting("FileStartBit").toString(), "008");
}

TEST_F(ScanJourney, multiPageTiffInBlackAndWhite)
{
    writeSettings(
        { { "FileFormat", 3 }, { "IsMultiPage", 1 }, { "ScanColorMode", 2 }, { "ScanDPI", 5 } });
    loadSheets(kSheets, 300);
    scanOnce();
    ASSERT_THAT(namesIn(folder()), ElementsAre("Card-007.tif"));
    const std::string facts = ask({ "tiffinfo", file("Card-007.tif") });
    EXPECT_EQ(count(facts, "TIFF Directory at"), kSides) << facts;
    EXPECT_EQ(count(facts, "Image Width: 1063 Image Length: 638"), kSides) << facts;
    EXPECT_EQ(count(facts, "Resolution: 300, 300 pixels/inch"), kSides) << facts;
    EXPECT_EQ(count(facts, "Compression Scheme: CCITT Group 4"), kSides) << facts;
    EXPECT_EQ(count(facts, "Bits/Sample: 1"), kSides) << facts;
    ask({ "convert", file("Card-007.tif") + "[2]", Sandbox::path("page.png") });
    const QImage page(QString::fromStdString(Sandbox::path("page.png")));
    QImage truth = cards::picture(3, 300); // its ground is light: white
    for (int y = 0; y < truth.height(); ++y) {
        for (int x = 0; x < truth.width(); ++x) {
            truth.setPixel(x, y, qGray(truth.pixel(x, y)) < 128 ? 0xFF000000 : 0xFFFFFFFF);
        }
    }
    EXPECT_LT(cards::distance(page, truth), 0.5) << "the third page";
}

TEST_F(ScanJourney, aScannerThatSaneDrives)
{
    const QString device = QStringLiteral("Noname frontend-tester");
    allowSaneDrivers("test\n");
    writeBytes(Sandbox::path("sane/test.conf"),
        "number_of_devices 1\nmode Color\nresolution 100\ntest-picture \"Color pattern\"\n");
    writeSettings({ { "ScanSource", 0 }, { "FileFormat", 2 } }, device); // flatbed, PNG
    start();
    const WindowId devices = display().wait(titles::kDevices, 60s);
    ASSERT_NE(devices, 0U);
    // it stands above the virtual scanner
    display().key(devices, "Down");
    display().key(devices, "Up");
    acceptDevice(devices);
    EXPECT_THAT(Sandbox::runLog(), HasSubstr("deviceName = Noname frontend-tester \n"));
    pressScan();
    waitForFinishedJob();
    ASSERT_THAT(namesIn(folder()), ElementsAre("Card-007.png"));
    closeByKey();

    const QImage page(QString::fromStdString(file("Card-007.png")));
    Command command;
    command.words = { "scanimage", "-d", "test:0", "--source", "Flatbed", "--mode", "Color",
        "--depth", "8", "--test-picture", "Color pattern", "--resolution", "100", "-l", "0", "-t",
        "0", "-x", "90", "-y", "54", "--format=png", "-o", Sandbox::path("truth.png") };
    command.environment = { { "SANE_CONFIG_DIR", Sandbox::path("sane") } };
    const Finished done = run(command);
    ASSERT_EQ(done.status, 0) << done.output;
    EXPECT_EQ(cards::distance(page, QImage(QString::fromStdString(Sandbox::path("truth.png")))), 0);
}
