#include "scanlib/base/spool.h"

#include "scanlib/base/output_store.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <fstream>
#include <sstream>

namespace orva {

namespace {

constexpr const char* kFolderMark = "job-";
/// Of a folder whose journal is not locked yet: a recovery would take it for a dead job's.
constexpr const char* kUnlockedMark = "new-";
constexpr const char* kJournalName = "journal";

std::filesystem::path fallbackRoot()
{
    std::error_code error;
    const std::filesystem::path temporary = std::filesystem::temp_directory_path(error);
    return (error ? std::filesystem::path("/tmp") : temporary)
        / ("orva-spool-" + std::to_string(geteuid()));
}

bool isOurs(const std::filesystem::path& folder)
{
    struct stat info
    {
    };
    return lstat(folder.c_str(), &info) == 0 && S_ISDIR(info.st_mode) && info.st_uid == geteuid();
}

/// Several users may share the installed root: everybody may add to it, nobody may touch another's
/// folder.
bool makeSharedRoot(const std::filesystem::path& root)
{
    std::error_code error;
    if (std::filesystem::is_directory(root, error)) {
        return true;
    }
    std::filesystem::create_directories(root.parent_path(), error);
    if (mkdir(root.c_str(), 0700) == 0) {
        chmod(root.c_str(), 01777);
    }
    return std::filesystem::is_directory(root, error);
}

/// The user's own. Anybody may have made a folder of that name before: then it is not used.
bool makeFallbackRoot(const std::filesystem::path& root)
{
    if (mkdir(root.c_str(), 0700) == 0) {
        return true;
    }
    return errno == EEXIST && isOurs(root) && chmod(root.c_str(), 0700) == 0;
}

std::string folderName()
{
    static std::atomic<unsigned> counter { 0 };
    const auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::system_clock::now().time_since_epoch())
                        .count();
    return std::to_string(ms) + "-" + std::to_string(getpid()) + "-"
        + std::to_string(counter.fetch_add(1));
}

Status writeAll(int file, const void* data, std::size_t size, const std::filesystem::path& path)
{
    const char* next = static_cast<const char*>(data);
    while (size > 0) {
        const ssize_t written = write(file, next, size);
        if (written < 0) {
            if (errno == EINTR) {
                continue;
            }
            return fileFailure(errno, path);
        }
        next += written;
        size -= static_cast<std::size_t>(written);
    }
    return {};
}

} // namespace

SpoolFolder::~SpoolFolder()
{
    if (m_journal >= 0) {
        close(m_journal);
    }
}

bool SpoolFolder::lockJournal(int flags)
{
    m_journal = open((m_folder / kJournalName).c_str(),
        O_RDWR | O_APPEND | O_CLOEXEC | O_NOFOLLOW | flags, 0600);
    if (m_journal < 0) {
        return false;
    }
    // Where nothing can be locked, others could not tell a living job from a dead one.
    if (const int failed = flock(m_journal, LOCK_EX | LOCK_NB) != 0 ? errno : 0; failed != 0) {
        close(m_journal);
        m_journal = -1;
        errno = failed;
        return false;
    }
    return true;
}

Status SpoolFolder::create(const std::filesystem::path& root)
{
    Status status { kFileWrite, root.string() + ": no folder for the pages of a job" };
    const std::pair<std::filesystem::path, bool (*)(const std::filesystem::path&)> places[] = {
        { root, makeSharedRoot }, { fallbackRoot(), makeFallbackRoot }
    };
    for (const auto& [place, make] : places) {
        if (!make(place)) {
            continue;
        }
        const std::string name = folderName();
        m_folder = place / (kUnlockedMark + name);
        if (mkdir(m_folder.c_str(), 0700) != 0) {
            status = fileFailure(errno, m_folder);
            continue;
        }
        const std::filesystem::path visible = place / (kFolderMark + name);
        if (lockJournal(O_CREAT | O_EXCL) && rename(m_folder.c_str(), visible.c_str()) == 0) {
            m_folder = visible;
            return {};
        }
        status = fileFailure(errno, m_folder);
        if (m_journal >= 0) {
            close(m_journal);
            m_journal = -1;
        }
        unlink((m_folder / kJournalName).c_str());
        rmdir(m_folder.c_str());
    }
    m_folder.clear();
    return status;
}

bool SpoolFolder::takeOver(const std::filesystem::path& folder)
{
    if (!isOurs(folder)) {
        return false;
    }
    m_folder = folder;
    if (!lockJournal(0)) {
        m_folder.clear();
        return false;
    }
    // The job may have ended between the opening and the locking.
    struct stat held
    {
    };
    struct stat named
    {
    };
    const bool gone = fstat(m_journal, &held) != 0
        || lstat((m_folder / kJournalName).c_str(), &named) != 0 || held.st_ino != named.st_ino;
    // Else ends a line that the dead process may have left half written.
    if (gone || !note("").ok()) {
        m_folder.clear();
        return false;
    }
    return true;
}

Status SpoolFolder::store(const std::string& name, const std::vector<std::uint8_t>& bytes,
    std::filesystem::path& file) const
{
    file = m_folder / name;
    const int handle = open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (handle < 0) {
        return fileFailure(errno, file);
    }
    Status status = writeAll(handle, bytes.data(), bytes.size(), file);
    sync_file_range(handle, 0, 0, SYNC_FILE_RANGE_WRITE); // begins, does not wait
    if (close(handle) != 0 && status.ok()) {
        status = fileFailure(errno, file);
    }
    if (!status.ok()) {
        unlink(file.c_str());
    }
    return status;
}

Status SpoolFolder::note(const std::string& line)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const std::string text = (m_cutLine ? "\n" : "") + line + "\n";
    Status status = writeAll(m_journal, text.data(), text.size(), m_folder / kJournalName);
    m_cutLine = !status.ok(); // the next line must not become the end of half a line
    return status;
}

std::vector<std::string> SpoolFolder::journal() const
{
    std::ifstream file(m_folder / kJournalName, std::ios::binary);
    std::ostringstream whole;
    whole << file.rdbuf();
    const std::string text = whole.str();
    std::vector<std::string> lines;
    std::size_t begin = 0;
    for (std::size_t end = text.find('\n'); end != std::string::npos;
         end = text.find('\n', begin)) {
        lines.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    return lines;
}

void SpoolFolder::remove()
{
    if (!m_folder.empty()) {
        std::error_code error;
        std::filesystem::remove_all(m_folder, error);
        m_folder.clear();
    }
    if (m_journal >= 0) {
        close(m_journal);
        m_journal = -1;
    }
}

std::vector<std::filesystem::path> spoolFolders(const std::filesystem::path& root)
{
    std::vector<std::filesystem::path> folders;
    for (const std::filesystem::path& place : { root, fallbackRoot() }) {
        std::error_code error;
        for (std::filesystem::directory_iterator entry(place, error), end; !error && entry != end;
             entry.increment(error)) {
            if (entry->path().filename().string().rfind(kFolderMark, 0) == 0
                && isOurs(entry->path())) {
                folders.push_back(entry->path());
            }
        }
    }
    std::sort(folders.begin(), folders.end(),
        [](const auto& a, const auto& b) { return a.filename() < b.filename(); });
    return folders;
}

} // namespace orva
