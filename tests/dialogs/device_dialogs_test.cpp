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
    void add(QStringList names)
    {
        for (QString& name : names) {
            EXPECT_EQ(dialog.addNewDeviceItem(name), name.isEmpty() ? -1 : 0);
        }
    }

    onlineScanners dialog;
    QListWidget* list = dialog.findChild<QListWidget*>();
    QPushButton* ok = dialog.findChild<QPushButton*>("okBtn");
    QPushButton* cancel = dialog.findChild<QPushButton*>("cancelBtn");
    QSignalSpy chosen { &dialog, &onlineScanners::selScanDeviceSig };
    QSignalSpy quit { &dialog, &onlineScanners::unInitmainWindow };
};

} // namespace

TEST_F(OnlineScannersTest, SelectedRowCanBeTaken)
{
    add({ "Orvascan 虚拟扫描仪", "Velmar 扫描仪 #2" });
    QString name = "untouched";
    EXPECT_EQ(dialog.getSelScanner(name), -1);
    EXPECT_EQ(name, "untouched");
    for (const int row : { 7, 2, 0, 1 }) {
        dialog.setCurScanner(row);
        EXPECT_EQ(ok->isEnabled(), row < 2) << row;
    }
    dialog.show();
    QTest::keyClick(list, Qt::Key_Return);
    ASSERT_EQ(chosen.count(), 1);
    EXPECT_EQ(chosen.at(0).at(0).toString(), "Velmar 扫描仪 #2");
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_EQ(quit.count(), 0);
}

TEST_F(OnlineScannersTest, DoubleClickTakesTheRowOnce)
{
    add({ "Orvascan 虚拟扫描仪" });
    dialog.show();
    const QRect row = list->visualItemRect(list->item(0));
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, row.center());
    QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, row.center());
    EXPECT_EQ(chosen.count(), 1);
    EXPECT_EQ(quit.count(), 0);
}

class OnlineScannersExit : public OnlineScannersTest,
                           public testing::WithParamInterface<const char*>
{
};

TEST_P(OnlineScannersExit, WithoutAChoiceAsksToQuitOnce)
{
    add({ "Orvascan" });
    dialog.setCurScanner(0);
    dialog.show();
    const std::string way = GetParam();
    if (way == "cancel") {
        QTest::mouseClick(cancel, Qt::LeftButton);
    } else if (way == "escape") {
        QTest::keyClick(&dialog, Qt::Key_Escape);
    } else {
        dialog.close();
    }
    dialog.close();
    EXPECT_EQ(quit.count(), 1);
    EXPECT_EQ(chosen.count(), 0);
    EXPECT_FALSE(dialog.isVisible());
}

INSTANTIATE_TEST_SUITE_P(Ways, OnlineScannersExit, testing::Values("cancel", "escape", "titleBar"));

TEST_F(OnlineScannersTest, WithoutDevicesOnlyLeavingIsPossible)
{
    add({ QString() });
    EXPECT_EQ(list->count(), 0);
    dialog.show();
    QTest::keyClick(&dialog, Qt::Key_Return);
    QTest::mouseClick(ok, Qt::LeftButton);
    EXPECT_TRUE(dialog.isVisible());
    dialog.close();
    EXPECT_EQ(quit.count(), 1);
}

TEST(SplashScreen, DotsRunFromOneToSixAndLeavingIsRemembered)
{
    splashScreen splash;
    const auto* label = splash.findChild<QLabel*>("searchLabel");
    EXPECT_EQ(label->text(), "设备搜索中.....");
    splash.show();
    for (const int dots : { 1, 2, 3, 4, 5, 6, 1 }) {
        splash.onUpdateDevSearchLabel();
        EXPECT_EQ(label->text(), "     设备搜索中" + QString(dots, '.'));
    }
    const QString before = label->text();
    EXPECT_TRUE(QTest::qWaitFor(
        [&] { return label->text() != before; }, int(10 * timing::kSplashStep.count()) + 500))
        << "the timer moves the dots";
    EXPECT_FALSE(splash.isClosed());
    QTest::keyClick(&splash, Qt::Key_Escape);
    EXPECT_TRUE(splash.isClosed());
    EXPECT_FALSE(splash.isVisible());

    splashScreen byTitleBar;
    byTitleBar.show();
    byTitleBar.close();
    EXPECT_TRUE(byTitleBar.isClosed());
}
