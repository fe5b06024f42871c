// Faults with the real file formats: the code, what the operator is told, what is on disk after the
// job and after the next start. The test prints the table.
#include "scanlib/base/output_store.h"
#include "scanlib/writers/encoders.h"
#include "tests/scanlib/session/fakes.h"

#include <sys/resource.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <random>
#include <thread>

using namespace fakes;
using namespace orva;

namespace {

std::string operatorText(int code)
{
    const std::string catalogue = contentOf(ERROR_CATALOGUE);
    const std::size_t entry = catalogue.find("id=\"" + std::to_string(code) + "\"");
    const std::size_t begin = catalogue.find('>', entry) + 1;
    return entry == std::string::npos ? ""
                                      : catalogue.substr(begin, catalogue.find('<', begin) - begin);
}

std::string joined(const std::vector<std::string>& names)
{
    std::string text;
    for (const std::string& name : names) {
        text += (text.empty() ? "" : " ") + name;
    }
    return text.empty() ? "-" : text;
}

/// By a program that is not ours.
bool isWhole(const std::filesystem::path& file)
{
    const std::map<std::string, std::string> checks { { ".pdf", "qpdf --check" },
        { ".ofd", "unzip -tq" }, { ".tif", "tiffinfo -D" }, { ".xls", "xls2csv" },
        { ".txt", "iconv -f utf-8 -t utf-8" }, { ".jpg", "identify" } };
    const std::string check = checks.at(file.extension());
    return std::system((check + " '" + file.string() + "' >/dev/null 2>&1").c_str()) == 0;
}

/// Limits the size of any file of this process while it lives.
class SmallDisk
{
public:
    explicit SmallDisk(rlim_t bytes)
    {
        getrlimit(RLIMIT_FSIZE, &m_before);
        m_oldHandler = std::signal(SIGXFSZ, SIG_IGN);
        const rlimit small { bytes == 0 ? m_before.rlim_cur : bytes, m_before.rlim_max };
        setrlimit(RLIMIT_FSIZE, &small);
    }
    ~SmallDisk()
    {
        setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_oldHandler);
    }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

private:
    rlimit m_before {};
    void (*m_oldHandler)(int) = nullptr;
};

struct Case
{
    const char* fault;
    FileFormat format;
    rlim_t diskBytes; ///< 0: no limit
    ResultCode code;
    const char* afterJob;
    const char* afterStart;
};

class FaultTable : public SessionTest
{
protected:
    SessionParts realParts()
    {
        SessionParts result = parts();
        result.tools.findOutputFormat = findOutputFormat;
        result.tools.makeTextRecognition = [this](const RecognitionSettings&) {
            return std::unique_ptr<TextRecognition>(std::make_unique<WordyRecognition>(unreadable));
        };
        result.tools.runOperations = [this](PageGroup& group, const ImageSettings&) -> Status {
            std::mt19937 random(7);
            for (Page& page : group) {
                for (std::uint8_t& pixel : page.pixels) {
                    pixel = static_cast<std::uint8_t>(random());
                }
                if (duringPage) {
                    duringPage(page.number);
                }
            }
            return {};
        };
        return result;
    }
    void start()
    {
        session = std::make_unique<Session>(realParts());
        EXPECT_EQ(session->init(), kOk);
        EXPECT_EQ(session->selectScanner(0), kOk);
        session->setStateCallback(Recorder::state);
        session->setErrorCallback(Recorder::error);
    }
    std::function<void(int)> duringPage;
    int unreadable = 0;
};

} // namespace

