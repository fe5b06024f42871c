// The table of control rules on the real page: whatever an operator clicks in whatever order, and
// whatever a settings file holds, every control is as the table says and the invariants hold.
#include "mainwindow/rules/control_rules.h"
#include "mainwindow/rules/file_param.h"
#include "mainwindow/rules/naming_rules.h"
#include "mainwindow/rules/settings_keys.h"
#include "tests/mainwindow/window_fixture.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>
#include <QSlider>
#include <QSpinBox>

#include <iostream>
#include <map>
#include <random>

using rules::Control;

namespace {

const std::map<Control, std::vector<const char*>> kNames {
    { Control::kAutoLevel, { "autopLevelchkBox" } },
    { Control::kBrightness, { "lightSlider", "lightSpinBox" } },
    { Control::kContrast, { "contraSlider", "constraSpinBox" } },
    { Control::kGamma, { "gammaSlider", "gammaSpinBox" } },
    { Control::kThreshold, { "threholdSlider", "threholdSpinBox" } },
    { Control::kToneDefaults, { "argSetDefaultBtn" } },
    { Control::kRotation, { "rotAngleComBox" } },
    { Control::kTextMode, { "autoRotateModComBox" } },
    { Control::kDropout, { "ColorDropoutComBox" } },
    { Control::kReinforcedDropout, { "ColorDropoutchkBox" } },
    { Control::kDenoise, { "DenoiseComBo" } },
    { Control::kBlankThreshold, { "BlankSlider", "label_Blank" } },
    { Control::kSinglePage, { "singlepage_radio" } },
    { Control::kMultiPage, { "multipage_radio" } },
    { Control::kAutoCrop, { "autoCropChkBox" } },
};

} // namespace

class ControlTable : public WindowTest
{
protected:
    void SetUp() override
    {
        fake.script("paper|自动|0|0|216|356\n");
        choose();
        for (QWidget* widget : window().findChildren<QWidget*>()) {
            m_widgets[widget->objectName().toStdString()] = widget;
        }
    }
    template <class Widget>
    Widget* at(const char* name)
    {
        return qobject_cast<Widget*>(m_widgets.at(name));
    }
    bool on(const char* name) { return at<QWidget>(name)->isEnabled(); }
    bool checked(const char* name) { return at<QAbstractButton>(name)->isChecked(); }
    int index(const char* name) { return at<QComboBox>(name)->currentIndex(); }
    QString shown(const char* name) { return at<QComboBox>(name)->currentText(); }

