// A job from the click to its record: progress, files, errors, cancel, and what a library leaves
// unsaid.
#include "dialogs/statusdialog.h"
#include "dialogs/statusmesbox.h"
#include "log/itprojectlog.h"
#include "tests/mainwindow/window_fixture.h"
#include "tests/support/answer_modal.h"

#include <QApplication>
#include <QComboBox>
#include <QDate>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>

#include <gmock/gmock.h>

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

namespace {

template <class Window>
Window* shown()
{
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        auto* found = qobject_cast<Window*>(widget);
        if (found != nullptr && found->isVisible()) {
            return found;
        }
    }
    return nullptr;
}

} // namespace

class Scan : public WindowTest
{
protected:
    void SetUp() override
    {
        choose();
        writeBytes(Sandbox::path("joblog/keep"), "");
        IOFLog.setEnabledValue(1);
        IOFLog.GetDestSavePath(Sandbox::path("joblog").c_str());
        m_status = std::make_unique<Heard>(window(), &MainWindow::scanStatusOccur);
        m_errors = std::make_unique<Heard>(window(), &MainWindow::scanStatusError);
        m_records = std::make_unique<Heard>(window(), &MainWindow::final_signal_iof_batch);
        ASSERT_TRUE(waitCount("GetButtonStatus", 1));
    }
    void TearDown() override { IOFLog.setEnabledValue(0); }

    /// (isEnd, scanned, saved) of every report, as text.
    std::vector<std::string> reports() const
    {
        std::vector<std::string> all;
        for (const std::vector<int>& report : m_status->all) {
            all.push_back(std::to_string(report[0]) + ' ' + std::to_string(report[1]) + ' '
                + std::to_string(report[2]));
        }
        return all;
    }
    std::string jobLog() const
    {
        const QDate today = QDate::currentDate();
        return readBytes(Sandbox::path("joblog") + today.toString("/yyyy-M/").toStdString()
            + "tarvex-base-pro-" + today.toString("yyyy_M_d").toStdString() + ".log");
    }

    std::unique_ptr<Heard> m_status;
    std::unique_ptr<Heard> m_errors;
    std::unique_ptr<Heard> m_records;
};

TEST_F(Scan, RunsFromTheClickToTheRecord)
{
    select("scanSourceComBo", "ADF双面");
    fake.script("job|clear\nstep|state|1|1|\nstep|state|1|2|\nstep|state|2|1|/out/a.jpg\n"
                "step|state|1|3|\nstep|state|1|4|\nstep|state|2|2|/out/b.jpg\nstep|wait\n");
    const std::size_t before = fake.calls().size();
    click("scanMainBtn");
    EXPECT_FALSE(control<QPushButton>("scanMainBtn")->isEnabled());
    EXPECT_FALSE(control<QPushButton>("exitMainBtn")->isEnabled());
    ASSERT_TRUE(QTest::qWaitFor([this] { return m_status->size() == 7; }));
    EXPECT_NE(shown<StatusDialog>(), nullptr);
    fake.release();
    ASSERT_TRUE(waitIdle());

    EXPECT_THAT(reports(),
        ElementsAre("-1 -1 -1", "0 1 0", "0 2 0", "0 2 1", "0 3 1", "0 4 1", "0 4 2", "1 4 2"));
    EXPECT_EQ(m_errors->size(), 0);
    EXPECT_EQ(m_records->size(), 1);
    const auto calls = callsSince(before);
    EXPECT_THAT(std::vector<std::string>(calls.begin(), calls.begin() + 2),
        ElementsAre("SetStateCallback", "SetErrorCallback"));
    EXPECT_THAT(std::vector<std::string>(calls.end() - 2, calls.end()),
        ElementsAre("Scan", "ClearTmpData"));
    for (const char* name :
        { "scanMainBtn", "preViewBtn", "templateBtn", "exitMainBtn", "button_clear_tmpdata" }) {
        EXPECT_TRUE(control<QPushButton>(name)->isEnabled()) << name;
    }
    // two sides a sheet; both files; success
    EXPECT_THAT(jobLog(),
        HasSubstr("作业页数: 2\n扫描结果: 成功!\n生成的文件：\n/out/a.jpg\n/out/b.jpg\n"));
    EXPECT_TRUE(logHas("# MainWindow::doScanner # scan end return 0"));
    EXPECT_TRUE(logHas("# MainWindow::onEnableScanBtn # "));
}

