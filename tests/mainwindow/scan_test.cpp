// A job from the click to its record: progress, files, errors, cancel, and what a library leaves
// unsaid.
#include "dialogs/statusdialog.h"
#include "dialogs/statusmesbox.h"
#include "tests/mainwindow/window_fixture.h"

#include <QPushButton>

#include <gmock/gmock.h>

using ::testing::ElementsAre;
using ::testing::HasSubstr;

class Scan : public WindowTest
{
protected:
    void SetUp() override
    {
        choose();
        logJobs();
        m_status = std::make_unique<Heard>(window(), &MainWindow::scanStatusOccur);
        m_errors = std::make_unique<Heard>(window(), &MainWindow::scanStatusError);
        m_records = std::make_unique<Heard>(window(), &MainWindow::final_signal_iof_batch);
        ASSERT_TRUE(waitCount("GetButtonStatus", 1));
    }
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
    void nameBySerial(const char* start)
    {
        set({ { "serialNameRadio", "true" }, { "nameNoLenSpinBox", "3" },
            { "nameNoSerialEdit", start } });
    }

    std::unique_ptr<Heard> m_status;
    std::unique_ptr<Heard> m_errors;
    std::unique_ptr<Heard> m_records;
};

TEST_F(Scan, RunsFromTheClickToTheRecord)
{
    const char* const buttons[] = { "scanMainBtn", "preViewBtn", "templateBtn", "exitMainBtn",
        "button_clear_tmpdata" };
    select("scanSourceComBo", "ADF双面");
    const std::size_t before = fake.calls().size();
    startJob("step|state|1|1|\nstep|state|1|2|\nstep|state|2|1|/out/a.jpg\n"
             "step|state|1|3|\nstep|state|1|4|\nstep|state|1|5|\nstep|state|2|2|/out/"
             "b.jpg\nstep|wait\n");
    ASSERT_TRUE(QTest::qWaitFor([this] { return m_status->size() == 8; }));
    for (const char* name : buttons) {
        EXPECT_FALSE(enabled(name)) << name;
    }
    window().onStartScan(); // no second job at the same time
    EXPECT_NE(shown<StatusDialog>(), nullptr);
    fake.release();
    ASSERT_TRUE(waitIdle());

    EXPECT_THAT(reports(),
        ElementsAre(
            "-1 -1 -1", "0 1 0", "0 2 0", "0 2 1", "0 3 1", "0 4 1", "0 5 1", "0 5 2", "1 5 2"));
    EXPECT_EQ(m_errors->size(), 0);
    EXPECT_EQ(m_records->size(), 1);
    const auto calls = callsSince(before);
    EXPECT_THAT(std::vector<std::string>(calls.begin(), calls.begin() + 2),
        ElementsAre("SetStateCallback", "SetErrorCallback"));
    EXPECT_THAT(std::vector<std::string>(calls.end() - 2, calls.end()),
        ElementsAre("Scan", "ClearTmpData"));
    for (const char* name : buttons) {
        EXPECT_TRUE(enabled(name)) << name;
    }
    // two sides a sheet, the fifth without its back; both files; success
    EXPECT_THAT(jobLog(),
        HasSubstr("作业页数: 2\n扫描结果: 成功!\n生成的文件：\n/out/a.jpg\n/out/b.jpg\n"));
    EXPECT_TRUE(logHas("# MainWindow::doScanner # scan end return 0"));
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
    runJob("step|state|1|1|\nstep|state|2|1|/out/a.jpg\nstep|error|-41\n"
           "step|state|2|2|/out/late.jpg\n");
    ASSERT_EQ(m_errors->size(), 1);
    EXPECT_EQ(m_errors->all.front().front(), -41);
    EXPECT_THAT(reports(), ElementsAre("-1 -1 -1", "0 1 0", "0 1 1"));
    EXPECT_EQ(m_records->size(), 1);
    EXPECT_THAT(jobLog(), HasSubstr("扫描结果: 失败\n生成的文件：\n/out/a.jpg\n/out/late.jpg\n"));
    EXPECT_NE(shown<StatusMessageBox>(), nullptr);
    EXPECT_EQ(shown<StatusDialog>(), nullptr);
    // the window is usable: the next job runs although the box still stands there
    runJob("step|state|1|1|\n");
    EXPECT_EQ(reports().back(), "1 1 0");
}

