// A recognition that is slow, or that hangs: jobs end all the same, and no page is lost.
#include "tests/scanlib/session/fakes.h"

#include <future>
#include <thread>

using namespace fakes;
using namespace orva;

namespace {

/// Reads pages 1 to `readable`; the others take until the gate opens or, when it listens, until it
/// is to stop.
class SlowRecognition : public WordyRecognition
{
public:
    SlowRecognition(int readable, bool listens, std::shared_future<void> gate)
        : WordyRecognition(0, 4)
        , m_readable(readable)
        , m_listens(listens)
        , m_gate(std::move(gate))
    {
    }
    Status read(const Page& page, const StopWish& stop, PageText& out) override
    {
        while (page.number > m_readable && m_gate.wait_for(5ms) != std::future_status::ready) {
            if (m_listens && stop()) {
                return { kCancelled, "stopped" };
            }
        }
        return WordyRecognition::read(page, stop, out);
    }

private:
    const int m_readable;
    const bool m_listens;
    const std::shared_future<void> m_gate;
};

struct Case
{
    const char* name;
    FileChoice choice;
    int readable;
    bool listens;
    bool isCancelled; ///< else each page has 200 ms
};

class ReadingLimits : public SessionTest
{
protected:
    void start(const Case& row, const std::shared_future<void>& gate)
    {
        changeParts = [=](SessionParts& parts) {
            parts.tools.findOutputFormat = findOutputFormat;
            parts.tools.makeTextRecognition = [=](const RecognitionSettings&) {
                return std::unique_ptr<TextRecognition>(
                    std::make_unique<SlowRecognition>(row.readable, row.listens, gate));
            };
            if (!row.isCancelled) {
                parts.config.limits.readingLimit = 200ms;
            }
        };
        std::filesystem::remove_all(output);
        std::filesystem::create_directory(output);
        Recorder::instance().reset();
        restart();
        choose(row.choice);
    }
    /// What a job of this many sides has to leave: text where it was read, else a picture.
    std::vector<std::string> expectedNames(const Case& row, int sides) const
    {
        std::vector<std::string> names;
        const auto name = [&](int number, const char* extension) {
            char text[32];
            std::snprintf(text, sizeof(text), "%03d.%s", number, extension);
            return std::string(text);
        };
        const bool showsPicture = row.choice.format == FileFormat::kPdfText;
        if (row.choice.multiPage && (showsPicture || row.readable > 0)) {
            names.push_back(name(1, showsPicture ? "pdf" : "txt"));
        }
        for (int number = 1; number <= sides && !showsPicture; ++number) {
            if (!row.choice.multiPage) {
                names.push_back(name(number, number <= row.readable ? "txt" : "jpg"));
            } else if (number > row.readable) {
                names.push_back("001_第" + std::to_string(number) + "页.jpg");
            }
        }
        std::sort(names.begin(), names.end());
        return names;
    }
};

} // namespace

TEST_F(ReadingLimits, endTheJobInTimeAndKeepEveryPage)
{
    const FileChoice text { FileFormat::kTxt, true };
    const Case cases[] = {
        { "cancelled while it reads", text, 3, true, true },
        { "cancelled while it hangs", text, 3, false, true },
        { "cancelled, a file a page", { FileFormat::kTxt, false }, 3, false, true },
        { "cancelled, searchable", { FileFormat::kPdfText, true }, 3, false, true },
        { "cancelled before the first", text, 0, false, true },
        { "a page takes too long", text, 7, true, false },
        { "a page hangs", text, 7, false, false },
        { "every page hangs", { FileFormat::kTxt, false }, 0, false, false },
    };
    device.sheets = 8;
    device.perSide = 5ms;
    limits.workers = 3;
    for (const Case& row : cases) {
        SCOPED_TRACE(row.name);
        std::promise<void> gate;
        start(row, gate.get_future().share());
        device.delivered = 0;
        auto job = std::async(std::launch::async, [this] { return session->scan(); });
        auto begin = std::chrono::steady_clock::now();
        if (row.isCancelled) {
            ASSERT_TRUE(row.readable == 0 || Recorder::instance().waitFor(1, row.readable));
            while (device.delivered < device.sheets) {
                std::this_thread::sleep_for(1ms);
            }
            begin = std::chrono::steady_clock::now();
            EXPECT_EQ(session->cancelScan(), kOk);
        }
        EXPECT_EQ(job.get(), row.isCancelled ? kCancelled : kRecognitionFailed);
        const auto took = std::chrono::steady_clock::now() - begin;
        EXPECT_LT(took, row.isCancelled ? 2s : 5s);
        EXPECT_EQ(Recorder::instance().count(1), device.sheets) << "all that were fed";
        EXPECT_EQ(Recorder::instance().count(kErrorEvent), row.isCancelled ? 0 : 1);
        EXPECT_EQ(Recorder::instance().count(-1), 1);
        EXPECT_EQ(namesIn(output), expectedNames(row, device.sheets));
        EXPECT_EQ(Recorder::instance().files().size(), namesIn(output).size());
        std::string all;
        for (const std::string& name : namesIn(output)) {
            const std::string content = contentOf(output / name);
            EXPECT_EQ(content.substr(0, 2) == "\xFF\xD8", name.find(".jpg") != std::string::npos);
            all += name.find(".txt") != std::string::npos ? content : "";
        }
        for (int number = 1; number <= row.readable; ++number) {
            EXPECT_TRUE(row.choice.format != FileFormat::kTxt
                || all.find(wordOf(number, 4)) != std::string::npos)
                << number;
        }
        EXPECT_TRUE(namesIn(folder.path() / "spool").empty());

        if (row.choice.format == FileFormat::kPdfText) {
            const std::string file = "'" + (output / "001.pdf").string() + "'";
            EXPECT_EQ(std::system(("test $(qpdf --show-npages " + file + ") = 8").c_str()), 0);
        }
        const bool isLast = &row == std::end(cases) - 1;
        const auto closing = std::chrono::steady_clock::now();
        if (!isLast) {
            gate.set_value();
        }
        EXPECT_EQ(session->unInit(), kOk);
        EXPECT_LT(std::chrono::steady_clock::now() - closing, 3s) << "also while it hangs";
        if (isLast) {
            gate.set_value();
        }
        std::printf("%-28s %5.2f s\n", row.name, std::chrono::duration<double>(took).count());
    }
}
