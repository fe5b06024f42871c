// The dialogs for sleep, auto-off and pre-feed times: what they refuse and what they send.
#include "dialogs/setdevprefeed.h"
#include "dialogs/setdevsleeptime.h"
#include "tests/support/answer_modal.h"
#include "tests/support/screenshot.h"

#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QSlider>
#include <QSpinBox>
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

const QString kPlainNote = QStringLiteral("自动关机时间为0时表示不关机");
const QString kRefusedNote =
    QStringLiteral("自动关机时间为0时表示不关机,自动关机时间暂时不支持设置为3小时!");

struct SleepDialog
{
    SleepDialog(int sleepTime, int autoOffTime, const stSleep_AutoOff& sleepRecord,
        const stSleep_AutoOff& autoOffRecord)
        : dialog(sleepTime, autoOffTime, sleepRecord, autoOffRecord)
        , sent(&dialog, &SetDevSleepTime::SendTimeValueToMain)
    {
        dialog.show();
    }
    QSpinBox& sleep() { return *dialog.findChild<QSpinBox*>(QStringLiteral("spinBox_sleep")); }
    QSpinBox& autoOff() { return *dialog.findChild<QSpinBox*>(QStringLiteral("spinBox_autoOff")); }
    QSlider& slider() { return *dialog.findChild<QSlider*>(QStringLiteral("slider_autoOff")); }
    QString note() { return dialog.findChild<QLabel*>(QStringLiteral("noteLabel"))->text(); }
    QString unit(const char* name)
    {
        return dialog.findChild<QLabel*>(QLatin1String(name))->text();
    }
    void press(const char* name) { dialog.findChild<QPushButton*>(QLatin1String(name))->click(); }

    SetDevSleepTime dialog;
    QSignalSpy sent;
};

TEST(SetDevSleepTime, starts_at_the_current_times_and_sends_the_new_ones)
{
    SleepDialog d(30, 8, kSleep, kHours);
    EXPECT_EQ(30, d.sleep().value());
    EXPECT_EQ(8, d.slider().value());
    EXPECT_EQ(QStringLiteral("单位:( 分钟 )"), d.unit("unit_sleep"));
    EXPECT_EQ(QStringLiteral("单位:( 小时 )"), d.unit("unit_autoOff"));
    EXPECT_EQ(kPlainNote, d.note());
    saveScreenshot(d.dialog, QStringLiteral("sleep_time"));
    d.slider().setValue(12);
    EXPECT_EQ(12, d.autoOff().value());
    d.press("okBtn");
    ASSERT_EQ(1, d.sent.count());
    EXPECT_EQ(30, d.sent.at(0).at(0).toInt());
    EXPECT_EQ(12, d.sent.at(0).at(1).toInt());
    EXPECT_FALSE(d.dialog.isVisible());
}

TEST(SetDevSleepTime, three_is_stepped_over_in_the_direction_of_the_change)
{
    SleepDialog d(10, 5, kSleep, kHours);
    d.autoOff().setValue(3);
    EXPECT_EQ(2, d.autoOff().value());
    EXPECT_EQ(2, d.slider().value());
    EXPECT_EQ(kRefusedNote, d.note());
    d.slider().setValue(3);
    EXPECT_EQ(4, d.autoOff().value());
    EXPECT_EQ(4, d.slider().value());
    EXPECT_EQ(kRefusedNote, d.note());
    d.autoOff().setValue(6);
    EXPECT_EQ(kPlainNote, d.note());

    SleepDialog upTo3(10, 0, kSleep, times('h', 0, 3, 1, 0));
    upTo3.autoOff().setValue(3);
    EXPECT_EQ(2, upTo3.autoOff().value());
}

TEST(SetDevSleepTime, thirty_can_be_typed)
{
    SleepDialog d(10, 60, kSleep, kMinutes);
    d.autoOff().selectAll();
    QTest::keyClicks(&d.autoOff(), QStringLiteral("30"));
    d.press("okBtn");
    ASSERT_EQ(1, d.sent.count());
    EXPECT_EQ(30, d.sent.at(0).at(1).toInt());
}

