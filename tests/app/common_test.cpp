// File-system and user helpers, whatever the names and the rights.
#include "app/common.h"
#include "tests/support/sandbox.h"

#include <gmock/gmock.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <clocale>
#include <cstdlib>

using ::testing::HasSubstr;

namespace {

int modeOf(const std::string& path)
{
    struct stat status = {};
    return ::stat(path.c_str(), &status) == 0 ? static_cast<int>(status.st_mode & 07777U) : -1;
}

class Common : public ::testing::Test
{
protected:
    Sandbox sandbox;
};

} // namespace

TEST_F(Common, CreateFolderMakesEveryMissingFolderOpenToAllUsersWhateverTheUmask)
{
    const mode_t before = ::umask(077);
    const std::string odd = Sandbox::path("扫描 文件/it's \"x\"; touch y $HOME");
    EXPECT_EQ(createfolder((odd + "/底/").c_str()), 0);
    for (const std::string& made : { Sandbox::path("扫描 文件"), odd, odd + "/底" }) {
        EXPECT_EQ(modeOf(made), 0777);
    }
    ::umask(before);
    ASSERT_EQ(::chmod(odd.c_str(), 0755), 0);
    EXPECT_EQ(createfolder(odd.c_str()), 0) << "no slash at the end, all there";
    EXPECT_EQ(modeOf(odd), 0755) << "a folder that is there stays as it is";

    writeBytes(Sandbox::path("file"), "x");
    EXPECT_EQ(createfolder(Sandbox::path("file/below").c_str()), -1);
    EXPECT_EQ(createfolder(nullptr), -1);
    // 254 bytes, the slash and the end fill the 256 bytes that paths have
    const std::string stem = Sandbox::path("");
    const std::string fits = stem + std::string(254 - stem.size(), 'd');
    EXPECT_EQ(createfolder(fits.c_str()), 0);
    EXPECT_TRUE(fileExists(fits));
    EXPECT_EQ(createfolder((fits + "d").c_str()), -1);
    EXPECT_FALSE(fileExists(fits + "d"));
}

TEST_F(Common, CheckWritableLooksAtTheOneModeBitThatApplies)
{
    const std::string path = Sandbox::path("f");
    writeBytes(path, "");
    struct Case
    {
        mode_t mode;
        int result;
        uid_t owner;
        gid_t group;
    };
    const uid_t me = ::geteuid();
    const gid_t mine = ::getegid();
    ASSERT_EQ(me, 0U) << "changing owners needs the super-user";
    for (const Case& c : { Case { 0200, 0, me, mine }, Case { 0577, -1, me, mine },
             Case { 0020, 0, 12345, mine }, Case { 0707, -1, 12345, mine },
             Case { 0002, 0, 12345, 12345 }, Case { 0770, -1, 12345, 12345 } }) {
        ASSERT_EQ(::chown(path.c_str(), c.owner, c.group), 0);
        ASSERT_EQ(::chmod(path.c_str(), c.mode), 0);
        EXPECT_EQ(checkWritable(path.c_str()), c.result) << std::oct << c.mode;
    }
    EXPECT_THAT(Sandbox::runLog(), HasSubstr("\t st_mode 81f8\n\n")) << "regular file, 0770";
    EXPECT_EQ(checkWritable(Sandbox::path("missing").c_str()), -1);
    EXPECT_EQ(checkWritable(nullptr), -1);
}

TEST_F(Common, DeleteFileTellsWhyNothingWasDeleted)
{
    const std::string path = Sandbox::path("预览 图.jpg");
    writeBytes(path, "x");
    EXPECT_EQ(com_del_file(path.c_str(), 0), 0);
    EXPECT_TRUE(fileExists(path));
    EXPECT_EQ(com_del_file("", 1), -1);
    EXPECT_EQ(com_del_file(nullptr, 1), -1);
    EXPECT_EQ(com_del_file(Sandbox::path("missing").c_str(), 1), -2);
    EXPECT_EQ(com_del_file(Sandbox::path("").c_str(), 1), -3) << "a folder";
    EXPECT_EQ(com_del_file(path.c_str(), 1), 0);
    EXPECT_FALSE(fileExists(path));
}

