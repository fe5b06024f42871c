// The settings file of the library, and that a job obeys it.
#include "scanlib/session/library_config.h"
#include "tests/scanlib/session/fakes.h"

#include <fstream>

using namespace fakes;
using namespace orva;

namespace {

LibraryConfig configOf(const std::filesystem::path& file, const std::string& text)
{
    std::ofstream(file) << text;
    return readLibraryConfig(file, {});
}

} // namespace

TEST(LibraryConfig, takesWhatItKnowsAndLeavesTheRest)
{
    const TemporaryFolder folder;
    const std::filesystem::path file = folder.path() / "orva-sdk.conf";
    const LibraryConfig all = configOf(file,
        "# remark\n\n  workers=3 \r\nqueue_megabytes =\t64\ncolour = red\nworkers\n"
        "search_limit_ms = 2500");
    EXPECT_EQ(all.limits.workers, 3U);
    EXPECT_EQ(all.limits.queueBytes, 64U << 20U);
    EXPECT_EQ(all.listingLimit, 2500ms);

    for (const char* wrong : { "-1", "65", "2x", "0x2", "1.5", "", "99999999999999999999" }) {
        const LibraryConfig kept = configOf(file, std::string("workers = 2\nworkers = ") + wrong);
        EXPECT_EQ(kept.limits.workers, 2U) << wrong;
    }
    const LibraryConfig outside = configOf(file, "queue_megabytes = 1\nsearch_limit_ms = 0\n");
    EXPECT_EQ(outside.limits.queueBytes, 96U << 20U);
    EXPECT_EQ(outside.listingLimit, 4000ms);
}

TEST(LibraryConfig, namesModelsAndTheirFolderAndNothingThatIsNoSuchThing)
{
    const TemporaryFolder folder;
    const std::filesystem::path file = folder.path() / "orva-sdk.conf";
    struct Row
    {
        std::string line;
        std::string languages;
        std::string models;
    };
    const std::string binary("ocr_languages = eng\0\xFF\n\0\0=\xFE\n", 27);
    const Row rows[] = {
        { "", "chi_sim+eng", "" },
        { "ocr_languages=eng\nocr_models = /models\n", "eng", "/models" },
        { "ocr_languages = chi_tra+jpn+eng", "chi_tra+jpn+eng", "" },
        { "ocr_models = /a b/模型 \r\nocr_models =\n", "chi_sim+eng", "" },
        { "ocr_models = models", "chi_sim+eng", "" },
        { "OCR_Languages = eng\nocr_language = eng\nocr_languages", "chi_sim+eng", "" },
        { "ocr_languages =\nocr_languages = +eng\nocr_languages = eng+", "chi_sim+eng", "" },
        { "ocr_languages = ../eng\nocr_languages = eng;id\nocr_languages = 中", "chi_sim+eng", "" },
        { binary, "chi_sim+eng", "" },
        { std::string(1U << 20U, 'x') + "\nocr_languages = eng", "eng", "" },
    };
    LibraryConfig otherwise;
    otherwise.recognition.engineFile = "/lib/libOrva_OCR.so";
    for (const Row& row : rows) {
        SCOPED_TRACE(row.line.substr(0, 60));
        std::ofstream(file) << row.line;
        const RecognitionSettings read = readLibraryConfig(file, otherwise).recognition;
        EXPECT_EQ(read.languages, row.languages);
        EXPECT_EQ(read.models, row.models);
        EXPECT_EQ(read.engineFile, otherwise.recognition.engineFile);
    }
    // neither a folder nor nothing in its place is a fault
    for (const std::filesystem::path& none : { folder.path(), folder.path() / "none" }) {
        EXPECT_EQ(readLibraryConfig(none, otherwise).recognition.languages, "chi_sim+eng");
    }
}

TEST_F(SessionTest, theSettingsFileTellsHowManyWorkersAJobHas)
{
    std::mutex mutex;
    std::condition_variable changed;
    int inside = 0;
    int most = 0;
    // Each page waits until as many as there may be are worked on, or a moment for one too many.
    const auto meet = [&](int expected) {
        return [&, expected](int) {
            std::unique_lock<std::mutex> lock(mutex);
            most = std::max(most, ++inside);
            changed.notify_all();
            changed.wait_for(lock, 100ms, [&] { return most > expected; });
            --inside;
        };
    };
    device.sheets = 6;
    for (const int workers : { 1, 3 }) { // the parts say 2
        std::ofstream(folder.path() / "orva-sdk.conf") << "workers = " << workers << '\n';
        restart();
        most = 0;
        pages.duringEncode = meet(workers);
        EXPECT_EQ(session->scan(), kOk);
        EXPECT_EQ(most, workers);
    }
}
