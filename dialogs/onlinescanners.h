// The choice among the scanners that were found. Closing it without a choice asks the main window
// to close, which ends the application. GUI thread.
#pragma once

#include <QDialog>

class QLabel;
class QListWidget;
class QPushButton;

class onlineScanners : public QDialog
{
    Q_OBJECT
public:
    explicit onlineScanners(QWidget* parent = nullptr);

    /// 0; -1 for an empty name, which is not added.
    int addNewDeviceItem(QString& name);
    /// Selects a row; one that does not exist clears the selection.
    void setCurScanner(int row);
    /// 0 and the text of the selected row; -1, the name untouched, when no row is selected.
    int getSelScanner(QString& name);

public slots:
    void onPrecessOkBtn();
    void onPrecessCancelBtn();
    void onSelectScannerItem();

signals:
    void selScanDeviceSig(QString name);
    /// The dialog was closed without a choice. Sent once.
    void unInitmainWindow();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void clearSelection();

    QLabel* m_titleLabel;
    QListWidget* m_deviceList;
    QLabel* m_emptyHint; ///< stands in the empty list
    QPushButton* m_okBtn;
    QPushButton* m_cancelBtn;
    QString m_selectedName;
    int m_selected = 0;
    int m_selectedRow = -1;
    int m_closed = 0;
    bool m_quitSent = false;
};
