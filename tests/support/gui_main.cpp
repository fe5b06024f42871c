// main of the GUI test executables: no display needed, one QApplication for all tests.
#include <QApplication>

#include <gmock/gmock.h>

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    // gmock takes its own options out of argv before Qt sees it
    ::testing::InitGoogleMock(&argc, argv);
    const QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    return RUN_ALL_TESTS();
}
