// A library, a disk or an operator that does what nobody expects: the window goes on, and no job
// and no message is lost.
#include "dialogs/statusmesbox.h"
#include "tests/mainwindow/window_fixture.h"

#include <QImage>
#include <QLabel>
#include <QPushButton>

#include <pthread.h>
#include <sys/resource.h>

#include <csignal>
#include <thread>
#include <vector>

namespace {

QList<StatusMessageBox*> shownBoxes()
{
    QList<StatusMessageBox*> boxes;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (auto* box = qobject_cast<StatusMessageBox*>(widget); box && box->isVisible()) {
            boxes.append(box);
        }
    }
    return boxes;
}

/// No thread can be made while it lives: the stack of one would fill the address space.
class NoMoreThreads
{
public:
    NoMoreThreads()
    {
        ::pthread_getattr_default_np(&m_before);
        pthread_attr_t huge {};
        ::pthread_attr_init(&huge);
        ::pthread_attr_setstacksize(&huge, std::size_t { 1 } << 47U);
        EXPECT_EQ(::pthread_setattr_default_np(&huge), 0);
        ::pthread_attr_destroy(&huge);
    }
    ~NoMoreThreads() { ::pthread_setattr_default_np(&m_before); }
    NoMoreThreads(const NoMoreThreads&) = delete;
    NoMoreThreads& operator=(const NoMoreThreads&) = delete;

private:
    pthread_attr_t m_before {};
};

/// Files of this process end at this size, as on a full disk.
class FullDisk
{
public:
    explicit FullDisk(rlim_t bytes)
    {
        ::signal(SIGXFSZ, SIG_IGN);
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit { bytes, m_before.rlim_max };
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk() { ::setrlimit(RLIMIT_FSIZE, &m_before); }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    rlimit m_before {};
};

} // namespace

class Faults : public WindowTest
{
protected:
    void SetUp() override { choose(); }
    /// The next job works as if nothing had happened.
    void expectNextJobWorks()
    {
        const int jobs = fake.count("Scan");
        const Heard records(window(), &MainWindow::final_signal_iof_batch);
        runJob("step|state|1|1|\n");
        EXPECT_EQ(fake.count("Scan"), jobs + 1);
        EXPECT_EQ(records.size(), 1);
    }
};

TEST_F(Faults, AHundredThousandCallbacksFromFourThreadsAndSomeAfterTheEnd)
{
    constexpr int kThreads = 4;
    constexpr int kEach = 25000;
    const Heard records(window(), &MainWindow::final_signal_iof_batch);
    const Heard status(window(), &MainWindow::scanStatusOccur);
    startJob("step|wait\n");
    ASSERT_TRUE(waitCount("Scan", 1));
    QElapsedTimer flood;
    flood.start();
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([i] {
            const std::string names[] = { "", "/gone/\xff\xfe.jpg", "/gone/扫描.jpg", "" };
            for (int n = 0; n < kEach; ++n) {
                MainWindow::SdkScanCallBack(i == 0 ? 1 : 2, n, names[i]);
            }
        });
    }
    // the operator is heard in the midst of it
    QElapsedTimer sinceLook;
    sinceLook.start();
    qint64 longest = 0;
    ASSERT_TRUE(QTest::qWaitFor(
        [&] {
            longest = std::max(longest, sinceLook.restart());
            return status.size() > 0 && logCount("nPage = 24999, nState = ") == kThreads;
        },
        60000));
    for (std::thread& thread : threads) {
        thread.join();
    }
    std::cout << kThreads * kEach << " callbacks in " << flood.elapsed() << " ms, " << status.size()
              << " reports shown, the window away for at most " << longest << " ms\n";
    fake.release();
    ASSERT_TRUE(waitIdle());
    EXPECT_EQ(status.all.back(), (std::vector<int> { 1, kEach, 3 * kEach, -1 }));
    EXPECT_EQ(records.size(), 1);

    // a library that speaks after Scan has returned
    MainWindow::SdkScanCallBack(-1, 0, "");
    fake.script("fire|state|-1|0|\nfire|state|2|1|/late.jpg\nfire|error|-41\n");
    ASSERT_TRUE(QTest::qWaitFor([] { return !shownBoxes().isEmpty(); }));
    EXPECT_EQ(records.size(), 1);
    expectNextJobWorks();
}