TEST_F(FaultTable, codeTextAndWhatIsOnDisk)
{
    const Case cases[] = {
        { "disk full", FileFormat::kPdf, 150'000, kDiskFull, "-", "001_恢复.pdf" },
        { "disk full", FileFormat::kOfd, 150'000, kDiskFull, "001.ofd", "001.ofd 001_恢复.ofd" },
        { "disk full", FileFormat::kTif, 150'000, kDiskFull, "001.tif", "001.tif 001_恢复.tif" },
        { "disk full", FileFormat::kXls, 150'000, kDiskFull, "-", "001_恢复.xls" },
        { "folder gone", FileFormat::kPdf, 0, kFolderMissing, "-", "001_恢复.pdf" },
        { "damaged image", FileFormat::kPdf, 0, kDamagedPage, "001.pdf", "001.pdf" },
        { "page of 2 GB", FileFormat::kPdf, 0, kPageTooLarge, "-", "-" },
        { "name taken", FileFormat::kPdf, 0, kOk, "001.pdf 001_2.pdf", "001.pdf 001_2.pdf" },
        { "page unreadable", FileFormat::kTxt, 0, kRecognitionFailed, "001.txt 001_第4页.jpg",
            "001.txt 001_第4页.jpg" },
        { "page unreadable", FileFormat::kXls, 0, kRecognitionFailed, "001.xls 001_第4页.jpg",
            "001.xls 001_第4页.jpg" },
        { "page unreadable", FileFormat::kPdfText, 0, kRecognitionFailed, "001.pdf", "001.pdf" },
        { "folder read-only", FileFormat::kPdf, 0, kFolderReadOnly, "-", "-" },
    };
    device.sidePixels = 200;
    device.sheets = 10;
    std::printf("%-17s | %-4s | code | on disk after the job | after the next start | text\n",
        "fault", "file");
    for (const Case& each : cases) {
        const std::string fault = each.fault;
        std::filesystem::remove_all(output);
        std::filesystem::create_directory(output);
        Recorder::instance().reset();
        duringPage = [&](int number) {
            if (number == 4 && fault == "folder gone") {
                std::filesystem::remove_all(output);
            }
            if (number == 4 && fault == "name taken") {
                writeFile(output / "001.pdf", "theirs");
            }
        };
        device.faultAtSide.clear();
        if (fault == "damaged image") {
            device.faultAtSide[4] = kDamagedPage;
        }
        unreadable = fault == "page unreadable" ? 4 : 0;
        start();
        const bool readOnly = fault == "folder read-only"; // where root may not write either
        session->setFileParam(fileParam(readOnly ? "/sys" : output, { each.format, true }));
        if (fault == "page of 2 GB") {
            EXPECT_EQ(session->setSource(0), kOk);
            EXPECT_EQ(session->setResolution(4800, 4800), kOk);
        }
        const int before = device.delivered;
        int code = 0;
        {
            const SmallDisk disk(each.diskBytes);
            code = session->scan();
        }
        EXPECT_EQ(code, each.code) << fault;
        EXPECT_TRUE(each.code != kPageTooLarge || device.delivered == before) << fault;
        std::filesystem::create_directory(output);
        const std::string afterJob = joined(namesIn(output)); // hidden ones, too
        EXPECT_EQ(afterJob, each.afterJob) << fault;
        session.reset();
        start();
        if (!readOnly) { // its pages wait for a week
            waitForRecovery();
        }
        session.reset();
        const std::string afterStart = joined(namesIn(output));
        EXPECT_EQ(afterStart, each.afterStart) << fault;
        EXPECT_EQ(contentOf(output / "001.pdf") == "theirs", fault == "name taken");
        for (const std::string& name : namesIn(output)) {
            EXPECT_TRUE(isWhole(output / name) || contentOf(output / name) == "theirs") << name;
        }
        if (each.format == FileFormat::kTxt) {
            const std::string saved = contentOf(output / "001.txt");
            for (int number = 1; number <= device.sheets; ++number) {
                EXPECT_EQ(saved.find(wordOf(number)) != std::string::npos, number != unreadable);
            }
        }
        const std::string text = operatorText(code);
        EXPECT_EQ(text.empty(), code == kOk);
        EXPECT_EQ(
            text.find("_恢复") != std::string::npos, code == kDiskFull || code == kFolderMissing)
            << "the text is true";
        std::printf("%-17s | %-4s | %4d | %s | %s | %s\n", each.fault,
            std::string(kFormatNames[static_cast<std::size_t>(each.format)].text).c_str(), code,
            afterJob.c_str(), afterStart.c_str(), text.c_str());
    }
}
