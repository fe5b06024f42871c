// What makes one workstation serve many: templates, the scanner's own times, the administrator and
// the job log. By keys where there are keys, else by clicks.
#include "app/install_paths.h"
#include "tests/journeys/journey.h"
#include "tests/support/wait.h"

#include <gmock/gmock.h>

#include <ctime>
#include <filesystem>

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using ::testing::HasSubstr;
using ::testing::Not;

namespace {

constexpr char kTemplates[] = "模板保存和读取   Orvascan Virtual Scanner";
constexpr char kSleepTimes[] = "设置休眠";
constexpr char kPrefeed[] = "设置预进纸";
constexpr char kLogin[] = "日志管理_登录";
constexpr char kPassword[] = "修改密码";
constexpr char kLogPage[] = "日志管理";
constexpr char kViewer[] = "日志管理模块";

/// Places in the main window, from its upper left corner.
struct Place
{
    const char* page; ///< key of its page
    int x;
    int y;
};
constexpr Place kLoginButton { "ctrl+4", 396, 187 };
constexpr Place kLogoutButton { "ctrl+4", 602, 187 };
constexpr Place kPasswordButton { "ctrl+4", 396, 249 };
constexpr Place kLogPageButton { "ctrl+4", 602, 249 };
constexpr Place kSleepButton { "ctrl+5", 91, 402 };
constexpr Place kPrefeedButton { "ctrl+5", 207, 402 };
constexpr Place kViewerButton { "ctrl+5", 907, 131 };

class OfficeJourney : public Journey
{
protected:
    /// Clicks and waits for the window that this opens.
    WindowId open(const Place& place, const std::string& title)
    {
        display().key(mainWindow(), place.page);
        display().click(mainWindow(), place.x, place.y);
        const WindowId window = display().wait(title);
        EXPECT_NE(window, 0U) << title;
        return window;
    }
    WindowId openTemplates()
    {
        display().key(mainWindow(), "ctrl+t");
        const WindowId window = display().wait(kTemplates);
        EXPECT_NE(window, 0U);
        return window;
    }
    void keys(WindowId window, const std::vector<std::string>& names)
    {
        for (const std::string& name : names) {
            display().key(window, name);
        }
    }
    /// Answers a question with a key, then waits for what must have happened.
    template <typename Condition>
    void answer(const std::string& title, const std::string& key, Condition happened)
    {
        const WindowId box = display().wait(title);
        ASSERT_NE(box, 0U) << title;
        picture();
        display().key(box, key);
        ASSERT_TRUE(waitUntil(happened, 10s)) << title;
    }
    /// Of what stands on the display now, for people.
    void picture()
    {
        const auto* test = ::testing::UnitTest::GetInstance()->current_test_info();
        display().screenshot(std::string("office-") + test->name() + std::to_string(++m_pictures));
    }
    static std::string templateFile()
    {
        return settingsFile().substr(0, settingsFile().size() - 4) + ".conf";
    }
    static bool holds(const std::string& file, const std::string& text)
    {
        return readBytes(file).find(text) != std::string::npos;
    }
    bool logged(const std::string& text) { return holds(Sandbox::runLogFile(), text); }
    std::string deviceStatus()
    {
        return run(installed("virtual-scanner", { "status", "--json" })).output;
    }
    void logIn(const std::string& password, bool isRight)
    {
        const WindowId dialog = open(kLoginButton, kLogin);
        display().type(dialog, password);
        picture();
        display().key(dialog, "Return");
        if (!isRight) {
            const WindowId box = display().wait("错误");
            ASSERT_NE(box, 0U);
            picture();
            display().key(box, "Return");
            ASSERT_TRUE(display().waitGone("错误"));
            display().key(dialog, "Escape");
        }
        ASSERT_TRUE(display().waitGone(kLogin));
    }
    /// What the log viewer shows.
    std::string shown(WindowId viewer)
    {
        display().click(viewer, 380, 250);
        keys(viewer, { "ctrl+a", "ctrl+c" });
        return display().clipboard();
    }

private:
    int m_pictures = 0;
};

} // namespace

