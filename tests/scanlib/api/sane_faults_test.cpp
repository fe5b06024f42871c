// Faults of a real driver in a real helper, seen from the whole library: which code the job ends
// with, what the operator reads, which files are there afterwards.
#include "scanlib/api/composition.h"
#include "tests/scanlib/device/test_backend.h"
#include "tests/scanlib/session/fakes.h"

#include <fstream>
#include <sstream>

namespace {

using namespace fakes;
using namespace orva;
using device_tests::BackendWishes;

struct Row
{
    const char* fault;
    BackendWishes wishes;
    ResultCode code;
    int kept; ///< sides that were complete before
};

BackendWishes statusAtThirdSide(const std::string& name)
{
    return { { "fault-at-start", "3" }, { "fault", "SANE_STATUS_" + name } };
}

const std::vector<Row>& rows()
{
    static const std::vector<Row> table {
        { "unsupported", statusAtThirdSide("UNSUPPORTED"), kNotSupported, 2 },
        { "cancelled at the device", statusAtThirdSide("CANCELLED"), kCancelled, 2 },
        { "busy", statusAtThirdSide("DEVICE_BUSY"), kDeviceBusy, 2 },
        { "invalid", statusAtThirdSide("INVAL"), kDeviceBadParameter, 2 },
        { "end without a byte", statusAtThirdSide("EOF"), kDeviceIo, 2 },
        { "jammed", statusAtThirdSide("JAMMED"), kPaperJam, 2 },
        { "feeder runs dry", statusAtThirdSide("NO_DOCS"), kOk, 2 },
        { "no paper at once", { { "read-return-value", "SANE_STATUS_NO_DOCS" } }, kNoPaper, 0 },
        { "cover open", statusAtThirdSide("COVER_OPEN"), kCoverOpen, 2 },
        { "input/output error", statusAtThirdSide("IO_ERROR"), kDeviceIo, 2 },
        { "out of memory", statusAtThirdSide("NO_MEM"), kNoMemory, 2 },
        { "access denied", statusAtThirdSide("ACCESS_DENIED"), kAccessDenied, 2 },
        { "reads of 37 bytes", { { "read-limit", "1" }, { "read-limit-size", "37" } }, kOk, 10 },
        { "slow reads", { { "read-delay", "1" }, { "read-delay-duration", "20000" } }, kOk, 10 },
        { "pixels lost at line ends", { { "ppl-loss", "5" } }, kOk, 10 },
        { "parameters guessed before start", { { "fuzzy-parameters", "1" } }, kOk, 10 },
        { "reads that return at once", { { "non-blocking", "1" } }, kOk, 10 },
        { "driver crashes in a read", { { "crash-read", "3" } }, kDriverCrashed, 2 },
        { "driver never returns from a read", { { "hang-read", "3" } }, kDeviceTimeout, 2 },
        { "driver crashes when opened", { { "crash-open", "1" } }, kDriverCrashed, 0 },
        { "driver hangs when opened", { { "hang-open", "1" } }, kDeviceTimeout, 0 },
        { "scanner gone", { { "gone", "1" } }, kDeviceNotFound, 0 },
    };
    return table;
}

/// The operator's text for the code; empty when the catalogue has none.
std::string catalogueText(int code)
{
    std::ifstream file(ERROR_CATALOGUE);
    std::string line;
    while (std::getline(file, line)) {
        if (line.find("id=\"" + std::to_string(code) + "\"") != std::string::npos) {
            const std::size_t begin = line.find('>') + 1;
            return line.substr(begin, line.rfind('<') - begin);
        }
    }
    return {};
}

int pdfPages(const std::filesystem::path& file)
{
    const std::string command = "qpdf --check '" + file.string()
        + "' >/dev/null && qpdf --show-npages '" + file.string() + "'";
    std::FILE* const pipe = ::popen(command.c_str(), "r");
    int pages = -1;
    EXPECT_EQ(std::fscanf(pipe, "%d", &pages), 1) << file;
    ::pclose(pipe);
    return pages;
}

class SaneFaults : public testing::Test
{
protected:
    /// A job of an application of its own; files go to the output folder.
    ResultCode scan(const Row& row, FileFormat format)
    {
        std::filesystem::remove_all(output);
        std::filesystem::create_directory(output);
        SessionParts parts = installedParts();
        parts.paths.spool = folder.path() / "spool";
        parts.paths.config = folder.path() / "none"; // not the one that a test beside installs
        parts.config.recognition = recognition;
        parts.makeDrivers = [](const LibraryPaths&) {
            std::vector<std::unique_ptr<Driver>> drivers;
            drivers.push_back(makeSaneDriver(device_tests::testBackendParts()));
            return drivers;
        };
        device_tests::wish({});
        Session session(parts);
        EXPECT_EQ(session.init(), kOk);
        session.setLogInfo(true, log);
        EXPECT_EQ(session.scannerCount(), 1);
        EXPECT_EQ(session.selectScanner(0), kOk);
        device_tests::wish(row.wishes);
        session.setStateCallback(Recorder::state);
        session.setErrorCallback(Recorder::error);
        Recorder::instance().reset();
        session.setFileParam(fileParam(output, { format, format == FileFormat::kPdf }));
        if (session.setSource(1) == kOk) {
            session.setPaperSize({ "", 0, 0, 90, 54 }, -1);
            session.setResolution(100, 100);
        }
        const int code = session.scan();
        session.setLogInfo(false, log);
        device_tests::wish({});
        return static_cast<ResultCode>(code);
    }

