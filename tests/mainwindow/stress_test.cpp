// A day of work in a minute: many jobs of every kind in a row, started from the window and from the
// scanner. Nothing hangs, every job is on record, and nothing is left running or open.
#include "dialogs/statusdialog.h"
#include "tests/mainwindow/window_fixture.h"

#include <QPushButton>
#include <QThreadPool>

#include <array>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <map>
#include <random>

namespace {

constexpr unsigned kSeed = 20240307;
constexpr int kWarmUp = 10; // fonts, caches, dialogs
constexpr int kJobs = 200;
constexpr int kSettleMs = 1000; // what the last job has left to do

enum Kind
{
    kNormal,
    kPreview,
    kCancelled,
    kFailing,
    kSilent,
    kKinds
};
constexpr std::array<const char*, kKinds> kNames { "normal", "preview", "cancelled", "failing",
    "without a word" };
constexpr std::array<const char*, kKinds> kScripts {
    "step|state|1|1|\nstep|image|a.jpg|4|4\nstep|state|1|2|\nstep|image|b.jpg|4|4\n",
    "step|image|preview.jpg|4|4\n",
    "step|state|1|1|\nstep|image|a.jpg|4|4\nstep|wait\nstep|state|1|2|\n",
    "step|image|a.jpg|4|4\nstep|error|-41\nstep|image|b.jpg|4|4\n",
    "job|no-end\n",
};

int entriesOf(const char* folder)
{
    return static_cast<int>(std::distance(
        std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator()));
}

} // namespace

class Stress : public WindowTest
{
protected:
    void SetUp() override
    {
        choose();
        logJobs();
    }

    /// 0: from the window; 1 and 2: by that button of the scanner.
    void runJob(Kind kind, int button)
    {
        fake.script(std::string("job|clear\n") + kScripts[kind]);
        if (button != 0) {
            fake.press(button);
        } else {
            click(kind == kPreview ? "preViewBtn" : "scanMainBtn");
        }
        ASSERT_TRUE(waitCount("Scan", ++m_started));
        if (kind == kCancelled) {
            ASSERT_TRUE(QTest::qWaitFor([] { return cancelButton() != nullptr; }, 10000));
            QTest::mouseClick(cancelButton(), Qt::LeftButton);
        }
        ASSERT_TRUE(waitIdle());
    }
    static QPushButton* cancelButton()
    {
        auto* dialog = shown<StatusDialog>();
        auto* button = dialog != nullptr ? dialog->findChild<QPushButton*>() : nullptr;
        return button != nullptr && button->isVisible() && button->text() == "取消扫描" ? button
                                                                                        : nullptr;
    }
    static int recorded(const QByteArray& part) { return QByteArray(jobLog().c_str()).count(part); }

    int m_started = 0;
};

TEST_F(Stress, TwoHundredJobsOfEveryKindInARow)
{
    OpenedUrls opened; // what button 2 asks for
    // Qt scales previews in a pool, whose threads may come and go within the count
    QThreadPool::globalInstance()->setExpiryTimeout(kSettleMs / 4);
    std::mt19937 dice(kSeed);
    const auto pick = [&dice](int sides) { return static_cast<int>(dice() % sides); };
    std::map<std::string, int> jobs;
    int fromScanner = 0;
    int threads = 0;
    int descriptors = 0;
    for (int i = 0; i < kWarmUp + kJobs; ++i) {
        if (i == kWarmUp) {
            QTest::qWait(kSettleMs);
            threads = entriesOf("/proc/self/task");
            descriptors = entriesOf("/proc/self/fd");
        }
        const Kind kind =
            i < kWarmUp ? static_cast<Kind>(i % kKinds) : static_cast<Kind>(pick(kKinds));
        const int button = kind == kPreview ? 0 : pick(3);
        ASSERT_NO_FATAL_FAILURE(runJob(kind, button)) << "job " << i << ", " << kNames[kind];
        ++jobs[kNames[kind]];
        fromScanner += button != 0 ? 1 : 0;
    }
    std::cout << "seed " << kSeed << ", " << fromScanner << " jobs by the scanner's buttons, "
              << opened.urls.size() << " results opened\n";
    for (const auto& [name, times] : jobs) {
        std::cout << "  " << name << ": " << times << '\n';
    }

    const int failed = jobs[kNames[kFailing]];
    EXPECT_EQ(recorded(QByteArray(50, '-') + "\n开始时间: "), m_started);
    EXPECT_EQ(recorded("扫描结果: 失败\n"), failed);
    EXPECT_EQ(recorded("扫描结果: 成功!\n"), m_started - failed);
    EXPECT_EQ(fake.count("Scan"), m_started);
    EXPECT_EQ(fake.count("CancelScan"), jobs["cancelled"]);
    EXPECT_TRUE(QTest::qWaitFor([&] { return entriesOf("/proc/self/task") == threads; }, 5000))
        << entriesOf("/proc/self/task") << " threads, " << threads << " before";
    EXPECT_TRUE(QTest::qWaitFor([&] { return entriesOf("/proc/self/fd") == descriptors; }, 5000))
        << entriesOf("/proc/self/fd") << " descriptors, " << descriptors << " before";
}
