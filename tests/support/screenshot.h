// Pictures of widgets, for people to look at. No test compares them.
#pragma once

#include <QString>
#include <QWidget>

/// Saves the widget as <build>/screenshots/<name>.png. GUI thread.
void saveScreenshot(QWidget& widget, const QString& name);
