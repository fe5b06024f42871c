#include "app/common.h"
#include "app/install_paths.h"
#include "app/single_instance.h"
#include "log/Log.h"
#include "tests/support/sandbox.h"
#include "tests/support/wait.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <filesystem>

using ::testing::HasSubstr;

namespace {

constexpr uid_t kNobody = 65534;

std::string pidFile()
{
    return std::string(install_paths::kConfigFolder) + "TarvexBaseUI.pid";
}

std::string idBytes(pid_t process)
{
    return std::to_string(process) + std::string(1, '\0');
}

int modeOf(const std::string& path)
{
    struct stat status = {};
    return ::stat(path.c_str(), &status) == 0 ? static_cast<int>(status.st_mode & 07777U) : -1;
}

// Another copy of the application: takes the lock, tells its result, and keeps it until it is
// ended.
class OtherCopy
{
public:
    OtherCopy()
    {
        std::array<int, 2> ends {};
        EXPECT_EQ(::pipe(ends.data()), 0);
        m_process = ::fork();
        if (m_process == 0) {
            const char result = process_already_running() == 0 ? 'y' : 'n';
            static_cast<void>(!::write(ends[1], &result, 1));
            ::pause();
            ::_exit(0);
        }
        ::close(ends[1]);
        char result = '?';
        EXPECT_EQ(::read(ends[0], &result, 1), 1);
        ::close(ends[0]);
        m_tookLock = result == 'y';
    }
    ~OtherCopy() { crash(); }
    OtherCopy(const OtherCopy&) = delete;
    OtherCopy& operator=(const OtherCopy&) = delete;

    void crash()
    {
        if (m_process > 0) {
            ::kill(m_process, SIGKILL);
            ::waitpid(m_process, nullptr, 0);
            m_process = 0;
        }
    }
    bool tookLock() const { return m_tookLock; }
    pid_t process() const { return m_process; }

private:
    pid_t m_process = 0;
    bool m_tookLock = false;
};

class SingleInstance : public ::testing::Test
{
protected:
    SingleInstance() { std::snprintf(chHomePath, sizeof chHomePath, "%s", pidFile().c_str()); }
    Sandbox sandbox;
};

} // namespace

TEST_F(SingleInstance, OnlyOneProcessHoldsTheLockAndItsIdStaysInTheFile)
{
    writeBytes(pidFile(), std::string(200, '7')); // of an earlier run
    OtherCopy first;
    ASSERT_TRUE(first.tookLock());
    EXPECT_EQ(readBytes(pidFile()), idBytes(first.process()));
    EXPECT_EQ(modeOf(pidFile()), 0777);

    EXPECT_EQ(process_already_running(), 1);
    EXPECT_EQ(readBytes(pidFile()), idBytes(first.process())) << "the refused copy changes nothing";
    EXPECT_THAT(Sandbox::runLog(), HasSubstr("\t write lock fail! \n"));

    first.crash();
    OtherCopy second;
    EXPECT_TRUE(second.tookLock()) << "the lock goes with its process";
    EXPECT_EQ(readBytes(pidFile()), idBytes(second.process()));
}

TEST_F(SingleInstance, ALinkInThePidFilesPlaceIsNotFollowed)
{
    const std::string other = Sandbox::path("somebody's file");
    writeBytes(other, "keep me");
    ASSERT_EQ(::chmod(other.c_str(), 0600), 0);
    std::filesystem::create_symlink(other, pidFile());
    EXPECT_EXIT(process_already_running(), ::testing::ExitedWithCode(1), "");
    std::filesystem::create_symlink(
        other, std::string(install_paths::kDataRoot) + ".config/tarvex-base.pid");
    process_control_uninstall();
    EXPECT_EQ(readBytes(other), "keep me");
    EXPECT_EQ(modeOf(other), 0600);
}

// The file belongs to the user who was first on this machine.
TEST_F(SingleInstance, AnotherUserTakesTheLockAllTheSame)
{
    const std::string uninstall = std::string(install_paths::kDataRoot) + ".config/tarvex-base.pid";
    for (const std::string& file : { pidFile(), uninstall, Sandbox::runLogFile() }) {
        writeBytes(file, "");
        ASSERT_EQ(::chmod(file.c_str(), 0777), 0);
    }
    ASSERT_EQ(::geteuid(), 0U) << "changing the user needs the super-user";
    const pid_t other = ::fork();
    if (other == 0) {
        const bool changed = ::setgid(kNobody) == 0 && ::setuid(kNobody) == 0;
        const int result = process_already_running();
        process_control_uninstall();
        ::_exit(changed && result == 0 ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(::waitpid(other, &status, 0), other);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(readBytes(pidFile()), idBytes(other));
    EXPECT_EQ(readBytes(uninstall), "") << "left alone where its mode cannot be set";
    EXPECT_THAT(Sandbox::runLog(),
        HasSubstr("[func:process_already_running]chHomePath:" + pidFile() + " chmod fail!\n"));
    EXPECT_THAT(Sandbox::runLog(),
        HasSubstr("[func:process_control_uninstall]pidfile:" + uninstall + " chmod fail!\n"));
}

TEST_F(SingleInstance, TheWipingIsLeftOutWhileAnotherCopyHoldsTheLock)
{
    writeBytes(Sandbox::runLogFile(), "lines of the first copy\n");
    OtherCopy first;
    ASSERT_TRUE(first.tookLock());
    {
        const CLog refused("TarvexBaseUI-protocal");
        EXPECT_THAT(Sandbox::runLog(), HasSubstr("lines of the first copy\n"));
        EXPECT_STREQ(refused.logFileName(),
            (std::string(install_paths::kDataRoot) + "/" + getAppOwnUsr().toStdString()
                + "/OrvaLog/tarvex-base-ui.log")
                .c_str());
    }
    first.crash();
    const CLog next("TarvexBaseUI-protocal");
    EXPECT_FALSE(fileExists(Sandbox::runLogFile())) << "a pid file without a lock does not count";
}
