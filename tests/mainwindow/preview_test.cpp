// Preview: the image that is shown, its copy, the scanned file that goes.
#include "tests/mainwindow/window_fixture.h"

#include <QImage>
#include <QLabel>
#include <QTabWidget>

class Preview : public WindowTest
{
protected:
    void SetUp() override { choose(); }
    void preview(const char* picture)
    {
        runJob(std::string("step|image|") + picture + '\n', "preViewBtn");
    }
    const std::string copy =
        Sandbox::root() + "/opt/apps/orva/.tarvex-base/Orvascan_preview_image.jpg";
    std::string file(const char* name) const { return outputFolder() + '/' + name; }
};

TEST_F(Preview, ShowsTheImageKeepsACopyAndRemovesTheFile)
{
    const Heard serial(window(), &MainWindow::FinalChangeNameNoSerial);
    auto* label = control<QLabel>("imagePreviewVL");
    label->resize(300, 400);
    preview("p1.jpg|40|80");
    const QSize shown = label->pixmap(Qt::ReturnByValue).size();
    ASSERT_FALSE(shown.isEmpty());
    EXPECT_NEAR(shown.width() * 2, shown.height(), 2) << "the aspect ratio is kept";
    EXPECT_TRUE(QTest::qWaitFor([this] { return !fileExists(file("p1.jpg")); }));
    preview("p2.jpg|60|30");
    EXPECT_EQ(QImage(QString::fromStdString(copy)).size(), QSize(60, 30)) << "in its place";
    EXPECT_EQ(serial.size(), 0) << "the serial start stays";

    const OpenedUrls opened;
    QTest::mouseDClick(label, Qt::LeftButton);
    ASSERT_EQ(opened.urls.size(), 1);
    EXPECT_EQ(opened.urls.first().toLocalFile().toStdString(), copy);
    EXPECT_EQ(closeWindow(), 0);
    EXPECT_FALSE(fileExists(copy) || fileExists(file("p2.jpg")));
}

TEST_F(Preview, TheSummaryIsThereBeforeTheFirstPreviewAndThenBelongsToTheImage)
{
    auto* pages = control<QTabWidget>("tabWidget");
    select("DPIComBo", "300");
    pages->setCurrentIndex(2);
    EXPECT_EQ(text("scanDPISizeVL"), "扫描DPI类型:300");
    preview("p1.jpg|40|80");
    pages->setCurrentIndex(1);
    select("DPIComBo", "200");
    pages->setCurrentIndex(2);
    EXPECT_EQ(text("scanDPISizeVL"), "扫描DPI类型:300");
}

TEST_F(Preview, EmptyFeederIsToldAndOnlyAPreviewAsks)
{
    const Heard errors(window(), &MainWindow::scanStatusError);
    fake.script("havepaper|0\n");
    click("preViewBtn");
    ASSERT_EQ(errors.size(), 1);
    EXPECT_EQ(errors.all.front().front(), -40);
    EXPECT_EQ(fake.count("Scan"), 0);
    EXPECT_TRUE(logHas("[func:onStartPreViewScan]扫描仪无纸"));
    EXPECT_TRUE(polls());
    runJob("step|state|1|1|\n");
    EXPECT_EQ(fake.count("Scan"), 1);
}

TEST_F(Preview, ItsFileIsGoneBeforeTheNextJobCanReuseTheName)
{
    preview("same.jpg|40|80");
    runJob("step|image|same.jpg|40|80\n");
    QTest::qWait(400); // longer than the file of a preview stays
    EXPECT_TRUE(fileExists(file("same.jpg")));
}
