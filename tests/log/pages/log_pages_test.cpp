// The log settings page: what is stored, what takes effect, and what the inert button leaves alone.
#include "log/itprojectlog.h"
#include "log/logmanagement.h"
#include "tests/support/answer_modal.h"
#include "tests/support/sandbox.h"

#include <QApplication>
#include <QComboBox>
#include <QFileDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>

#include <gmock/gmock.h>
#include <sys/stat.h>

namespace {

struct Page
{
    void press(const char* name) { page.findChild<QPushButton*>(name)->click(); }
    std::string folder()
    {
        return page.findChild<QLineEdit*>("LogFilePathEdit")->text().toStdString();
    }
    /// Chooses a folder in the file dialog, or leaves it; returns what the box after it said.
    QString choose(const std::string& chosen)
    {
        const AnswerModal answer([chosen](QDialog& dialog) {
            auto* files = qobject_cast<QFileDialog*>(&dialog);
            if (files == nullptr) {
                dialog.findChild<QPushButton*>()->click();
                return;
            }
            EXPECT_EQ(Sandbox::home(), files->directory().path().toStdString());
            if (chosen.empty()) {
                dialog.reject();
            } else {
                files->setDirectory(QString::fromStdString(chosen));
                dialog.accept();
            }
        });
        press("SetLogSavePathBth");
        return answer.count() < 2 ? QString() : answer.title() + '|' + answer.text();
    }

    Page() { page.show(); }
    logmanagement page;
    QComboBox& level { *page.findChild<QComboBox*>("comboSetLogLevel") };
};

class LogPage : public ::testing::Test
{
protected:
    LogPage()
    {
        logAsAtFirst();
        writeBytes(dayFile, "a job\n");
    }
    ~LogPage() override { logAsAtFirst(); }
    static void logAsAtFirst()
    {
        IOFLog.setEnabledValue(0);
        IOFLog.GetDefaultSavePath();
    }

    Sandbox sandbox;
    std::string folder = Sandbox::path("job log");
    std::string dayFile = folder + "/2024-3/tarvex-base-pro-2024_3_7.log";
    std::string settings = Sandbox::userFolder() + "/ManagementLog/ManagementLog.ini";
};

} // namespace

TEST_F(LogPage, AChangeTakesEffectIsStoredAndComesBack)
{
    {
        Page first;
        EXPECT_EQ(first.level.currentText(), "关闭日志");
        EXPECT_EQ(first.folder(), Sandbox::home() + "/.ORVA/TarvexBaseUI");
        const QSignalSpy changed(&first.page, &logmanagement::logConfigChanged);
        first.level.setCurrentIndex(1);
        EXPECT_EQ(IOFLog.enabledValue(), 1);
        EXPECT_TRUE(fileExists(settings));
        EXPECT_EQ(first.choose(folder), "日志配置设置|日志路径设置成功!");
        EXPECT_EQ(IOFLog.destination(), folder + "/");
        ASSERT_FALSE(changed.isEmpty());
        EXPECT_EQ(changed.last().at(0).toInt(), 1);
        EXPECT_EQ(changed.last().at(1).toString().toStdString(), folder);
        first.press("deletelog");
        EXPECT_EQ(QApplication::activeModalWidget(), &first.page) << "no box";
    }
    logAsAtFirst();
    Page again;
    EXPECT_EQ(again.level.currentIndex(), 1);
    EXPECT_EQ(again.folder(), folder);
    EXPECT_EQ(IOFLog.enabledValue(), 0) << "looking changes nothing";
    again.page.onSetLogConfig();
    EXPECT_EQ(IOFLog.enabledValue(), 1);
    EXPECT_EQ(IOFLog.destination(), folder + "/");
    again.level.setCurrentIndex(0);
    EXPECT_EQ(IOFLog.enabledValue(), 0);
    EXPECT_EQ(readBytes(dayFile), "a job\n");
}

TEST_F(LogPage, AFolderThatCannotBeWrittenIsRefused)
{
    const std::string closed = Sandbox::path("closed");
    ::mkdir(closed.c_str(), 0555);
    Page page;
    const std::string before = page.folder();
    EXPECT_EQ(page.choose(closed), "日志配置设置|日志路径设置失败!");
    EXPECT_EQ(page.choose({}), "") << "cancelled: no box";
    EXPECT_EQ(page.folder(), before);
}

TEST_F(LogPage, TheViewerOpensOnTheChosenFolder)
{
    Page page;
    page.choose(folder);
    const AnswerModal answer([](QDialog& dialog) { dialog.close(); });
    page.press("button_log_controller");
    EXPECT_EQ(answer.title(), "日志管理模块");
    EXPECT_THAT(Sandbox::runLog(), ::testing::HasSubstr("destLogPath = " + folder + "/2"));
}

TEST_F(LogPage, DamagedSettingsGiveTheFirstState)
{
    for (const std::string& bytes : { std::string("[appValue\n\0LogLevel=1\nxx", 24),
             std::string("[appValue]\nLogLevel=77\n") }) {
        writeBytes(settings, bytes);
        EXPECT_EQ(Page().level.currentIndex(), 0);
    }
}
