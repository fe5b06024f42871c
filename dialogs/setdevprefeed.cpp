#include "dialogs/setdevprefeed.h"

#include "dialogs/look.h"
#include "ui_setdevprefeed.h"

namespace {

/// The slider holds tenths.
constexpr int kSliderFactor = 10;

} // namespace

setDevPrefeed::setDevPrefeed(float time, QWidget* parent)
    : QDialog(parent)
    , m_ui(std::make_unique<Ui::setDevPrefeed>())
{
    applyDialogLook(this);
    m_ui->setupUi(this);
    connect(m_ui->timeSlider, &QSlider::valueChanged, this, &setDevPrefeed::TimeSliderChanged);
    connect(m_ui->timeSpinBox, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this,
        &setDevPrefeed::TimeSpinBoxChanged);
    connect(m_ui->defaultBtn, &QPushButton::clicked, this, &setDevPrefeed::SetDefaultValue);
    connect(m_ui->okBtn, &QPushButton::clicked, this, &setDevPrefeed::SetPrefeedTimeValue);
    m_ui->timeSlider->setValue(static_cast<int>(time * kSliderFactor));
    m_ui->timeSpinBox->setValue(static_cast<double>(time));
}

setDevPrefeed::~setDevPrefeed() = default;

void setDevPrefeed::TimeSliderChanged(int tenths)
{
    m_ui->timeSpinBox->setValue(static_cast<double>(tenths) / kSliderFactor);
}

void setDevPrefeed::TimeSpinBoxChanged(double time)
{
    m_ui->timeSlider->setValue(static_cast<int>(time * kSliderFactor));
}

void setDevPrefeed::SetDefaultValue()
{
    emit SendPrefeedTimeValueToMain(0.0F);
    close();
}

void setDevPrefeed::SetPrefeedTimeValue()
{
    emit SendPrefeedTimeValueToMain(static_cast<float>(m_ui->timeSlider->value()) / kSliderFactor);
    close();
}