TEST_F(Faults, AThreadThatCannotBeMadeIsToldAndTheScannersButtonTriesAgain)
{
    {
        const NoMoreThreads none;
        click("scanMainBtn");
    }
    EXPECT_EQ(fake.count("Scan"), 0);
    EXPECT_TRUE(logHas("开启扫描线程失败"));
    EXPECT_EQ(shownBoxes().size(), 1);
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr) << "no progress of a job that is not";
    EXPECT_FALSE(enabled("scanMainBtn"));
    fake.press(1);
    ASSERT_TRUE(waitCount("Scan", 1));
    EXPECT_TRUE(waitIdle());
}

TEST_F(Faults, AHiddenErrorLeavesNoProgressBehind)
{
    writeBytes(Sandbox::root() + "/opt/apps/orvascan/scanner/config/ErrorCode.xml",
        "<r><e id='-41' ishow='0' ierror='1'>x</e></r>");
    runJob("step|state|1|1|\nstep|error|-41\n");
    EXPECT_TRUE(shownBoxes().isEmpty());
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
}

TEST_F(Faults, PreviewFilesThatAreNone)
{
    const auto* label = control<QLabel>("imagePreviewVL");
    const std::string copy =
        Sandbox::root() + "/opt/apps/orva/.tarvex-base/Orvascan_preview_image.jpg";
    const auto arrive = [this](const std::string& file) {
        window().onProcessScanFile(QString::fromStdString(file), 2);
    };
    arrive("");
    arrive("/gone/file.jpg");
    arrive("/gone/\xff\xfe.jpg");
    EXPECT_TRUE(logHas("filename: /gone/file.jpg does not exist!"));
    EXPECT_FALSE(fileExists(copy));

    // no image: nothing to show, the copy is kept and the file goes all the same
    const std::string file = Sandbox::path("arrived.jpg");
    writeBytes(file, "not an image");
    arrive(file);
    EXPECT_TRUE(label->pixmap(Qt::ReturnByValue).isNull());
    EXPECT_EQ(readBytes(copy), "not an image");
    EXPECT_TRUE(QTest::qWaitFor([&] { return !fileExists(file); }));

    QImage huge(30000, 30000, QImage::Format_Mono);
    huge.fill(1);
    ASSERT_TRUE(huge.save(QString::fromStdString(file), "PNG"));
    huge = QImage();
    arrive(file);
    EXPECT_TRUE(label->pixmap(Qt::ReturnByValue).isNull());
    EXPECT_TRUE(logHas("30000 x 30000 pixels are too many to be shown"));

    // a full disk: what is shown is whole, half a copy is not kept
    QImage picture(1500, 1000, QImage::Format_RGB32);
    picture.fill(Qt::red);
    ASSERT_TRUE(picture.save(QString::fromStdString(file), "BMP"));
    {
        const FullDisk full(1 << 20U);
        arrive(file);
    }
    EXPECT_FALSE(label->pixmap(Qt::ReturnByValue).isNull());
    EXPECT_TRUE(logHas("copy file fail:[-2]"));
    EXPECT_FALSE(fileExists(copy));
    EXPECT_TRUE(QTest::qWaitFor([&] { return !fileExists(file); }));
}

TEST_F(Faults, ButtonsUnderAModalNoticeDoTheirWorkAndEachNoticeIsSeen)
{
    set("filePathEdit", "/proc/no such folder");
    for (const int value : { 3, 5, 6, 7, 8, 16, -404, 4, 4, 2, 1 }) {
        fake.press(value);
    }
    QStringList seen;
    QTimer operatorsHand;
    QObject::connect(&operatorsHand, &QTimer::timeout, [&] {
        const QList<StatusMessageBox*> boxes = shownBoxes();
        auto* top = qobject_cast<StatusMessageBox*>(QApplication::activeModalWidget());
        if (top == nullptr || (seen.isEmpty() && boxes.size() < 2)) {
            return; // the first one waits until a button has brought the second
        }
        seen.append(top->windowTitle());
        top->button(QMessageBox::Yes)->click();
    });
    operatorsHand.start(20);
    window().dynamic_state_msg_box("标题", "文字");
    EXPECT_TRUE(QTest::qWaitFor([&] { return seen.size() >= 3; }, 10000));
    operatorsHand.stop();
    EXPECT_EQ(seen.count("标题"), 1);
    EXPECT_EQ(seen.count("路径异常"), 2) << "one for each start that was refused";
    EXPECT_EQ(fake.count("Scan"), 0);
    EXPECT_FALSE(window().isMinimized()) << "down and up again";

    set("filePathEdit", QString::fromStdString(outputFolder()));
    expectNextJobWorks();
}
