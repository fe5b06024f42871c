// The other ends of the dialogs: device times, pre-feed, temporary data, templates, accounts, log.
#include "account/login.h"
#include "tests/mainwindow/window_fixture.h"
#include "tests/support/answer_modal.h"
#include "tests/support/screenshot.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QDir>
#include <QLineEdit>
#include <QSpinBox>

class Dialogs : public WindowTest
{
protected:
    void SetUp() override { choose(); }
    bool enabled(const char* name) { return control<QWidget>(name)->isEnabled(); }
    /// What the one notice says that the call shows. The box is the same object each time.
    static SeenModal told(const std::function<void()>& call)
    {
        const AnswerModal answer(QStringLiteral("确 定"));
        call();
        return answer.count() == 1 ? answer.seen().front() : SeenModal();
    }
    template <class Dialog>
    Dialog* shownDialog()
    {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            auto* found = qobject_cast<Dialog*>(widget);
            if (found != nullptr && found->isVisible()) {
                return found;
            }
        }
        return nullptr;
    }
};

TEST_F(Dialogs, DeviceTimesGoToTheDeviceWhileTheMonitorRests)
{
    emit window().SignalThreadKeyStart();
    {
        AnswerModal answer([this](QDialog& dialog) {
            const int polls = fake.count("GetButtonStatus");
            QThread::msleep(300); // more than one poll interval of this build
            EXPECT_EQ(fake.count("GetButtonStatus"), polls);
            dialog.reject();
        });
        click("button_SetSleepTime");
        EXPECT_EQ(answer.count(), 1);
    }
    EXPECT_EQ(fake.count("GetScannerSleepTime"), 1);
    EXPECT_TRUE(waitCount("GetButtonStatus", fake.count("GetButtonStatus") + 1));

    const auto setTimes = [this] { window().slotUpdateTimeValue(10, 20); };
    EXPECT_EQ(told(setTimes).text, QStringLiteral("设置扫描仪时间\n成功!"));
    EXPECT_EQ(
        fake.callsOf("SetScannerTime").back().arguments, (std::vector<std::string> { "10", "20" }));
    fake.script("result|SetScannerTime|-15\n");
    EXPECT_EQ(told(setTimes).text, QStringLiteral("设置扫描仪时间\n失败!"));
    EXPECT_TRUE(logHas("SetScannerTimerRet = -15"));
}

TEST_F(Dialogs, PrefeedBelowHalfASecondSwitchesOff)
{
    const auto setTime = [this](float time) {
        return told([this, time] { window().slotUpdatePrefeedTimeValue(time); });
    };
    EXPECT_EQ(setTime(0.0F).text, QStringLiteral("设置预进纸\n成功！"));
    EXPECT_EQ(fake.callsOf("SetPrefeed").back().arguments.front(), "0");
    setTime(0.5F);
    EXPECT_EQ(fake.callsOf("SetPrefeed").back().arguments.front(), "1");
    fake.script("result|SetPrefeed|-15\n");
    const SeenModal refused = setTime(3.0F);
    EXPECT_EQ(refused.text, QStringLiteral("设置预进纸\n失败!"));
    EXPECT_EQ(refused.title, QStringLiteral("设置预进纸功能"));
}

TEST_F(Dialogs, ClearingTemporaryDataTellsItsResult)
{
    const auto clear = [this] { click("button_clear_tmpdata"); };
    EXPECT_EQ(told(clear).text, QStringLiteral("手动清除文件成功!"));
    fake.script("result|ClearTmpData|-1\n");
    const SeenModal failed = told(clear);
    EXPECT_EQ(failed.text, QStringLiteral("手动清除文件失败!"));
    EXPECT_EQ(failed.title, QStringLiteral("手动清除"));
}

TEST_F(Dialogs, TemplateBringsItsSettingsBack)
{
    QDir().mkpath(QString::fromStdString(outputFolder()));
    select("scanSourceComBo", "ADF双面");
    select("DPIComBo", "300");
    select("MergeComBo", "左右合并");
    select("colorModeComBo", "灰度");
    control<QSpinBox>("constraSpinBox")->setValue(-20);
    ScanTemplateParam collected;
    QObject::connect(&window(), &MainWindow::templateInfoSave,
        [&collected](const ScanTemplateParam& param) { collected = param; });
    window().onTemplateInfoCollect();
    click("baseSetDefaultBtn");
    control<QSpinBox>("constraSpinBox")->setValue(5);
    control<QAbstractButton>("RemoveHoleChkBox")->setChecked(true);
    QSignalSpy status(&window(), &MainWindow::templateInfoStatus);

    window().onTemplateInfoSave(collected);
    EXPECT_EQ(text("scanSourceComBo"), QStringLiteral("ADF双面"));
    EXPECT_EQ(text("DPIComBo"), QStringLiteral("300"));
    EXPECT_EQ(text("MergeComBo"), QStringLiteral("左右合并"));
    EXPECT_EQ(text("colorModeComBo"), QStringLiteral("灰度"));
    EXPECT_EQ(control<QSpinBox>("constraSpinBox")->value(), -20);
    EXPECT_FALSE(control<QAbstractButton>("RemoveHoleChkBox")->isChecked());
    ASSERT_EQ(status.size(), 3);
    EXPECT_EQ(status.last()[1].toInt(), 100);

    collected.savePath = QStringLiteral("/nowhere/at/all");
    select("DPIComBo", "200");
    status.clear();
    window().onTemplateInfoSave(collected);
    ASSERT_EQ(status.size(), 1);
    EXPECT_EQ(status.first()[1].toInt(), -1);
    EXPECT_EQ(text("DPIComBo"), QStringLiteral("200"));
    EXPECT_TRUE(logHas("template can not write:/nowhere/at/all"));
}

