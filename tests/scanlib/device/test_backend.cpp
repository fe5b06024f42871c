#include "tests/scanlib/device/test_backend.h"

#include "tests/scanlib/temporary_folder.h"

#include <unistd.h>

#include <cstdlib>
#include <fstream>

namespace device_tests {

namespace {

std::filesystem::path wishesFile()
{
    return std::filesystem::path(testBackendFolder()) / "wishes";
}

} // namespace

void wish(const BackendWishes& wishes)
{
    std::string lines;
    for (const auto& [name, value] : wishes) {
        lines.append(name).append(" ").append(value).append("\n");
    }
    writeFile(wishesFile(), lines);
    ::setenv("ORVA_TEST_WISHES", wishesFile().c_str(), 1);
}

std::string testBackendFolder()
{
    static const TemporaryFolder folder;
    static const bool written = [] {
        writeFile(folder.path() / "dll.conf", "test\n");
        writeFile(folder.path() / "test.conf", "number_of_devices 1\n");
        return true;
    }();
    (void)written;
    return folder.path().string();
}

orva::SaneParts testBackendParts()
{
    using std::chrono::milliseconds;
    ::setenv("SANE_CONFIG_DIR", testBackendFolder().c_str(), 1);
    orva::SaneLimits limits;
    limits.open = milliseconds(2000);
    limits.read = milliseconds(1500);
    limits.hung = milliseconds(2500);
    limits.searchHung = milliseconds(2000);
    const auto groups = [] { return orva::backendGroups(orva::saneConfigFolders()); };
    return { orva::processLauncher(TEST_SANE_HOST), limits, groups, {} };
}

bool isRunning(int process)
{
    std::ifstream stat("/proc/" + std::to_string(process) + "/stat");
    int pid = 0;
    std::string name;
    char state = 'Z';
    stat >> pid >> name >> state;
    return state != 'Z';
}

std::vector<int> runningHelpers(int ofProcess)
{
    const int wanted = ofProcess != 0 ? ofProcess : ::getpid();
    std::vector<int> found;
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        std::ifstream stat(entry.path() / "stat");
        int pid = 0;
        std::string name;
        char state = 0;
        int parent = 0;
        if (stat >> pid >> name >> state >> parent && parent == wanted
            && name.find("test-sane") != std::string::npos && state != 'Z') {
            found.push_back(pid);
        }
    }
    return found;
}

} // namespace device_tests
