// Every named control of the main window, reached through one pointer: the frame and the five tab
// pages are forms of their own, joined here. No behaviour beyond what a form can hold.
#pragma once

#include "ui_about_page.h"
#include "ui_main_frame.h"
#include "ui_parameters_page.h"
#include "ui_preview_page.h"
#include "ui_settings_page.h"
#include "ui_user_page.h"

/// GUI thread. The controls belong to the window given to setupUi; the record itself owns nothing.
struct MainWindowUi : Ui::MainFrame,
                      Ui::SettingsPage,
                      Ui::ParametersPage,
                      Ui::PreviewPage,
                      Ui::UserPage,
                      Ui::AboutPage
{
    /// Builds frame and pages in their order, sets icon, title, validators of prefix and serial
    /// start, tab order and shortcuts (Ctrl+1 to Ctrl+5 choose a page). Selects the first page.
    void setupUi(QMainWindow* window);
};