TEST_F(OfficeJourney, templatesAreAddedAppliedAndDeleted)
{
    fs::create_directories(folder());
    writeSettings();
    openMainWindow();
    const std::string file = templateFile();

    const WindowId first = openTemplates(); // without templates: for saving
    display().type(first, "Invoice");
    picture();
    display().key(first, "Return");
    answer("模板添加", "Escape", [] { return true; });
    ASSERT_TRUE(display().waitGone("模板添加"));
    EXPECT_FALSE(fileExists(file)) << "the question was not answered with yes";
    display().key(first, "Return");
    answer("模板添加", "Return", [&] { return holds(file, "[Invoice]\n"); });
    picture();
    dismiss("模板添加");
    const std::string saved = readBytes(file);
    EXPECT_THAT(saved, HasSubstr("scandpi=100\n"));
    display().key(first, "Return"); // the same name once more
    picture();
    dismiss("模板添加");
    EXPECT_EQ(readBytes(file), saved);
    display().key(first, "Escape");
    ASSERT_TRUE(display().waitGone(kTemplates));

    writeBytes(file,
        saved + "\n[hand]\nscansource=ADF单面\nscancolor=灰度\nscandpi=300\nscanpaper=A4\n"
            + "scanpicformat=jpg\nIsMultipage=true\nTimeNameFileHead=../evil\nsavepath=" + folder()
            + "\nFileNumberLength=4\nQueueNameFileStartBit=0042\nImageRotAngle=99\n");
    const WindowId second = openTemplates();
    keys(second, { "End", "Return" });
    answer("刷 新", "Return", [&] { return logged("读取模板信息保存开始"); });
    picture();
    dismiss("刷 新");

    display().key(second, "Escape");
    ASSERT_TRUE(display().waitGone(kTemplates));
    display().key(mainWindow(), "ctrl+1");
    picture();

    const WindowId third = openTemplates();
    keys(third, { "space", "Tab" }); // chooses the first
    picture();
    display().key(third, "space");
    answer("模板删除", "Return", [] { return true; }); // the safe answer is the one of Return
    ASSERT_TRUE(display().waitGone("模板删除"));
    EXPECT_TRUE(holds(file, "[Invoice]\n"));
    display().key(third, "space");
    const WindowId question = display().wait("模板删除");
    keys(question, { "Tab", "Return" });
    ASSERT_TRUE(waitUntil([&] { return !holds(file, "[Invoice]"); }, 10s));
    EXPECT_TRUE(holds(file, "[hand]\n"));
    picture();
    dismiss("模板删除");
    display().key(third, "Escape");
    ASSERT_TRUE(display().waitGone(kTemplates));
    closeByKey();

    EXPECT_EQ(setting("ScanSource").toInt(), 1);
    EXPECT_EQ(setting("ScanColorMode").toInt(), 1);
    EXPECT_EQ(setting("ScanDPI").toInt(), 5);
    EXPECT_EQ(setting("FileStartBit").toString(), "0042");
    EXPECT_EQ(setting("IsMultiPage").toInt(), 0) << "a JPEG file has one page";
    EXPECT_EQ(setting("FileNameHead").toString(), "") << "no way out of the folder";
}

TEST_F(OfficeJourney, theScannersTimesAreChangedAndKept)
{
    writeSettings();
    openMainWindow();
    const WindowId sleep = open(kSleepButton, kSleepTimes);
    keys(sleep, { "Tab", "ctrl+a" });
    display().type(sleep, "30");
    keys(sleep, { "Tab", "Tab", "ctrl+a" });
    display().type(sleep, "3\t"); // refused: becomes 2 from above
    picture();
    display().key(sleep, "Return");
    const WindowId told = display().wait("设置扫描仪时间");
    ASSERT_NE(told, 0U);
    picture();
    dismiss("设置扫描仪时间");
    ASSERT_TRUE(display().waitGone(kSleepTimes));
    EXPECT_TRUE(logged("sleepTime = 30, shutdownTime = 2"));
    EXPECT_THAT(deviceStatus(), HasSubstr("\"sleepMinutes\": 30, \"autoOffHours\": 2,"));

    const WindowId feed = open(kPrefeedButton, kPrefeed);
    keys(feed, { "Home", "Right" }); // 0.6 on the slider
    picture();
    display().key(feed, "Return");
    dismiss("设置预进纸功能");
    ASSERT_TRUE(display().waitGone(kPrefeed));
    EXPECT_THAT(deviceStatus(), HasSubstr("\"prefeed\": true, \"prefeedSeconds\": 0.6"));
    closeByKey();

    openMainWindow();
    const WindowId again = open(kSleepButton, kSleepTimes);
    display().key(again, "Return"); // as the device has told them
    dismiss("设置扫描仪时间");
    EXPECT_TRUE(logged("sleepTime = 30, shutdownTime = 2"));
    closeByKey();
}

