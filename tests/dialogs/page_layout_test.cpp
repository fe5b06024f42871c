// What the pages look like on a screen: nothing cut, nothing out of reach. Runs once more at 200 %.
#include "mainwindow/main_window_ui.h"
#include "tests/support/screenshot.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QMainWindow>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QTest>
#include <QWheelEvent>

#include <gtest/gtest.h>

namespace {

/// What is left of a 1366 x 768 screen under a title bar and a task bar.
constexpr QSize kSmallScreen(1366, 680);
constexpr QSize kFirstSize(960, 664);

class PageLayoutTest : public testing::Test
{
protected:
    PageLayoutTest()
    {
        ui.setupUi(&window);
        ui.scanSourceComBo->addItems({ "平板", "ADF单面", "ADF双面" });
        ui.DPIComBo->addItems({ "75", "600" });
        ui.paperTypeComBo->addItems({ "A4", "Letter", "自动" });
        ui.filePathEdit->setText("/home/operator/文档/扫描文件");
        ui.scanColorModeVL->setText("扫描颜色模式:多流输出");
        ui.filePreSwitchVL->setText("文件命名前缀:WWWWWWWWWWWWWWWWWWW");
        ui.currentDeviceLabel->setText("当前设备:Orvascan 虚拟扫描仪 #2");
        ui.currentDeviceVersionLabel->setText("设备驱动固件版本：驱动(1.0.23.4) 固件(2.11.0.7)");
        window.show();
    }

    QScrollArea* page(int index)
    {
        ui.tabWidget->setCurrentIndex(index);
        QCoreApplication::processEvents();
        return qobject_cast<QScrollArea*>(ui.tabWidget->widget(index));
    }

    static QList<QWidget*> visibleControls(QWidget* parent)
    {
        QList<QWidget*> controls;
        for (QWidget* widget : parent->findChildren<QWidget*>()) {
            const auto isA = [](const QWidget* one, std::initializer_list<const char*> kinds) {
                return std::any_of(kinds.begin(), kinds.end(),
                    [one](const char* kind) { return one->inherits(kind); });
            };
            if (isA(widget,
                    { "QLabel", "QAbstractButton", "QComboBox", "QAbstractSpinBox", "QLineEdit",
                        "QSlider" })
                && !isA(widget->parentWidget(), { "QAbstractSpinBox", "QLineEdit" })
                && widget->isVisible()) {
                controls << widget;
            }
        }
        return controls;
    }

    void expectNothingCut(QWidget* parent)
    {
        const QList<QWidget*> controls = visibleControls(parent);
        EXPECT_GE(controls.size(), 3);
        for (QWidget* control : controls) {
            SCOPED_TRACE(control->objectName().toStdString());
            auto* label = qobject_cast<QLabel*>(control);
            if (label != nullptr && label->wordWrap()) {
                EXPECT_GE(label->height(), label->heightForWidth(label->width()));
                continue;
            }
            const bool mayScroll = qobject_cast<QLineEdit*>(control) != nullptr;
            if (!mayScroll) {
                EXPECT_GE(control->width(), control->sizeHint().width());
            }
            EXPECT_GE(control->height(), control->minimumSizeHint().height());
        }
        for (int first = 0; first < controls.size(); ++first) {
            for (int second = first + 1; second < controls.size(); ++second) {
                if (controls[first]->parentWidget() == controls[second]->parentWidget()) {
                    EXPECT_FALSE(
                        controls[first]->geometry().intersects(controls[second]->geometry()))
                        << controls[first]->objectName().toStdString() << " lies over "
                        << controls[second]->objectName().toStdString();
                }
            }
        }
    }

    QMainWindow window;
    MainWindowUi ui;
};

} // namespace

TEST_F(PageLayoutTest, NothingIsCutOrScrollsInTheFirstSizeAndOnASmallScreen)
{
    for (const QSize size : { kFirstSize, kSmallScreen }) {
        window.resize(size);
        for (int index = 0; index < ui.tabWidget->count(); ++index) {
            SCOPED_TRACE(testing::Message() << "page " << index << " at " << size.width());
            QScrollArea* area = page(index);
            ASSERT_NE(area, nullptr);
            EXPECT_FALSE(area->verticalScrollBar()->isVisible());
            EXPECT_FALSE(area->horizontalScrollBar()->isVisible());
            expectNothingCut(area->widget());
            saveScreenshot(window,
                QString("page%1-%2-%3x")
                    .arg(index)
                    .arg(size.width())
                    .arg(window.devicePixelRatioF()));
        }
    }
    expectNothingCut(ui.actionBar);
}

