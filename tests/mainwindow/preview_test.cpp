// Preview: the image that is shown, its copy, the scanned file that goes.
#include "tests/mainwindow/window_fixture.h"

#include <QImage>
#include <QLabel>
#include <QPushButton>
#include <QTabWidget>

class Preview : public WindowTest
{
protected:
    void SetUp() override { choose(); }
    static std::string copy()
    {
        return Sandbox::root() + "/opt/apps/orva/.tarvex-base/Orvascan_preview_image.jpg";
    }
    std::string file(const char* name) const { return outputFolder() + '/' + name; }
};

TEST_F(Preview, ShowsTheImageKeepsACopyAndRemovesTheFile)
{
    control<QLabel>("imagePreviewVL")->resize(300, 400);
    fake.script("job|clear\nstep|image|p1.jpg|40|80\n");
    click("preViewBtn");
    ASSERT_TRUE(waitIdle());
    const QSize shown = control<QLabel>("imagePreviewVL")->pixmap(Qt::ReturnByValue).size();
    ASSERT_FALSE(shown.isEmpty());
    EXPECT_NEAR(shown.width() * 2, shown.height(), 2) << "the aspect ratio is kept";
    EXPECT_TRUE(fileExists(copy()));
    EXPECT_TRUE(QTest::qWaitFor([this] { return !fileExists(file("p1.jpg")); }));
    EXPECT_TRUE(logHas("预览图部分"));

    // the second one replaces the first
    fake.script("job|clear\nstep|image|p2.jpg|60|30\n");
    click("preViewBtn");
    ASSERT_TRUE(waitIdle());
    EXPECT_TRUE(QTest::qWaitFor([this] { return !fileExists(file("p2.jpg")); }));
    EXPECT_EQ(QImage(QString::fromStdString(copy())).size(), QSize(60, 30));

    OpenedUrls opened;
    QTest::mouseDClick(control<QLabel>("imagePreviewVL"), Qt::LeftButton);
    ASSERT_EQ(opened.urls.size(), 1);
    EXPECT_EQ(opened.urls.first().toLocalFile().toStdString(), copy());

    EXPECT_EQ(closeWindow(), 0);
    EXPECT_FALSE(fileExists(copy()));
}

TEST_F(Preview, TheSummaryIsThereBeforeTheFirstPreviewAndThenBelongsToTheImage)
{
    auto* pages = control<QTabWidget>("tabWidget");
    auto* resolution = control<QLabel>("scanDPISizeVL");
    select("DPIComBo", "300");
    pages->setCurrentIndex(2);
    EXPECT_EQ(resolution->text(), QStringLiteral("扫描DPI类型:300"));

    fake.script("job|clear\nstep|image|p1.jpg|40|80\n");
    click("preViewBtn");
    ASSERT_TRUE(waitIdle());
    ASSERT_FALSE(control<QLabel>("imagePreviewVL")->pixmap(Qt::ReturnByValue).isNull());
    pages->setCurrentIndex(1);
    select("DPIComBo", "200");
    pages->setCurrentIndex(2);
    EXPECT_EQ(resolution->text(), QStringLiteral("扫描DPI类型:300"));
}

TEST_F(Preview, EmptyFeederIsToldAndNothingStarts)
{
    const Heard errors(window(), &MainWindow::scanStatusError);
    fake.script("havepaper|0\n");
    click("preViewBtn");
    ASSERT_EQ(errors.size(), 1);
    EXPECT_EQ(errors.all.front().front(), -40);
    EXPECT_EQ(fake.count("Scan"), 0);
    EXPECT_TRUE(logHas("[func:onStartPreViewScan]扫描仪无纸"));
    EXPECT_TRUE(control<QPushButton>("preViewBtn")->isEnabled());
    // a normal scan does not ask
    click("scanMainBtn");
    EXPECT_TRUE(waitCount("Scan", 1));
    EXPECT_TRUE(waitIdle());
}

TEST_F(Preview, ItsFileIsGoneBeforeTheNextJobCanReuseTheName)
{
    // a scan right after a preview writes a file of the same name, which has to stay
    fake.script("job|clear\nstep|image|same.jpg|40|80\n");
    click("preViewBtn");
    ASSERT_TRUE(waitIdle());
    click("scanMainBtn");
    ASSERT_TRUE(waitIdle());
    QTest::qWait(400); // longer than the file of a preview stays
    EXPECT_TRUE(fileExists(file("same.jpg")));
}

TEST_F(Preview, LeavesTheSerialStartAlone)
{
    const Heard serial(window(), &MainWindow::FinalChangeNameNoSerial);
    fake.script("job|clear\nstep|image|p.jpg|10|10\n");
    click("preViewBtn");
    ASSERT_TRUE(waitIdle());
    EXPECT_EQ(serial.size(), 0);
}
