#include "tests/support/sandbox.h"

#include "app/common.h"
#include "app/install_paths.h"
#include "log/Log.h"
#include "tests/support/wait.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

namespace fs = std::filesystem;

namespace {

constexpr std::chrono::seconds kLockLimit { 60 };

// Removes what a sandbox may hold. Folders that a test made read-only are opened again first.
void removeTree()
{
    static_assert(sizeof(TARVEX_ROOT) > 1, "tests need a prefix");
    for (const char* part : { "/opt", "/home", "/files" }) {
        const fs::path tree = std::string(TARVEX_ROOT) + part;
        std::error_code ignored;
        for (auto it = fs::recursive_directory_iterator(tree, ignored);
             !ignored && it != fs::recursive_directory_iterator(); it.increment(ignored)) {
            std::error_code none;
            if (it->is_directory(none) && !it->is_symlink(none)) {
                fs::permissions(it->path(), fs::perms::owner_all, fs::perm_options::add, none);
            }
        }
        fs::remove_all(tree, ignored);
    }
}

int takeLock()
{
    fs::create_directories(TARVEX_ROOT);
    const int lock = ::open(TARVEX_ROOT "/sandbox.lock", O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    if (lock < 0 || !waitUntil([&] { return ::flock(lock, LOCK_EX | LOCK_NB) == 0; }, kLockLimit)) {
        throw std::runtime_error("the sandbox " TARVEX_ROOT " is in use");
    }
    return lock;
}

} // namespace

Sandbox::Sandbox()
    : m_lock(takeLock())
    , m_home("HOME", home())
{
    removeTree();
    g_strCommonPath = install_paths::kDataRoot;
    fs::create_directories(home());
    fs::create_directories(root() + "/files");
    fs::create_directories(userFolder() + "/OrvaLog");
    fs::create_directories(install_paths::kConfigFolder);
    Log.SetLogFileName(runLogFile().c_str());
}

Sandbox::~Sandbox()
{
    removeTree();
    ::close(m_lock);
}

std::string Sandbox::root()
{
    return TARVEX_ROOT;
}
std::string Sandbox::home()
{
    return root() + "/home";
}
std::string Sandbox::userFolder()
{
    return install_paths::kDataRoot + getAppOwnUsr().toStdString();
}
std::string Sandbox::runLogFile()
{
    return userFolder() + "/OrvaLog/tarvex-base-ui.log";
}
std::string Sandbox::runLog()
{
    return readBytes(runLogFile());
}
std::string Sandbox::path(const std::string& relative)
{
    return root() + "/files/" + relative;
}

std::string readBytes(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return { std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>() };
}

void writeBytes(const std::string& path, const std::string& bytes)
{
    std::error_code ignored;
    fs::create_directories(fs::path(path).parent_path(), ignored);
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << bytes;
    out.close();
    ASSERT_TRUE(out) << path;
}

bool fileExists(const std::string& path)
{
    std::error_code ignored;
    return fs::exists(path, ignored);
}