    void expectTable(const std::string& where)
    {
        rules::ControlState state;
        state.colorMode = shown("colorModeComBo");
        state.autoLevel = checked("autopLevelchkBox");
        state.textOrientation = checked("autoRotatChkBox");
        state.dropout = shown("ColorDropoutComBox");
        state.removeBlank = checked("checkBox_blank");
        state.fileType = shown("fileTypeCombo");
        state.paper = shown("paperTypeComBo");
        for (const rules::ControlRow& row : rules::controlTable()) {
            // its restore button disables the dropout list until the colour mode is chosen again
            const bool enabled =
                row.enabled(state) && !(row.control == Control::kDropout && m_dropoutReset);
            for (const char* name : kNames.at(row.control)) {
                EXPECT_EQ(on(name), enabled) << where << ": " << name;
            }
            const rules::ControlStep held = row.whileDisabled;
            if (enabled || held.change == rules::Change::kNothing) {
                continue;
            }
            const char* name = kNames.at(held.control).front();
            EXPECT_EQ(
                held.change == rules::Change::kCheck ? int(checked(name)) : index(name), held.value)
                << where << ": " << name;
        }
    }
    /// Stated in words of the operator, without the table.
    void expectInvariants(const std::string& where)
    {
        const bool blackWhite = shown("colorModeComBo") == "黑白";
        EXPECT_EQ(on("threholdSlider"), blackWhite) << where;
        EXPECT_FALSE(on("lightSlider") && (blackWhite || checked("autopLevelchkBox"))) << where;
        EXPECT_FALSE(blackWhite && checked("autopLevelchkBox")) << where;
        EXPECT_NE(on("rotAngleComBox"), on("autoRotateModComBox")) << where << ": one way to turn";
        EXPECT_FALSE(checked("autoRotatChkBox") && index("rotAngleComBox") != 0) << where;
        EXPECT_FALSE(index("ColorDropoutComBox") == 0 && checked("ColorDropoutchkBox")) << where;
        EXPECT_FALSE(shown("colorModeComBo") == "彩色" && index("ColorDropoutComBox") != 0)
            << where;
        const QString type = shown("fileTypeCombo");
        const bool onePage = type == "jpg" || type == "bmp" || type == "png";
        EXPECT_FALSE(onePage && checked("multipage_radio")) << where;
        EXPECT_NE(checked("singlepage_radio"), checked("multipage_radio")) << where;
        EXPECT_FALSE(shown("paperTypeComBo") == "自动" && !checked("autoCropChkBox")) << where;
        EXPECT_EQ(at<QComboBox>("MergeComBo")->findText("左右合并") >= 0,
            shown("scanSourceComBo").contains("双"))
            << where;
        EXPECT_EQ(at<QSlider>("lightSlider")->value(), at<QSpinBox>("lightSpinBox")->value());
        EXPECT_EQ(at<QLabel>("label_Blank")->text().toInt(), at<QSlider>("BlankSlider")->value());
    }
    /// One click anywhere.
    void clickSomething(std::mt19937& random);
    /// Fields that no typing could have brought about.
    void expectTypable(const std::string& where);
    static QByteArray hostileFile(std::mt19937& random);

    static int upTo(std::mt19937& random, int n)
    {
        return static_cast<int>(random() % static_cast<unsigned>(n));
    }

    bool m_dropoutReset = false;

private:
    std::map<std::string, QWidget*> m_widgets;
};

void ControlTable::clickSomething(std::mt19937& random)
{
    static const char* const kLists[] = { "colorModeComBo", "colorModeComBo", "ColorDropoutComBox",
        "fileTypeCombo", "paperTypeComBo", "rotAngleComBox", "DenoiseComBo", "MergeComBo",
        "autoRotateModComBox", "scanSourceComBo", "comboBox_doc" };
    static const char* const kButtons[] = { "autopLevelchkBox", "autopLevelchkBox",
        "autoRotatChkBox", "ColorDropoutchkBox", "checkBox_blank", "multipage_radio",
        "singlepage_radio", "autoCropChkBox", "baseSetDefaultBtn", "argSetDefaultBtn",
        "HlevelSetDefaultBtn" };
    const int before = index("colorModeComBo");
    bool dropoutReset = m_dropoutReset;
    if (upTo(random, 2) == 0) {
        const char* list = kLists[upTo(random, int(std::size(kLists)))];
        if (on(list)) { // as an operator would: a disabled control does not react
            at<QComboBox>(list)->setCurrentIndex(upTo(random, at<QComboBox>(list)->count()));
        }
    } else {
        const std::string button = kButtons[upTo(random, int(std::size(kButtons)))];
        at<QAbstractButton>(button.c_str())->click();
        dropoutReset = dropoutReset || button == "HlevelSetDefaultBtn";
    }
    m_dropoutReset = dropoutReset && before == index("colorModeComBo");
}

TEST_F(ControlTable, HoldsAfterAnyOrderOfClicks)
{
    std::mt19937 random(20240305);
    for (int click = 0; click < 8000 && !HasFailure(); ++click) {
        clickSomething(random);
        const std::string where = "click " + std::to_string(click);
        expectTable(where);
        expectInvariants(where);
    }
}

