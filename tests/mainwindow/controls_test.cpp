// Wiring of the controls: each one's change has its effect, and rules hold whatever the order of
// clicks.
#include "mainwindow/rules/naming_rules.h"
#include "tests/mainwindow/window_fixture.h"
#include "tests/support/answer_modal.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QSlider>
#include <QSpinBox>

class Controls : public WindowTest
{
protected:
    void SetUp() override { choose(); }
    bool enabled(const char* name) { return control<QWidget>(name)->isEnabled(); }
    bool checked(const char* name) { return control<QAbstractButton>(name)->isChecked(); }
    void check(const char* name, bool on) { control<QAbstractButton>(name)->setChecked(on); }
    QString example() { return control<QLineEdit>("fileNameExampleLine")->text(); }
};

TEST_F(Controls, SlidersAndSpinBoxesFollowEachOther)
{
    const std::pair<const char*, const char*> pairs[] = { { "lightSlider", "lightSpinBox" },
        { "contraSlider", "constraSpinBox" }, { "threholdSlider", "threholdSpinBox" } };
    for (const auto& [slider, spinBox] : pairs) {
        control<QSlider>(slider)->setValue(33);
        EXPECT_EQ(control<QSpinBox>(spinBox)->value(), 33) << slider;
        control<QSpinBox>(spinBox)->setValue(44);
        EXPECT_EQ(control<QSlider>(slider)->value(), 44) << spinBox;
    }
    control<QSlider>("gammaSlider")->setValue(25);
    EXPECT_DOUBLE_EQ(control<QDoubleSpinBox>("gammaSpinBox")->value(), 2.5);
    for (int tenths = 1; tenths <= 50; ++tenths) {
        control<QDoubleSpinBox>("gammaSpinBox")->setValue(tenths / 10.0);
        EXPECT_EQ(control<QSlider>("gammaSlider")->value(), tenths);
    }
    auto* gamma = control<QDoubleSpinBox>("gammaSpinBox");
    check("autopLevelchkBox", false);
    gamma->selectAll();
    QTest::keyClicks(gamma, QStringLiteral("2.7"));
    EXPECT_DOUBLE_EQ(gamma->value(), 2.7) << "the slider does not get in between";
    control<QSlider>("BlankSlider")->setValue(12);
    EXPECT_EQ(control<QLabel>("label_Blank")->text(), QStringLiteral("12"));
}

TEST_F(Controls, DocumentTypeBringsItsDefaultsAndTruncatesGamma)
{
    fake.script("filetypes|clear\nfiletype|1|2|3|11\nfiletype|10|20|130|25\n");
    select("comboBox_doc", "文件");
    EXPECT_EQ(control<QSpinBox>("lightSpinBox")->value(), 10);
    EXPECT_EQ(control<QSlider>("contraSlider")->value(), 20);
    EXPECT_EQ(control<QSpinBox>("threholdSpinBox")->value(), 130);
    EXPECT_DOUBLE_EQ(control<QDoubleSpinBox>("gammaSpinBox")->value(), 2.5);
    EXPECT_EQ(control<QSlider>("gammaSlider")->value(), 2);
    select("comboBox_doc", "图文");
    EXPECT_DOUBLE_EQ(control<QDoubleSpinBox>("gammaSpinBox")->value(), 1.1);
    EXPECT_EQ(control<QSlider>("gammaSlider")->value(), 1);
    select("comboBox_doc", "图片"); // no such row: nothing changes
    EXPECT_EQ(control<QSpinBox>("lightSpinBox")->value(), 1);
}

TEST_F(Controls, BlackAndWhiteRemembersWhetherTheLevelsWereAutomatic)
{
    for (const bool automatic : { true, false }) {
        check("autopLevelchkBox", automatic);
        select("colorModeComBo", "黑白");
        EXPECT_FALSE(checked("autopLevelchkBox"));
        select("colorModeComBo", "彩色");
        EXPECT_EQ(checked("autopLevelchkBox"), automatic);
        select("colorModeComBo", "灰度");
        EXPECT_EQ(checked("autopLevelchkBox"), automatic) << "between two other modes";
    }
    EXPECT_TRUE(logHas("[fun:onchangeColorMode]更改为黑白模式"));
    EXPECT_TRUE(logHas("[fun:onchangeColorMode]---更改为非黑白模式"));
}

