// The log viewer: the job log of one day, read only.
#pragma once

#include <QDate>
#include <QDialog>
#include <QString>

#include <memory>

namespace Ui {
class logcontroller;
}
class LogFileReader;
class QTimer;

/// Opens on today's file. A long file comes in portions, so that the window always answers. GUI
/// thread.
class logcontroller : public QDialog
{
    Q_OBJECT

public:
    /// The folder that holds the monthly folders, with or without a slash at the end.
    explicit logcontroller(const QString& folder, QWidget* parent = nullptr);
    ~logcontroller() override;

    /// The job-log file of a day below that folder.
    [[nodiscard]] static QString dayFile(const QString& folder, const QDate& date);

public slots:
    void OnBackToday();
    void onDateChanged(const QDate& date);

private:
    void LogDateEditInit();
    void SlotsConnect();
    void showNextPortions();
    void showProgress();

    std::unique_ptr<Ui::logcontroller> m_ui;
    QTimer* m_more; ///< runs while a file is being read
    std::unique_ptr<LogFileReader> m_reader; ///< while a file is being read
    QString m_folder;
};