void ControlTable::expectTypable(const std::string& where)
{
    const QString serial = at<QLineEdit>("nameNoSerialEdit")->text();
    const int digits = at<QSpinBox>("nameNoLenSpinBox")->value();
    EXPECT_TRUE(rules::isPrefix(at<QLineEdit>("fileNamePreEdit")->text())) << where;
    EXPECT_TRUE(rules::isSerialStart(serial)) << where;
    EXPECT_LE(serial.size(), digits) << where;
    EXPECT_TRUE(rules::isOutputFolder(at<QLineEdit>("filePathEdit")->text())) << where;
    EXPECT_FALSE(at<QLineEdit>("filePathEdit")->text().isEmpty()) << where;
    EXPECT_FALSE(at<QLineEdit>("fileNameExampleLine")->text().contains('/')) << where;
    EXPECT_EQ(on("timeNametypeCombo"), checked("timeNameRadio")) << where;
    EXPECT_EQ(on("nameNoSerialEdit"), checked("serialNameRadio")) << where;
    EXPECT_EQ(on("nameNoLenSpinBox"), checked("serialNameRadio")) << where;
    const double gamma = at<QDoubleSpinBox>("gammaSpinBox")->value();
    const int slider = at<QSlider>("gammaSlider")->value();
    EXPECT_TRUE(slider == qRound(gamma * 10) || slider == qMax(1, int(gamma))) << where;
    for (QComboBox* list : window().findChildren<QComboBox*>()) {
        EXPECT_GE(list->currentIndex(), 0) << where << ": " << list->objectName().toStdString();
    }
}

QByteArray ControlTable::hostileFile(std::mt19937& random)
{
    static const char* const kValues[] = { "0", "1", "2", "3", "-1", "7", "99", "-2147483649",
        "99999999999999999999", "1e308", "nan", "true", "false", "abc", "", "\"\"", "12345678901",
        "A12", "../../x", "/tmp", "relative", "扫描 文件", "😀", "a/b", "@Invalid()",
        "@ByteArray(\\x1\\xd9\\xd0\\xcb)", "@Variant(\\0\\0\\0\\x7f\\0)", "@Point(1 2)", "1, 2, 3",
        "\"quoted; text\"", "%00", "\\x626b" };
    QByteArray file = "[appValue]\n";
    for (const rules::SettingRow& row : rules::settingRows()) {
        const QByteArray value = row.id == rules::Setting::kFirstStart ? QByteArray("1")
            : row.id == rules::Setting::kScanDeviceName                ? QByteArray(kDevice)
            : upTo(random, 40) == 0                                    ? QByteArray(10000, 'x')
                                    : QByteArray(kValues[upTo(random, int(std::size(kValues)))]);
        const bool isNeeded =
            row.id == rules::Setting::kFirstStart || row.id == rules::Setting::kScanDeviceName;
        if (row.group == std::string(rules::kValueGroup) && (isNeeded || upTo(random, 20) != 0)) {
            file += QByteArray(row.readKey) + '=' + value + '\n';
        }
    }
    return file + "[mainWindow]\ngeometry=" + kValues[upTo(random, int(std::size(kValues)))] + '\n';
}

TEST_F(ControlTable, HoldsAfterAnySettingsFile)
{
    const std::string path = Sandbox::userFolder() + "/Orvascan A300/Orvascan A300.ini";
    std::mt19937 random(19700101);
    constexpr int kFiles = 400;
    int used = 0;
    for (int file = 0; file < kFiles && !HasFailure(); ++file) {
        const QByteArray bytes = hostileFile(random);
        writeBytes(path, bytes.toStdString());
        window().readSetting();
        used += readBytes(path) == bytes.toStdString() ? 1 : 0;
        const std::string where = "file " + std::to_string(file);
        expectTable(where);
        expectInvariants(where);
        expectTypable(where);
        if (HasFailure()) {
            std::cout << bytes.constData();
        }
    }
    std::cout << used << " of " << kFiles << " hostile settings files were read, not put aside\n";
    EXPECT_GT(used, kFiles / 2);
}
