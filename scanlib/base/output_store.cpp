#include "scanlib/base/output_store.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <utility>

namespace orva {

namespace {

constexpr int kMaxNumber = 1'000'000; ///< "name_1000000" and no free name yet: give up
constexpr unsigned long long kMinFreeBytes = 1ULL << 20U;
constexpr std::time_t kLeftoverAgeSeconds = 60;
constexpr const char* kHiddenExtension = ".orva-part";

bool isTaken(const std::filesystem::path& path)
{
    struct stat info
    {
    };
    return lstat(path.c_str(), &info) == 0;
}

/// Removes a hidden file whose process died: nobody holds its lock. Young files are left alone when
/// their maker may be between creating and locking.
bool removeLeftover(const std::filesystem::path& hidden, std::time_t minAgeSeconds)
{
    struct stat info
    {
    };
    const int file = open(hidden.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
    if (file < 0) {
        return errno == ENOENT;
    }
    const bool leftover = fstat(file, &info) == 0
        && std::time(nullptr) - info.st_mtime >= minAgeSeconds
        && flock(file, LOCK_EX | LOCK_NB) == 0;
    if (leftover) {
        unlink(hidden.c_str());
    }
    close(file);
    return leftover;
}

/// Creates the file exclusively (else EEXIST), locked from its first moment, so that nobody takes
/// it for a leftover. Where the file system has no nameless files, it is locked just after.
int createLocked(const std::filesystem::path& folder, const std::filesystem::path& path)
{
    int file = open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0666);
    if (file >= 0) {
        flock(file, LOCK_EX | LOCK_NB);
        const std::string self = "/proc/self/fd/" + std::to_string(file);
        if (linkat(AT_FDCWD, self.c_str(), AT_FDCWD, path.c_str(), AT_SYMLINK_FOLLOW) == 0) {
            return file;
        }
        const int error = errno;
        close(file);
        if (error == EEXIST) {
            errno = error;
            return -1;
        }
    }
    file = open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (file >= 0) {
        flock(file, LOCK_EX | LOCK_NB);
    }
    return file;
}

/// Renames unless the new name is taken (then EEXIST). Some network and FAT file systems know
/// neither the flag nor hard links; there the name is created exclusively and then replaced.
int renameExclusively(const std::filesystem::path& from, const std::filesystem::path& to)
{
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) {
        return 0;
    }
    if (errno != EINVAL && errno != ENOSYS) {
        return errno;
    }
    const int placeholder = open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (placeholder < 0) {
        return errno;
    }
    close(placeholder);
    if (rename(from.c_str(), to.c_str()) == 0) {
        return 0;
    }
    const int error = errno;
    unlink(to.c_str()); // an empty file must not pass for a finished one
    return error;
}

} // namespace

Status fileFailure(int error, const std::filesystem::path& path)
{
    const std::string detail = path.string() + ": " + std::strerror(error);
    switch (error) {
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
        return { kDiskFull, detail };
    case ENOENT:
    case ENOTDIR:
    case ESTALE:
        return { kFolderMissing, detail };
    case EACCES:
    case EPERM:
    case EROFS:
        return { kFolderReadOnly, detail };
    case ENAMETOOLONG:
    case EILSEQ:
        return { kBadFileName, detail };
    case ENOMEM:
        return { kNoMemory, detail };
    default:
        return { kFileWrite, detail };
    }
}

void flushFolder(const std::filesystem::path& folder)
{
    const int directory = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (directory >= 0) {
        fsync(directory); // some file systems refuse; the rename itself has succeeded
        close(directory);
    }
}

void removeHiddenLeftovers(const std::filesystem::path& folder)
{
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        const std::filesystem::path& path = entry->path();
        if (path.extension() == kHiddenExtension && path.filename().string().front() == '.') {
            removeLeftover(path, 0);
        }
    }
}

Reservation::~Reservation()
{
    abandon();
}

Reservation::Reservation(Reservation&& other) noexcept
    : m_final(std::move(other.m_final))
    , m_hidden(std::move(other.m_hidden))
    , m_askedStem(std::move(other.m_askedStem))
    , m_exclusive(other.m_exclusive)
    , m_lock(std::exchange(other.m_lock, -1))
{
    other.m_hidden.clear();
}

Reservation& Reservation::operator=(Reservation&& other) noexcept
{
    if (this != &other) {
        abandon();
        m_final = std::move(other.m_final);
        m_hidden = std::move(other.m_hidden);
        m_askedStem = std::move(other.m_askedStem);
        m_exclusive = other.m_exclusive;
        m_lock = std::exchange(other.m_lock, -1);
        other.m_hidden.clear();
    }
    return *this;
}

void Reservation::abandon()
{
    if (!m_hidden.empty()) {
        unlink(m_hidden.c_str());
        m_hidden.clear();
    }
    if (m_lock >= 0) {
        close(m_lock);
        m_lock = -1;
    }
}

OutputStore::OutputStore(std::filesystem::path folder, SameName sameName)
    : m_folder(std::move(folder))
    , m_sameName(sameName)
{
}

