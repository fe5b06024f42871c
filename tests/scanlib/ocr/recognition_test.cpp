// Recognition on the sheets that are drawn for the virtual scanner, and its way into files.
#include "scanlib/base/units.h"
#include "scanlib/ocr/gray_picture.h"
#include "scanlib/ocr/text_recognition.h"
#include "scanlib/writers/writer.h"
#include "tests/scanlib/writers/other_programs.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <clocale>
#include <cmath>
#include <cstring>
#include <iterator>
#include <locale>
#include <set>
#include <sstream>
#include <thread>

using namespace orva;
using namespace std::chrono_literals;

namespace {

constexpr double kPixelsPerMm = 300 / units::kMillimetresPerInch;

/// `change` is for ImageMagick: what is cut off or turned, so that no test reads more than it
/// needs.
Page sheet(const std::string& name, const std::string& change = "")
{
    const std::string file = orva::quoted(std::string(SAMPLE_SHEETS) + "/" + name);
    std::istringstream size(outputOf("convert " + file + " " + change + " -format '%w %h' info:"));
    Page page;
    int width = 0;
    int height = 0;
    size >> width >> height;
    page.allocate(width, height, PixelFormat::kGray);
    const std::string pixels =
        outputOf("convert " + file + " " + change + " -colorspace gray -depth 8 gray:-");
    EXPECT_EQ(pixels.size(), page.pixels.size());
    page.pixels.assign(pixels.begin(), pixels.end());
    page.dpiX = page.dpiY = 300;
    return page;
}

std::unique_ptr<TextRecognition> recognisers(
    const RecognitionSettings& settings = { "chi_sim+eng", {}, ORVA_OCR_LIBRARY })
{
    return makeTextRecognition(settings);
}

constexpr const char* kUpperHalf = "-crop 100%x50%+0+0 +repage";

Page turnedRight(const Page& page, int times)
{
    GrayPicture picture;
    takeGray(page, wholePage(page), 1, picture);
    for (int i = 0; i < times; ++i) {
        turnRight(picture);
    }
    Page turned = page;
    turned.allocate(picture.width, picture.height, PixelFormat::kGray);
    turned.pixels = picture.pixels;
    return turned;
}

std::string textOf(const PageText& text)
{
    std::string all;
    for (const Paragraph& paragraph : text.paragraphs) {
        for (const TextLine& line : paragraph.lines) {
            all += lineText(line) + "\n";
        }
    }
    return all;
}

/// Those that no other on the page is likely to be mistaken for.
std::vector<Word> longWords(const PageText& text)
{
    std::vector<Word> words;
    for (const Paragraph& paragraph : text.paragraphs) {
        for (const TextLine& line : paragraph.lines) {
            std::copy_if(line.words.begin(), line.words.end(), std::back_inserter(words),
                [](const Word& word) { return word.text.size() > 4; });
        }
    }
    return words;
}

int threadsNow()
{
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/task")) {
        count += entry.path().empty() ? 0 : 1;
    }
    return count;
}

/// Two Chinese words that touch, an English pair, a letter beyond the basic plane.
PageText knownText()
{
    PageText text;
    text.paragraphs.push_back({ { 300, 300, 1500, 700 }, {} });
    text.paragraphs[0].lines.push_back({ { 300, 300, 900, 360 }, 350, 350,
        { { { 300, 300, 420, 360 }, 90, "档案" }, { { 428, 302, 610, 360 }, 90, "整理室" },
            { { 620, 300, 680, 360 }, 90, "𠮷" } } });
    text.paragraphs[0].lines.push_back({ { 300, 600, 1500, 660 }, 645, 645,
        { { { 300, 600, 700, 660 }, 90, "order" }, { { 720, 605, 1500, 660 }, 90, "<7&9>" } } });
    return text;
}

EncodedPage encodedPage(FileFormat format, const PageText& text)
{
    Page page;
    page.allocate(1700, 1200, PixelFormat::kGray);
    std::fill(page.pixels.begin(), page.pixels.end(), std::uint8_t { 250 });
    page.dpiX = page.dpiY = 200;
    EncodedPage encoded;
    EXPECT_TRUE(findOutputFormat(format)->makeEncoder()->encode(page, {}, encoded).ok());
    encoded.text = serialised(text);
    return encoded;
}

