#include "app/search_alarm.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QThread>

#include <gmock/gmock.h>
#include <pthread.h>
#include <unistd.h>

#include <csignal>

namespace {

bool runEventLoopUntil(const bool& done)
{
    QElapsedTimer timer;
    timer.start();
    while (!done && timer.elapsed() < 5000) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    }
    return done;
}

} // namespace

TEST(SearchAlarm, SearchesFromTheEventLoopNotFromTheHandler)
{
    int argc = 1;
    char name[] = "test";
    char* argv[] = { name, nullptr };
    const QCoreApplication application(argc, argv);
    bool searched = false;
    int searches = 0;
    ::testing::internal::CaptureStdout();
    {
        const SearchAlarm alarm([&] {
            searched = true;
            ++searches;
            EXPECT_EQ(QThread::currentThread(), QCoreApplication::instance()->thread());
        });
        std::signal(SIGALRM, getOnLineScanDevice);
        ASSERT_EQ(std::raise(SIGALRM), 0);
        EXPECT_FALSE(searched) << "inside the signal";
        EXPECT_TRUE(runEventLoopUntil(searched));
        ASSERT_EQ(std::raise(SIGALRM), 0);
        QCoreApplication::processEvents();
        EXPECT_EQ(searches, 1) << "once, however often the signal comes";
    }
    ASSERT_EQ(std::raise(SIGALRM), 0); // nobody listens any more
    std::signal(SIGALRM, SIG_DFL);
    const std::string trace = "getOnLineScanDevice--\n";
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), trace + trace + trace);
}
