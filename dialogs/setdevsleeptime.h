// The dialog for the times after which the scanner sleeps and switches itself off. It only asks;
// the main window hands the values to the library.
#pragma once

#include "sdk/device_info_json.h"

#include <QDialog>

#include <memory>

namespace Ui {
class SetDevSleepTime;
}

/// GUI thread.
class SetDevSleepTime : public QDialog
{
    Q_OBJECT

public:
    /// The current times, in the units of the records, and what the device can do.
    SetDevSleepTime(int sleep, int autoOff, const stSleep_AutoOff& sleepRecord,
        const stSleep_AutoOff& autoOffRecord, QWidget* parent = nullptr);
    ~SetDevSleepTime() override;

signals:
    /// Sent once, when the values are accepted; a setting that the device lacks is 0.
    void SendTimeValueToMain(int sleep, int autoOff);

public slots:
    void SetDefaultTimeValue();
    void SetCurTimeValue();
    void JudgeCurTimeIsLegal();

private:
    void SetRange();
    void SlotsConnect();

    std::unique_ptr<Ui::SetDevSleepTime> m_ui;
    stSleep_AutoOff m_stSleep;
    stSleep_AutoOff m_stAutoOff;
    int m_lastAutoOff = 0; ///< the last value that was not refused
};
