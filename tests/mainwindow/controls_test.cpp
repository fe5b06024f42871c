// Wiring of the controls: each one's change has its effect.
#include "mainwindow/rules/naming_rules.h"
#include "tests/mainwindow/window_fixture.h"

#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>

class Controls : public WindowTest
{
protected:
    void SetUp() override { choose(); }
    QString example() { return text("fileNameExampleLine"); }
};

TEST_F(Controls, SlidersAndSpinBoxesFollowEachOther)
{
    const std::pair<const char*, const char*> pairs[] = { { "lightSlider", "lightSpinBox" },
        { "contraSlider", "constraSpinBox" }, { "threholdSlider", "threholdSpinBox" } };
    for (const auto& [slider, spinBox] : pairs) {
        set(slider, "33");
        EXPECT_EQ(text(spinBox), "33") << slider;
        set(spinBox, "44");
        EXPECT_EQ(text(slider), "44") << spinBox;
    }
    set("gammaSlider", "25");
    EXPECT_EQ(text("gammaSpinBox"), "2.5");
    for (int tenths = 1; tenths <= 50; ++tenths) {
        set("gammaSpinBox", QString::number(tenths / 10.0));
        EXPECT_EQ(text("gammaSlider").toInt(), tenths);
    }
    set("autopLevelchkBox", "false");
    auto* gamma = control<QWidget>("gammaSpinBox");
    QTest::keyClick(gamma, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(gamma, "2.7");
    EXPECT_EQ(text("gammaSpinBox"), "2.7") << "the slider does not get in between";
    set("BlankSlider", "12");
    EXPECT_EQ(text("label_Blank"), "12");
}

TEST_F(Controls, DocumentTypeBringsItsDefaultsAndTruncatesGamma)
{
    fake.script("filetypes|clear\nfiletype|1|2|3|11\nfiletype|10|20|130|25\n");
    select("comboBox_doc", "文件");
    expect({ { "lightSpinBox", "10" }, { "contraSlider", "20" }, { "threholdSpinBox", "130" },
        { "gammaSpinBox", "2.5" }, { "gammaSlider", "2" } });
    select("comboBox_doc", "图文");
    expect({ { "gammaSpinBox", "1.1" }, { "gammaSlider", "1" } });
    select("comboBox_doc", "图片"); // no such row: nothing changes
    EXPECT_EQ(text("lightSpinBox"), "1");
}

TEST_F(Controls, BlackAndWhiteRemembersWhetherTheLevelsWereAutomatic)
{
    for (const char* automatic : { "true", "false" }) {
        set("autopLevelchkBox", automatic);
        select("colorModeComBo", "黑白");
        EXPECT_EQ(text("autopLevelchkBox"), "false");
        for (const char* mode : { "彩色", "灰度" }) {
            select("colorModeComBo", mode);
            EXPECT_EQ(text("autopLevelchkBox"), automatic) << mode;
        }
    }
    EXPECT_TRUE(logHas("[fun:onchangeColorMode]更改为黑白模式"));
    EXPECT_TRUE(logHas("[fun:onchangeColorMode]---更改为非黑白模式"));
}

TEST_F(Controls, ASourceBringsItsOwnListsAndKeepsWhatBothHave)
{
    fake.script("papers|clear\npaper|A4|0|0|210|297\npaper|A5|0|0|148|210\n"
                "paper@0|A3|0|0|297|420\npaper@0|A4|0|0|210|297\n"
                "resolutions|clear\nresolution|200|200|200\nresolution|300|300|300\n"
                "resolution@0|1200|1200|1200\nresolution@0|300|300|300\n");
    set({ { "scanSourceComBo", "ADF双面" }, { "paperTypeComBo", "A5" }, { "DPIComBo", "300" },
        { "MergeComBo", "左右合并" }, { "scanSourceComBo", "平板" } });
    expect({ { "paperTypeComBo", "A4" }, { "DPIComBo", "300" }, { "MergeComBo", "无操作" } });
    set({ { "DPIComBo", "1200" }, { "scanSourceComBo", "ADF单面" } });
    EXPECT_EQ(text("DPIComBo"), "200");
    EXPECT_EQ(fake.lastCall("SetScanSource").front(), "1");
}

TEST_F(Controls, RestoreButtonsPutTheirPartBack)
{
    set({ { "DPIComBo", "300" }, { "colorModeComBo", "灰度" }, { "rotAngleComBox", "旋转180度" } });
    click("baseSetDefaultBtn");
    expect({ { "DPIComBo", "200" }, { "colorModeComBo", "彩色" }, { "rotAngleComBox", "不旋转" } });

    set({ { "autoBColorChkBox", "true" }, { "autoCropChkBox", "false" },
        { "autopLevelchkBox", "false" } });
    click("HlevelSetDefaultBtn");
    expect({ { "autoBColorChkBox", "false" }, { "autoCropChkBox", "true" },
        { "autopLevelchkBox", "true" } });

    fake.script("filetypes|clear\n");
    set({ { "autopLevelchkBox", "false" }, { "lightSpinBox", "-5" },
        { "checkBox_blank", "true" } });
    click("argSetDefaultBtn");
    expect({ { "lightSpinBox", "18" }, { "checkBox_blank", "false" } });
}

TEST_F(Controls, EveryNamingControlRefreshesTheExample)
{
    const QString year = QString::number(QDate::currentDate().year());
    set({ { "fileTypeCombo", "双层ofd" }, { "fileNamePreEdit", "Inv" }, { "seperateCombo", "_" } });
    EXPECT_TRUE(example().startsWith("Inv_" + year + '_')) << example().toStdString();
    EXPECT_TRUE(example().endsWith(".ofd"));
    select("timeNametypeCombo", "日月年");
    EXPECT_FALSE(example().startsWith("Inv_" + year));

    for (const bool byTime : { true, false }) {
        click(byTime ? "timeNameRadio" : "serialNameRadio");
        EXPECT_EQ(enabled("timeNametypeCombo"), byTime);
        EXPECT_EQ(enabled("nameNoSerialEdit"), !byTime);
        EXPECT_EQ(enabled("nameNoLenSpinBox"), !byTime);
    }
    set({ { "nameNoLenSpinBox", "4" }, { "nameNoSerialEdit", "7" } });
    EXPECT_EQ(example(), "Inv_0007.ofd");
    set({ { "nameNoLenSpinBox", "6" }, { "nameNoSerialEdit", "123456" },
        { "nameNoLenSpinBox", "3" } });
    EXPECT_EQ(text("nameNoSerialEdit"), "123") << "the digit count cuts";
    set("nameNoLenSpinBox", "0");
    EXPECT_EQ(text("nameNoSerialEdit"), "");
}

TEST_F(Controls, WhatANameCannotHoldIsRefusedInSight)
{
    struct Paste
    {
        const char* field;
        QString text;
        QString taken;
    };
    const Paste pastes[] = {
        { "fileNamePreEdit", "Scan 2024", "ok" },
        { "fileNamePreEdit", "发票", "ok" },
        { "fileNamePreEdit", "\U0001F600", "ok" },
        { "fileNamePreEdit", "../etc/passwd", "ok" },
        { "fileNamePreEdit", QString(10000, 'a'), "ok" + QString(17, 'a') },
        { "nameNoSerialEdit", "1 2", "7" },
        { "nameNoSerialEdit", "１２", "7" },
        { "nameNoSerialEdit", "-1", "7" },
        { "nameNoSerialEdit", QString(10000, '1'), "7" },
        { "nameNoSerialEdit", "123", "7" },
    };
    click("serialNameRadio");
    set("nameNoLenSpinBox", "2");
    for (const Paste& paste : pastes) {
        SCOPED_TRACE(paste.text.left(20).toStdString());
        set({ { "fileNamePreEdit", "ok" }, { "nameNoSerialEdit", "7" } });
        control<QLabel>("nameHintLabel")->clear();
        control<QLineEdit>(paste.field)->insert(paste.text); // as pasting does
        EXPECT_EQ(text(paste.field), paste.taken);
        EXPECT_NE(text("nameHintLabel"), "");
        EXPECT_EQ(example(),
            text("fileNamePreEdit") + rules::paddedSerial(text("nameNoSerialEdit"), 2) + ".jpg");
    }
}

TEST_F(Controls, FolderDialogTakesAFolderAndRefusesOneThatIsTooLong)
{
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    const auto chooseInDialog = [this](const QString& path) {
        EXPECT_TRUE(QDir().mkpath(path));
        AnswerModal answer([path](QDialog& dialog) {
            if (auto* files = qobject_cast<QFileDialog*>(&dialog)) {
                files->findChild<QLineEdit*>("fileNameEdit")->setText(path);
                QMetaObject::invokeMethod(files, "accept");
            } else {
                dialog.accept();
            }
        });
        click("selPathBtn");
        return answer.title();
    };
    const QString folder = QString::fromStdString(Sandbox::path("chosen"));
    chooseInDialog(folder);
    EXPECT_EQ(text("filePathEdit"), folder);
    EXPECT_EQ(
        chooseInDialog(folder + '/' + QString(130, 'a') + '/' + QString(130, 'b')), "路径异常");
    EXPECT_EQ(text("filePathEdit"), folder) << "the old one stays";
}
