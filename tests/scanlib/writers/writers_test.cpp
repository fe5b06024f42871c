// Every format, written by us and read by somebody else.
#include "scanlib/writers/encoders.h"
#include "scanlib/writers/metadata.h"
#include "tests/scanlib/writers/other_programs.h"
#include "tests/scanlib/writers/written_files.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <tuple>

namespace orva {
namespace {

/// The images of a PDF, taken out as they lie in it, as pixels.
std::string pixelsInPdf(const TemporaryFolder& folder, const std::filesystem::path& pdf)
{
    outputOf("pdfimages -png " + quoted(pdf) + " " + quoted(folder.file("image")));
    return pixelsSeenIn(folder.file("image-000.png"));
}

Page smoothPage(int width, int height, PixelFormat format)
{
    Page page = blankPage(width, height, format);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            setPixel(page, x, y, { 255 * x / width, 255 * y / height, 128 });
        }
    }
    return page;
}

class Lossless : public testing::TestWithParam<std::tuple<FileFormat, PixelFormat>>
{
};

TEST_P(Lossless, isReadBackPixelForPixel)
{
    const auto [format, pixels] = GetParam();
    const TemporaryFolder folder;
    for (const auto& [width, height] :
        { std::pair { 1, 1 }, { 13, 7 }, { 640, 481 }, { 16000, 3 } }) {
        Page page = noisePage(width, height, pixels);
        page.dpiX = 300;
        page.dpiY = 150;
        const auto path = folder.file("page");
        ASSERT_TRUE(writeFile(format, path, { encoded(format, page) }).ok());
        EXPECT_TRUE(pixelsSeenIn(path) == pixelsOf(page)) << width << " x " << height;
        const std::string resolution =
            outputOf("identify -units PixelsPerInch -format '%[fx:round(resolution.x)] "
                     "%[fx:round(resolution.y)]' "
                + quoted(path));
        EXPECT_EQ(resolution, "300 150");
    }
}

INSTANTIATE_TEST_SUITE_P(Formats, Lossless,
    testing::Combine(testing::Values(FileFormat::kBmp, FileFormat::kPng, FileFormat::kTif),
        testing::Values(PixelFormat::kBlackWhite, PixelFormat::kGray, PixelFormat::kRgb)));

TEST(Jpeg, isCloseHasItsResolutionAndOneComponentForGrey)
{
    const TemporaryFolder folder;
    const auto path = folder.file("page.jpg");
    for (const PixelFormat format : { PixelFormat::kGray, PixelFormat::kRgb }) {
        const Page page = smoothPage(301, 203, format);
        ASSERT_TRUE(writeFile(FileFormat::kJpg, path, { encoded(FileFormat::kJpg, page) }).ok());
        EXPECT_LT(meanDifference(pixelsSeenIn(path), pixelsOf(page)), 1.5);
        EXPECT_EQ(outputOf("identify -format '%x %y %U %[channels]' " + quoted(path)),
            format == PixelFormat::kGray ? "200 200 PixelsPerInch gray"
                                         : "200 200 PixelsPerInch srgb");
    }
    Page bits = blankPage(64, 64, PixelFormat::kBlackWhite);
    fillRect(bits, 0, 0, 32, 64, kBlack);
    ASSERT_TRUE(writeFile(FileFormat::kJpg, path, { encoded(FileFormat::kJpg, bits) }).ok());
    EXPECT_LT(meanDifference(pixelsSeenIn(path), pixelsOf(bits)), 1.0) << "black stays black";
}

TEST(Jpeg, qualityDecidesTheSize)
{
    Page page = smoothPage(600, 600, PixelFormat::kRgb);
    addNoise(page, 20);
    std::size_t previous = page.bytes();
    for (const int quality : kJpegQualities) {
        const std::size_t size = encoded(FileFormat::kJpg, page, quality).bytes.size();
        EXPECT_LT(size, previous) << quality;
        previous = size;
    }
}

TEST(Jpeg, refusesWhatTheFormatCannotHold)
{
    EncodedPage out;
    const auto encoder = findOutputFormat(FileFormat::kJpg)->makeEncoder();
    EXPECT_EQ(
        encoder->encode(blankPage(65536, 1, PixelFormat::kGray), {}, out).code(), kPageTooLarge);
    EXPECT_EQ(
        encoder->encode(blankPage(1, 65536, PixelFormat::kGray), {}, out).code(), kPageTooLarge);
    EXPECT_TRUE(encoder->encode(blankPage(65500, 1, PixelFormat::kGray), {}, out).ok());
}

