// An empty tree below the build's prefix (TARVEX_ROOT), for tests that use the real paths of the
// application. Everything in the tree is removed when a sandbox is made and when it goes.
#pragma once

#include "tests/support/environment.h"

#include <string>

/// One at a time, also between processes (a second one waits up to a minute). While it lives HOME
/// is a folder of the sandbox, g_strCommonPath has its factory value, and the run log goes to the
/// file that the application uses. The folders of the run log and of the configuration exist.
class Sandbox
{
public:
    Sandbox();
    ~Sandbox();
    Sandbox(const Sandbox&) = delete;
    Sandbox& operator=(const Sandbox&) = delete;

    /// The prefix itself, no slash at the end.
    static std::string root();
    /// The home folder, no slash at the end.
    static std::string home();
    /// Data root and user name, no slash at the end: the folder that every per-user path starts
    /// with.
    static std::string userFolder();
    static std::string runLogFile();
    /// Text of the run log so far.
    static std::string runLog();
    /// An absolute path in a free folder of the sandbox, for files of the test itself.
    static std::string path(const std::string& relative);

private:
    int m_lock = -1;
    ScopedEnvironment m_home;
};

/// Bytes of a file; empty when it cannot be read.
std::string readBytes(const std::string& path);
/// Writes a file, making its folders; a failure fails the test.
void writeBytes(const std::string& path, const std::string& bytes);
bool fileExists(const std::string& path);
