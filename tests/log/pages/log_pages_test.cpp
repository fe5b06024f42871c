// The log settings page: what is stored, what takes effect, and what the inert button leaves alone.
#include "log/itprojectlog.h"
#include "log/logcontroller.h"
#include "log/logmanagement.h"
#include "tests/support/answer_modal.h"
#include "tests/support/sandbox.h"
#include "tests/support/screenshot.h"

#include <QApplication>
#include <QComboBox>
#include <QDate>
#include <QFileDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QSettings>
#include <QSignalSpy>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>

namespace {

class LogPage : public ::testing::Test
{
protected:
    LogPage()
    {
        IOFLog.setEnabledValue(0);
        IOFLog.GetDefaultSavePath();
        ::mkdir(folder.c_str(), 0755);
        writeBytes(folder + "/2024-3/tarvex-base-pro-2024_3_7.log", "a job\n");
    }
    ~LogPage() override
    {
        IOFLog.setEnabledValue(0);
        IOFLog.GetDefaultSavePath();
    }
    static QComboBox& level(logmanagement& page)
    {
        return *page.findChild<QComboBox*>(QStringLiteral("comboSetLogLevel"));
    }
    static QString path(logmanagement& page)
    {
        return page.findChild<QLineEdit*>(QStringLiteral("LogFilePathEdit"))->text();
    }
    static void press(logmanagement& page, const char* name)
    {
        page.findChild<QPushButton*>(QLatin1String(name))->click();
    }
    /// Chooses a folder in the file dialog; returns what the box after it said.
    QString choose(logmanagement& page, const std::string& chosen)
    {
        const AnswerModal answer([chosen](QDialog& dialog) {
            if (auto* files = qobject_cast<QFileDialog*>(&dialog)) {
                EXPECT_EQ(QStringLiteral("选择保存路径"), files->windowTitle());
                EXPECT_EQ(QStringLiteral("取消"), files->labelText(QFileDialog::Reject));
                EXPECT_EQ(Sandbox::home(), files->directory().path().toStdString());
                if (chosen.empty()) {
                    dialog.reject();
                    return;
                }
                files->setDirectory(QString::fromStdString(chosen));
                dialog.accept();
                return;
            }
            dialog.findChild<QPushButton*>()->click();
        });
        press(page, "SetLogSavePathBth");
        return answer.count() < 2 ? QString() : answer.title() + QLatin1Char('|') + answer.text();
    }
    static std::string settingsFile()
    {
        return Sandbox::userFolder() + "/ManagementLog/ManagementLog.ini";
    }

    Sandbox sandbox;
    std::string folder = Sandbox::path("job log");
};

TEST_F(LogPage, starts_with_the_log_off_in_its_own_folder)
{
    logmanagement page;
    page.show();
    saveScreenshot(page, QStringLiteral("logmanagement"));
    EXPECT_EQ(QStringLiteral("关闭日志"), level(page).currentText());
    EXPECT_EQ(Sandbox::home() + "/.ORVA/TarvexBaseUI", path(page).toStdString());
    EXPECT_EQ(0, page.SetOutLogLevel());
}

TEST_F(LogPage, a_change_takes_effect_is_stored_and_comes_back)
{
    {
        logmanagement page;
        page.show();
        QSignalSpy changed(&page, &logmanagement::logConfigChanged);
        level(page).setCurrentIndex(1);
        EXPECT_EQ(1, IOFLog.enabledValue());
        EXPECT_EQ(QStringLiteral("日志配置设置|日志路径设置成功!"), choose(page, folder));
        EXPECT_EQ(folder + "/", IOFLog.destination());
        ASSERT_FALSE(changed.isEmpty());
        EXPECT_EQ(1, changed.last().at(0).toInt());
        EXPECT_EQ(folder, changed.last().at(1).toString().toStdString());
        page.close();
    }
    EXPECT_TRUE(fileExists(settingsFile()));
    IOFLog.setEnabledValue(0);
    IOFLog.GetDefaultSavePath();
    const std::string before = IOFLog.destination();
    logmanagement again;
    EXPECT_EQ(1, level(again).currentIndex());
    EXPECT_EQ(folder, path(again).toStdString());
    EXPECT_EQ(0, IOFLog.enabledValue()); // looking changes nothing
    EXPECT_EQ(before, IOFLog.destination());
    again.onSetLogConfig();
    EXPECT_EQ(1, IOFLog.enabledValue());
    EXPECT_EQ(folder + "/", IOFLog.destination());
    level(again).setCurrentIndex(0);
    EXPECT_EQ(0, IOFLog.enabledValue());
    EXPECT_TRUE(fileExists(folder + "/2024-3/tarvex-base-pro-2024_3_7.log"));
}

TEST_F(LogPage, a_folder_that_cannot_be_written_is_refused)
{
    const std::string closed = Sandbox::path("closed");
    ::mkdir(closed.c_str(), 0555);
    logmanagement page;
    page.show();
    const QString before = path(page);
    EXPECT_EQ(QStringLiteral("日志配置设置|日志路径设置失败!"), choose(page, closed));
    EXPECT_EQ(before, path(page));
    EXPECT_EQ(QString(), choose(page, std::string())); // cancelled: no box
    EXPECT_EQ(before, path(page));
}

TEST_F(LogPage, the_delete_button_leaves_everything)
{
    logmanagement page;
    page.show();
    choose(page, folder);
    press(page, "deletelog");
    EXPECT_EQ(&page, QApplication::activeModalWidget()); // no box
    EXPECT_EQ("a job\n", readBytes(folder + "/2024-3/tarvex-base-pro-2024_3_7.log"));
}

TEST_F(LogPage, the_viewer_opens_on_the_chosen_folder)
{
    logmanagement page;
    page.show();
    choose(page, folder);
    QString opened;
    const AnswerModal answer([&](QDialog& dialog) {
        opened = dialog.windowTitle();
        dialog.close();
    });
    press(page, "button_log_controller");
    EXPECT_EQ(QStringLiteral("日志管理模块"), opened);
    EXPECT_THAT(Sandbox::runLog(),
        ::testing::HasSubstr(
            "destLogPath = " + folder + "/" + std::to_string(QDate::currentDate().year())));
}

TEST_F(LogPage, damaged_settings_give_the_first_state)
{
    writeBytes(settingsFile(), std::string("[appValue\n\0LogLevel=1\nxx", 24));
    logmanagement damaged;
    EXPECT_EQ(0, level(damaged).currentIndex());
    writeBytes(settingsFile(), "[appValue]\nLogLevel=77\n");
    logmanagement odd;
    EXPECT_EQ(0, level(odd).currentIndex());
}

} // namespace
