// The level file of the run log is read before main, from whatever folder the program is started
// in.
#include "log/Log.h"
#include "tests/support/sandbox.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

TEST(LevelFile, NothingThatLiesThereBringsTheProgramDown)
{
    const Sandbox sandbox;
    const std::filesystem::path before = std::filesystem::current_path();
    writeBytes(Sandbox::path("cwd/keep"), "");
    std::filesystem::current_path(Sandbox::path("cwd"));

    std::string deep;
    for (int level = 0; level < 200000; ++level) {
        deep += "<e>";
    }
    writeBytes("logmgr.xml", deep);
    EXPECT_EQ(CLog("m").levelMask(), 0) << "nested deeper than the stack";
    writeBytes("logmgr.xml", "<r><l enable='1'>LOG_ERROR</l></r>\xE6");
    EXPECT_EQ(CLog("m").levelMask(), 1) << "a character that is cut off at the end";
    writeBytes("logmgr.xml", "<r><l enable='1'>LOG_FLOW</l><l enable='1'>\xE6\x89</l></r");
    EXPECT_EQ(CLog("m").levelMask(), 0) << "and one within";
    std::filesystem::remove("logmgr.xml");
    ASSERT_EQ(::mkfifo("logmgr.xml", 0666), 0);
    EXPECT_EQ(CLog("m").levelMask(), 0) << "nobody writes into the pipe";
    std::filesystem::current_path(before);
}