TEST_F(Controls, AColourAfterNoDropoutDoesNotCheckTheReinforcementAgain)
{
    select("colorModeComBo", "灰度");
    select("ColorDropoutComBox", "红色");
    click("ColorDropoutchkBox");
    select("ColorDropoutComBox", "绿色");
    EXPECT_TRUE(checked("ColorDropoutchkBox")) << "another colour keeps it";
    select("ColorDropoutComBox", "无操作");
    select("ColorDropoutComBox", "绿色");
    EXPECT_FALSE(checked("ColorDropoutchkBox"));
}

TEST_F(Controls, ASourceBringsItsOwnListsAndKeepsWhatBothHave)
{
    fake.script("papers|clear\npaper|A4|0|0|210|297\npaper|A5|0|0|148|210\n"
                "paper@0|A3|0|0|297|420\npaper@0|A4|0|0|210|297\n"
                "resolutions|clear\nresolution|200|200|200\nresolution|300|300|300\n"
                "resolution@0|1200|1200|1200\nresolution@0|300|300|300\n");
    select("scanSourceComBo", "ADF双面");
    select("paperTypeComBo", "A5");
    select("DPIComBo", "300");
    select("MergeComBo", "左右合并");
    select("scanSourceComBo", "平板");
    EXPECT_EQ(text("paperTypeComBo"), QStringLiteral("A4")) << "the flatbed has no A5";
    EXPECT_EQ(text("DPIComBo"), QStringLiteral("300"));
    EXPECT_EQ(text("MergeComBo"), QStringLiteral("无操作")) << "one side cannot be merged";
    select("DPIComBo", "1200");
    select("scanSourceComBo", "ADF单面");
    EXPECT_EQ(text("DPIComBo"), QStringLiteral("200"));
    EXPECT_EQ(fake.callsOf("SetScanSource").back().arguments.front(), "1");
}

TEST_F(Controls, RestoreButtonsPutTheirPartBack)
{
    select("DPIComBo", "300");
    select("colorModeComBo", "灰度");
    select("rotAngleComBox", "旋转180度");
    click("baseSetDefaultBtn");
    EXPECT_EQ(text("DPIComBo"), QStringLiteral("200"));
    EXPECT_EQ(text("colorModeComBo"), QStringLiteral("彩色"));
    EXPECT_EQ(text("rotAngleComBox"), QStringLiteral("不旋转"));

    check("autoBColorChkBox", true);
    check("autoCropChkBox", false);
    check("autopLevelchkBox", false);
    click("HlevelSetDefaultBtn");
    EXPECT_FALSE(checked("autoBColorChkBox"));
    EXPECT_TRUE(checked("autoCropChkBox"));
    EXPECT_TRUE(checked("autopLevelchkBox"));

    fake.script("filetypes|clear\n");
    check("autopLevelchkBox", false);
    control<QSpinBox>("lightSpinBox")->setValue(-5);
    check("checkBox_blank", true);
    click("argSetDefaultBtn");
    EXPECT_EQ(control<QSpinBox>("lightSpinBox")->value(), 18);
    EXPECT_FALSE(checked("checkBox_blank"));
}

