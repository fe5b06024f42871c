// The dialog for the pre-feed time: how early the feeder pulls in the next sheet. It only asks; the
// main window hands the value to the library.
#pragma once

#include <QDialog>

#include <memory>

namespace Ui {
class setDevPrefeed;
}

/// GUI thread.
class setDevPrefeed : public QDialog
{
    Q_OBJECT

public:
    /// The time last applied, in the device's unit; below 0.5 the controls start at 0.5.
    explicit setDevPrefeed(float time, QWidget* parent = nullptr);
    ~setDevPrefeed() override;

signals:
    /// Sent once, when a value is accepted. 0.0 switches pre-feed off.
    void SendPrefeedTimeValueToMain(float time);

public slots:
    void TimeSliderChanged(int tenths);
    void TimeSpinBoxChanged(double time);
    void SetDefaultValue();
    void SetPrefeedTimeValue();

private:
    std::unique_ptr<Ui::setDevPrefeed> m_ui;
};