TEST_F(Common, CopyFileCopiesEveryByteAndReportsFaults)
{
    std::string bytes;
    for (int i = 0; i < 5000; ++i) {
        bytes += static_cast<char>(i % 251);
    }
    const std::string source = Sandbox::path("a 源");
    const std::string target = Sandbox::path("b");
    writeBytes(source, bytes);
    writeBytes(target, std::string(9000, 'o'));
    EXPECT_EQ(com_copy_file(source, target), 0);
    EXPECT_EQ(readBytes(target), bytes);
    EXPECT_EQ(com_copy_file(source, source), 0);
    EXPECT_EQ(readBytes(source), bytes) << "onto itself";

    EXPECT_EQ(com_copy_file(Sandbox::path("none"), target), -1);
    EXPECT_EQ(com_copy_file(Sandbox::path(""), target), -1) << "a folder";
    EXPECT_EQ(readBytes(target), bytes) << "a missing source leaves the target alone";
    EXPECT_THAT(Sandbox::runLog(),
        HasSubstr("[func:com_copy_file]源文件不存在，请检查路径输入是否存在！路径为:"
            + Sandbox::path("none") + "\n"));
    EXPECT_EQ(com_copy_file(source, Sandbox::path("no/folder/b")), -2);
    EXPECT_THAT(Sandbox::runLog(), HasSubstr("[func:com_copy_file]创建目标文件流失败！\n"));
    EXPECT_EQ(com_copy_file(source, "/dev/full"), -2) << "disk full";
}

// On a list of processes of its own: what else runs on the machine has no say.
TEST_F(Common, TheOwnerIsThatOfTheFirstProcessThatNamesTheApplication)
{
    ASSERT_EQ(::geteuid(), 0U) << "giving files to another user needs the super-user";
    const passwd* other = ::getpwnam("nobody");
    ASSERT_NE(other, nullptr);
    const std::string listing = Sandbox::path("proc");
    const auto addProcess = [&](const std::string& name, const std::string& arguments, uid_t user) {
        writeBytes(listing + '/' + name + "/cmdline", arguments);
        ASSERT_EQ(::chown((listing + '/' + name).c_str(), user, user), 0);
    };
    addProcess("7", "/bin/sh", 4711);
    addProcess("self", "TarvexBaseUI", 4711); // no process
    EXPECT_EQ(getAppOwnUsr(listing), ::getpwuid(::geteuid())->pw_name) << "nobody names it";
    addProcess("100", "TarvexBaseUI", 0);
    addProcess("23", std::string("grep\0x/TarvexBaseUI\0-v", 22), other->pw_uid);
    EXPECT_EQ(getAppOwnUsr(listing), "nobody") << "the lower number counts";
    addProcess("3", std::string(5000, 'x') + "TarvexBaseUI", 4711);
    EXPECT_EQ(getAppOwnUsr(listing), "4711") << "a user without a name";
}

TEST_F(Common, TheUserNameIsTheLastPartOfTheHomeFolder)
{
    const std::string known = ::getpwuid(::geteuid())->pw_dir;
    const std::pair<std::optional<std::string>, std::string> homes[] = {
        { "/home/扫描员", "扫描员" },
        { std::nullopt, known.substr(known.rfind('/') + 1) },
        { "/home/" + std::string(400, 'u'), std::string(255, 'u') },
    };
    for (const auto& [folder, name] : homes) {
        const ScopedEnvironment home("HOME", folder);
        char buffer[256] = {};
        EXPECT_EQ(std::string(GetUserName(buffer)), name);
    }
}

TEST_F(Common, WideTextGoesThroughTheLocaleAndBack)
{
    const ScopedEnvironment locale("LC_ALL", "C.UTF-8");
    EXPECT_EQ(u2a(L"扫描 A4 \U0001F4C4"), "扫描 A4 \xF0\x9F\x93\x84");
    EXPECT_EQ(a2u("扫描 A4 \xF0\x9F\x93\x84"), L"扫描 A4 \U0001F4C4");
    EXPECT_EQ(a2u(""), L"");
    EXPECT_EQ(a2u("\xFF\xFE"), L"") << "not UTF-8";
    std::setlocale(LC_CTYPE, "C");
}
