// Wiring of the controls: each one's change has its effect, and rules hold whatever the order of
// clicks.
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

TEST_F(Controls, BlackAndWhiteTurnsAutomaticLevelsOffAndGivesThemBack)
{
    check("autopLevelchkBox", true);
    EXPECT_FALSE(enabled("lightSlider"));
    select("colorModeComBo", "黑白");
    EXPECT_FALSE(checked("autopLevelchkBox"));
    EXPECT_FALSE(enabled("autopLevelchkBox"));
    EXPECT_TRUE(enabled("threholdSlider"));
    EXPECT_FALSE(enabled("lightSlider"));
    EXPECT_FALSE(enabled("DenoiseComBo"));
    select("colorModeComBo", "彩色");
    EXPECT_TRUE(checked("autopLevelchkBox"));
    EXPECT_TRUE(enabled("autopLevelchkBox"));
    EXPECT_FALSE(enabled("threholdSlider"));
    check("autopLevelchkBox", false);
    EXPECT_TRUE(enabled("gammaSpinBox"));
    EXPECT_FALSE(enabled("threholdSpinBox"));
    select("colorModeComBo", "黑白");
    select("colorModeComBo", "灰度");
    EXPECT_FALSE(checked("autopLevelchkBox")) << "was off before";
    EXPECT_TRUE(enabled("lightSlider"));
}

TEST_F(Controls, RotationDropoutAndPagesFollowTheirControls)
{
    select("rotAngleComBox", "左旋90度");
    check("autoRotatChkBox", true);
    EXPECT_EQ(text("rotAngleComBox"), QStringLiteral("不旋转"));
    EXPECT_FALSE(enabled("rotAngleComBox"));
    EXPECT_TRUE(enabled("autoRotateModComBox"));
    check("autoRotatChkBox", false);
    EXPECT_TRUE(enabled("rotAngleComBox"));

    select("colorModeComBo", "灰度");
    select("ColorDropoutComBox", "红色");
    EXPECT_TRUE(enabled("ColorDropoutchkBox"));
    check("ColorDropoutchkBox", true);
    select("ColorDropoutComBox", "无操作");
    EXPECT_FALSE(checked("ColorDropoutchkBox"));
    EXPECT_FALSE(enabled("ColorDropoutchkBox"));

    select("fileTypeCombo", "pdf");
    EXPECT_TRUE(enabled("multipage_radio"));
    check("multipage_radio", true);
    select("fileTypeCombo", "png");
    EXPECT_TRUE(checked("singlepage_radio"));
    EXPECT_FALSE(enabled("multipage_radio"));
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