TEST_F(Scan, ReachesTheLibraryAtOnceWhenTheMonitorIsIdle)
{
    for (int i = 1; i <= 5; ++i) {
        QTest::qWait(20); // somewhere in the monitor's sleep
        QElapsedTimer sinceClick;
        sinceClick.start();
        click("scanMainBtn");
        while (fake.count("Scan") < i && sinceClick.elapsed() < 2000) {
            QThread::usleep(200);
        }
        EXPECT_LE(sinceClick.elapsed(), kClickToScanMs) << "job " << i;
        ASSERT_TRUE(waitIdle());
    }
}

TEST_F(Scan, ErrorEndsWithOneMessageAndAFailedRecord)
{
    fake.script("job|clear\nstep|state|1|1|\nstep|state|2|1|/out/a.jpg\nstep|error|-41\n"
                "step|state|2|2|/out/late.jpg\n");
    click("scanMainBtn");
    ASSERT_TRUE(waitIdle());
    ASSERT_EQ(m_errors->size(), 1);
    EXPECT_EQ(m_errors->all.front().front(), -41);
    EXPECT_THAT(reports(), ElementsAre("-1 -1 -1", "0 1 0", "0 1 1"));
    EXPECT_EQ(m_records->size(), 1);
    EXPECT_THAT(jobLog(), HasSubstr("扫描结果: 失败\n生成的文件：\n/out/a.jpg\n/out/late.jpg\n"));
    EXPECT_NE(shown<StatusMessageBox>(), nullptr);
    EXPECT_EQ(shown<StatusDialog>(), nullptr);
    // the window is usable: the next job runs although the box still stands there
    fake.script("job|clear\nstep|state|1|1|\n");
    click("scanMainBtn");
    ASSERT_TRUE(waitIdle());
    EXPECT_EQ(reports().back(), "1 1 0");
}

TEST_F(Scan, CancelReachesTheLibraryAndTheJobEndsNormally)
{
    fake.script("job|clear\nstep|state|1|1|\nstep|wait\nstep|state|1|2|\n");
    click("scanMainBtn");
    ASSERT_TRUE(QTest::qWaitFor([this] { return m_status->size() == 2; }));
    auto* dialog = shown<StatusDialog>();
    ASSERT_NE(dialog, nullptr);
    QTest::mouseClick(
        dialog->findChild<QPushButton*>(QStringLiteral("pushButton")), Qt::LeftButton);
    ASSERT_TRUE(waitIdle());
    EXPECT_EQ(fake.count("CancelScan"), 1);
    EXPECT_EQ(reports().back(), "1 1 0");
    EXPECT_EQ(m_records->size(), 1);
    EXPECT_EQ(m_errors->size(), 0);
}

TEST_F(Scan, WhatTheLibraryLeavesUnsaidIsClosedByTheWorker)
{
    // no callback at all and a failure code: told, recorded, buttons and monitor back
    fake.script("job|clear\njob|no-end\nresult|Scan|-20|1\n");
    click("scanMainBtn");
    ASSERT_TRUE(waitIdle());
    ASSERT_EQ(m_errors->size(), 1);
    EXPECT_EQ(m_errors->all.front().front(), -20);
    EXPECT_EQ(m_records->size(), 1);
    EXPECT_THAT(jobLog(), HasSubstr("扫描结果: 失败"));
    const int polls = fake.count("GetButtonStatus");
    EXPECT_TRUE(waitCount("GetButtonStatus", polls + 1));

    // the end reported twice counts once
    fake.script("job|clear\njob|end-twice\nstep|state|1|1|\n");
    click("scanMainBtn");
    ASSERT_TRUE(waitIdle());
    EXPECT_EQ(m_records->size(), 2);
    EXPECT_EQ(m_errors->size(), 1);
}

