// The process-wide objects that exist before main. In one file, so that this order is certain: the
// run log takes its path from the data root and is wiped when it is made; both logs print.
#include "app/common.h"
#include "app/install_paths.h"
#include "app/standard_streams.h"
#include "log/Log.h"
#include "log/itprojectlog.h"

[[maybe_unused]] static const bool standardStreamsPrepared = prepareStandardStreams();
std::string g_strCommonPath = install_paths::kDataRoot;
std::ofstream g_LogFile;
CLog Log("TarvexBaseUI-protocal");
ITProLog IOFLog;
