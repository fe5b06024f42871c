#include "tests/support/screenshot.h"

#include <QDir>
#include <QPixmap>

#include <gtest/gtest.h>

void saveScreenshot(QWidget& widget, const QString& name)
{
    const QString folder = QStringLiteral(TARVEX_BUILD_DIR "/screenshots");
    const QString file = folder + QLatin1Char('/') + name + QStringLiteral(".png");
    EXPECT_TRUE(QDir().mkpath(folder) && widget.grab().save(file)) << file.toStdString();
}
