// What goes wrong on an ordinary day. Each gives its message, loses nothing, and the window goes
// on.
#include "tests/journeys/cards.h"
#include "tests/journeys/journey.h"
#include "tests/support/wait.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <thread>

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace {

class FaultJourney : public Journey
{
protected:
    /// The next job works as if nothing had happened.
    void expectScanWorks(int job, const std::string& folder, const std::vector<std::string>& names)
    {
        pressScan();
        waitForFinishedJob(job);
        EXPECT_EQ(namesIn(folder), names);
    }
    void expectWholeCards(const std::string& folder, int sides)
    {
        const std::vector<std::string> names = namesIn(folder);
        ASSERT_EQ(names.size(), static_cast<std::size_t>(sides));
        for (int side = 1; side <= sides; ++side) {
            const std::string file = folder + "/" + names[static_cast<std::size_t>(side - 1)];
            const QImage page(QString::fromStdString(file));
            EXPECT_LT(cards::distance(page, cards::picture(side, 100)), 3) << file;
        }
    }
};

} // namespace

TEST_F(FaultJourney, aReadOnlyFolderIsRefusedBeforePaperMoves)
{
    const std::string documents = Sandbox::home() + "/Documents"; // where a first use writes
    fs::create_directories(documents);
    fs::permissions(documents, fs::perms(0555));
    obeyPermissions();
    loadSheets(1);
    openMainWindow();
    pressScan();
    dismiss(titles::kPathFault);
    EXPECT_THAT(Sandbox::runLog(), HasSubstr("createfolder failed!!"));

    fs::create_directories(documents + "/扫描文件");
    fs::permissions(documents + "/扫描文件", fs::perms(0555));
    pressScan();
    dismiss(titles::kPathFault);
    EXPECT_THAT(Sandbox::runLog(), HasSubstr("do not have writable authority!"));
    EXPECT_THAT(namesIn(dataRoot() + ".virtual-scanner/tray"), ::testing::SizeIs(2));

    fs::permissions(documents + "/扫描文件", fs::perms(0777));
    pressScan();
    waitForFinishedJob();
    EXPECT_THAT(namesIn(documents + "/扫描文件"), ::testing::SizeIs(1)) << "one-sided by default";
    closeByKey();
}

TEST_F(FaultJourney, aDamagedPageEndsTheJobAndTheNextOneWorks)
{
    writeSettings();
    loadSheets(1);
    writeBytes(Sandbox::path("torn.jpg"), "\xFF\xD8\xFF\xE0 not a picture");
    scanner({ "load", Sandbox::path("torn.jpg") });
    openMainWindow();
    pressScan();
    dismiss(titles::kError);
    ASSERT_TRUE(waitForIdle(1));
    expectWholeCards(folder(), 2);
    expectNoLeftovers();
    EXPECT_THAT(Sandbox::runLog(), HasSubstr("nErrorCode = -62"));
    EXPECT_THAT(Sandbox::runLog(), HasSubstr("contents = 页面图像已损坏，无法读取。"));

    scanner({ "unload" });
    loadSheets(1);
    expectScanWorks(
        2, folder(), { "Card-007.jpg", "Card-008.jpg", "Card-009.jpg", "Card-010.jpg" });
    closeByKey();
}

TEST_F(FaultJourney, anEmptyFeederAsksForPaper)
{
    // The message comes before the application knows that its progress is on the screen.
    letOperatorIn();
    setEnvironment("JOURNEY_STALL", "300");
    writeSettings();
    scanner({ "unload" });
    openMainWindow();
    pressScan();
    ASSERT_TRUE(waitForIdle(1));
    std::this_thread::sleep_for(1s); // until it answers again
    dismiss(titles::kNotice);
    EXPECT_THAT(Sandbox::runLog(), HasSubstr("nErrorCode = -40"));
    EXPECT_THAT(Sandbox::runLog(), HasSubstr("扫描仪无纸。请放入纸张后重新扫描。"));
    EXPECT_THAT(namesIn(folder()), IsEmpty());

    loadSheets(1);
    expectScanWorks(2, folder(), { "Card-007.jpg", "Card-008.jpg" });
    closeByKey();
}

TEST_F(FaultJourney, cancelAtOnceAndTwiceAndInTheMiddle)
{
    writeSettings({ { "LogLevel", 1 } });
    loadSheets(8);
    scanner({ "fault", "slow", "--ms", "300" });
    openMainWindow();
    const auto cancelButton = [this](int times) {
        const WindowId progress = display().wait(titles::kScanning);
        ASSERT_NE(progress, 0U);
        display().click(progress, 82, -25, times);
    };

    pressScan();
    // the button comes with the first side
    ASSERT_TRUE(waitUntil(
        [] { return Sandbox::runLog().find("nPage = 1, nState = 1") != std::string::npos; }, 30s));
    cancelButton(2);
    ASSERT_TRUE(waitForIdle(1));
    if (display().find(titles::kFinished) != 0) { // the second press may have hit it
        dismiss(titles::kFinished);
    }
    const std::size_t first = namesIn(folder()).size();
    EXPECT_LT(first, 16U);
    expectNoLeftovers();

    pressScan();
    ASSERT_TRUE(waitUntil([&] { return namesIn(folder()).size() > first + 1; }, 30s));
    cancelButton(1);
    waitForFinishedJob(2);
    const std::size_t second = namesIn(folder()).size();
    EXPECT_LT(second, 16U);
    expectNoLeftovers();
    EXPECT_THAT(lastRecord(), HasSubstr("\n扫描结果: 成功!\n生成的文件：\n/"));
    EXPECT_THAT(lastRecord(), HasSubstr(namesIn(folder()).back() + "\n"));

    scanner({ "fault", "clear" });
    pressScan();
    waitForFinishedJob(3);
    for (const std::string& name : namesIn(folder())) {
        EXPECT_FALSE(QImage(QString::fromStdString(folder() + "/" + name)).isNull()) << name;
    }
    closeByKey();
}
