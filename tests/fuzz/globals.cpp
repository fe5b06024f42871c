// The process-wide objects that helpers and run log need, without a file and without the job log.
#include "app/common.h"
#include "log/Log.h"

std::string g_strCommonPath;
std::ofstream g_LogFile;
CLog Log(0);