TEST_F(Scan, CancelReachesTheLibraryAndTheJobEndsNormally)
{
    startJob("step|state|1|1|\nstep|wait\nstep|state|1|2|\n");
    ASSERT_TRUE(QTest::qWaitFor([this] { return m_status->size() == 2; }));
    auto* dialog = shown<StatusDialog>();
    ASSERT_NE(dialog, nullptr);
    QTest::mouseClick(dialog->findChild<QPushButton*>(), Qt::LeftButton);
    ASSERT_TRUE(waitIdle());
    EXPECT_EQ(fake.count("CancelScan"), 1);
    EXPECT_EQ(reports().back(), "1 1 0");
    EXPECT_EQ(m_records->size(), 1);
    EXPECT_EQ(m_errors->size(), 0);
}

TEST_F(Scan, WhatTheLibraryLeavesUnsaidIsClosedByTheWorker)
{
    // no callback at all and a failure code: told, recorded, buttons and monitor back
    fake.script("result|Scan|-20|1\n");
    runJob("job|no-end\n");
    ASSERT_EQ(m_errors->size(), 1);
    EXPECT_EQ(m_errors->all.front().front(), -20);
    EXPECT_EQ(m_records->size(), 1);
    EXPECT_THAT(jobLog(), HasSubstr("扫描结果: 失败"));
    EXPECT_TRUE(polls());

    // the end reported twice counts once
    runJob("job|end-twice\nstep|state|1|1|\n");
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

TEST_F(Scan, TheSerialStartShowsTheNextFreeNumber)
{
    struct Case
    {
        const char* name;
        const char* start;
        const char* steps;
        const char* next;
    };
    const Case cases[] = {
        { "saved", "7", "step|state|2|1|/a\nstep|state|2|2|/b\n", "009" },
        { "the next job counts on", "009", "step|state|2|1|/a\nstep|state|2|2|/b\n", "011" },
        { "a nameless file counts", "007", "step|state|2|1|\n", "008" },
        { "nothing saved", "007", "step|state|1|1|\n", "007" },
        { "a failed job keeps its numbers", "007",
            "step|state|2|1|/a\nstep|error|-41\nstep|state|2|2|/b\n", "009" },
        { "grows", "999", "step|state|2|1|/a\n", "1000" },
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        nameBySerial(c.start);
        runJob(c.steps);
        EXPECT_EQ(text("nameNoSerialEdit"), c.next);
    }
    expect({ { "nameNoLenSpinBox", "4" }, { "nameHintLabel", "序号已进位，序号长度改为4" } });
    ASSERT_EQ(closeWindow(), 0);
    choose();
    EXPECT_EQ(text("nameNoSerialEdit"), "1000") << "or 100 would come again";
}

TEST_F(Scan, AStartThatIsChangedMeanwhileStaysAndUsedUpNumbersAreTold)
{
    nameBySerial("007");
    startJob("step|state|2|1|/a\nstep|wait\n");
    ASSERT_TRUE(waitCount("Scan", 1));
    set("nameNoSerialEdit", "500");
    fake.release();
    ASSERT_TRUE(waitIdle());
    EXPECT_EQ(text("nameNoSerialEdit"), "500");

    set({ { "nameNoLenSpinBox", "10" }, { "nameNoSerialEdit", "9999999999" } });
    QString title;
    const AnswerModal answer([&title](QDialog& dialog) { // the progress of the job is one as well
        if (qobject_cast<StatusMessageBox*>(&dialog) != nullptr) {
            title = dialog.windowTitle();
            dialog.close();
        }
    });
    runJob("step|state|2|1|/a\n");
    EXPECT_TRUE(QTest::qWaitFor([&] { return title == "序号已用完"; })) << title.toStdString();
    expect({ { "nameNoSerialEdit", "9999999999" }, { "sameNameAddNoRadio", "true" } });
}