TEST_F(OfficeJourney, theAdministratorLogsInAndShowsTheLogOfAJob)
{
    writeSettings();
    loadSheets(1);
    openMainWindow();
    logIn("wrong-word", false);
    EXPECT_EQ(readBytes(install_paths::kAccountFile), "671c486fced6ce0f02bef4a6dc0ed6ca");
    logIn("572918", true);
    const WindowId change = open(kPasswordButton, kPassword);
    display().type(change, "572918\tQuiet-Fox7\tQuiet-Fox7");
    picture();
    display().key(change, "Return");
    const WindowId changed = display().wait("正确");
    ASSERT_NE(changed, 0U);
    picture();
    dismiss("正确");
    ASSERT_TRUE(display().waitGone(kPassword));
    // printf Quiet-Fox7 | md5sum
    EXPECT_EQ(readBytes(install_paths::kAccountFile), "03a9023f11e35498db35313fac46547e");
    display().click(mainWindow(), kLogoutButton.x, kLogoutButton.y);
    logIn("572918", false);
    logIn("Quiet-Fox7", true);

    const WindowId page = open(kLogPageButton, kLogPage);
    display().key(page, "Down"); // 开启日志
    picture();
    display().key(page, "Escape");
    ASSERT_TRUE(display().waitGone(kLogPage));
    EXPECT_TRUE(holds(Sandbox::userFolder() + "/ManagementLog/ManagementLog.ini", "LogLevel=1"));
    pressScan();
    waitForFinishedJob();

    const std::time_t now = std::time(nullptr);
    const std::tm today = *std::gmtime(&now);
    // a year before, since the year stands first in the date field
    const bool leapDay = today.tm_mon == 1 && today.tm_mday == 29;
    const std::string year = std::to_string(today.tm_year + 1899);
    const std::string month = std::to_string(today.tm_mon + 1);
    const std::string day = std::to_string(leapDay ? 28 : today.tm_mday);
    writeBytes(Sandbox::home() + "/.ORVA/TarvexBaseUI/" + year + "-" + month + "/tarvex-base-pro-"
            + year + "_" + month + "_" + day + ".log",
        "an old job\n");

    const WindowId viewer = open(kViewerButton, kViewer);
    const std::string block = shown(viewer);
    picture();
    EXPECT_THAT(block, HasSubstr(folder() + "/Card-007.jpg"));
    EXPECT_THAT(block, HasSubstr(folder() + "/Card-008.jpg"));
    const auto yearBack = [&] {
        display().click(viewer, 143, 36);
        display().key(viewer, "Down");
    };
    yearBack();
    EXPECT_EQ(shown(viewer), "an old job\n");
    yearBack();
    EXPECT_EQ(shown(viewer), "未找到所选日期日志！");
    picture();
    display().key(viewer, "Escape");
    ASSERT_TRUE(display().waitGone(kViewer));
    closeByKey();

    EXPECT_EQ(setting("LogLevel").toInt(), 1) << "the window's own choice has followed";
    for (const char* secret : { "572918", "Quiet-Fox7", "wrong-word" }) {
        EXPECT_THAT(application().output(), Not(HasSubstr(secret)));
        EXPECT_THAT(Sandbox::runLog(), Not(HasSubstr(secret)));
    }
}
