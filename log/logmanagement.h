// The administrator's page for the job log: on or off, its folder, the way to the viewer.
#pragma once

#include <QDialog>
#include <QString>

#include <memory>

namespace Ui {
class logmanagement;
}

/// Settings lie in <data root><user>/ManagementLog/ManagementLog.ini and take effect as soon as
/// they are changed; looking at the page changes nothing. Modal once shown. It does not delete
/// itself: give it a parent or WA_DeleteOnClose. GUI thread.
class logmanagement : public QDialog
{
    Q_OBJECT

public:
    explicit logmanagement(QWidget* parent = nullptr);
    ~logmanagement() override;

    /// 1 when the choice reads "开启日志", 0 otherwise.
    [[nodiscard]] int SetOutLogLevel() const;
    /// Hands the level, and the folder if it can be written, to the job log.
    void onSetLogConfig();
    /// The two keys, into the controls and back. A page without stored settings shows the job log's
    /// own state: off, in its own folder.
    void readSetting();
    void writeSetting();

signals:
    /// The page applied new settings, so that the main window's own log controls can follow.
    void logConfigChanged(int levelIndex, const QString& folder);

public slots:
    void onOpenLogController();
    /// Every way of closing comes through here; stores the settings.
    void done(int result) override;

private slots:
    void on_SetLogSavePathBth_clicked();
    void on_button_log_controller_clicked();
    void on_deletelog_clicked();

private:
    [[nodiscard]] QString settingsFile() const;
    void onLevelChosen();
    void showState();

    std::unique_ptr<Ui::logmanagement> m_ui;
    QString m_CurrentSelectDevName; ///< base name of the settings file
};