TEST(Encoder, keepsIdentityAndGeometry)
{
    Page page = blankPage(10, 20, PixelFormat::kGray);
    page.sheet = 4;
    page.number = 8;
    page.side = Side::kBack;
    page.stream = "gray";
    for (const auto& entry : kFormatNames) {
        if (const OutputFormat* const format = findOutputFormat(entry.format)) {
            EncodedPage out;
            ASSERT_TRUE(format->makeEncoder()->encode(page, {}, out).ok());
            EXPECT_EQ(std::tie(out.width, out.height, out.sheet, out.number, out.stream),
                std::tie(page.width, page.height, page.sheet, page.number, page.stream));
            EXPECT_EQ(out.side, Side::kBack);
            EXPECT_EQ(out.format, PixelFormat::kGray);
            EXPECT_EQ(format->holdsPages, entry.holdsPages) << entry.text;
        }
    }
}

TEST(SinglePage, theFileIsThePayloadAndItsFactsAndASecondPageIsRefused)
{
    const TemporaryFolder folder;
    const EncodedPage page = encoded(FileFormat::kBmp, noisePage(300, 200, PixelFormat::kRgb));
    const std::string payload(page.bytes.begin(), page.bytes.end());
    ASSERT_TRUE(writeFile(FileFormat::kBmp, folder.file("a"), { page }).ok());
    EXPECT_TRUE(contentOf(folder.file("a")) == payload);
    ASSERT_TRUE(
        writeFile(FileFormat::kBmp, folder.file("b"), { spooled(page, folder.file("spool")) })
            .ok());
    EXPECT_TRUE(contentOf(folder.file("b")) == payload);
    EXPECT_EQ(writeFile(FileFormat::kBmp, folder.file("c"), { page, page }).code(), kInternal);
    for (const FileFormat format : { FileFormat::kJpg, FileFormat::kPng }) {
        EncodedPage cut = encoded(format, noisePage(30, 20, PixelFormat::kRgb));
        cut.bytes.resize(12);
        EXPECT_EQ(writeFile(format, folder.file("d"), { cut }).code(), kFileWrite);
    }
}

/// What a file says of itself, told by a program that knows its format.
TEST(Metadata, everyFormatThatHoldsItTellsTitleDateAndProducer)
{
    const TemporaryFolder folder;
    const auto exif = [](const std::string& tags) { return "TZ=UTC exiftool -s3 " + tags + " "; };
    const struct
    {
        FileFormat format;
        std::string command;
        std::string date;
    } rows[] = {
        { FileFormat::kJpg, exif("-XMP:Title -XMP:CreateDate -XMP:CreatorTool -XMP:Producer"),
            "2023:11:14 22:13:20" },
        { FileFormat::kPng, exif("-PNG:Title -PNG:CreationTime -PNG:Software"),
            "2023:11:14 22:13:20" },
        { FileFormat::kTif, exif("-IFD0:DocumentName -IFD0:ModifyDate -IFD0:Software"),
            "2023:11:14 22:13:20" },
        { FileFormat::kPdf, exif("-PDF:Title -PDF:CreateDate -PDF:Producer"),
            "2023:11:14 22:13:20" },
        { FileFormat::kPdfText, exif("-XMP:Title -XMP:CreateDate -XMP:Producer"),
            "2023:11:14 22:13:20" },
        { FileFormat::kOfd, "unzip -p ", "<ofd:CreationDate>2023-11-14" },
        { FileFormat::kRtf,
            "rtf() { TZ=UTC exiftool -Title -CreateDate \"$1\"; grep -o 'generator.*' \"$1\"; }; "
            "rtf ",
            "2023:11:14 22:13" },
        { FileFormat::kXls, exif("-FlashPix:Title -FlashPix:CreateDate -FlashPix:Software"),
            "2023:11:14 22:13:20" },
    };
    const char* const zone = std::getenv("TZ");
    const std::string before = zone != nullptr ? zone : "";
    ::setenv("TZ", "UTC", 1);
    for (const auto& row : rows) {
        const auto path = folder.file("page");
        const Status status = writeFile(
            row.format, path, { encoded(row.format, noisePage(300, 200, PixelFormat::kRgb)) });
        ASSERT_TRUE(status.ok()) << status.detail();
        const std::string said = outputOf(row.command + quoted(path));
        const int format = static_cast<int>(row.format);
        EXPECT_NE(said.find("扫描 &"), std::string::npos) << format << "\n" << said;
        EXPECT_NE(
            said.find("<1>") == std::string::npos, said.find("&lt;1&gt;") == std::string::npos)
            << format << "\n"
            << said;
        EXPECT_NE(said.find(row.date), std::string::npos) << format << "\n" << said;
        EXPECT_NE(said.find("libOrva_SDK"), std::string::npos) << format << "\n" << said;
    }
    zone != nullptr ? ::setenv("TZ", before.c_str(), 1) : ::unsetenv("TZ");
}