TEST_F(Scan, CallbackWithoutAWindowIsRefused)
{
    EXPECT_EQ(closeWindow(), 0);
    EXPECT_EQ(MainWindow::SdkScanErrorCodeCallBack(-41), -1);
    EXPECT_EQ(MainWindow::SdkScanPreviewErrorCodeCallBack(-41), -1);
    MainWindow::SdkScanCallBack(2, 1, "/out/a.jpg");
    EXPECT_TRUE(logHas("gmainWindow = NULL"));
}

TEST_F(Scan, RefusedSettingsLeaveTheWindowReady)
{
    fake.script("result|SetScanSource|-16\n");
    click("scanMainBtn");
    EXPECT_TRUE(logHas("[func:onStartScan]扫描参数设置失败"));
    EXPECT_EQ(fake.count("Scan"), 0);
    EXPECT_TRUE(control<QPushButton>("scanMainBtn")->isEnabled());
    const int polls = fake.count("GetButtonStatus");
    EXPECT_TRUE(waitCount("GetButtonStatus", polls + 1));
}

struct SerialCase
{
    const char* name;
    const char* start;
    int digits;
    const char* steps;
    const char* next;
};

[[maybe_unused]] static void PrintTo(const SerialCase& c, std::ostream* out)
{
    *out << c.name;
}

class ScanSerial : public Scan, public ::testing::WithParamInterface<SerialCase>
{
};

TEST_P(ScanSerial, StartShowsTheNextFreeNumber)
{
    const SerialCase& c = GetParam();
    click("serialNameRadio");
    control<QSpinBox>("nameNoLenSpinBox")->setValue(c.digits);
    control<QLineEdit>("nameNoSerialEdit")->setText(QString::fromUtf8(c.start));
    fake.script(std::string("job|clear\n") + c.steps);
    click("scanMainBtn");
    ASSERT_TRUE(waitIdle());
    EXPECT_EQ(control<QLineEdit>("nameNoSerialEdit")->text(), QString::fromUtf8(c.next));
}

INSTANTIATE_TEST_SUITE_P(AfterAJob, ScanSerial,
    ::testing::Values(
        SerialCase { "saved", "7", 3, "step|state|2|1|/a\nstep|state|2|2|/b\n", "009" },
        SerialCase { "nameless_file_counts", "007", 3, "step|state|2|1|\n", "008" },
        SerialCase { "nothing_saved", "007", 3, "step|state|1|1|\n", "007" },
        SerialCase { "failed_job_keeps_its_numbers", "007", 3,
            "step|state|2|1|/a\nstep|error|-41\nstep|state|2|2|/b\n", "009" },
        SerialCase { "overflow_grows", "999", 3, "step|state|2|1|/a\n", "1000" }),
    [](const auto& tested) { return std::string(tested.param.name); });

TEST_F(Scan, SerialStartCountsOnOverSeveralJobs)
{
    click("serialNameRadio");
    control<QSpinBox>("nameNoLenSpinBox")->setValue(3);
    control<QLineEdit>("nameNoSerialEdit")->setText(QStringLiteral("001"));
    for (const char* next : { "003", "005" }) {
        fake.script("job|clear\nstep|state|2|1|/a\nstep|state|2|2|/b\n");
        click("scanMainBtn");
        ASSERT_TRUE(waitIdle());
        EXPECT_EQ(control<QLineEdit>("nameNoSerialEdit")->text(), QString::fromUtf8(next));
    }
    EXPECT_EQ(std::string(fake.lastFileParam().szIndex), "003");
}
