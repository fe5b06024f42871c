// What happens to a pile of ten sheets when something goes wrong at the third: the operator is told
// what to do, the sheets in front of it are whole files, the job is on record, the next one works.
#include "tests/journeys/cards.h"
#include "tests/journeys/journey.h"
#include "tests/support/wait.h"

#include <gmock/gmock.h>

#include <filesystem>

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using ::testing::HasSubstr;
using ::testing::StartsWith;

namespace {

constexpr int kSheets = 10;

struct PaperFault
{
    const char* name;
    std::vector<std::string> before; ///< words for virtual-scanner
    std::vector<std::string> meanwhile; ///< the same, when two files are there
    int code;
    const char* told; ///< how the message in the catalogue begins
};

[[maybe_unused]] void PrintTo(const PaperFault& fault, std::ostream* out)
{
    *out << fault.name;
}

class PaperFaultJourney : public Journey, public ::testing::WithParamInterface<PaperFault>
{
protected:
    /// One side a sheet, as files, on record.
    void prepare(const Settings& more = {})
    {
        Settings settings { { "ScanSource", 1 }, { "LogLevel", 1 }, { "MultiFeedChkBox", true } };
        settings.insert(more.begin(), more.end());
        writeSettings(settings);
    }
    /// Every file is the front of its sheet. `seen` is the folder as this process sees it.
    std::string filesOnRecord(const std::string& seen)
    {
        std::string lines;
        int sheet = 0;
        for (const std::string& name : namesIn(seen)) {
            const QImage page(QString::fromStdString(seen + "/" + name));
            EXPECT_LT(cards::distance(page, cards::picture(2 * sheet++ + 1, 100)), 3) << name;
            lines += folder() + "/" + name + "\n";
        }
        return lines;
    }
    void expectTold(int code, const std::string& told)
    {
        dismiss(titles::kError);
        ASSERT_TRUE(waitForIdle(1));
        EXPECT_THAT(Sandbox::runLog(), HasSubstr("nErrorCode = " + std::to_string(code) + "\n"));
        EXPECT_THAT(Sandbox::runLog(), HasSubstr("contents = " + told));
    }
    static std::string record(int pages, const char* result, const std::string& files)
    {
        return "作业页数: " + std::to_string(pages) + "\n扫描结果: " + result + "\n生成的文件：\n"
            + files;
    }
};

} // namespace

TEST_P(PaperFaultJourney, keepsTheSheetsInFrontOfItAndTheNextJobWorks)
{
    const PaperFault& fault = GetParam();
    prepare();
    loadSheets(kSheets);
    scanner(fault.before);
    openMainWindow();
    pressScan();
    if (!fault.meanwhile.empty()) {
        ASSERT_TRUE(waitUntil([this] { return namesIn(folder()).size() >= 2; }, 30s));
        scanner(fault.meanwhile);
    }
    expectTold(fault.code, fault.told);
    const int whole = static_cast<int>(namesIn(folder()).size());
    if (fault.meanwhile.empty()) {
        EXPECT_EQ(whole, 2);
    } else {
        EXPECT_GE(whole, 2);
        EXPECT_LT(whole, kSheets);
    }
    EXPECT_EQ(lastRecord(), record(whole, "失败", filesOnRecord(folder())));
    expectNoLeftovers();

    // the rest of the pile
    scanner({ "fault", "clear" });
    pressScan();
    waitForFinishedJob(2);
    EXPECT_THAT(lastRecord(), HasSubstr("扫描结果: 成功!\n"));
    EXPECT_GT(static_cast<int>(namesIn(folder()).size()), whole);
    closeByKey();
}

INSTANTIATE_TEST_SUITE_P(Sheet3Of10, PaperFaultJourney,
    ::testing::Values(PaperFault { "jam", { "fault", "jam", "--sheet", "3" }, {}, -41,
                          "卡纸，已扫描的页面已保存。" },
        PaperFault {
            "doubleFeed", { "fault", "double-feed", "--sheet", "3" }, {}, -42, "检测到重张，" },
        PaperFault { "coverOpen", { "fault", "slow", "--ms", "400" }, { "fault", "cover-open" },
            -43, "扫描仪上盖已打开。请合上上盖" },
        PaperFault { "unplugged", { "fault", "unplugged", "--sheet", "3" }, {}, -21,
            "扫描中与扫描仪断开连接，" }),
    [](const auto& tested) { return std::string(tested.param.name); });

TEST_F(PaperFaultJourney, aFullDiskKeepsTheFilesThatFitAndTheNextJobWorks)
{
    prepare({ { "FileFormat", 1 } }); // BMP: 222 KB a page, of which eight fit
    writeToSmallDisk();
    loadSheets(kSheets);
    openMainWindow();
    pressScan();
    expectTold(-51, "磁盘空间不足。已扫描的页面没有丢失");
    const std::string seen = application().inside(folder());
    const int whole = static_cast<int>(namesIn(seen).size());
    EXPECT_EQ(whole, 8);
    EXPECT_THAT(lastRecord(), HasSubstr("\n扫描结果: 失败\n生成的文件：\n" + filesOnRecord(seen)));

    for (const std::string& name : namesIn(seen)) {
        fs::remove(seen + "/" + name);
    }
    scanner({ "unload" });
    loadSheets(1);
    pressScan();
    waitForFinishedJob(2);
    EXPECT_EQ(namesIn(seen).size(), 1U);
    EXPECT_THAT(lastRecord(), HasSubstr("扫描结果: 成功!\n"));
    closeByKey();
}

TEST_F(PaperFaultJourney, theSecondButtonOpensTheLastFileOnce)
{
    // the desktop's opener, which writes down what it is asked to open
    const std::string opened = Sandbox::path("opened");
    const std::string opener = Sandbox::path("programs/xdg-open");
    writeBytes(opener, "#!/bin/sh\nprintf '%s\\n' \"$@\" >> '" + opened + "'\n");
    fs::permissions(opener, fs::perms(0755));
    preferPrograms(fs::path(opener).parent_path());
    prepare();
    loadSheets(2);
    openMainWindow();
    scanner({ "press", "open" });
    waitForFinishedJob();
    ASSERT_TRUE(waitUntil([&] { return !readBytes(opened).empty(); }, 10s));
    const auto idlePolls = [this] {
        return application().countInOutput("GetScannerKeyStatus() curButton=0\n");
    };
    const int polls = idlePolls();
    ASSERT_TRUE(waitUntil([&] { return idlePolls() >= polls + 3; }, 20s));
    EXPECT_EQ(readBytes(opened), "file://" + folder() + "/Card-008.jpg\n");
    closeByKey();
}
