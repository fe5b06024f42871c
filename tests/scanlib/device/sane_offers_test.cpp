// What a SANE scanner offers and how settings reach it; its buttons, sensors and times.
#include "scanlib/device/sane_host/sane_words.h"
#include "tests/scanlib/device/script_fixture.h"
#include "tests/scanlib/temporary_folder.h"

#include <gmock/gmock.h>

namespace {

using namespace device_tests;
using orva::ColorDropout;
using orva::ColorMode;
using orva::SourceKind;
using testing::ElementsAre;

class SaneOffers : public SaneScript
{
};

TEST_F(SaneOffers, SourcesPapersAndResolutionsOfTheDevice)
{
    open();
    const auto& sources = m_device->sources();
    ASSERT_EQ(sources.size(), 3U);
    EXPECT_EQ(sources[0].name, "平板");
    EXPECT_EQ(sources[1].name, "ADF单面");
    EXPECT_EQ(sources[2].name, "ADF双面");
    std::vector<std::string> papers;
    for (const orva::PaperSize& paper : sources[1].papers) {
        papers.push_back(paper.name);
    }
    EXPECT_THAT(papers, ElementsAre("A4", "A5", "B5", "Letter", "Legal", "名片", "自动"));
    EXPECT_THAT(sources[1].resolutions, ElementsAre(75, 100, 150, 200, 240, 300, 400, 600));
    m_device.reset();
    m_script.option("resolution").max = 0;
    m_script.option("resolution").numbers = { 1200, 600, 300, 60, 90 };
    open();
    EXPECT_THAT(m_device->sources()[0].resolutions, ElementsAre(90, 300, 600));
}

TEST_F(SaneOffers, SettingsReachTheDeviceSourceFirst)
{
    open();
    m_script.calls.clear();
    ASSERT_EQ(configure(SourceKind::kDuplex, ColorMode::kBlackWhite).code(), orva::kOk);
    EXPECT_EQ(m_script.calls.front(), "set source");
    EXPECT_EQ(m_script.option("source").text, "ADF Duplex");
    EXPECT_EQ(m_script.option("mode").text, "Gray"); // binarised afterwards
    EXPECT_EQ(m_script.option("resolution").value, 300);
    EXPECT_NEAR(m_script.option("tl-x").value, 10, 0.001);
    EXPECT_NEAR(m_script.option("tl-y").value, 20, 0.001);
    EXPECT_NEAR(m_script.option("br-x").value, 158, 0.001);
    EXPECT_NEAR(m_script.option("br-y").value, 230, 0.001);
    m_device.reset();
    m_script.option("mode").texts = { "Lineart" };
    open();
    ASSERT_EQ(configure().code(), orva::kOk);
    EXPECT_EQ(m_script.option("mode").text, "Lineart"); // it can do nothing else
}

TEST_F(SaneOffers, AreaInPixelsAndPageSizeOptionsAreServed)
{
    m_script.addOption({ "page-width", SANE_TYPE_FIXED, SANE_UNIT_MM, true, {}, {}, 10, 221 });
    for (const char* edge : { "tl-x", "br-x", "tl-y", "br-y" }) {
        m_script.option(edge).unit = SANE_UNIT_PIXEL;
        m_script.option(edge).max = 2540;
    }
    m_script.option("resolution").value = 254;
    open();
    EXPECT_NEAR(m_device->sources()[0].maxWidthMm, 254, 0.01);
    ASSERT_EQ(configure().code(), orva::kOk);
    // a feeder centres a sheet of this width; here it ends where the area ends
    EXPECT_NEAR(m_script.option("page-width").value, 158, 0.01);
    EXPECT_NEAR(m_script.option("br-x").value, 158 / 25.4 * 300, 0.1);
}

TEST_F(SaneOffers, DevicesWithoutSourcesAreGuessedAndADuplexSwitchIsUsed)
{
    m_script.options.erase(m_script.options.begin());
    m_script.addOption({ "duplex", SANE_TYPE_BOOL });
    open();
    ASSERT_EQ(m_device->sources().size(), 2U);
    ASSERT_EQ(configure(SourceKind::kDuplex).code(), orva::kOk);
    EXPECT_EQ(m_script.option("duplex").value, 1);
    ASSERT_EQ(configure(SourceKind::kFeeder).code(), orva::kOk);
    EXPECT_EQ(m_script.option("duplex").value, 0);
}

/// What each driver calls its guards, and what it must be set to: on, then off.
TEST_F(SaneOffers, DoubleFeedSensorsAndPaperProtectionUnderTheirManyNames)
{
    addChoice("df-action", { "Default", "Continue", "Stop" });
    addChoice("paper-protect", { "Default", "Off", "On" });
    for (const char* name :
        { "df-thickness", "df-length", "double-feed", "dfeed-stop", "stapledetect" }) {
        m_script.addOption({ name, SANE_TYPE_BOOL });
    }
    open();
    for (const bool on : { true, false }) {
        ASSERT_EQ(configure(SourceKind::kFeeder, ColorMode::kGray, on).code(), orva::kOk);
        EXPECT_EQ(m_script.option("df-action").text, on ? "Stop" : "Default");
        EXPECT_EQ(m_script.option("paper-protect").text, on ? "On" : "Default");
        for (const char* name :
            { "df-thickness", "df-length", "double-feed", "dfeed-stop", "stapledetect" }) {
            EXPECT_EQ(m_script.option(name).value, on ? 1 : 0) << name;
        }
    }
}

TEST_F(SaneOffers, AColourIsDroppedByTheDeviceOnEverySideOrTheJobIsRefused)
{
    addChoice("dropout-front", { "None", "Red", "Green", "Blue" });
    addChoice("dropout-back", { "None", "Red", "Green", "Blue" });
    open();
    EXPECT_TRUE(m_device->sources()[0].dropsColor);
    const auto drop = [&](ColorDropout color) {
        return configure(SourceKind::kFeeder, ColorMode::kGray, false, color).code();
    };
    ASSERT_EQ(drop(ColorDropout::kGreen), orva::kOk);
    EXPECT_EQ(m_script.option("dropout-front").text, "Green");
    EXPECT_EQ(m_script.option("dropout-back").text, "Green");
    ASSERT_EQ(drop(ColorDropout::kNone), orva::kOk);
    EXPECT_EQ(m_script.option("dropout-back").text, "None");
    m_script.options.resize(m_script.options.size() - 2);
    addChoice("color-filter", { "Red", "Green" });
    m_device.reset();
    open();
    EXPECT_FALSE(m_device->sources()[0].dropsColor);
    EXPECT_EQ(drop(ColorDropout::kBlue), orva::kDeviceBadParameter);
}

TEST_F(SaneOffers, ButtonsReportEachPressOnce)
{
    for (const char* name : { "scan", "email", "function", "cancel" }) {
        addSensor(name);
    }
    m_script.addOption({ "button-update", SANE_TYPE_BUTTON });
    m_script.addOption({ "button-pressed", SANE_TYPE_STRING, SANE_UNIT_NONE, false });
    m_script.option("email").value = 1; // held since before the start
    open();
    const auto press = [&](const char* name, double value) {
        m_script.option(name).value = value;
        int button = -1;
        EXPECT_EQ(m_device->pressedButton(button).code(), orva::kOk);
        return button;
    };
    EXPECT_EQ(press("email", 1), 0);
    EXPECT_EQ(press("email", 0), 0);
    EXPECT_EQ(press("scan", 1), 1);
    EXPECT_EQ(press("scan", 1), 0);
    EXPECT_EQ(press("email", 1), 2);
    EXPECT_EQ(press("function", 3), 4);
    EXPECT_EQ(press("cancel", 1), 8);
    m_script.option("button-pressed").text = "Copy";
    EXPECT_EQ(press("email", 0), 2);
    EXPECT_EQ(press("email", 0), 0);
    EXPECT_GE(m_script.count("set button-update"), 9); // before every look
}

TEST_F(SaneOffers, TimesAndPaperSensorAreThoseOfTheDevice)
{
    m_script.addOption(
        { "sleeptimer", SANE_TYPE_INT, SANE_UNIT_NONE, true, {}, {}, 0, 254, {}, 15 });
    addSensor("page-loaded");
    open();
    orva::DeviceTiming timing;
    ASSERT_EQ(m_device->timing(timing).code(), orva::kOk);
    EXPECT_EQ(timing.sleep.value, 15);
    EXPECT_FALSE(timing.autoOff.enabled);
    EXPECT_EQ(m_device->setTimes(30, -1).code(), orva::kOk);
    EXPECT_EQ(m_script.option("sleeptimer").value, 30);
    EXPECT_EQ(m_device->setTimes(400, -1).code(), orva::kValueOutOfRange);
    EXPECT_EQ(m_device->setTimes(20, 2).code(), orva::kNotSupported);
    EXPECT_EQ(m_script.option("sleeptimer").value, 30) << "all or nothing";
    bool paper = true;
    ASSERT_EQ(configure().code(), orva::kOk);
    ASSERT_EQ(m_device->hasPaper(paper).code(), orva::kOk);
    EXPECT_FALSE(paper);
    ASSERT_EQ(configure(SourceKind::kFlatbed).code(), orva::kOk);
    ASSERT_EQ(m_device->hasPaper(paper).code(), orva::kOk);
    EXPECT_TRUE(paper);
}

TEST_F(SaneOffers, TheAdministratorsFileTellsWhatTheWordsOfAModelMean)
{
    const TemporaryFolder folder;
    m_parts.models = folder.path() / "models.conf";
    writeFile(m_parts.models,
        "[Paperlane P1]\nsource.duplex = Wendefix\nbutton.key-b = 8\npaper-sensor = tray\n"
        "nonsense\n[Other]\nsource.feeder = Wendefix\n");
    m_script.option("source").texts = { "Wendefix" };
    addSensor("key-b");
    addSensor("tray");
    open();
    ASSERT_EQ(m_device->sources().size(), 1U);
    EXPECT_EQ(m_device->sources()[0].kind, SourceKind::kDuplex);
    m_script.option("key-b").value = 1;
    int button = 0;
    ASSERT_EQ(m_device->pressedButton(button).code(), orva::kOk);
    EXPECT_EQ(button, 8);
    bool paper = true;
    ASSERT_EQ(m_device->hasPaper(paper).code(), orva::kOk);
    EXPECT_FALSE(paper);
}

TEST(SaneWords, SourceSpellings)
{
    using orva::sourceWord;
    using orva::SourceWord;
    const std::vector<std::pair<SourceWord, std::vector<const char*>>> rows {
        { SourceWord::kFlatbed, { "Flatbed", "Document Table", "Flat Bed", "Platen" } },
        { SourceWord::kFeeder,
            { "ADF", "ADF Front", "Automatic Document Feeder(left aligned)", "ADF Simplex" } },
        { SourceWord::kDuplex,
            { "ADF Duplex", "Duplex", "Automatic Document Feeder(left aligned,Duplex)",
                "Auto Document Feeder - Both Sides" } },
        { SourceWord::kUnknown, { "ADF Back", "Card Duplex", "Transparency Unit", "Slide", "" } },
    };
    for (const auto& [meaning, words] : rows) {
        for (const char* word : words) {
            EXPECT_EQ(sourceWord(word), meaning) << word;
        }
    }
}

} // namespace
