// The controls that the rest of the application reaches by name: that they are there, on their
// page, with the texts, lists and ranges that operators and stored settings rely on.
#include "mainwindow/forms/caption_label.h"
#include "mainwindow/main_window_ui.h"
#include "sdk/codes.h"

#include <QAbstractButton>
#include <QButtonGroup>
#include <QMainWindow>
#include <QScrollArea>
#include <QTest>
#include <QValidator>

#include <gtest/gtest.h>

namespace {

class FormTextsTest : public testing::Test
{
protected:
    FormTextsTest() { ui.setupUi(&window); }

    template <class Widget>
    Widget* on(int page, const char* name)
    {
        auto* found = ui.tabWidget->widget(page)->findChild<Widget*>(QLatin1String(name));
        EXPECT_NE(found, nullptr) << name << " on page " << page;
        return found;
    }

    QMainWindow window;
    MainWindowUi ui;
};

QStringList items(const QComboBox* combo)
{
    QStringList texts;
    for (int row = 0; row < combo->count(); ++row) {
        texts << combo->itemText(row);
    }
    return texts;
}

template <class Texts>
QStringList toList(const Texts& texts)
{
    QStringList list;
    for (const std::string_view text : texts) {
        list << QString::fromUtf8(text.data(), int(text.size()));
    }
    return list;
}

enum Page
{
    kSettings,
    kParameters,
    kPreview,
    kUser,
    kAbout
};

} // namespace

TEST_F(FormTextsTest, FiveTabsInOrderAndTheButtonsBelow)
{
    QStringList titles;
    for (int index = 0; index < ui.tabWidget->count(); ++index) {
        titles << ui.tabWidget->tabText(index);
        EXPECT_FALSE(ui.tabWidget->tabIcon(index).isNull());
    }
    EXPECT_EQ(titles,
        QStringList({ QStringLiteral("设置"), QStringLiteral("参数"), QStringLiteral("预览"),
            QStringLiteral("用户"), QStringLiteral("关于") }));
    EXPECT_EQ(ui.tabWidget->currentIndex(), 0);
    EXPECT_EQ(ui.scanMainBtn->text(), QStringLiteral("扫描"));
    EXPECT_EQ(ui.templateBtn->text(), QStringLiteral("模板设置"));
    EXPECT_EQ(ui.exitMainBtn->text(), QStringLiteral("退出"));
    EXPECT_FALSE(window.windowIcon().isNull());
}

TEST_F(FormTextsTest, ButtonsAndChoicesCarryTheirTexts)
{
    struct Case
    {
        Page page;
        const char *name, *text;
    };
    const Case cases[] = {
        { kSettings, "selPathBtn", "选择路径" },
        { kSettings, "singlepage_radio", "单页" },
        { kSettings, "multipage_radio", "多页" },
        { kSettings, "sameNameAddNoRadio", "追加编号" },
        { kSettings, "sameNameCoverRadio", "文件覆盖" },
        { kSettings, "serialNameRadio", "序号命名" },
        { kSettings, "timeNameRadio", "时间命名" },
        { kSettings, "baseSetDefaultBtn", "恢复默认" },
        { kParameters, "argSetDefaultBtn", "恢复默认" },
        { kParameters, "HlevelSetDefaultBtn", "恢复默认" },
        { kParameters, "checkBox_blank", "去空白页" },
        { kParameters, "autopLevelchkBox", "自动色阶" },
        { kParameters, "autoCropChkBox", "自动裁切" },
        { kParameters, "autoBColorChkBox", "去除背景色" },
        { kParameters, "MultiFeedChkBox", "重张检测" },
        { kParameters, "autoRotatChkBox", "自动文字方向" },
        { kParameters, "ColorDropoutchkBox", "滤色加强" },
        { kParameters, "RemoveHoleChkBox", "去除装订孔" },
        { kPreview, "preViewBtn", "预览扫描" },
        { kUser, "btn_Login", "登录" },
        { kUser, "btn_ChangePwd", "修改密码" },
        { kUser, "btn_Logout", "登出" },
        { kUser, "btn_Log_Management", "日志管理" },
        { kAbout, "button_log_controller", "查看日志" },
        { kAbout, "SetLogSavePathBth", "选择路径" },
        { kAbout, "button_SetSleepTime", "设置休眠" },
        { kAbout, "button_setPrefeed", "预进纸" },
        { kAbout, "button_clear_tmpdata", "手动清除" },
    };
    for (const Case& button : cases) {
        if (const auto* found = on<QAbstractButton>(button.page, button.name)) {
            EXPECT_EQ(found->text(), QString::fromUtf8(button.text)) << button.name;
        }
    }
}

