#include "app/single_instance.h"

#include "app/common.h"
#include "log/Log.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

char chHomePath[256] = {};

namespace {

constexpr mode_t kFileMode = 0644;
constexpr mode_t kSharedMode = 0777;

// Descriptors are closed on exec, so that a viewer that the application starts does not hold files.
// All users may write the folder: a link in the file's place would have somebody's file emptied.
int openPidFile(const char* path)
{
    return ::open(path, O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, kFileMode);
}

// The decimal id and its terminating zero byte.
void writeProcessId(int descriptor, const char* path)
{
    std::array<char, 32> text {};
    std::snprintf(text.data(), text.size(), "%ld", static_cast<long>(::getpid()));
    const std::size_t length = std::strlen(text.data()) + 1;
    if (::ftruncate(descriptor, 0) != 0
        || ::write(descriptor, text.data(), length) != static_cast<ssize_t>(length)) {
        runLog("[func:%s]can't write %s: %s", __func__, path, std::strerror(errno));
    }
}

} // namespace

int lock_reg(int fd, int cmd, int type, off_t offset, int whence, off_t len)
{
    struct flock lock
    {
    };
    lock.l_type = static_cast<short>(type);
    lock.l_whence = static_cast<short>(whence);
    lock.l_start = offset;
    lock.l_len = len;
    return ::fcntl(fd, cmd, &lock);
}

int process_already_running()
{
    const int descriptor = openPidFile(chHomePath);
    if (descriptor < 0) {
        const int reason = errno;
        runLog("return fd = %d, can't open %s: %s", descriptor, chHomePath, std::strerror(reason));
        if (reason == EEXIST) {
            runLog("This process already running : %s", std::strerror(reason));
        }
        std::exit(1);
    }
    if (::fchmod(descriptor, kSharedMode) != 0) {
        runLog("[func:%s]chHomePath:%s chmod fail!", __func__, chHomePath);
    }
    if (lock_reg(descriptor, F_SETLK, F_WRLCK, 0, SEEK_SET, 0) != 0) {
        ::close(descriptor);
        runLog("write lock fail! ");
        return 1;
    }
    writeProcessId(descriptor, chHomePath);
    return 0; // the descriptor stays open, and the lock held, until the process ends
}

void process_control_uninstall()
{
    std::array<char, 256> path {};
    std::snprintf(
        path.data(), path.size(), "%s", (g_strCommonPath + ".config/tarvex-base.pid").c_str());
    const int descriptor = openPidFile(path.data());
    if (descriptor < 0) {
        runLog("[func:%s]return fd = %d, can't open %s: %s", __func__, descriptor, path.data(),
            std::strerror(errno));
        return;
    }
    if (::fchmod(descriptor, kSharedMode) != 0) {
        runLog("[func:%s]pidfile:%s chmod fail!", __func__, path.data());
        return; // KEPT: the descriptor stays as it is
    }
    writeProcessId(descriptor, path.data());
    ::close(descriptor);
}
