// The one box through which the template dialog tells, asks and shows progress.
#pragma once

#include <QMessageBox>
#include <QString>

/// Made once, without a parent, and reused. GUI thread.
class statusMessageDialog : public QMessageBox
{
    Q_OBJECT

public:
    explicit statusMessageDialog(QWidget* parent = nullptr);

    /// Title, text, buttons and icons of one work status (work_status.h). Does not show the box. A
    /// caller that asks a question tests whether exec() returned QMessageBox::Yes.
    void SetStatusInfo(int code, int value, const QString& name);

protected:
    void closeEvent(QCloseEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void forceSize();
};
