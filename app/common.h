// Small file-system and user helpers that the whole application uses. Results are 0 for success and
// small negative numbers for failure; nothing here throws. Any thread, except where it is said.
#pragma once

#include <QString>

#include <string>

/// Private data root, with a slash at the end; every per-user folder lies below it. Set before
/// main.
extern std::string g_strCommonPath;

/// 0 when the effective user may write the path by the one mode bit that applies (owner, else
/// group, else others), -1 otherwise, also when the path cannot be examined. Supplementary groups,
/// the super-user and access-control lists are left out on purpose.
int checkWritable(const char* path);

/// Name of the user that owns the running application: the owner of the first process, in the order
/// of /proc, whose command line holds "TarvexBaseUI"; else the current user.
QString getAppOwnUsr();
/// The same with another folder in the place of /proc; for tests.
QString getAppOwnUsr(const std::string& processes);

/// mode 1 deletes the file: -1 null or empty path, -2 no such file, -3 it cannot be deleted, 0
/// done. Mode 0, and any other, does nothing and returns 0.
int com_del_file(const char* path, int mode);

/// Copies the bytes of a file, no permissions or times. -1: the source cannot be opened; -2: the
/// destination cannot be opened or written.
int com_copy_file(std::string source, std::string destination);

/// Waits until the bytes of a file, or the names in a folder, are on the disk, so that a name never
/// stands for half a file. False when that cannot be had.
bool flushToDisk(const QString& path);

/// Makes every missing folder of the path, mode 0777 whatever the umask. 0, or -1 at the first one
/// that cannot be made, or when the path with its last slash is longer than 255 bytes.
int createfolder(const char* path);

/// The environment variable HOME; where it is unset or empty (a service, a device rule), the home
/// folder that the system knows for the effective user.
std::string homeFolder();

/// Writes the last component of the home folder into the buffer and returns it. The buffer must
/// hold that text; 256 bytes do.
char* GetUserName(char* buffer);

/// Wide text to the multibyte text of the environment's locale, and back. Text that cannot be
/// converted gives an empty result. GUI thread: both set the locale of the process.
std::string u2a(const std::wstring& wide);
std::wstring a2u(const std::string& text);
