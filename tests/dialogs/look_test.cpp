// Icons in every size that a desktop asks for, and one look for all dialogs.
#include "dialogs/look.h"

#include <QApplication>
#include <QFile>
#include <QRegularExpression>

#include <gtest/gtest.h>

TEST(Look, ApplicationIconHasEverySizeOnItsOwn)
{
    const QIcon icon = look::appIcon();
    for (const int size : { 16, 22, 24, 32, 48, 64, 128, 256, 512 }) {
        EXPECT_TRUE(icon.availableSizes().contains(QSize(size, size))) << size;
    }
}

TEST(Look, EveryPictureOfTheStyleSheetExists)
{
    look::install();
    const QRegularExpression reference("url\\((:[^)]+)\\)");
    QRegularExpressionMatchIterator found = reference.globalMatch(qApp->styleSheet());
    int pictures = 0;
    for (; found.hasNext(); ++pictures) {
        QString path = found.next().captured(1);
        EXPECT_TRUE(QFile::exists(path)) << path.toStdString();
        EXPECT_TRUE(QFile::exists(path.replace(".png", "@2x.png"))) << path.toStdString();
    }
    EXPECT_GT(pictures, 15);
}