TEST_F(FormTextsTest, EveryControlHasItsCaptionOnItsPage)
{
    const QStringList captions[5] = {
        { "图像类型:", "图像品质:", "是否多页:    ", "稿件类型:", "名称实例:", "名称前缀:",
            "分隔符:", "起  始  位:", "序号长度:", "  格式:  ", " 同名文件:", " 命名方式:" },
        { "扫描源:", "颜色模式:", "分辨率:", "纸张大小:", "亮度:", "对比度:", "阈值:", " 伽玛值:",
            "图像旋转:", "噪点去除:", "滤色:", "基础设置:", "图像设置:", "高级设置:", "图像操作:" },
        { "双击预览图查看文件" },
        {},
        { "应用版本: ", "当前设备:", "设备序列号:", "设备驱动固件版本：",
            "是否开启日志:", "设置日志路径:" },
    };
    for (int page = 0; page < 5; ++page) {
        QStringList texts;
        for (const QLabel* label : ui.tabWidget->widget(page)->findChildren<QLabel*>()) {
            texts << label->text();
        }
        for (const QString& caption : captions[page]) {
            EXPECT_TRUE(texts.contains(caption)) << caption.toStdString() << " on page " << page;
        }
    }
    EXPECT_EQ(on<QLabel>(kParameters, "label_filterColor")->text(), QStringLiteral("滤色:"));
    on<QLabel>(kParameters, "label_35");
    EXPECT_EQ(ui.imagePreviewVL->toolTip(), QStringLiteral("双击打开此预览图"));
    for (const char* name :
        { "scanPaperSizeVL", "scanSourceVL", "fileSepareteVL", "scanDPISizeVL", "scanColorModeVL",
            "fileNameVL", "brightValueVL", "autoLevelVL", "filePreSwitchVL", "threholdValueVL",
            "autoCropVL", "constraVL", "fileSameCoverVL", "rotAngleVL", "gammaValueVL" }) {
        on<QLabel>(kPreview, name);
    }
    for (const char* name : { "appNameLabel", "OrvaWebSiteLabel", "OrvaWebSiteLabel_2" }) {
        EXPECT_FALSE(on<QLabel>(kAbout, name)->text().isEmpty()) << name;
    }
}

TEST_F(FormTextsTest, ListsHoldTheTextsThatTheScannerLibraryKnows)
{
    QStringList formats;
    for (const orva::FormatName& format : orva::kFormatNames) {
        formats << QString::fromUtf8(format.text.data(), int(format.text.size()));
    }
    EXPECT_EQ(items(ui.fileTypeCombo), formats);
    EXPECT_EQ(items(ui.colorModeComBo), toList(orva::kColorModeTexts));
    EXPECT_EQ(items(ui.rotAngleComBox), toList(orva::kRotateTexts));
    EXPECT_EQ(items(ui.ColorDropoutComBox), toList(orva::kDropoutTexts));
    EXPECT_EQ(items(ui.MergeComBo), toList(orva::kMergeTexts));
    EXPECT_EQ(items(ui.autoRotateModComBox), toList(orva::kTextOrientationTexts));
    ASSERT_EQ(ui.imageCompressCombo->count(), int(orva::kJpegQualities.size()));
    for (int row = 0; row < ui.imageCompressCombo->count(); ++row) {
        const QString percent = QStringLiteral("(%1%)").arg(orva::kJpegQualities[std::size_t(row)]);
        EXPECT_TRUE(ui.imageCompressCombo->itemText(row).endsWith(percent)) << row;
    }

    EXPECT_EQ(items(ui.comboBox_doc), QStringList({ "图文", "文件", "图片" }));
    EXPECT_EQ(items(ui.seperateCombo), QStringList({ "无", "-", "_" }));
    EXPECT_EQ(items(ui.timeNametypeCombo), QStringList({ "年月日", "日月年", "月日年" }));
    EXPECT_EQ(items(ui.DenoiseComBo), QStringList({ "不去噪", "普通", "强化" }));
    EXPECT_EQ(items(ui.comboSetLogLevel), QStringList({ "关闭日志", "开启日志" }));
    for (const QComboBox* filledByDevice : { ui.scanSourceComBo, ui.DPIComBo, ui.paperTypeComBo }) {
        EXPECT_EQ(filledByDevice->count(), 0);
    }
}