TEST_F(Dialogs, ATemplateEditedByHandBringsNoStateThatClickingCouldNot)
{
    QDir().mkpath(QString::fromStdString(outputFolder()));
    const auto isOn = [this](
                          const char* name) { return control<QAbstractButton>(name)->isChecked(); };
    select("fileTypeCombo", "jpg");
    ScanTemplateParam odd;
    QObject::connect(&window(), &MainWindow::templateInfoSave,
        [&odd](const ScanTemplateParam& param) { odd = param; });
    window().onTemplateInfoCollect();
    odd.multiPage = true; // of a file type with one page
    odd.colorMode = QStringLiteral("黑白");
    odd.autoLevel = true; // not in 黑白
    odd.denoise = QStringLiteral("强化"); // not in 黑白
    odd.paperSize = QStringLiteral("自动");
    odd.autoCrop = false; // 自动 crops
    odd.autoTextOrientation = true;
    odd.rotationIndex = 2; // not with text orientation
    odd.fileType = 99;
    odd.timeNamePrefix = QStringLiteral("../x");
    odd.serialStart = QStringLiteral("a/b");
    odd.threshold = 60000;
    odd.gamma = -1;
    for (int round = 0; round < 2; ++round) { // the second finds the lists where they are
        window().onTemplateInfoSave(odd);
        EXPECT_FALSE(isOn("multipage_radio"));
        EXPECT_FALSE(isOn("autopLevelchkBox"));
        EXPECT_EQ(control<QComboBox>("DenoiseComBo")->currentIndex(), 0);
        EXPECT_TRUE(isOn("autoCropChkBox") || text("paperTypeComBo") != QStringLiteral("自动"));
        EXPECT_EQ(control<QComboBox>("rotAngleComBox")->currentIndex(), 0);
        EXPECT_GE(control<QComboBox>("comboBox_doc")->currentIndex(), 0);
        EXPECT_EQ(control<QLineEdit>("fileNamePreEdit")->text(), QString());
        EXPECT_EQ(control<QLineEdit>("nameNoSerialEdit")->text(), QString());
        EXPECT_EQ(control<QSpinBox>("threholdSpinBox")->value(), 255);
    }
    QSignalSpy status(&window(), &MainWindow::templateInfoStatus);
    const QString path = control<QLineEdit>("filePathEdit")->text();
    for (const QString& folder : { QStringLiteral("."), QStringLiteral("/dev/null"), QString() }) {
        odd.savePath = folder;
        window().onTemplateInfoSave(odd);
        EXPECT_EQ(status.last()[1].toInt(), -1) << folder.toStdString();
    }
    EXPECT_EQ(control<QLineEdit>("filePathEdit")->text(), path);
}

TEST_F(Dialogs, TemplateButtonOpensTheDialogOfThisModel)
{
    QString title;
    AnswerModal answer([&title](QDialog& dialog) {
        title = dialog.windowTitle();
        dialog.reject();
    });
    click("templateBtn");
    EXPECT_EQ(title, QStringLiteral("模板保存和读取   Orvascan A300"));
}

TEST_F(Dialogs, LoginUnlocksTheLogButtonsAndLogoutLocksThem)
{
    control<QAbstractButton>("btn_Login")->click();
    auto* dialog = shownDialog<login>();
    ASSERT_NE(dialog, nullptr);
    emit dialog->SignalsLoginStatus();
    dialog->close();
    EXPECT_FALSE(enabled("btn_Login"));
    for (const char* name : { "btn_Logout", "btn_ChangePwd", "btn_Log_Management" }) {
        EXPECT_TRUE(enabled(name)) << name;
    }
    control<QAbstractButton>("btn_Log_Management")->click();
    control<QAbstractButton>("btn_ChangePwd")->click();
    while (QWidget* modal = QApplication::activeModalWidget()) {
        modal->close();
    }
    control<QAbstractButton>("btn_Logout")->click();
    EXPECT_TRUE(enabled("btn_Login"));
    EXPECT_FALSE(enabled("btn_ChangePwd"));
}

TEST_F(Dialogs, PicturesForPeople)
{
    auto* tabs = control<QTabWidget>("tabWidget");
    for (int page = 0; page < tabs->count(); ++page) {
        tabs->setCurrentIndex(page);
        saveScreenshot(window(), QStringLiteral("main-window-%1").arg(page + 1));
    }
    EXPECT_EQ(tabs->count(), 5);
}
