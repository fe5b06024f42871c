// The process-wide objects, for test executables: the same names and order as the application's
// own, but a run log that prepares no file before main.
#include "app/common.h"
#include "app/install_paths.h"
#include "log/Log.h"
#include "log/itprojectlog.h"

std::string g_strCommonPath = install_paths::kDataRoot;
std::ofstream g_LogFile;
CLog Log(0);
ITProLog IOFLog;