TEST_F(FormTextsTest, NumbersStayInTheirRange)
{
    struct Case
    {
        QSlider* slider;
        QSpinBox* spinBox;
        int least, most;
    };
    const Case cases[] = {
        { ui.lightSlider, ui.lightSpinBox, -100, 100 },
        { ui.contraSlider, ui.constraSpinBox, -100, 100 },
        { ui.threholdSlider, ui.threholdSpinBox, 0, 255 },
        { ui.gammaSlider, nullptr, 1, 50 },
        { ui.BlankSlider, nullptr, 0, 100 },
    };
    for (const Case& pair : cases) {
        SCOPED_TRACE(pair.slider->objectName().toStdString());
        EXPECT_EQ(pair.slider->minimum(), pair.least);
        EXPECT_EQ(pair.slider->maximum(), pair.most);
        if (pair.spinBox != nullptr) {
            EXPECT_EQ(pair.spinBox->minimum(), pair.least);
            EXPECT_EQ(pair.spinBox->maximum(), pair.most);
            EXPECT_EQ(pair.spinBox->value(), pair.slider->value());
        }
    }
    EXPECT_DOUBLE_EQ(ui.gammaSpinBox->minimum(), 0.1);
    EXPECT_DOUBLE_EQ(ui.gammaSpinBox->maximum(), 5.0);
    EXPECT_DOUBLE_EQ(ui.gammaSpinBox->singleStep(), 0.1);
    EXPECT_EQ(ui.gammaSpinBox->decimals(), 1);
    EXPECT_EQ(ui.nameNoLenSpinBox->minimum(), 0);
    EXPECT_EQ(ui.nameNoLenSpinBox->maximum(), 10);
}

TEST_F(FormTextsTest, TypedTextsFitTheRecordsOfTheLibrary)
{
    window.show();
    QTest::keyClicks(ui.fileNamePreEdit, QStringLiteral("ab/c .1234567890123456789012345"));
    EXPECT_EQ(ui.fileNamePreEdit->text(), QStringLiteral("abc1234567890123456"));
    ui.fileNamePreEdit->setText(QStringLiteral("ab"));
    ui.fileNamePreEdit->insert(QStringLiteral("中"));
    EXPECT_EQ(ui.fileNamePreEdit->text(), QStringLiteral("ab"));
    EXPECT_EQ(ui.fileNamePreEdit->placeholderText(), QStringLiteral("仅支持英文或数字"));
    QTest::keyClicks(ui.nameNoSerialEdit, QStringLiteral("-1 2.3456789012"));
    EXPECT_EQ(ui.nameNoSerialEdit->text(), QStringLiteral("1234567890"));

    EXPECT_EQ(
        ui.filePathEdit->styleSheet(), QStringLiteral("background-color:rgba(255,255,255,255)"));
    for (QLineEdit* readOnly : { ui.filePathEdit, ui.fileNameExampleLine, ui.LogFilePathEdit }) {
        QTest::keyClicks(readOnly, QStringLiteral("x"));
        EXPECT_EQ(readOnly->text(), QString()) << readOnly->objectName().toStdString();
    }
}

TEST_F(FormTextsTest, RadioButtonsExcludeOnlyTheirPartner)
{
    ui.multipage_radio->setChecked(true);
    ui.serialNameRadio->setChecked(true);
    ui.sameNameAddNoRadio->setChecked(true);
    EXPECT_TRUE(ui.multipage_radio->isChecked());
    EXPECT_TRUE(ui.serialNameRadio->isChecked());
    EXPECT_FALSE(ui.singlepage_radio->isChecked());
    EXPECT_FALSE(ui.timeNameRadio->isChecked());
    EXPECT_FALSE(ui.sameNameCoverRadio->isChecked());
}

TEST_F(FormTextsTest, LoggedOutAtFirst)
{
    EXPECT_TRUE(ui.btn_Login->isEnabled());
    EXPECT_FALSE(ui.btn_Logout->isEnabled());
    EXPECT_FALSE(ui.btn_ChangePwd->isEnabled());
    EXPECT_FALSE(ui.btn_Log_Management->isEnabled());
}

TEST(CaptionLabel, BlanksAtTheEndsTakeNoRoom)
{
    CaptionLabel plain(nullptr);
    plain.setText(QStringLiteral("格式:"));
    CaptionLabel padded(nullptr);
    padded.setText(QStringLiteral("  格式:  "));
    EXPECT_EQ(padded.text(), QStringLiteral("  格式:  "));
    EXPECT_EQ(padded.sizeHint(), plain.sizeHint());
    padded.resize(padded.sizeHint());
    plain.resize(plain.sizeHint());
    EXPECT_EQ(padded.grab().toImage(), plain.grab().toImage());
}