TEST(SetDevSleepTime, sleeping_later_than_switching_off_is_refused)
{
    SleepDialog d(30, 20, kSleep, kMinutes);
    const AnswerModal answer(QStringLiteral("确定"));
    d.press("okBtn");
    EXPECT_EQ(QStringLiteral("提示"), answer.title());
    EXPECT_EQ(QStringLiteral("休眠时间不得大于关机时间,请重新设置!"), answer.text());
    EXPECT_EQ(0, d.sent.count());
    EXPECT_TRUE(d.dialog.isVisible());
    d.autoOff().setValue(0); // never off
    d.press("okBtn");
    EXPECT_EQ(1, d.sent.count());
    EXPECT_EQ(1, answer.count());
}

TEST(SetDevSleepTime, other_units_and_missing_settings_are_not_compared)
{
    SleepDialog hours(30, 20, kSleep, kHours);
    hours.press("okBtn");
    EXPECT_EQ(1, hours.sent.count());

    stSleep_AutoOff missing = kMinutes;
    missing.nEnable = false;
    SleepDialog d(30, 20, kSleep, missing);
    EXPECT_FALSE(d.autoOff().isEnabled());
    EXPECT_FALSE(d.slider().isEnabled());
    EXPECT_EQ(0, d.autoOff().value());
    d.press("okBtn");
    ASSERT_EQ(1, d.sent.count());
    EXPECT_EQ(0, d.sent.at(0).at(1).toInt());
}

TEST(SetDevSleepTime, defaults_come_from_the_records_and_nothing_is_sent)
{
    SleepDialog d(30, 8, kSleep, kHours);
    d.press("defaultBtn");
    EXPECT_EQ(15, d.sleep().value());
    EXPECT_EQ(4, d.autoOff().value());
    EXPECT_TRUE(d.dialog.isVisible());
    QTest::keyClick(&d.dialog, Qt::Key_Escape);
    EXPECT_FALSE(d.dialog.isVisible());
    EXPECT_EQ(0, d.sent.count());
}

TEST(SetDevSleepTime, senseless_records_do_no_harm)
{
    SleepDialog d(-5, 1 << 30, times(0, 50, 10, 0, 999), times('x', -10, -20, -3, 3));
    d.press("defaultBtn");
    d.press("okBtn");
    EXPECT_EQ(1, d.sent.count());
}

struct PrefeedDialog
{
    explicit PrefeedDialog(float time)
        : dialog(time)
        , sent(&dialog, &setDevPrefeed::SendPrefeedTimeValueToMain)
    {
        dialog.show();
    }
    QSlider& slider() { return *dialog.findChild<QSlider*>(QStringLiteral("timeSlider")); }
    QDoubleSpinBox& spinBox()
    {
        return *dialog.findChild<QDoubleSpinBox*>(QStringLiteral("timeSpinBox"));
    }
    float sentBy(const char* button)
    {
        dialog.findChild<QPushButton*>(QLatin1String(button))->click();
        return sent.count() == 1 ? sent.at(0).at(0).toFloat() : -1.0F;
    }

    setDevPrefeed dialog;
    QSignalSpy sent;
};

TEST(SetDevPrefeed, every_tenth_can_be_set_on_either_control)
{
    PrefeedDialog d(2.0F);
    EXPECT_EQ(20, d.slider().value());
    EXPECT_EQ(2.0, d.spinBox().value());
    saveScreenshot(d.dialog, QStringLiteral("prefeed"));
    for (int tenths = 5; tenths <= 50; ++tenths) {
        const double time = QString::number(tenths / 10.0, 'f', 1).toDouble();
        d.slider().setValue(tenths);
        EXPECT_EQ(time, d.spinBox().value());
        d.slider().setValue(tenths == 5 ? 50 : 5);
        d.spinBox().setValue(time);
        EXPECT_EQ(tenths, d.slider().value());
        EXPECT_EQ(tenths, PrefeedDialog(static_cast<float>(time)).slider().value());
    }
}

TEST(SetDevPrefeed, the_range_is_kept_and_defaults_switch_off)
{
    PrefeedDialog off(0.0F);
    EXPECT_EQ(0.5, off.spinBox().value());
    EXPECT_FLOAT_EQ(0.5F, off.sentBy("okBtn"));
    PrefeedDialog high(100.0F);
    EXPECT_FLOAT_EQ(5.0F, high.sentBy("okBtn"));
    EXPECT_FALSE(high.dialog.isVisible());
    PrefeedDialog d(1.3F);
    EXPECT_FLOAT_EQ(0.0F, d.sentBy("defaultBtn"));
    EXPECT_FALSE(d.dialog.isVisible());
}

} // namespace
