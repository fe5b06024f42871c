#include "dialogs/setdevsleeptime.h"

#include "dialogs/look.h"
#include "ui_setdevsleeptime.h"

#include <QAbstractButton>
#include <QMessageBox>

#include <cstdio>

namespace {

/// The time that no device takes for now.
constexpr int kRefused = 3;

QString unitText(int unit)
{
    switch (unit) {
    case stSleep_AutoOff::kUnitMinutes:
        return QStringLiteral("单位:( 分钟 )");
    case stSleep_AutoOff::kUnitHours:
        return QStringLiteral("单位:( 小时 )");
    default:
        return {};
    }
}

void setRange(const stSleep_AutoOff& record, QSlider& slider, QSpinBox& spinBox, QLabel& unit)
{
    unit.setText(unitText(record.chUnit));
    if (!record.nEnable) {
        slider.setRange(0, 0);
        spinBox.setRange(0, 0);
        slider.setEnabled(false);
        spinBox.setEnabled(false);
        return;
    }
    slider.setSingleStep(record.nStep);
    slider.setPageStep(record.nStep);
    spinBox.setSingleStep(record.nStep);
    slider.setRange(record.nMin, record.nMax);
    spinBox.setRange(record.nMin, record.nMax);
}

void followEachOther(QSlider* slider, QSpinBox* spinBox)
{
    QObject::connect(slider, &QSlider::valueChanged, spinBox, &QSpinBox::setValue);
    QObject::connect(
        spinBox, QOverload<int>::of(&QSpinBox::valueChanged), slider, &QSlider::setValue);
}

} // namespace

SetDevSleepTime::SetDevSleepTime(int sleep, int autoOff, const stSleep_AutoOff& sleepRecord,
    const stSleep_AutoOff& autoOffRecord, QWidget* parent)
    : QDialog(parent)
    , m_ui(std::make_unique<Ui::SetDevSleepTime>())
    , m_stSleep(sleepRecord)
    , m_stAutoOff(autoOffRecord)
{
    applyDialogLook(this);
    m_ui->setupUi(this);
    SetRange();
    SlotsConnect();
    m_ui->spinBox_sleep->setValue(sleep);
    m_ui->spinBox_autoOff->setValue(autoOff);
    JudgeCurTimeIsLegal();
}

SetDevSleepTime::~SetDevSleepTime() = default;

void SetDevSleepTime::SetRange()
{
    std::printf("m_stSleep.nStep=%d,m_stSleep.nMin=%d,m_stSleep.nMax=%d,m_stAutoOff.nStep=%d,"
                "m_stAutoOff.nMin=%d,m_stAutoOff.nMax=%d\n",
        m_stSleep.nStep, m_stSleep.nMin, m_stSleep.nMax, m_stAutoOff.nStep, m_stAutoOff.nMin,
        m_stAutoOff.nMax);
    std::fflush(stdout);
    setRange(m_stSleep, *m_ui->slider_sleep, *m_ui->spinBox_sleep, *m_ui->unit_sleep);
    setRange(m_stAutoOff, *m_ui->slider_autoOff, *m_ui->spinBox_autoOff, *m_ui->unit_autoOff);
}

void SetDevSleepTime::SlotsConnect()
{
    followEachOther(m_ui->slider_sleep, m_ui->spinBox_sleep);
    followEachOther(m_ui->slider_autoOff, m_ui->spinBox_autoOff);
    connect(m_ui->spinBox_autoOff, QOverload<int>::of(&QSpinBox::valueChanged), this,
        &SetDevSleepTime::JudgeCurTimeIsLegal);
    connect(m_ui->defaultBtn, &QPushButton::clicked, this, &SetDevSleepTime::SetDefaultTimeValue);
    connect(m_ui->okBtn, &QPushButton::clicked, this, &SetDevSleepTime::SetCurTimeValue);
}

void SetDevSleepTime::SetDefaultTimeValue()
{
    m_ui->spinBox_sleep->setValue(m_stSleep.nEnable ? m_stSleep.value : 0);
    m_ui->spinBox_autoOff->setValue(m_stAutoOff.nEnable ? m_stAutoOff.value : 0);
}

void SetDevSleepTime::JudgeCurTimeIsLegal()
{
    m_ui->noteLabel->clear();
    QSpinBox& spinBox = *m_ui->spinBox_autoOff;
    if (spinBox.value() != kRefused) {
        m_lastAutoOff = spinBox.value();
        m_ui->noteLabel->setText(QStringLiteral("自动关机时间为0时表示不关机"));
        return;
    }
    const int below = kRefused - 1;
    const int above = kRefused + 1;
    int next = m_lastAutoOff > kRefused ? below : above;
    if (next < spinBox.minimum()) {
        next = above;
    } else if (next > spinBox.maximum()) {
        next = below;
    }
    spinBox.setValue(next); // comes back here with its own note
    m_ui->noteLabel->setText(
        QStringLiteral("自动关机时间为0时表示不关机,自动关机时间暂时不支持设置为3小时!"));
}

void SetDevSleepTime::SetCurTimeValue()
{
    // A typed number counts when it is complete: on the way to 30 the box would refuse the 3.
    m_ui->spinBox_sleep->interpretText();
    m_ui->spinBox_autoOff->interpretText();
    const int sleep = m_ui->spinBox_sleep->value();
    const int autoOff = m_ui->spinBox_autoOff->value();
    const bool comparable = m_stSleep.nEnable && m_stAutoOff.nEnable
        && m_stSleep.chUnit == stSleep_AutoOff::kUnitMinutes
        && m_stAutoOff.chUnit == stSleep_AutoOff::kUnitMinutes;
    if (comparable && sleep != 0 && autoOff != 0 && sleep > autoOff) {
        QMessageBox box(QMessageBox::Information, QStringLiteral("提示"),
            QStringLiteral("休眠时间不得大于关机时间,请重新设置!"), QMessageBox::Ok, this);
        box.button(QMessageBox::Ok)->setText(QStringLiteral("确定"));
        box.exec();
        return;
    }
    emit SendTimeValueToMain(sleep, autoOff);
    close();
}