TEST_F(Controls, EveryNamingControlRefreshesTheExample)
{
    EXPECT_TRUE(example().endsWith(QStringLiteral(".jpg")));
    select("fileTypeCombo", "双层ofd");
    EXPECT_TRUE(example().endsWith(QStringLiteral(".ofd")));
    control<QLineEdit>("fileNamePreEdit")->setText(QStringLiteral("Inv"));
    select("seperateCombo", "_");
    EXPECT_TRUE(example().startsWith(QStringLiteral("Inv_"))) << example().toStdString();
    const QString year = QString::number(QDate::currentDate().year());
    EXPECT_TRUE(example().startsWith(QStringLiteral("Inv_") + year + QLatin1Char('_')));
    select("timeNametypeCombo", "日月年");
    EXPECT_FALSE(example().startsWith(QStringLiteral("Inv_") + year));

    EXPECT_TRUE(enabled("timeNametypeCombo"));
    EXPECT_FALSE(enabled("nameNoSerialEdit"));
    click("serialNameRadio");
    EXPECT_FALSE(enabled("timeNametypeCombo"));
    EXPECT_TRUE(enabled("nameNoSerialEdit"));
    control<QSpinBox>("nameNoLenSpinBox")->setValue(4);
    control<QLineEdit>("nameNoSerialEdit")->setText(QStringLiteral("7"));
    EXPECT_EQ(example(), QStringLiteral("Inv_0007.ofd"));
    EXPECT_EQ(window().GetDefStartBit(), QStringLiteral("0007"));
}

TEST_F(Controls, DigitCountCutsAndClearsTheSerialStart)
{
    click("serialNameRadio");
    auto* serial = control<QLineEdit>("nameNoSerialEdit");
    control<QSpinBox>("nameNoLenSpinBox")->setValue(6);
    serial->setText(QStringLiteral("123456"));
    control<QSpinBox>("nameNoLenSpinBox")->setValue(3);
    EXPECT_EQ(serial->text(), QStringLiteral("123"));
    serial->clear();
    QTest::keyClicks(serial, QStringLiteral("a1b2"));
    EXPECT_EQ(serial->text(), QStringLiteral("12")) << "digits only from now on";
    control<QSpinBox>("nameNoLenSpinBox")->setValue(0);
    EXPECT_TRUE(serial->text().isEmpty());
    control<QLineEdit>("fileNamePreEdit")->clear();
    QTest::keyClicks(
        control<QLineEdit>("fileNamePreEdit"), QStringLiteral("a/b c1234567890123456789012345"));
    EXPECT_EQ(control<QLineEdit>("fileNamePreEdit")->text(), QStringLiteral("abc1234567890123456"));
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
    control<QSpinBox>("nameNoLenSpinBox")->setValue(2);
    for (const Paste& paste : pastes) {
        auto* field = control<QLineEdit>(paste.field);
        control<QLineEdit>("fileNamePreEdit")->setText(QStringLiteral("ok"));
        control<QLineEdit>("nameNoSerialEdit")->setText(QStringLiteral("7"));
        control<QLabel>("nameHintLabel")->clear();
        field->insert(paste.text); // as pasting does
        EXPECT_EQ(field->text(), paste.taken) << paste.text.left(20).toStdString();
        EXPECT_FALSE(control<QLabel>("nameHintLabel")->text().isEmpty())
            << paste.text.left(20).toStdString();
        EXPECT_EQ(example(),
            control<QLineEdit>("fileNamePreEdit")->text()
                + rules::paddedSerial(control<QLineEdit>("nameNoSerialEdit")->text(), 2) + ".jpg");
    }
}

TEST_F(Controls, FolderDialogTakesAFolderAndRefusesOneThatIsTooLong)
{
    const QString folder = QString::fromStdString(Sandbox::path("chosen"));
    QDir().mkpath(folder);
    const auto chooseInDialog = [this](const QString& path) {
        AnswerModal answer([path](QDialog& dialog) {
            if (auto* files = qobject_cast<QFileDialog*>(&dialog)) {
                files->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->setText(path);
                QMetaObject::invokeMethod(files, "accept");
            } else {
                dialog.accept();
            }
        });
        click("selPathBtn");
        return answer.seen();
    };
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    chooseInDialog(folder);
    EXPECT_EQ(control<QLineEdit>("filePathEdit")->text(), folder);
    const QString longFolder = folder + QLatin1Char('/') + QString(130, QChar('a'))
        + QLatin1Char('/') + QString(130, QChar('b'));
    ASSERT_TRUE(QDir().mkpath(longFolder));
    const auto seen = chooseInDialog(longFolder);
    ASSERT_FALSE(seen.empty());
    EXPECT_EQ(seen.back().title, QStringLiteral("路径异常"));
    EXPECT_EQ(control<QLineEdit>("filePathEdit")->text(), folder) << "the old one stays";
}
