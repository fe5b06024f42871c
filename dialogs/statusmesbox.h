// The message box of the application: scan errors by their code, plain notices, and a progress
// form. GUI thread.
#pragma once

#include "dialogs/error_catalogue.h"

#include <QMessageBox>

class StatusMessageBox : public QMessageBox
{
    Q_OBJECT
public:
    /// One entry of the error catalogue.
    using cont = ErrorEntry;

    StatusMessageBox();
    ~StatusMessageBox() override;

    /// (Re)loads the error catalogue.
    void getErrorCode(QString path);

    /// Prepares the box for one error code; does not show it. False when the catalogue hides the
    /// code: the box must then not be shown. A code that is not in the catalogue is always shown.
    bool ShowStatusError(int code);

    /// Prepares the box as a notice with the one button "确 定".
    void CustomMsgBox(QString title, QString text);

    /// Prepares the box as a progress report; codes and texts are those of the progress dialog.
    void ShowStatusInfo(int code, int scanPage, int dealPage, int ocrPage);

    /// Moves the box to the middle of the dialog that it belongs to.
    void placeOver(const QWidget& dialog);

    QPushButton* cancelButton() const { return m_cancelButton; }

public slots:
    /// Takes the cancel button out of the box after it was clicked.
    void onCancelScan();

protected:
    void closeEvent(QCloseEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void setSingleYesButton();
    void takeCancelButtonOut();
    void forceSize();

    ErrorCatalogue m_catalogue;
    QPushButton* m_cancelButton; ///< owned by this box, also while it is not in it
    bool m_hasCancelButton = false;
};