/// A file of two pages: one with the text, one with none.
std::filesystem::path fileWith(
    const TemporaryFolder& folder, FileFormat format, const PageText& text = knownText())
{
    const std::filesystem::path file = folder.file("layer");
    const auto writer = findOutputFormat(format)->makeWriter();
    EXPECT_TRUE(writer->begin(file, {}).ok());
    EncodedPage page = encodedPage(format, text);
    EXPECT_TRUE(writer->addPage(page).ok());
    page.text.clear();
    EXPECT_TRUE(writer->addPage(page).ok());
    EXPECT_TRUE(writer->finish().ok());
    return file;
}

std::vector<std::string> matches(const std::string& text, const std::string& before)
{
    std::vector<std::string> values;
    for (std::size_t at = text.find(before); at != std::string::npos; at = text.find(before, at)) {
        at += before.size();
        values.push_back(text.substr(at, text.find('"', at) - at));
    }
    return values;
}

} // namespace

TEST(Recognition, readsTwoPagesAtOnceEachOnOneThreadAlike)
{
    const auto recognition = recognisers();
    recognition->warmUp();
    ASSERT_TRUE(recognition->prepare({ true, false }).ok());
    const Page chinese = sheet("01-notice.jpg", kUpperHalf);
    // grey paper that was laid on a larger white surface
    const Page english = sheet(
        "04-letter.jpg", std::string(kUpperHalf) + " +level 5%,65% -bordercolor white -border 500");
    const int before = threadsNow();
    PageText first;
    PageText second;
    std::atomic<int> ended { 0 };
    const auto reader = [&](const Page& page, PageText& text) {
        return std::thread([&] {
            const Status status = recognition->read(page, {}, text);
            EXPECT_TRUE(status.ok()) << status.detail();
            ++ended;
        });
    };
    testing::internal::CaptureStderr();
    std::thread one = reader(chinese, first);
    std::thread two = reader(english, second);
    int most = 0;
    while (ended < 2) {
        most = std::max(most, threadsNow());
        std::this_thread::sleep_for(2ms);
    }
    one.join();
    two.join();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_LE(most, before + 2);
    EXPECT_NE(textOf(first).find("档案室搬迁"), std::string::npos) << textOf(first);
    EXPECT_NE(textOf(first).find("300 dpi"), std::string::npos) << textOf(first);
    EXPECT_NE(textOf(second).find("Larkfield Paper Works"), std::string::npos) << textOf(second);

    PageText again;
    ASSERT_TRUE(recognition->read(chinese, {}, again).ok());
    EXPECT_EQ(serialised(again), serialised(first)) << "a page depends on what was read before it";
}

/// A host may run under any locale, and change it. Tesseract reads numbers of its models, the
/// writers print them.
TEST(Recognition, doesTheSameUnderALocaleWithCommas)
{
    const TemporaryFolder folder;
    outputOf("localedef -i de_DE -f UTF-8 " + quoted(folder.file("de_DE.UTF-8")));
    const Page page = sheet("04-letter.jpg", "-crop 100%x25%+0+200 +repage");
    const auto all = [&] {
        const auto recognition = recognisers();
        PageText text;
        EXPECT_TRUE(recognition->read(page, {}, text).ok());
        const TemporaryFolder files;
        return serialised(text)
            + outputOf("pdftotext -bbox " + quoted(fileWith(files, FileFormat::kPdfText)) + " -")
            + outputOf("unzip -p " + quoted(fileWith(files, FileFormat::kOfdText))
                + " Doc_0/Pages/Page_0/Content.xml Doc_0/Document.xml");
    };
    const std::string before = all();
    ::setenv("LOCPATH", folder.file("").c_str(), 1);
    const std::locale old = std::locale::global(std::locale("de_DE.UTF-8")); // of C as well
    EXPECT_EQ(std::localeconv()->decimal_point[0], ',');
    const std::string under = all();
    std::locale::global(old);
    ::unsetenv("LOCPATH");
    EXPECT_GT(before.size(), 3000U);
    EXPECT_EQ(under, before);
}