TEST(Metadata, aTitleIsWhatXmlAndEveryReaderTake)
{
    EXPECT_EQ(plainTitle("合同\t1\n\x7F.\xC2\x85x"), "合同 1  . x");
    EXPECT_EQ(plainTitle("a\xFFz \xEF\xBF\xBE \xF0\x9F\x98\x80"),
        "a\xEF\xBF\xBDz \xEF\xBF\xBD \xF0\x9F\x98\x80");
}

std::vector<Page> threeKinds()
{
    return { noisePage(120, 90, PixelFormat::kRgb, 1),
        noisePage(121, 33, PixelFormat::kBlackWhite, 2), noisePage(57, 64, PixelFormat::kGray, 3) };
}

TEST(Tiff, holdsManyPagesOfDifferentKinds)
{
    const TemporaryFolder folder;
    const auto path = folder.file("pages.tif");
    std::vector<EncodedPage> pages;
    for (const Page& page : threeKinds()) {
        pages.push_back(spooled(
            encoded(FileFormat::kTif, page), folder.file("spool" + std::to_string(pages.size()))));
    }
    ASSERT_TRUE(writeFile(FileFormat::kTif, path, pages).ok());
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_TRUE(pixelsSeenIn(path, "[" + std::to_string(i) + "]") == pixelsOf(threeKinds()[i]))
            << i;
    }
    const std::string report = outputOf("tiffinfo " + quoted(path));
    EXPECT_NE(report.find("Compression Scheme: CCITT Group 4"), std::string::npos);
    EXPECT_NE(report.find("Photometric Interpretation: min-is-white"), std::string::npos);
    EXPECT_NE(report.find("Compression Scheme: AdobeDeflate"), std::string::npos);
    EXPECT_NE(report.find("Resolution: 200, 200 pixels/inch"), std::string::npos);
    EXPECT_NE(report.find("Software: libOrva_SDK"), std::string::npos);
    EXPECT_NE(report.find("DocumentName: 扫描 & <1>"), std::string::npos);
    EXPECT_NE(report.find("Page Number: 2-0"), std::string::npos);
    EXPECT_EQ(report.find("Warning"), std::string::npos) << report;
}

TEST(Tiff, goesOnWithLargeOffsetsWhereTheSmallOnesEnd)
{
    const TemporaryFolder folder;
    const auto path = folder.file("pages.tif");
    const auto writer = makeTiffWriter(60000);
    ASSERT_TRUE(writer->begin(path, {}).ok());
    for (const Page& page : threeKinds()) {
        ASSERT_TRUE(writer->addPage(encoded(FileFormat::kTif, page)).ok());
    }
    const Page last = noisePage(200, 200, PixelFormat::kRgb, 4);
    const Status status = writer->addPage(encoded(FileFormat::kTif, last));
    ASSERT_TRUE(status.ok()) << status.detail();
    ASSERT_TRUE(writer->finish().ok());
    EXPECT_EQ(contentOf(path).substr(0, 3), "II+") << "the mark of BigTIFF";
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_TRUE(pixelsSeenIn(path, "[" + std::to_string(i) + "]") == pixelsOf(threeKinds()[i]))
            << i;
    }
    EXPECT_TRUE(pixelsSeenIn(path, "[3]") == pixelsOf(last));
    EXPECT_NE(outputOf("tiffinfo " + quoted(path)).find("Page Number: 3-0"), std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(path.string() + ".big"));
}

TEST(Pdf, carriesTheEncodedDataAsItIs)
{
    const TemporaryFolder folder;
    const auto path = folder.file("page.pdf");
    const Page color = smoothPage(400, 300, PixelFormat::kRgb);
    const EncodedPage jpeg = encoded(FileFormat::kPdf, color, 70);
    ASSERT_TRUE(writeFile(FileFormat::kPdf, path, { jpeg }).ok());
    outputOf("pdfimages -all " + quoted(path) + " " + quoted(folder.file("raw")));
    EXPECT_TRUE(
        contentOf(folder.file("raw-000.jpg")) == std::string(jpeg.bytes.begin(), jpeg.bytes.end()));
    EXPECT_LT(meanDifference(pixelsInPdf(folder, path), pixelsOf(color)), 4);
}

