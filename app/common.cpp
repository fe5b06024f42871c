// File-system and user helpers. System calls only: no shell, so any file name is safe.
#include "app/common.h"

#include "log/Log.h"

#include <QFile>

#include <dirent.h>
#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

namespace {

constexpr char kProgramName[] = "TarvexBaseUI";
constexpr std::size_t kPathBytes = 256;
constexpr std::size_t kCopyChunk = 1024;

struct CloseFile
{
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using FilePointer = std::unique_ptr<std::FILE, CloseFile>;

// Zero bytes separate the arguments in /proc; blanks replace them, as a process list shows them.
std::string commandLineOf(const std::string& processFolder)
{
    std::string text;
    const std::string path = processFolder + "/cmdline";
    if (const FilePointer file { std::fopen(path.c_str(), "re") }) {
        std::array<char, 4096> part {};
        for (std::size_t got = 0;
             (got = std::fread(part.data(), 1, part.size(), file.get())) > 0;) {
            text.append(part.data(), got);
        }
    }
    std::replace(text.begin(), text.end(), '\0', ' ');
    return text;
}

std::vector<long> processesInOrder(const std::string& listing)
{
    std::vector<long> processes;
    if (DIR* folder = ::opendir(listing.c_str())) {
        while (const dirent* entry = ::readdir(folder)) {
            char* end = nullptr;
            const long process = std::strtol(entry->d_name, &end, 10);
            if (process > 0 && *end == '\0') {
                processes.push_back(process);
            }
        }
        ::closedir(folder);
    }
    std::sort(processes.begin(), processes.end());
    return processes;
}

struct Account
{
    std::string name;
    std::string home;
};

// A user that the system does not know goes by the number, as a process list shows it.
Account accountOf(uid_t user)
{
    std::array<char, 4096> text {};
    passwd entry {};
    passwd* found = nullptr;
    if (::getpwuid_r(user, &entry, text.data(), text.size(), &found) == 0 && found != nullptr) {
        return { found->pw_name, found->pw_dir };
    }
    return { std::to_string(user), {} };
}

bool exists(const char* path)
{
    return ::access(path, F_OK) == 0;
}

bool isFolder(const char* path)
{
    struct stat status
    {
    };
    return ::stat(path, &status) == 0 && S_ISDIR(status.st_mode);
}

// One folder, mode 0777 whatever the umask. A folder that another process made meanwhile is as
// good.
bool makeFolder(const char* path)
{
    if (::mkdir(path, 0777) == 0) {
        return ::chmod(path, 0777) == 0;
    }
    return errno == EEXIST && isFolder(path);
}

bool isSameFile(std::FILE* opened, const char* path)
{
    struct stat first
    {
    };
    struct stat second
    {
    };
    return ::fstat(::fileno(opened), &first) == 0 && ::stat(path, &second) == 0
        && first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

} // namespace

int checkWritable(const char* path)
{
    struct stat status
    {
    };
    if (path == nullptr || ::stat(path, &status) != 0) {
        return -1;
    }
    runLog("st_mode %x\n", status.st_mode);
    mode_t bit = S_IWOTH;
    if (status.st_uid == ::geteuid()) {
        bit = S_IWUSR;
    } else if (status.st_gid == ::getegid()) {
        bit = S_IWGRP;
    }
    return (status.st_mode & bit) != 0 ? 0 : -1;
}

QString getAppOwnUsr()
{
    return getAppOwnUsr("/proc");
}

QString getAppOwnUsr(const std::string& processes)
{
    for (const long process : processesInOrder(processes)) {
        const std::string folder = processes + '/' + std::to_string(process);
        if (commandLineOf(folder).find(kProgramName) == std::string::npos) {
            continue;
        }
        struct stat status
        {
        };
        if (::stat(folder.c_str(), &status) == 0) {
            return QString::fromStdString(accountOf(status.st_uid).name);
        }
    }
    return QString::fromStdString(accountOf(::geteuid()).name);
}

int com_del_file(const char* path, int mode)
{
    if (mode != 1) {
        return 0;
    }
    if (path == nullptr || *path == '\0') {
        return -1;
    }
    if (!exists(path)) {
        return -2;
    }
    return ::unlink(path) == 0 ? 0 : -3;
}

int com_copy_file(std::string source, std::string destination)
{
    const FilePointer in { std::fopen(source.c_str(), "re") };
    if (!in || isFolder(source.c_str())) {
        runLog(
            "[func:%s]源文件不存在，请检查路径输入是否存在！路径为:%s", __func__, source.c_str());
        return -1;
    }
    if (isSameFile(in.get(), destination.c_str())) {
        return 0; // opening it for writing would empty the only copy
    }
    FilePointer out { std::fopen(destination.c_str(), "we") };
    if (!out) {
        runLog("[func:%s]创建目标文件流失败！", __func__);
        return -2;
    }
    std::array<char, kCopyChunk> chunk {};
    for (std::size_t got = 0; (got = std::fread(chunk.data(), 1, chunk.size(), in.get())) > 0;) {
        if (std::fwrite(chunk.data(), 1, got, out.get()) != got) {
            break;
        }
    }
    const bool readFailed = std::ferror(in.get()) != 0;
    bool writeFailed = std::ferror(out.get()) != 0;
    writeFailed = std::fclose(out.release()) != 0 || writeFailed;
    if (readFailed || writeFailed) {
        runLog("[func:%s]%s -> %s: %s", __func__, source.c_str(), destination.c_str(),
            std::strerror(errno));
    }
    if (writeFailed) {
        return -2;
    }
    return readFailed ? -1 : 0;
}

bool flushToDisk(const QString& path)
{
    const int descriptor = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) {
        return false;
    }
    const bool done = ::fsync(descriptor) == 0;
    ::close(descriptor);
    return done;
}

int createfolder(const char* path)
{
    if (path == nullptr) {
        return -1;
    }
    std::string walk = path;
    if (walk.empty() || walk.back() != '/') {
        walk += '/';
    }
    if (walk.size() >= kPathBytes) {
        return -1;
    }
    for (std::size_t at = 1; at < walk.size(); ++at) {
        if (walk[at] != '/') {
            continue;
        }
        const std::string prefix = walk.substr(0, at);
        if (!exists(prefix.c_str()) && !makeFolder(prefix.c_str())) {
            return -1;
        }
    }
    return 0;
}

std::string homeFolder()
{
    const char* home = std::getenv("HOME");
    return home != nullptr && *home != '\0' ? home : accountOf(::geteuid()).home;
}

char* GetUserName(char* buffer)
{
    std::string name = homeFolder();
    name.erase(0, name.rfind('/') + 1); // npos + 1 is 0
    std::printf("[func:%s]-user:%s\n", __func__, name.c_str());
    std::snprintf(buffer, kPathBytes, "%s", name.c_str());
    return buffer;
}

std::string u2a(const std::wstring& wide)
{
    std::setlocale(LC_CTYPE, "");
    std::vector<char> text(wide.size() * 4 + 1, '\0');
    const std::size_t length = std::wcstombs(text.data(), wide.c_str(), text.size() - 1);
    return length == static_cast<std::size_t>(-1) ? std::string() : std::string(text.data());
}

std::wstring a2u(const std::string& text)
{
    if (text.empty()) {
        return {};
    }
    std::setlocale(LC_CTYPE, "");
    std::vector<wchar_t> wide(text.size() * 2 + 1, L'\0');
    const std::size_t length = std::mbstowcs(wide.data(), text.c_str(), wide.size() - 1);
    return length == static_cast<std::size_t>(-1) ? std::wstring() : std::wstring(wide.data());
}
