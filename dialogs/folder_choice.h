// The dialog in which a folder is chosen. GUI thread.
#pragma once

#include <QString>
#include <QWidget>

/// Modal. The chosen folder; empty when the operator took none.
[[nodiscard]] QString chosenFolder(QWidget* parent, const QString& start);