TEST(Recognition, tellsWhichPackageIsMissingAndEndsWhenItIsTo)
{
    const TemporaryFolder empty;
    const auto without = recognisers({ "chi_sim+eng", empty.file(""), ORVA_OCR_LIBRARY });
    for (const RecognitionNeeds needs : { RecognitionNeeds { true, false }, { false, true } }) {
        const Status status = without->prepare(needs);
        EXPECT_EQ(status.code(), kModelMissing);
        EXPECT_NE(status.detail().find(needs.text ? "tesseract-ocr-chi-sim" : "tesseract-ocr-osd"),
            std::string::npos)
            << status.detail();
    }
    const auto recognition = recognisers();
    const auto begin = std::chrono::steady_clock::now();
    std::atomic<int> asked { 0 };
    PageText text;
    const Status status = recognition->read(
        sheet("01-notice.jpg", kUpperHalf), [&] { return ++asked > 3; }, text);
    EXPECT_EQ(status.code(), kCancelled);
    EXPECT_TRUE(text.paragraphs.empty());
    EXPECT_LT(asked, 20);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 20s);
}

TEST(Orientation, putsChineseAndEnglishPagesUprightFromEachTurn)
{
    const auto recognition = recognisers();
    constexpr RotateAngle kBack[] = { RotateAngle::kNone, RotateAngle::kLeft90, RotateAngle::k180,
        RotateAngle::kRight90 };
    // the slow modes once a page and turn between them
    constexpr TextOrientation kSlow[] = { TextOrientation::kFullText, TextOrientation::kComplex };
    int pages = 0;
    for (const char* name : { "01-notice.jpg", "04-letter.jpg" }) {
        const Page upright = sheet(name);
        for (int turns = 0; turns < 4; ++turns, ++pages) {
            const Page page = turnedRight(upright, turns);
            for (const auto mode : { TextOrientation::kFast, kSlow[(pages + pages / 4) % 2] }) {
                RotateAngle turn = RotateAngle::kNone;
                ASSERT_TRUE(recognition->findTurn(page, mode, {}, turn).ok());
                EXPECT_EQ(turn, kBack[turns])
                    << name << " mode " << static_cast<int>(mode) << " turned " << turns;
            }
        }
    }
}

TEST(Recognition, readsTiltedPagesAndPlacesTheirWordsOnThem)
{
    const auto recognition = recognisers();
    constexpr double kDegrees = 12;
    const Page upright = sheet("04-letter.jpg", kUpperHalf);
    const Page tilted =
        sheet("04-letter.jpg", std::string(kUpperHalf) + " -background white -rotate 12");
    PageText straightText;
    PageText tiltedText;
    ASSERT_TRUE(recognition->read(upright, {}, straightText).ok());
    ASSERT_TRUE(recognition->read(tilted, {}, tiltedText).ok());
    const double c = std::cos(kDegrees * units::kPi / 180);
    const double s = std::sin(kDegrees * units::kPi / 180);
    int found = 0;
    const std::vector<Word> words = longWords(straightText);
    for (const Word& word : words) {
        const double x = (word.box.left + word.box.right - upright.width) / 2.0;
        const double y = (word.box.top + word.box.bottom - upright.height) / 2.0;
        const double wantedX = tilted.width / 2.0 + x * c - y * s;
        const double wantedY = tilted.height / 2.0 + x * s + y * c;
        for (const Word& other : longWords(tiltedText)) {
            const double offX = (other.box.left + other.box.right) / 2.0 - wantedX;
            const double offY = (other.box.top + other.box.bottom) / 2.0 - wantedY;
            found += other.text == word.text && std::hypot(offX, offY) < kPixelsPerMm ? 1 : 0;
        }
    }
    EXPECT_GT(words.size(), 20U);
    EXPECT_GE(found, static_cast<int>(words.size()) * 9 / 10) << "of " << words.size();
}

TEST(TextLayer, ofPdfLiesOnThePictureAndCanBeCopied)
{
    const TemporaryFolder folder;
    const std::filesystem::path file = fileWith(folder, FileFormat::kPdfText);
    outputOf("qpdf --check " + quoted(file));
    const std::string text = outputOf("pdftotext " + quoted(file) + " -");
    EXPECT_NE(text.find("档案整理室𠮷\n"), std::string::npos) << text;
    EXPECT_NE(text.find("order <7&9>\n"), std::string::npos) << text;

    const std::string boxes = outputOf("pdftotext -bbox " + quoted(file) + " -");
    const std::vector<std::string> left = matches(boxes, "xMin=\"");
    const std::vector<std::string> right = matches(boxes, "xMax=\"");
    const std::vector<std::string> top = matches(boxes, "yMin=\"");
    ASSERT_EQ(left.size(), 3U) << boxes; // the Chinese line is one word to a reader
    constexpr double kPointsPerPixel = 72.0 / 200;
    constexpr double kExpected[][3] = { { 300, 680, 300 }, { 300, 700, 600 }, { 720, 1500, 600 } };
    for (std::size_t i = 0; i < left.size(); ++i) {
        EXPECT_NEAR(std::stod(left[i]), kExpected[i][0] * kPointsPerPixel, 1.0);
        EXPECT_NEAR(std::stod(right[i]), kExpected[i][1] * kPointsPerPixel, 1.0);
        EXPECT_NEAR(std::stod(top[i]), kExpected[i][2] * kPointsPerPixel, 2.8); // a millimetre
    }
}