TEST_F(PageLayoutTest, AScreenTooSmallScrollsButKeepsTheScanButton)
{
    window.resize(480, 320);
    QScrollArea* area = page(1);
    EXPECT_TRUE(area->verticalScrollBar()->isVisible());
    expectNothingCut(area->widget());
    EXPECT_TRUE(window.rect().contains(
        QRect(ui.scanMainBtn->mapTo(&window, QPoint()), ui.scanMainBtn->size())));
}

TEST_F(PageLayoutTest, TabKeyReachesEveryControlOfAPageAndThenTheButtonsBelow)
{
    window.activateWindow();
    for (int index = 0; index < ui.tabWidget->count(); ++index) {
        SCOPED_TRACE(testing::Message() << "page " << index);
        QWidget* content = page(index)->widget();
        QSet<QWidget*> expected;
        for (QWidget* control : visibleControls(content)) {
            if (control->isEnabled() && (control->focusPolicy() & Qt::TabFocus) != 0) {
                expected.insert(control);
            }
        }
        ui.tabWidget->tabBar()->setFocus();
        QList<QWidget*> visited;
        for (int press = 0; press < 60; ++press) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            QWidget* now = QApplication::focusWidget();
            ASSERT_NE(now, nullptr);
            if (now == ui.templateBtn) {
                break;
            }
            visited << now;
        }
        EXPECT_EQ(QApplication::focusWidget(), ui.templateBtn);
        // Of a group of radio buttons the chosen one takes the focus; arrow keys reach the other.
        for (QWidget* control : expected) {
            const auto* radio = qobject_cast<QRadioButton*>(control);
            if (radio == nullptr || radio->isChecked()) {
                EXPECT_EQ(visited.count(control), 1) << control->objectName().toStdString();
            }
        }
        // Within a card the focus goes downwards.
        for (int step = 1; step < visited.size(); ++step) {
            const QWidget* from = visited[step - 1];
            const QWidget* to = visited[step];
            if (from->parentWidget() == to->parentWidget()) {
                EXPECT_GT(to->geometry().bottom(), from->geometry().top())
                    << from->objectName().toStdString() << " to " << to->objectName().toStdString();
            }
        }
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        EXPECT_EQ(QApplication::focusWidget(), ui.scanMainBtn);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        EXPECT_EQ(QApplication::focusWidget(), ui.exitMainBtn);
    }
}

TEST_F(PageLayoutTest, KeysChooseAPageAndStartAScan)
{
    window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    for (int index = 4; index >= 0; --index) {
        QTest::keyClick(&window, static_cast<Qt::Key>(Qt::Key_1 + index), Qt::ControlModifier);
        EXPECT_EQ(ui.tabWidget->currentIndex(), index);
    }
    int scans = 0;
    QObject::connect(ui.scanMainBtn, &QPushButton::clicked, [&scans] { ++scans; });
    QTest::keyClick(&window, Qt::Key_F5);
    EXPECT_TRUE(QTest::qWaitFor([&scans] { return scans == 1; }, 2000));
}

TEST_F(PageLayoutTest, TheWheelChangesASettingOnlyWhileItHasTheFocus)
{
    page(1);
    window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    ui.gammaSlider->setFocus();
    const auto turn = [](QWidget* control) {
        const QPointF middle = control->rect().center();
        QWheelEvent event(middle, control->mapToGlobal(middle.toPoint()), QPoint(), QPoint(0, -120),
            Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(control, &event);
    };
    const int light = ui.lightSlider->value();
    turn(ui.rotAngleComBox);
    turn(ui.lightSlider);
    turn(ui.lightSpinBox);
    EXPECT_EQ(ui.rotAngleComBox->currentIndex(), 0);
    EXPECT_EQ(ui.lightSlider->value(), light);
    EXPECT_EQ(ui.lightSpinBox->value(), light);

    ui.rotAngleComBox->setFocus();
    turn(ui.rotAngleComBox);
    EXPECT_EQ(ui.rotAngleComBox->currentIndex(), 1);
}

TEST_F(PageLayoutTest, APreviewImageDoesNotMoveTheWindow)
{
    page(2);
    const QSize before = ui.imagePreviewVL->size();
    const QSize windowSize = window.size();
    QPixmap large(4960, 7016);
    large.fill(Qt::white);
    ui.imagePreviewVL->setPixmap(large);
    QCoreApplication::processEvents();
    EXPECT_EQ(window.size(), windowSize);
    EXPECT_EQ(ui.imagePreviewVL->size(), before);
}