TEST(Pdf, blackStaysBlackInGroup4)
{
    const TemporaryFolder folder;
    for (const auto& [width, height] : { std::pair { 1, 1 }, { 121, 33 }, { 16000, 2 } }) {
        Page page = noisePage(width, height, PixelFormat::kBlackWhite);
        const auto path = folder.file("bits.pdf");
        ASSERT_TRUE(writeFile(FileFormat::kPdf, path, { encoded(FileFormat::kPdf, page) }).ok());
        EXPECT_TRUE(pixelsInPdf(folder, path) == pixelsOf(page)) << width;
        outputOf("qpdf --check " + quoted(path));
    }
    const auto path = folder.file("half.pdf");
    Page half = blankPage(200, 200, PixelFormat::kBlackWhite); // one inch
    fillRect(half, 0, 0, 100, 200, kBlack);
    ASSERT_TRUE(writeFile(FileFormat::kPdf, path, { encoded(FileFormat::kPdf, half) }).ok());
    outputOf("pdftoppm -r 200 -gray " + quoted(path) + " " + quoted(folder.file("shown")));
    EXPECT_LT(meanDifference(pixelsSeenIn(folder.file("shown-1.pgm")), pixelsOf(half)), 2)
        << "also when painted";
}

TEST(Pdf, tellsItsSizesAndConformance)
{
    const TemporaryFolder folder;
    const auto path = folder.file("扫描.pdf");
    Page a4 = blankPage(1654, 2339, PixelFormat::kGray);
    Page card = blankPage(600, 400, PixelFormat::kBlackWhite);
    card.dpiX = 300;
    card.dpiY = 100;
    ASSERT_TRUE(writeFile(
        FileFormat::kPdf, path, { encoded(FileFormat::kPdf, a4), encoded(FileFormat::kPdf, card) })
                    .ok());
    const std::string report = outputOf("pdfinfo -f 1 -l 2 " + quoted(path));
    EXPECT_NE(report.find("Page    1 size:  595.44 x 842.04 pts (A4)"), std::string::npos)
        << report;
    EXPECT_NE(report.find("Page    2 size:  144 x 288 pts"), std::string::npos) << report;
    EXPECT_NE(outputOf("pdfinfo -meta " + quoted(path)).find("<pdfaid:part>2</pdfaid:part>"),
        std::string::npos);
}