Status OutputStore::check() const
{
    struct stat info
    {
    };
    if (stat(m_folder.c_str(), &info) != 0) {
        return fileFailure(errno, m_folder);
    }
    if (!S_ISDIR(info.st_mode)) {
        return { kFolderMissing, m_folder.string() + " is not a folder" };
    }
    if (access(m_folder.c_str(), W_OK | X_OK) != 0) {
        return fileFailure(errno, m_folder);
    }
    struct statvfs space
    {
    };
    if (statvfs(m_folder.c_str(), &space) == 0 && space.f_blocks != 0
        && static_cast<unsigned long long>(space.f_bavail) * space.f_frsize < kMinFreeBytes) {
        return { kDiskFull, m_folder.string() + ": less than a megabyte is free" };
    }
    return {};
}

std::filesystem::path OutputStore::hiddenPath(
    const std::string& name, const std::string& suffix) const
{
    return m_folder / ("." + name + suffix + kHiddenExtension);
}

OutputStore::Attempt OutputStore::tryReserve(
    const std::string& name, Reservation& out, Status& failure) const
{
    const std::filesystem::path target = m_folder / name;
    const std::filesystem::path hidden = hiddenPath(name, "");
    if (isTaken(target)) {
        return Attempt::kTaken;
    }
    int file = createLocked(m_folder, hidden);
    if (file < 0 && errno == EEXIST) {
        file = removeLeftover(hidden, kLeftoverAgeSeconds) ? createLocked(m_folder, hidden) : -1;
        if (file < 0) {
            return Attempt::kTaken;
        }
    }
    if (file < 0) {
        failure = fileFailure(errno, hidden);
        return Attempt::kFailed;
    }
    out.abandon();
    out.m_final = target;
    out.m_hidden = hidden;
    out.m_lock = file;
    out.m_exclusive = true;
    // Another job may have finished under this name between the look and the reservation.
    if (isTaken(target)) {
        out.abandon();
        return Attempt::kTaken;
    }
    return Attempt::kHeld;
}

Status OutputStore::reserveNumbered(
    const std::string& stem, const std::string& extension, Reservation& out)
{
    Status failure;
    for (int number = 1; number <= kMaxNumber; ++number) {
        const std::string suffix = number == 1 ? "" : "_" + std::to_string(number);
        std::string name = stem;
        name.append(suffix).append(".").append(extension);
        switch (tryReserve(name, out, failure)) {
        case Attempt::kHeld:
            out.m_askedStem = stem;
            return {};
        case Attempt::kFailed:
            return failure;
        case Attempt::kTaken:
            break;
        }
    }
    return { kNoFreeName, stem + "." + extension };
}

Status OutputStore::reserveReplacing(const std::string& name, Reservation& out) const
{
    static std::atomic<unsigned> counter { 0 };
    const std::string suffix =
        "." + std::to_string(getpid()) + "-" + std::to_string(counter.fetch_add(1));
    const std::filesystem::path target = m_folder / name;
    struct stat info
    {
    };
    if (stat(target.c_str(), &info) == 0 && S_ISDIR(info.st_mode)) {
        return { kBadFileName, target.string() + " is a folder" };
    }
    const std::filesystem::path hidden = hiddenPath(name, suffix);
    unlink(hidden.c_str()); // of an earlier process with our number
    const int file = createLocked(m_folder, hidden);
    if (file < 0) {
        return fileFailure(errno, hidden);
    }
    out.abandon();
    out.m_final = target;
    out.m_hidden = hidden;
    out.m_lock = file;
    out.m_exclusive = false;
    return {};
}

Status OutputStore::reserve(const std::string& stem, const std::string& extension, Reservation& out)
{
    return m_sameName == SameName::kReplace ? reserveReplacing(stem + "." + extension, out)
                                            : reserveNumbered(stem, extension, out);
}

Status OutputStore::reserveIfFree(
    const std::string& stem, const std::string& extension, Reservation& out, bool& taken) const
{
    Status failure;
    taken = tryReserve(stem + "." + extension, out, failure) == Attempt::kTaken;
    out.m_askedStem = stem;
    return failure;
}

Status OutputStore::commit(Reservation& reservation, std::filesystem::path& file)
{
    int error = 0;
    if (!reservation.m_exclusive) {
        error = rename(reservation.m_hidden.c_str(), reservation.m_final.c_str()) == 0 ? 0 : errno;
    } else {
        error = renameExclusively(reservation.m_hidden, reservation.m_final);
    }
    if (error == EEXIST) {
        // Some other program took the name meanwhile: ours moves on to the next free one.
        Reservation next;
        const std::string extension = reservation.m_final.extension().string().substr(1);
        if (Status status = reserveNumbered(reservation.m_askedStem, extension, next);
            !status.ok()) {
            return status;
        }
        if (rename(reservation.m_hidden.c_str(), next.m_hidden.c_str()) != 0) {
            return fileFailure(errno, next.m_hidden);
        }
        reservation.m_hidden.clear();
        reservation = std::move(next);
        return commit(reservation, file);
    }
    if (error != 0) {
        return fileFailure(error, reservation.m_final);
    }
    reservation.m_hidden.clear();
    file = reservation.m_final;
    flushFolder(m_folder);
    reservation.abandon();
    return {};
}

} // namespace orva
