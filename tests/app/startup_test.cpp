// Start-up inside the test process: the real window, the scripted library, every box answered.
#include "app/common.h"
#include "app/install_paths.h"
#include "app/standard_streams.h"
#include "app/startup.h"
#include "dialogs/onlinescanners.h"
#include "dialogs/splashscreen.h"
#include "mainwindow/mainwindow.h"
#include "tests/fake_sdk/fake_sdk_control.h"
#include "tests/support/answer_modal.h"
#include "tests/support/sandbox.h"

#include <QFile>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <gmock/gmock.h>

#include <stdexcept>

using ::testing::AllOf;
using ::testing::HasSubstr;

namespace {

QDialog* deviceDialog()
{
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        auto* dialog = qobject_cast<onlineScanners*>(widget);
        if (dialog != nullptr && dialog->isVisible()) {
            return dialog;
        }
    }
    return nullptr;
}

} // namespace

TEST(StartUp, SearchesAfterOneSecondAndEndsWhenTheChoiceIsCancelled)
{
    const Sandbox sandbox;
    const FakeSdk fake;
    fake.install();
    bool splashSeen = false;
    int looks = 0;
    QTimer look;
    QObject::connect(&look, &QTimer::timeout, [&] {
        splashSeen = splashSeen || (g_waitingDlg != nullptr && g_waitingDlg->isVisible());
        if (QDialog* dialog = deviceDialog()) {
            look.stop();
            EXPECT_EQ(g_waitingDlg, nullptr) << "the splash is gone";
            EXPECT_FALSE(g_MainWindow->isVisible()) << "not before a device is chosen";
            EXPECT_TRUE(dialog->findChild<QPushButton*>("okBtn")->isEnabled()) << "the first one";
            dialog->close();
        } else if (++looks > 1000) {
            ADD_FAILURE() << "start-up did not come to its end";
            QCoreApplication::exit(99);
        }
    });
    look.start(20);
    ::testing::internal::CaptureStdout();
    EXPECT_EQ(runApplication(), 0);
    EXPECT_TRUE(splashSeen);
    EXPECT_THAT(::testing::internal::GetCapturedStdout(),
        AllOf(HasSubstr("alarm(1);   end\ngetOnLineScanDevice--\n"),
            HasSubstr("getOnLineScanDevice-- end \n")));
    EXPECT_THAT(Sandbox::runLog(), HasSubstr("]开始获取在线Velmar扫描仪\n"));
}

TEST(StartUp, AnExceptionInTheEventLoopIsLoggedAndTheApplicationGoesOn)
{
    const Sandbox sandbox;
    bool after = false;
    QTimer::singleShot(0, [] { throw std::invalid_argument("stof"); });
    QTimer::singleShot(10, [&] { after = true; });
    EXPECT_TRUE(QTest::qWaitFor([&] { return after; }));
    EXPECT_THAT(Sandbox::runLog(), HasSubstr("[func:notify]stof\n"));
}

TEST(StartUp, PathsAndDeviceNamesAreUtf8WithoutALocale)
{
    EXPECT_EQ(QFile::encodeName("/扫描文件/一"), QByteArray("/扫描文件/一"));
    EXPECT_EQ(QString::fromLocal8Bit("扫描仪"), "扫描仪");
}

TEST(SdkInitSuccess, TellsTheUserAndClosesTheWindowWhenTheLibraryFailed)
{
    const Sandbox sandbox;
    FakeSdk fake;
    fake.install();
    g_MainWindow = new MainWindow(nullptr);
    g_waitingDlg = new splashScreen(nullptr);
    EXPECT_EQ(IsSDKInitSuccess(), 0);
    EXPECT_THAT(Sandbox::runLog(), HasSubstr("]SDK Init success\n"));

    g_MainWindow->m_SDKInit = -23;
    {
        const AnswerModal answer("确 定");
        EXPECT_EQ(IsSDKInitSuccess(), -1);
        ASSERT_EQ(answer.count(), 1);
        EXPECT_EQ(answer.title(), "程序退出");
        EXPECT_EQ(answer.text(), "初始化SDK失败");
    }
    EXPECT_EQ(g_waitingDlg, nullptr);
    EXPECT_THAT(Sandbox::runLog(), HasSubstr("Main[IsSDKInitSuccess]["));
    EXPECT_TRUE(QTest::qWaitFor([&] { return fake.count("UnInit") == 1; })) << "closed";
}

// main of its own: the exception test needs the application's own class.
int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    prepareStandardStreams();
    qputenv("LC_ALL", "C"); // as a service or a device rule would start it
    ::testing::InitGoogleMock(&argc, argv);
    const Application application(argc, argv);
    return RUN_ALL_TESTS();
}
