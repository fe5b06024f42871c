// The dialogs for sleep, auto-off and pre-feed times: what they refuse and what they send.
#include "dialogs/setdevprefeed.h"
#include "dialogs/setdevsleeptime.h"
#include "tests/support/answer_modal.h"

#include <QDoubleSpinBox>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QSlider>
#include <QTest>

#include <gtest/gtest.h>

namespace {

stSleep_AutoOff times(int unit, int min, int max, int step, int value)
{
    stSleep_AutoOff record;
    record.nEnable = true;
    record.nMin = min;
    record.nMax = max;
    record.nStep = step;
    record.chUnit = unit;
    record.value = value;
    return record;
}

const stSleep_AutoOff kSleep = times('m', 0, 240, 1, 15);
const stSleep_AutoOff kHours = times('h', 0, 24, 1, 4);
const stSleep_AutoOff kMinutes = times('m', 0, 240, 1, 60);
const QString kPlainNote = "自动关机时间为0时表示不关机";
const QString kRefusedNote = kPlainNote + ",自动关机时间暂时不支持设置为3小时!";

struct SleepDialog
{
    SleepDialog(int sleepTime, int autoOffTime, const stSleep_AutoOff& sleepRecord,
        const stSleep_AutoOff& autoOffRecord)
        : dialog(sleepTime, autoOffTime, sleepRecord, autoOffRecord)
    {
        dialog.show();
    }
    void press(const char* name) { dialog.findChild<QPushButton*>(name)->click(); }
    QString text(const char* label) { return dialog.findChild<QLabel*>(label)->text(); }
    /// "sleep auto-off" of all that was sent.
    std::string sent() const
    {
        std::string all;
        for (const QList<QVariant>& times : spy) {
            all += times[0].toString().toStdString() + ' ' + times[1].toString().toStdString();
        }
        return all;
    }

    SetDevSleepTime dialog;
    QSignalSpy spy { &dialog, &SetDevSleepTime::SendTimeValueToMain };
    QSpinBox& sleep { *dialog.findChild<QSpinBox*>("spinBox_sleep") };
    QSpinBox& autoOff { *dialog.findChild<QSpinBox*>("spinBox_autoOff") };
    QSlider& slider { *dialog.findChild<QSlider*>("slider_autoOff") };
};

} // namespace

TEST(SetDevSleepTime, SendsTheNewTimesAndDefaultsComeFromTheRecords)
{
    SleepDialog d(30, 8, kSleep, kHours);
    EXPECT_EQ(d.text("unit_sleep"), "单位:( 分钟 )");
    EXPECT_EQ(d.text("unit_autoOff"), "单位:( 小时 )");
    EXPECT_EQ(d.text("noteLabel"), kPlainNote);
    d.press("defaultBtn");
    EXPECT_EQ(d.sleep.value(), 15);
    EXPECT_EQ(d.autoOff.value(), 4);
    EXPECT_TRUE(d.dialog.isVisible() && d.spy.isEmpty());
    d.slider.setValue(12);
    d.press("okBtn");
    EXPECT_EQ(d.sent(), "15 12");
    EXPECT_FALSE(d.dialog.isVisible());

    SleepDialog kept(30, 8, kSleep, kHours);
    QTest::keyClick(&kept.dialog, Qt::Key_Escape);
    EXPECT_EQ(kept.sent(), "");
}

TEST(SetDevSleepTime, ThreeIsSteppedOverInTheDirectionOfTheChangeButThirtyCanBeTyped)
{
    SleepDialog d(10, 5, kSleep, kHours);
    d.autoOff.setValue(3);
    EXPECT_EQ(d.autoOff.value(), 2);
    EXPECT_EQ(d.slider.value(), 2);
    EXPECT_EQ(d.text("noteLabel"), kRefusedNote);
    d.slider.setValue(3);
    EXPECT_EQ(d.autoOff.value(), 4);
    EXPECT_EQ(d.text("noteLabel"), kRefusedNote);
    d.autoOff.setValue(6);
    EXPECT_EQ(d.text("noteLabel"), kPlainNote);

    SleepDialog upTo3(10, 0, kSleep, times('h', 0, 3, 1, 0));
    upTo3.autoOff.setValue(3);
    EXPECT_EQ(upTo3.autoOff.value(), 2);

    SleepDialog typed(10, 60, kSleep, kMinutes);
    typed.autoOff.selectAll();
    QTest::keyClicks(&typed.autoOff, "30");
    typed.press("okBtn");
    EXPECT_EQ(typed.sent(), "10 30");
}

TEST(SetDevSleepTime, SleepingLaterThanSwitchingOffIsRefused)
{
    SleepDialog d(30, 20, kSleep, kMinutes);
    const AnswerModal answer("确定");
    d.press("okBtn");
    EXPECT_EQ(answer.title(), "提示");
    EXPECT_EQ(answer.text(), "休眠时间不得大于关机时间,请重新设置!");
    EXPECT_TRUE(d.dialog.isVisible() && d.spy.isEmpty());
    d.autoOff.setValue(0); // never off
    d.press("okBtn");
    EXPECT_EQ(d.sent(), "30 0");

    SleepDialog otherUnit(30, 20, kSleep, kHours);
    otherUnit.press("okBtn");
    EXPECT_EQ(otherUnit.sent(), "30 20");
    stSleep_AutoOff missing = kMinutes;
    missing.nEnable = false;
    SleepDialog without(30, 20, kSleep, missing);
    EXPECT_FALSE(without.autoOff.isEnabled() || without.slider.isEnabled());
    without.press("okBtn");
    EXPECT_EQ(without.sent(), "30 0");
    SleepDialog senseless(-5, 1 << 30, times(0, 50, 10, 0, 999), times('x', -10, -20, -3, 3));
    senseless.press("defaultBtn");
    senseless.press("okBtn");
    EXPECT_EQ(senseless.spy.count(), 1);
    EXPECT_EQ(answer.count(), 1);
}

TEST(SetDevPrefeed, EveryTenthCanBeSetOnEitherControlAndTheRangeIsKept)
{
    setDevPrefeed dialog(2.0F);
    QSignalSpy sent(&dialog, &setDevPrefeed::SendPrefeedTimeValueToMain);
    auto* slider = dialog.findChild<QSlider*>("timeSlider");
    auto* spinBox = dialog.findChild<QDoubleSpinBox*>("timeSpinBox");
    for (int tenths = 5; tenths <= 50; ++tenths) {
        const double time = QString::number(tenths / 10.0, 'f', 1).toDouble();
        slider->setValue(tenths);
        EXPECT_EQ(spinBox->value(), time);
        slider->setValue(tenths == 5 ? 50 : 5);
        spinBox->setValue(time);
        EXPECT_EQ(slider->value(), tenths);
    }
    dialog.show();
    dialog.findChild<QPushButton*>("defaultBtn")->click();
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_EQ(sent.takeLast().at(0).toFloat(), 0.0F) << "off";
    for (const auto& [time, expected] :
        { std::pair(0.0F, 0.5F), { 1.3F, 1.3F }, { 100.0F, 5.0F } }) {
        setDevPrefeed one(time);
        QSignalSpy spy(&one, &setDevPrefeed::SendPrefeedTimeValueToMain);
        one.findChild<QPushButton*>("okBtn")->click();
        ASSERT_EQ(spy.count(), 1);
        EXPECT_FLOAT_EQ(spy.at(0).at(0).toFloat(), expected);
    }
}