    const TemporaryFolder folder;
    const std::filesystem::path output = folder.path() / "out";
    const std::filesystem::path log = folder.path() / "log";
    RecognitionSettings recognition { "chi_sim+eng", {}, ORVA_OCR_LIBRARY };
};

TEST_F(SaneFaults, EachHasItsCodeItsTextAndKeepsWhatWasScanned)
{
    for (const Row& row : rows()) {
        SCOPED_TRACE(row.fault);
        EXPECT_EQ(scan(row, FileFormat::kJpg), row.code);
        EXPECT_EQ(static_cast<int>(namesIn(output).size()), row.kept);
        EXPECT_EQ(Recorder::instance().count(1), row.kept);
        const bool isError = row.code != kOk && row.code != kCancelled;
        EXPECT_EQ(Recorder::instance().count(kErrorEvent), isError ? 1 : 0);
        EXPECT_EQ(Recorder::instance().count(-1), 1);
        EXPECT_EQ(scan(row, FileFormat::kPdf), row.code);
        const std::vector<std::string> names = namesIn(output);
        ASSERT_EQ(names.size(), row.kept > 0 ? 1U : 0U);
        if (row.kept > 0) {
            EXPECT_EQ(pdfPages(output / names.front()), row.kept);
        }
        EXPECT_TRUE(namesIn(folder.path() / "spool").empty());
        const std::string text = row.code == kOk ? "-" : catalogueText(row.code);
        EXPECT_FALSE(text.empty());
        std::printf("| %s | %d | %s | %d jpg, or pdf of %d pages |\n", row.fault, row.code,
            text.c_str(), row.kept, row.kept);
    }
}

/// What a job that is to read comes to when what it reads with is not there.
TEST_F(SaneFaults, WithoutRecognitionTextIsRefusedAndPicturesAreScanned)
{
    const RecognitionSettings whole = recognition;
    std::string needingOther = contentOf(whole.engineFile);
    const std::string tesseract = "libtesseract.so";
    ASSERT_NE(needingOther.find(tesseract), std::string::npos);
    needingOther.replace(needingOther.find(tesseract), tesseract.size(), "libtesseraKt.so");
    writeFile(folder.path() / "other.so", needingOther);
    writeFile(folder.path() / "broken.so", "no library");
    std::filesystem::create_directory(folder.path() / "empty");
    struct Missing
    {
        const char* fault;
        RecognitionSettings settings;
        const char* inLog;
    };
    const Missing rows[] = {
        { "library absent", { "eng", {}, "/none/libOrva_OCR.so" }, "/none/libOrva_OCR.so" },
        { "library damaged", { "eng", {}, folder.path() / "broken.so" }, "broken.so" },
        { "library of another kind", { "eng", {}, "libm.so.6" }, "another version" },
        { "Tesseract absent", { "eng", {}, folder.path() / "other.so" }, "libtesseraKt.so" },
        { "model absent", { "eng", folder.path() / "empty", whole.engineFile },
            "tesseract-ocr-eng" },
        { "model damaged", { "eng", folder.path() / "damaged", whole.engineFile }, "eng" },
    };
    std::filesystem::create_directory(folder.path() / "damaged");
    writeFile(folder.path() / "damaged" / "eng.traineddata", "no model");
    const Row noFault { "", {}, kOk, 10 };
    for (const Missing& row : rows) {
        SCOPED_TRACE(row.fault);
        recognition = row.settings;
        std::filesystem::remove(log);
        EXPECT_EQ(scan(noFault, FileFormat::kTxt), kModelMissing);
        EXPECT_EQ(Recorder::instance().count(kErrorEvent), 1);
        EXPECT_EQ(Recorder::instance().count(1), 0) << "paper was moved";
        EXPECT_TRUE(namesIn(output).empty());
        EXPECT_NE(contentOf(log).find(row.inLog), std::string::npos) << contentOf(log);
        EXPECT_EQ(scan(noFault, FileFormat::kPdf), kOk);
        EXPECT_EQ(pdfPages(output / namesIn(output).front()), 10);
        std::printf("| %s | %d | %s | nothing; pdf of 10 pages |\n", row.fault, kModelMissing,
            catalogueText(kModelMissing).c_str());
    }
    recognition = whole;
    EXPECT_EQ(
        scan({ "", { { "fault-at-start", "3" }, { "fault", "SANE_STATUS_NO_DOCS" } }, kOk, 2 },
            FileFormat::kTxt),
        kOk)
        << "the same process, once it is there";
}

} // namespace
