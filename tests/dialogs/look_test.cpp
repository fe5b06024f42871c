// Icons in every size that a desktop asks for, and one look for all dialogs.
#include "dialogs/look.h"

#include <QApplication>
#include <QFile>
#include <QLabel>
#include <QRegularExpression>
#include <QStyle>

#include <gtest/gtest.h>

TEST(Look, ApplicationIconHasEverySizeOnItsOwn)
{
    const QIcon icon = look::appIcon();
    for (const int size : { 16, 22, 24, 32, 48, 64, 128, 256, 512 }) {
        EXPECT_TRUE(icon.availableSizes().contains(QSize(size, size))) << size;
    }
    const QImage plain(QStringLiteral(":/icons/appicon.png"));
    EXPECT_EQ(plain.size(), QSize(64, 64));
    EXPECT_EQ(qAlpha(plain.pixel(0, 0)), 0) << "the corners are clear";
    EXPECT_EQ(qAlpha(plain.pixel(32, 50)), 255);
    EXPECT_EQ(QImage(QStringLiteral(":/icons/appicon@2x.png")).size(), QSize(128, 128));
}

TEST(Look, IconsFollowTheStateOfTheirControl)
{
    look::install();
    const QIcon tab = look::icon(QStringLiteral("settings"));
    EXPECT_NE(tab.pixmap(QSize(20, 20), QIcon::Normal, QIcon::On).toImage(),
        tab.pixmap(QSize(20, 20), QIcon::Normal, QIcon::Off).toImage());
    EXPECT_FALSE(look::icon(QStringLiteral("button-scan")).isNull());
    EXPECT_TRUE(look::icon(QStringLiteral("no such icon")).isNull());
}

TEST(Look, PixmapForALabelIsAsSharpAsTheScreen)
{
    QLabel label;
    const QPixmap picture = look::pixmap(look::appIcon(), 48, &label);
    EXPECT_EQ(picture.size(), QSize(48, 48) * label.devicePixelRatioF());
    EXPECT_EQ(picture.devicePixelRatio(), label.devicePixelRatioF());
}

TEST(Look, EveryPictureOfTheStyleSheetExists)
{
    look::install();
    const QRegularExpression reference(QStringLiteral("url\\((:[^)]+)\\)"));
    QRegularExpressionMatchIterator found = reference.globalMatch(qApp->styleSheet());
    int pictures = 0;
    while (found.hasNext()) {
        const QString path = found.next().captured(1);
        QString sharp = path;
        EXPECT_TRUE(QFile::exists(path)) << path.toStdString();
        EXPECT_TRUE(QFile::exists(sharp.replace(".png", "@2x.png"))) << path.toStdString();
        ++pictures;
    }
    EXPECT_GT(pictures, 15);
}

TEST(Look, DialogsGetIconAndPlainFrame)
{
    QDialog dialog;
    dialog.setWindowFlag(Qt::WindowContextHelpButtonHint, true);
    applyDialogLook(&dialog);
    EXPECT_FALSE(dialog.windowFlags().testFlag(Qt::WindowContextHelpButtonHint));
    EXPECT_FALSE(dialog.windowIcon().isNull());
    EXPECT_EQ(QApplication::font().pointSize(), 10);
}
