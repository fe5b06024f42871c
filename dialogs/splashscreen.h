// What is shown at start-up while scanners are searched. GUI thread.
#pragma once

#include <QDialog>

class QLabel;
class QTimer;

class splashScreen : public QDialog
{
    Q_OBJECT
public:
    explicit splashScreen(QWidget* parent = nullptr);

    bool isClosed() const { return m_closed != 0; }

public slots:
    /// One step of the moving dots, 1 to 6 and again from 1.
    void onUpdateDevSearchLabel();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    QLabel* m_searchLabel;
    QTimer* m_timer;
    int m_dots;
    int m_closed = 0;
};
