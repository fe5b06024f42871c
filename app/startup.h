// Start-up: from the application object to the event loop. GUI thread.
#pragma once

#include "app/search_alarm.h"
#include "app/single_instance.h"

#include <QApplication>

class MainWindow;
class splashScreen;

/// The one main window; null before start-up makes it. Not deleted by start-up.
extern MainWindow* g_MainWindow;
/// The splash while it is visible, else null.
extern splashScreen* g_waitingDlg;

/// The application object. An exception that reaches the event loop is logged with its text, and
/// the application goes on. 8-bit text is UTF-8 whatever the locale.
class Application : public QApplication
{
public:
    Application(int& argc, char** argv);
    bool notify(QObject* receiver, QEvent* event) override;
};

/// The whole start-up and the event loop. Gives the exit status: the event loop's result, or that
/// of the box when another copy runs.
int runApplication();

/// What follows the alarm: lists the scanners and shows the choice.
void searchScanners();

/// 0 when the window's library was initialised; otherwise tells the user, closes the window, -1.
int IsSDKInitSuccess();