long peakKilobytes()
{
    struct rusage usage
    {
    };
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

#ifdef __SANITIZE_ADDRESS__
constexpr long kAllowedGrowthKb =
    280L * 1024; // the sanitizer holds up to 256 MiB of freed memory back
#else
constexpr long kAllowedGrowthKb = 40L * 1024;
#endif

TEST(Pdf, threeHundredPagesNeedNoMoreMemoryThanAFew)
{
    const TemporaryFolder folder;
    Page page = smoothPage(1654, 2339, PixelFormat::kGray);
    addNoise(page, 25);
    const EncodedPage one = spooled(encoded(FileFormat::kPdf, page), folder.file("spool"));
    const auto payload = static_cast<long>(std::filesystem::file_size(one.file));
    ASSERT_GT(300 * (payload / 1024), kAllowedGrowthKb);
    ASSERT_TRUE(
        writeFile(FileFormat::kPdf, folder.file("few.pdf"), std::vector<EncodedPage>(5, one)).ok());
    const long before = peakKilobytes();
    ASSERT_TRUE(
        writeFile(FileFormat::kPdf, folder.file("many.pdf"), std::vector<EncodedPage>(300, one))
            .ok());
    EXPECT_LT(peakKilobytes() - before, kAllowedGrowthKb);
    EXPECT_NE(outputOf("pdfinfo " + quoted(folder.file("many.pdf"))).find("Pages:           300"),
        std::string::npos);
    outputOf("qpdf --check " + quoted(folder.file("few.pdf")));
}

TEST(Ofd, bindsTheEncodedPagesTogether)
{
    const TemporaryFolder folder;
    const auto path = folder.file("pages.ofd");
    Page bits = noisePage(600, 400, PixelFormat::kBlackWhite);
    bits.dpiX = bits.dpiY = 300;
    const EncodedPage jpeg =
        encoded(FileFormat::kOfd, smoothPage(1654, 2339, PixelFormat::kRgb), 70);
    ASSERT_TRUE(writeFile(FileFormat::kOfd, path,
        { jpeg, spooled(encoded(FileFormat::kOfd, bits), folder.file("spool")) })
                    .ok());

    outputOf("unzip -tq " + quoted(path));
    const auto part = [&path](const std::string& name) {
        return "unzip -p " + quoted(path) + " " + name;
    };
    EXPECT_TRUE(outputOf(part("Doc_0/Res/image_0.jpg"))
        == std::string(jpeg.bytes.begin(), jpeg.bytes.end()));
    outputOf(part("Doc_0/Res/image_1.png") + " > " + quoted(folder.file("image.png")));
    EXPECT_TRUE(pixelsSeenIn(folder.file("image.png")) == pixelsOf(bits));

    const auto value = [&part](const std::string& name, const std::string& query) {
        return outputOf(part(name) + " | xmllint --xpath \"string(" + query + ")\" -");
    };
    EXPECT_EQ(value("OFD.xml", "//*[local-name()='Title']"), "扫描 & <1>\n");
    EXPECT_EQ(value("OFD.xml", "//*[local-name()='DocRoot']"), "Doc_0/Document.xml\n");
    EXPECT_EQ(value("OFD.xml", "string-length(//*[local-name()='DocID'])"), "32\n");
    EXPECT_EQ(value("Doc_0/Document.xml", "count(//*[local-name()='Page'])"), "2\n");
    EXPECT_EQ(value("Doc_0/Document.xml", "//*[local-name()='Page'][2]/@BaseLoc"),
        "Pages/Page_1/Content.xml\n");
    EXPECT_EQ(value("Doc_0/Pages/Page_0/Content.xml", "//*[local-name()='PhysicalBox']"),
        "0 0 210.058 297.053\n")
        << "A4, millimetres";
    EXPECT_EQ(value("Doc_0/Pages/Page_1/Content.xml", "//*[local-name()='ImageObject']/@CTM"),
        "50.800 0 0 33.867 0 0\n");
    const std::string image =
        value("Doc_0/Pages/Page_1/Content.xml", "//*[local-name()='ImageObject']/@ResourceID");
    EXPECT_EQ(
        value("Doc_0/DocumentRes.xml",
            "//*[local-name()='MultiMedia'][@ID='" + image.substr(0, image.find('\n')) + "']/*"),
        "image_1.png\n");
}

class Trouble : public testing::TestWithParam<FileFormat>
{
protected:
    EncodedPage page() const
    {
        EncodedPage result = encoded(GetParam(), noisePage(900, 800, PixelFormat::kGray));
        if (findOutputFormat(GetParam())->needsText) {
            std::string word;
            for (int i = 0; word.size() < 200000; ++i) {
                word += std::to_string(i);
            }
            result.text = "P 0 0 9 9\nL 0 0 9 9 9 9\nW 0 0 9 9 50 " + word + '\n';
        }
        return result;
    }
};

TEST_P(Trouble, aFullDiskIsReported)
{
    const TemporaryFolder folder;
    EXPECT_EQ(writeFile(GetParam(), "/dev/full", { page() }).code(), kDiskFull);
    EXPECT_EQ(writeFile(GetParam(), "/dev/full", { spooled(page(), folder.file("spool")) }).code(),
        kDiskFull);
}

TEST_P(Trouble, aFolderThatIsGoneIsReported)
{
    const TemporaryFolder folder;
    EXPECT_EQ(writeFile(GetParam(), folder.file("gone/page"), { page() }).code(), kFolderMissing);
}

TEST_P(Trouble, aFileThatMayNotGrowIsReported)
{
    const TemporaryFolder folder;
    const EncodedPage whole = page();
    struct rlimit before
    {
    };
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    struct rlimit low = before;
    low.rlim_cur = 100000;
    const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &low), 0);
    const Status status = writeFile(GetParam(), folder.file("page"), { whole });
    ::setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, oldHandler);
    EXPECT_EQ(status.code(), kDiskFull) << status.detail();
}

TEST_P(Trouble, aSpoolFileThatIsGoneAndADocumentWithoutPagesAreReported)
{
    const TemporaryFolder folder;
    EncodedPage lost = spooled(page(), folder.file("spool"));
    std::filesystem::remove(lost.file);
    lost.textFile = lost.file;
    EXPECT_EQ(writeFile(GetParam(), folder.file("page"), { lost }).code(), kFileWrite);
    EXPECT_FALSE(writeFile(GetParam(), folder.file("page"), {}).ok());
}

INSTANTIATE_TEST_SUITE_P(Formats, Trouble,
    testing::Values(FileFormat::kJpg, FileFormat::kBmp, FileFormat::kPng, FileFormat::kTif,
        FileFormat::kPdf, FileFormat::kOfd, FileFormat::kTxt, FileFormat::kRtf, FileFormat::kXls));

} // namespace
} // namespace orva