TEST(TextLayer, ofATiltedLineFallsWithItWithoutCuttingItsWords)
{
    PageText text;
    text.paragraphs.push_back({ { 300, 800, 1300, 880 }, {} });
    text.paragraphs[0].lines.push_back({ { 300, 800, 1300, 880 }, 845, 865,
        { { { 300, 800, 640, 852 }, 90, "including" },
            { { 700, 812, 1300, 866 }, 90, "random" } } });
    const TemporaryFolder folder;
    const std::string boxes =
        outputOf("pdftotext -bbox " + quoted(fileWith(folder, FileFormat::kPdfText, text)) + " -");
    EXPECT_NE(boxes.find(">including</word>"), std::string::npos) << boxes;
    EXPECT_NE(boxes.find(">random</word>"), std::string::npos) << boxes;
    const std::vector<std::string> top = matches(boxes, "yMin=\"");
    ASSERT_EQ(top.size(), 2U) << boxes;
    // from the middle of the one to that of the other, 2 pixels in 100
    EXPECT_NEAR(std::stod(top[1]) - std::stod(top[0]), (1000 - 470) * 0.02 * 72 / 200, 0.1);

    const std::string page = outputOf("unzip -p "
        + quoted(fileWith(folder, FileFormat::kOfdText, text)) + " Doc_0/Pages/Page_0/Content.xml");
    std::istringstream falls(matches(page, "DeltaY=\"").at(0));
    double sum = 0;
    int count = 0;
    for (double fall = 0; falls >> fall; ++count) {
        sum += fall;
    }
    EXPECT_EQ(count, 15); // behind the first of nine letters, a blank and six
    EXPECT_NEAR(sum, (1200 - 300) * 0.02 * 25.4 / 200, 0.02); // "random" has 100 a letter
}

TEST(TextLayer, ofOfdStandsTransparentBeforeThePicture)
{
    const TemporaryFolder folder;
    const std::filesystem::path file = fileWith(folder, FileFormat::kOfdText);
    const auto part = [&](const std::string& name) {
        return outputOf("unzip -p " + quoted(file) + " " + name);
    };
    const std::string page = part("Doc_0/Pages/Page_0/Content.xml");
    EXPECT_LT(page.rfind("TextObject"), page.find("ImageObject"));
    EXPECT_EQ(matches(page, "Alpha=\""), (std::vector<std::string> { "0", "0" }));
    EXPECT_NE(page.find(">档案整理室𠮷<"), std::string::npos) << page;
    EXPECT_NE(page.find(">order &lt;7&amp;9&gt;<"), std::string::npos) << page;
    // ten letters beyond the first of "order <7&9>", the first at the left end of its word
    const std::string steps = matches(page, "DeltaX=\"").at(1);
    std::istringstream numbers(steps);
    double sum = 0;
    int count = 0;
    for (double step = 0; numbers >> step; ++count) {
        sum += step;
    }
    EXPECT_EQ(count, 10) << steps;
    EXPECT_NEAR(sum, (1500 - 300 - 780.0 / 5) * 25.4 / 200, 0.1);

    const std::string document = part("Doc_0/Document.xml");
    const std::string all = page + part("Doc_0/Pages/Page_1/Content.xml")
        + part("Doc_0/PublicRes.xml") + part("Doc_0/DocumentRes.xml") + document;
    std::vector<std::string> ids = matches(all, " ID=\"");
    const std::set<std::string> different(ids.begin(), ids.end());
    EXPECT_EQ(different.size(), ids.size()) << "an ID is given twice";
    EXPECT_NE(
        document.find("<ofd:MaxUnitID>" + std::to_string(ids.size()) + "<"), std::string::npos)
        << document;
    EXPECT_EQ(
        matches(page, " Font=\"").front(), matches(part("Doc_0/PublicRes.xml"), " ID=\"").front());
}
