// A block goes out in one write to a locked file open for appending, so that blocks of two
// processes do not mix, also when a full disk or a network folder cuts the write in two.
#include "log/job_log_writer.h"

#include "log/Log.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <condition_variable>
#include <cstring>
#include <deque>
#include <filesystem>
#include <mutex>
#include <system_error>
#include <thread>

namespace {

/// A folder or file that another user's first block has just made lets others in a moment later.
constexpr int kOpenTries = 5;
constexpr int kLockTries = 100;
constexpr std::chrono::milliseconds kLockPause { 10 };

/// Bounded: a process that hangs with the lock must not hang this one.
bool lockFile(int descriptor)
{
    for (int tries = 0; ::flock(descriptor, LOCK_EX | LOCK_NB) != 0; ++tries) {
        if (errno != EWOULDBLOCK || tries == kLockTries) {
            return false;
        }
        std::this_thread::sleep_for(kLockPause);
    }
    return true;
}

/// errno of the fault; 0 when all bytes are on the disk, so that they outlive a loss of power.
int writeAll(int descriptor, const std::string& bytes)
{
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t written = ::write(descriptor, bytes.data() + done, bytes.size() - done);
        if (written > 0) {
            done += static_cast<std::size_t>(written);
        } else if (written == 0 || errno != EINTR) {
            return errno;
        }
    }
    return ::fdatasync(descriptor) == 0 || errno == EINVAL ? 0 : errno;
}

struct Outcome
{
    int fault = 0; ///< errno; 0 when the bytes are in the file
    bool isHalf = false; ///< what was begun could not be taken back
};

/// A new file gets the permissions of its folder.
Outcome appendBytes(const std::string& file, const std::string& bytes, mode_t folderMode)
{
    int descriptor = -1;
    for (int tries = 0; descriptor < 0; ++tries) {
        descriptor = ::open(file.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666);
        if (descriptor < 0 && (errno != EACCES || tries == kOpenTries)) {
            return { errno, false };
        }
        if (descriptor < 0) {
            std::this_thread::sleep_for(kLockPause);
        }
    }
    const bool locked = lockFile(descriptor);
    struct stat before
    {
    };
    const bool known = ::fstat(descriptor, &before) == 0;
    if (known && before.st_size == 0) {
        ::fchmod(descriptor, folderMode & 0666U); // refused to all but its owner
    }
    Outcome out;
    out.fault = writeAll(descriptor, bytes);
    out.isHalf = out.fault != 0 && locked && known && ::ftruncate(descriptor, before.st_size) != 0;
    ::close(descriptor);
    return out;
}

/// Makes the month's folder and tells the permissions of what lies in it. Who may write into the
/// destination may write into what lies below it, or the first user of a shared folder would lock
/// the others out.
mode_t makeFolder(const std::string& destination, const std::string& folder)
{
    std::error_code ignored; // opening the file tells
    const bool isNew = std::filesystem::create_directories(folder, ignored);
    struct stat status
    {
    };
    if (isNew && ::stat(destination.c_str(), &status) == 0) {
        ::chmod(folder.c_str(), status.st_mode & 0777U);
    }
    // Not those of the folder: another user's process may be about to set them.
    return ::stat(destination.c_str(), &status) == 0 ? status.st_mode : 0;
}

Outcome writeBlock(const JobLogBlock& block)
{
    const mode_t folderMode = makeFolder(block.destination, block.folder);
    return appendBytes(block.file, block.text, folderMode);
}

void tell(const JobLogBlock& block, const Outcome& out)
{
    const char* file = block.file.c_str();
    if (out.isHalf) {
        runLog("[func:%s]%s ends in half a block", "appendBytes", file);
    }
    if (out.fault != 0) {
        runLog("[func:%s]job log %s cannot be written: %s", "appendToday", file,
            std::strerror(out.fault));
    }
}

} // namespace

struct JobLogWriter::Queue
{
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<JobLogBlock> blocks; ///< the first one stays until it is written
    bool ending = false;
};

JobLogWriter::~JobLogWriter()
{
    if (m_queue == nullptr) {
        return;
    }
    const bool isThrough = flush(kLastWait);
    {
        const std::lock_guard<std::mutex> lock(m_queue->mutex);
        for (const JobLogBlock& block : m_queue->blocks) {
            tell(block, { ETIMEDOUT, false });
        }
        m_queue->ending = true;
        m_queue->changed.notify_all();
    }
    if (isThrough) {
        m_thread.join();
    } else {
        m_thread.detach();
    }
}

void JobLogWriter::start()
{
    if (m_queue != nullptr) {
        return;
    }
    auto queue = std::make_shared<Queue>();
    try {
        m_thread = std::thread([queue] { run(queue); });
        m_queue = queue;
    } catch (const std::system_error& error) {
        runLog("[func:%s]the job log has no thread: %s", "JobLogWriter", error.what());
    }
}

void JobLogWriter::run(const std::shared_ptr<Queue>& queue)
{
    std::unique_lock<std::mutex> lock(queue->mutex);
    while (true) {
        queue->changed.wait(lock, [&] { return queue->ending || !queue->blocks.empty(); });
        if (queue->ending) {
            return;
        }
        const JobLogBlock& block = queue->blocks.front(); // a deque does not move it
        lock.unlock();
        const Outcome out = writeBlock(block);
        lock.lock();
        if (queue->ending) {
            return; // left behind: it speaks to nobody any more
        }
        tell(block, out);
        queue->blocks.pop_front();
        queue->changed.notify_all();
    }
}

void JobLogWriter::write(JobLogBlock block)
{
    if (m_queue == nullptr) {
        tell(block, writeBlock(block));
        return;
    }
    const std::lock_guard<std::mutex> lock(m_queue->mutex);
    m_queue->blocks.push_back(std::move(block));
    m_queue->changed.notify_all();
}

bool JobLogWriter::flush(std::chrono::milliseconds limit)
{
    if (m_queue == nullptr) {
        return true;
    }
    std::unique_lock<std::mutex> lock(m_queue->mutex);
    return m_queue->changed.wait_for(lock, limit, [this] { return m_queue->blocks.empty(); });
}
