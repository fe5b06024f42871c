// The progress of a running scan: page counts and one button, which first cancels the scan and,
// once it is over, closes the dialog. GUI thread.
#pragma once

#include <QDialog>

#include <memory>

namespace Ui {
class StatusDialog;
}

class StatusDialog : public QDialog
{
    Q_OBJECT
public:
    explicit StatusDialog(QWidget* parent = nullptr);
    ~StatusDialog() override;

    /// Shows one report: -1 started, 0 progress, 1 finished. ocrPage is -1 when no text recognition
    /// runs. Does not show the dialog.
    void ShowStatusInfo(int code, int scanPage, int dealPage, int ocrPage);

signals:
    /// The operator cancels the scan.
    void SignalsInformCancelScan();

public slots:
    void reject() override;

private slots:
    void on_pushButton_clicked();

private:
    void fitToText();

    std::unique_ptr<Ui::StatusDialog> ui;
    bool m_cancelled = false;
};
