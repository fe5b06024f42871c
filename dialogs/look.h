// How every window of the application looks: style, palette, style sheet and icons, set in one
// place. GUI thread.
#pragma once

#include <QDialog>
#include <QIcon>
#include <QPixmap>
#include <QString>

namespace look {

/// Lets Qt follow the scale of the screens. Call it before the application object is made; without
/// it a high-density screen shows a small window.
void prepareScaling();

/// Puts the look on the application, once; later calls do nothing. Registers the resources. Call it
/// before the first window; everything below does it as well.
void install();

/// The application's icon in all its sizes, 16 to 512 pixels.
QIcon appIcon();

/// One of the icons of tabs, lists ("scanner") and buttons ("button-scan"), by the name of its
/// picture; 20 x 20, those of buttons 24 x 20, with a variant for high-density screens. Those of
/// tabs have a second state for the chosen tab. A name that is not there gives an empty icon.
QIcon icon(const QString& name);

/// An icon as a picture of the given edge length for a label, sharp on the screen of that widget.
QPixmap pixmap(const QIcon& icon, int size, const QWidget* widget);

} // namespace look

/// The same frame for all dialogs: the look above, the application's icon, no help button, 10 point
/// text. Call it first in a dialog's constructor, before its form.
void applyDialogLook(QDialog* dialog);
