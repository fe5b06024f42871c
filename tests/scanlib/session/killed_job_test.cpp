// The process dies in the middle of a job: no broken file, no reported side lost.
#include "tests/scanlib/session/fakes.h"

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <random>
#include <thread>

using namespace fakes;
using namespace orva;

namespace {

class KilledJob : public SessionTest
{
protected:
    KilledJob() { session.reset(); }
    /// Runs a job in a child and kills it some time after it has reported that many sides. Returns
    /// the number of sides it had reported by then.
    int runAndKill(const FileChoice& choice, int sides, std::chrono::microseconds later)
    {
        int toParent[2] = {};
        EXPECT_EQ(pipe(toParent), 0);
        const pid_t child = fork();
        if (child == 0) {
            static int reports = toParent[1];
            setUpSession();
            session->setStateCallback([](int state, int, std::string) {
                if (state == 1 && write(reports, "s", 1) != 1) {
                    _exit(2);
                }
            });
            choose(choice);
            session->scan();
            _exit(0);
        }
        close(toParent[1]);
        int reported = 0;
        char byte = 0;
        while (reported < sides && read(toParent[0], &byte, 1) == 1) {
            ++reported;
        }
        std::this_thread::sleep_for(later);
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        while (read(toParent[0], &byte, 1) == 1) {
            ++reported;
        }
        close(toParent[0]);
        return reported;
    }
};

} // namespace

TEST_F(KilledJob, leavesNoBrokenFileAndItsPagesComeBackAtTheNextStart)
{
    std::mt19937 random(11);
    device.sheets = 100;
    device.perSide = 1ms;
    int killedInTheMiddle = 0;
    int marked = 0;
    for (int round = 0; round < 16; ++round) {
        const bool multiPage = round % 2 == 0;
        const int reported =
            runAndKill({ multiPage ? FileFormat::kPdf : FileFormat::kJpg, multiPage },
                static_cast<int>(random() % 96), std::chrono::microseconds(random() % 3000));
        killedInTheMiddle += reported > 0 && reported < device.sheets ? 1 : 0;
        for (const std::string& name : visibleNames()) {
            EXPECT_NE(pagesOf(output / name), std::vector<int> { -1 }) << name << " is broken";
        }
        setUpSession();
        waitForRecovery();
        session.reset();
        std::vector<int> saved = savedPages();
        std::sort(saved.begin(), saved.end());
        EXPECT_TRUE(std::adjacent_find(saved.begin(), saved.end()) == saved.end()) << "saved twice";
        for (int number = 1; number <= reported; ++number) {
            EXPECT_TRUE(std::binary_search(saved.begin(), saved.end(), number))
                << "side " << number << " of " << reported << " is lost";
        }
        EXPECT_EQ(namesIn(output), visibleNames()) << "hidden files are left";
        for (const std::string& name : visibleNames()) {
            // behind the reported sides one that was worked on may be missing between others
            const auto place =
                std::lower_bound(saved.begin(), saved.end(), pagesOf(output / name).front());
            const std::string serial =
                serialAt("001", multiPage ? 0U : static_cast<unsigned>(place - saved.begin()));
            EXPECT_TRUE(multiPage ? name == "001.pdf" || name == "001_恢复.pdf"
                                  : name == serial + ".jpg" || name == serial + "_恢复.jpg")
                << name;
            marked += name.find("_恢复") != std::string::npos ? 1 : 0;
        }
        EXPECT_TRUE(namesIn(folder.path() / "spool").empty());
        std::filesystem::remove_all(output);
        std::filesystem::create_directory(output);
    }
    EXPECT_GT(killedInTheMiddle, 3) << "the test must hit running jobs";
    EXPECT_GT(marked, killedInTheMiddle / 2) << "recovered files carry the mark";
}

namespace {

constexpr std::size_t kLetters = 4;
constexpr int kReadPages = 8;

/// Does not come to the end of the pages behind the eighth.
class CutOffRecognition : public WordyRecognition
{
public:
    CutOffRecognition()
        : WordyRecognition(0, kLetters)
    {
    }
    Status read(const Page& page, const StopWish& stop, PageText& out) override
    {
        std::this_thread::sleep_for(page.number > kReadPages ? 60s : 0s);
        return WordyRecognition::read(page, stop, out);
    }
};

} // namespace

TEST_F(KilledJob, theTextOfItsPagesComesBackAndThePicturesOfThoseThatWereNotRead)
{
    device.sheets = 20;
    device.perSide = 20ms;
    changeParts = [](SessionParts& parts) {
        parts.tools.findOutputFormat = findOutputFormat;
        parts.tools.makeTextRecognition = [](const RecognitionSettings&) {
            return std::unique_ptr<TextRecognition>(std::make_unique<CutOffRecognition>());
        };
    };
    for (const bool searchable : { false, true }) {
        const FileFormat format = searchable ? FileFormat::kPdfText : FileFormat::kTxt;
        // two workers have put a page each on disk by then
        const int reported = runAndKill({ format, true }, kReadPages, 200ms);
        EXPECT_EQ(reported, kReadPages);
        setUpSession();
        waitForRecovery();
        session.reset();
        const std::string name = searchable ? "001_恢复.pdf" : "001_恢复.txt";
        const std::vector<std::string> pictures { "001_恢复_第10页.jpg", "001_恢复_第9页.jpg" };
        std::vector<std::string> names { name };
        names.insert(names.end(), pictures.begin(), searchable ? pictures.begin() : pictures.end());
        ASSERT_EQ(visibleNames(), names);
        const std::filesystem::path file = searchable ? folder.path() / "words.txt" : output / name;
        const std::string command =
            "pdftotext '" + (output / name).string() + "' '" + file.string() + "'";
        ASSERT_TRUE(!searchable || std::system(command.c_str()) == 0);
        const std::string text = contentOf(file);
        for (int number = 1; number <= reported; ++number) {
            EXPECT_NE(text.find(wordOf(number, kLetters)), std::string::npos)
                << name << " has no text of side " << number;
        }
        std::filesystem::remove_all(output);
        std::filesystem::create_directory(output);
    }
}
