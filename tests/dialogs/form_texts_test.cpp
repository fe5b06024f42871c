// The controls that the rest of the application reaches by name: the lists, ranges and limits that
// operators and stored settings rely on. Captions are looked at in the pictures of the pages.
#include "mainwindow/forms/caption_label.h"
#include "mainwindow/main_window_ui.h"
#include "sdk/codes.h"

#include <QMainWindow>
#include <QTest>

#include <gtest/gtest.h>

namespace {

class FormTextsTest : public testing::Test
{
protected:
    FormTextsTest() { ui.setupUi(&window); }

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

QString toText(std::string_view text)
{
    return QString::fromUtf8(text.data(), int(text.size()));
}

template <class Texts>
QStringList toList(const Texts& texts)
{
    QStringList list;
    for (const std::string_view text : texts) {
        list << toText(text);
    }
    return list;
}

} // namespace

TEST_F(FormTextsTest, ListsHoldTheTextsThatTheScannerLibraryKnows)
{
    QStringList formats;
    for (const orva::FormatName& format : orva::kFormatNames) {
        formats << toText(format.text);
    }
    EXPECT_EQ(items(ui.fileTypeCombo), formats);
    EXPECT_EQ(items(ui.colorModeComBo), toList(orva::kColorModeTexts));
    EXPECT_EQ(items(ui.rotAngleComBox), toList(orva::kRotateTexts));
    EXPECT_EQ(items(ui.ColorDropoutComBox), toList(orva::kDropoutTexts));
    EXPECT_EQ(items(ui.MergeComBo), toList(orva::kMergeTexts));
    EXPECT_EQ(items(ui.autoRotateModComBox), toList(orva::kTextOrientationTexts));
    ASSERT_EQ(ui.imageCompressCombo->count(), int(orva::kJpegQualities.size()));
    for (int row = 0; row < ui.imageCompressCombo->count(); ++row) {
        const QString percent = QString("(%1%)").arg(orva::kJpegQualities[std::size_t(row)]);
        EXPECT_TRUE(ui.imageCompressCombo->itemText(row).endsWith(percent)) << row;
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
        for (const int beyond : { -100000, 100000 }) {
            const int limit = beyond < 0 ? pair.least : pair.most;
            pair.slider->setValue(beyond);
            EXPECT_EQ(pair.slider->value(), limit) << pair.slider->objectName().toStdString();
            if (pair.spinBox != nullptr) {
                pair.spinBox->setValue(beyond);
                EXPECT_EQ(pair.spinBox->value(), limit);
            }
        }
    }
    EXPECT_DOUBLE_EQ(ui.gammaSpinBox->minimum(), 0.1);
    EXPECT_DOUBLE_EQ(ui.gammaSpinBox->maximum(), 5.0);
    EXPECT_EQ(ui.gammaSpinBox->decimals(), 1);
    EXPECT_EQ(ui.nameNoLenSpinBox->maximum(), 10);
}

TEST_F(FormTextsTest, TypedTextsFitTheRecordsOfTheLibrary)
{
    window.show();
    QTest::keyClicks(ui.fileNamePreEdit, "ab/c .1234567890123456789012345");
    EXPECT_EQ(ui.fileNamePreEdit->text(), "abc1234567890123456");
    QTest::keyClicks(ui.nameNoSerialEdit, "-1 2.3456789012");
    EXPECT_EQ(ui.nameNoSerialEdit->text(), "1234567890");
    for (QLineEdit* readOnly : { ui.filePathEdit, ui.fileNameExampleLine, ui.LogFilePathEdit }) {
        QTest::keyClicks(readOnly, "x");
        EXPECT_EQ(readOnly->text(), QString()) << readOnly->objectName().toStdString();
    }
}

TEST_F(FormTextsTest, RadioButtonsExcludeOnlyTheirPartner)
{
    for (QAbstractButton* chosen :
        { ui.multipage_radio, ui.serialNameRadio, ui.sameNameAddNoRadio }) {
        chosen->setChecked(true);
    }
    EXPECT_TRUE(ui.multipage_radio->isChecked() && ui.serialNameRadio->isChecked());
    EXPECT_FALSE(ui.singlepage_radio->isChecked() || ui.timeNameRadio->isChecked()
        || ui.sameNameCoverRadio->isChecked());
}

TEST(CaptionLabel, BlanksAtTheEndsTakeNoRoom)
{
    CaptionLabel plain(nullptr);
    plain.setText("格式:");
    CaptionLabel padded(nullptr);
    padded.setText("  格式:  ");
    EXPECT_EQ(padded.text(), "  格式:  ");
    padded.resize(padded.sizeHint());
    plain.resize(plain.sizeHint());
    EXPECT_EQ(padded.grab().toImage(), plain.grab().toImage());
}
