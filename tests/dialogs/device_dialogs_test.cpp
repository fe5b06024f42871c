// The splash of the device search and the choice of a scanner.
#include "app/timing.h"
#include "dialogs/onlinescanners.h"
#include "dialogs/splashscreen.h"

#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

namespace {

class OnlineScannersTest : public testing::Test
{
protected:
    OnlineScannersTest()
    {
        for (const char* text : { "Orvascan 虚拟扫描仪", "Velmar 扫描仪 #2" }) {
            QString name = QString::fromUtf8(text);
            EXPECT_EQ(dialog.addNewDeviceItem(name), 0);
        }
    }

    onlineScanners dialog;
    QListWidget* list = dialog.findChild<QListWidget*>();
    QPushButton* ok = dialog.findChild<QPushButton*>(QStringLiteral("okBtn"));
    QPushButton* cancel = dialog.findChild<QPushButton*>(QStringLiteral("cancelBtn"));
    QSignalSpy chosen { &dialog, &onlineScanners::selScanDeviceSig };
    QSignalSpy quit { &dialog, &onlineScanners::unInitmainWindow };
};

} // namespace

TEST_F(OnlineScannersTest, TextsAndFixedFrame)
{
    EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Velmar数字化安全采集系统"));
    EXPECT_EQ(dialog.findChild<QLabel*>(QStringLiteral("titleLabel"))->text(),
        QStringLiteral("请选择扫描设备"));
    EXPECT_EQ(ok->text(), QStringLiteral("确定"));
    EXPECT_EQ(cancel->text(), QStringLiteral("取消"));
    EXPECT_EQ(dialog.font().pointSize(), 10);
    EXPECT_FALSE(dialog.windowIcon().isNull());
    dialog.show();
    EXPECT_EQ(dialog.minimumSize(), dialog.maximumSize());
    EXPECT_FALSE(dialog.windowFlags().testFlag(Qt::WindowMinimizeButtonHint));
    EXPECT_FALSE(dialog.windowFlags().testFlag(Qt::WindowMaximizeButtonHint));
}

TEST_F(OnlineScannersTest, SelectedRowCanBeTaken)
{
    QString name = QStringLiteral("untouched");
    EXPECT_FALSE(ok->isEnabled());
    EXPECT_EQ(dialog.getSelScanner(name), -1);
    EXPECT_EQ(name, QStringLiteral("untouched"));

    dialog.setCurScanner(7);
    EXPECT_FALSE(ok->isEnabled());
    dialog.setCurScanner(1);
    dialog.show();
    EXPECT_TRUE(ok->isEnabled());
    EXPECT_EQ(dialog.getSelScanner(name), 0);
    EXPECT_EQ(name, QStringLiteral("Velmar 扫描仪 #2"));

    QTest::keyClick(list, Qt::Key_Return);
    ASSERT_EQ(chosen.count(), 1);
    EXPECT_EQ(chosen.at(0).at(0).toString(), QStringLiteral("Velmar 扫描仪 #2"));
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_EQ(quit.count(), 0);
}

TEST_F(OnlineScannersTest, DoubleClickTakesTheRowOnce)
{
    dialog.show();
    const QRect row = list->visualItemRect(list->item(0));
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, row.center());
    QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, row.center());
    ASSERT_EQ(chosen.count(), 1);
    EXPECT_EQ(chosen.at(0).at(0).toString(), QStringLiteral("Orvascan 虚拟扫描仪"));
    EXPECT_EQ(quit.count(), 0);
}

TEST_F(OnlineScannersTest, EveryWayOutWithoutAChoiceAsksToQuitOnce)
{
    struct Way
    {
        const char* name;
        void (*leave)(onlineScanners&, QPushButton&);
    };
    const Way ways[] = {
        { "cancel",
            [](onlineScanners&, QPushButton& button) {
                QTest::mouseClick(&button, Qt::LeftButton);
            } },
        { "escape", [](onlineScanners& d, QPushButton&) { QTest::keyClick(&d, Qt::Key_Escape); } },
        { "title bar", [](onlineScanners& d, QPushButton&) { d.close(); } },
    };
    for (const Way& way : ways) {
        SCOPED_TRACE(way.name);
        onlineScanners one;
        QString device = QStringLiteral("Orvascan");
        one.addNewDeviceItem(device);
        one.setCurScanner(0);
        const QSignalSpy asked(&one, &onlineScanners::unInitmainWindow);
        const QSignalSpy taken(&one, &onlineScanners::selScanDeviceSig);
        one.show();
        way.leave(one, *one.findChild<QPushButton*>(QStringLiteral("cancelBtn")));
        one.close();
        EXPECT_EQ(asked.count(), 1);
        EXPECT_EQ(taken.count(), 0);
        EXPECT_FALSE(one.isVisible());
    }
}

TEST(OnlineScanners, WithoutDevicesOnlyLeavingIsPossible)
{
    onlineScanners dialog;
    QString empty;
    EXPECT_EQ(dialog.addNewDeviceItem(empty), -1);
    EXPECT_EQ(dialog.findChild<QListWidget*>()->count(), 0);
    dialog.show();
    QSignalSpy quit(&dialog, &onlineScanners::unInitmainWindow);
    auto* ok = dialog.findChild<QPushButton*>(QStringLiteral("okBtn"));
    QTest::keyClick(&dialog, Qt::Key_Return);
    QTest::mouseClick(ok, Qt::LeftButton);
    EXPECT_TRUE(dialog.isVisible());
    EXPECT_FALSE(ok->isEnabled());
    dialog.close();
    EXPECT_EQ(quit.count(), 1);
}

TEST(SplashScreen, DotsRunFromOneToSix)
{
    splashScreen splash;
    const auto* label = splash.findChild<QLabel*>(QStringLiteral("searchLabel"));
    EXPECT_EQ(splash.windowTitle(), QStringLiteral("Velmar扫描软件"));
    EXPECT_EQ(label->text(), QStringLiteral("设备搜索中....."));
    EXPECT_EQ(label->font().pointSize(), 10);
    EXPECT_EQ(label->alignment(), Qt::AlignLeft | Qt::AlignVCenter);
    splash.show();
    const QSize size = splash.size();
    for (const int dots : { 1, 2, 3, 4, 5, 6, 1 }) {
        splash.onUpdateDevSearchLabel();
        EXPECT_EQ(
            label->text(), QStringLiteral("     设备搜索中") + QString(dots, QLatin1Char('.')));
        EXPECT_EQ(splash.size(), size);
    }
    const QString before = label->text();
    EXPECT_TRUE(QTest::qWaitFor(
        [&] { return label->text() != before; }, int(10 * timing::kSplashStep.count()) + 500))
        << "the timer moves the dots";
}

TEST(SplashScreen, EscapeAndCloseSetTheClosedFlag)
{
    splashScreen byKey;
    byKey.show();
    EXPECT_FALSE(byKey.isClosed());
    QTest::keyClick(&byKey, Qt::Key_Escape);
    EXPECT_TRUE(byKey.isClosed());
    EXPECT_FALSE(byKey.isVisible());

    splashScreen byTitleBar;
    byTitleBar.show();
    byTitleBar.close();
    EXPECT_TRUE(byTitleBar.isClosed());
}
