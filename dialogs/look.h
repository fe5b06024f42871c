// How every window of the application looks: style, palette, style sheet and icons, set in one
// place. GUI thread.
#pragma once

#include <QDialog>
#include <QIcon>
#include <QString>

namespace look {

/// Puts the look on the application, once; later calls do nothing. Registers the resources. Call it
/// before the first window; everything below does it as well.
void install();

/// The application's icon in all its sizes, 16 to 512 pixels.
QIcon appIcon();

/// One of the icons of tabs and buttons, by the name of its drawing ("scan", "folder"); 20 x 20
/// with a variant for high-density screens. "settings", "parameters", "preview", "user" and "about"
/// have a second state for a chosen tab. A name that is not there gives an empty icon.
QIcon icon(const QString& name);

} // namespace look

/// The same frame for all dialogs: the look above, the application's icon, no help button, 10 point
/// text. Call it first in a dialog's constructor, before its form.
void applyDialogLook(QDialog* dialog);
