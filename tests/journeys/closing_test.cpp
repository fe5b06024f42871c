// Every way out ends with status 0 within five seconds and keeps what is finished.
#include "tests/journeys/cards.h"
#include "tests/journeys/journey.h"
#include "tests/support/wait.h"

#include <gmock/gmock.h>

using namespace std::chrono_literals;

namespace {

class ClosingJourney : public Journey
{
};

} // namespace

TEST_F(ClosingJourney, deviceDialogByItsTitleBar)
{
    start();
    const WindowId devices = display().wait(titles::kDevices, 60s);
    ASSERT_NE(devices, 0U);
    display().pressCloseButton(devices);
    expectCleanEnd();
}

TEST_F(ClosingJourney, mainWindowByItsButtonWritesTheSettings)
{
    openMainWindow();
    ASSERT_FALSE(fileExists(settingsFile())) << "first use";
    display().click(mainWindow(), -50, -30); // 退出
    expectCleanEnd();
    EXPECT_EQ(setting("firstStart").toInt(), 1);
    EXPECT_EQ(setting("ScanDeviceName").toString(), QString(kVirtualScanner));
    EXPECT_TRUE(setting("IsTimeSave").toBool()) << "factory values";
}

TEST_F(ClosingJourney, titleBarWhileAScanRunsKeepsFinishedFiles)
{
    writeSettings();
    loadSheets(4);
    scanner({ "fault", "slow", "--ms", "700" });
    openMainWindow();
    pressScan();
    ASSERT_TRUE(waitUntil([this] { return fileExists(folder() + "/Card-008.jpg"); }, 30s));
    ASSERT_NE(display().wait(titles::kScanning), 0U) << "the progress is in front";
    display().pressCloseButton(mainWindow());
    expectCleanEnd();
    expectNoLeftovers();
    int side = 0;
    for (const std::string& name : namesIn(folder())) {
        const QImage page(QString::fromStdString(folder() + "/" + name));
        EXPECT_LT(cards::distance(page, cards::picture(++side, 100)), 3) << name;
    }
    EXPECT_GE(side, 2);
    EXPECT_LT(side, 8);
    EXPECT_EQ(setting("FileStartBit").toInt(), 7 + side) << "none of them is written over";
}

TEST_F(ClosingJourney, titleBarWhileAnErrorIsShown)
{
    writeSettings();
    scanner({ "unload" });
    openMainWindow();
    pressScan();
    ASSERT_NE(display().wait(titles::kNotice), 0U);
    display().pressCloseButton(mainWindow());
    expectCleanEnd();
    EXPECT_EQ(display().find(titles::kNotice), 0U);
}
