// What is wrong with a settings file or its folder, and what becomes of it: what the operator sees,
// what the run log says, what is on disk afterwards.
#include "tests/mainwindow/window_fixture.h"

#include <linux/capability.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <filesystem>

namespace fs = std::filesystem;

namespace {

constexpr char kFactory[] = "18";
constexpr char kStored[] = "-30";

enum class Disk
{
    kNew, ///< a whole file of this device
    kOld, ///< the bytes that were there
    kNewAndDamaged, ///< a whole file, and the damaged one beside it
    kNothing, ///< no file
};

struct Fault
{
    const char* name;
    std::function<void(const std::string& file)> make;
    const char* brightness; ///< what the operator sees
    const char* log;
    Disk disk;
};

/// While it lives, permissions hold for root too.
class ObeyPermissions
{
public:
    ObeyPermissions()
    {
        ::syscall(SYS_capget, &m_head, m_before);
        __user_cap_data_struct data[2] = { m_before[0], m_before[1] };
        data[0].effective &= ~((1U << CAP_DAC_OVERRIDE) | (1U << CAP_DAC_READ_SEARCH));
        ::syscall(SYS_capset, &m_head, data);
    }
    ~ObeyPermissions() { ::syscall(SYS_capset, &m_head, m_before); }
    ObeyPermissions(const ObeyPermissions&) = delete;
    ObeyPermissions& operator=(const ObeyPermissions&) = delete;

private:
    __user_cap_header_struct m_head { _LINUX_CAPABILITY_VERSION_3, 0 };
    __user_cap_data_struct m_before[2] {};
};

void replaceIn(const std::string& file, const std::string& from, const std::string& to)
{
    std::string bytes = readBytes(file);
    const std::size_t at = bytes.find(from);
    ASSERT_NE(at, std::string::npos) << from;
    writeBytes(file, bytes.replace(at, from.size(), to));
}

const std::vector<Fault>& faults()
{
    static const char* const kDamaged = "is damaged; kept as";
    static const char* const kFirstUse = "应用窗口首次使用";
    static const char* const kNotWritten = "cannot be written";
    static const std::vector<Fault> table {
        { "missing", [](const std::string& file) { fs::remove(file); }, kFactory, kFirstUse,
            Disk::kNew },
        { "of another device",
            [](const std::string& file) {
                replaceIn(file, "ScanDeviceName=Orvascan A300", "ScanDeviceName=Orvascan B");
            },
            kFactory, "本次扫描设备与上次不同", Disk::kNew },
        { "cut off in a line",
            [](const std::string& file) {
                fs::resize_file(file, readBytes(file).find("logicBoxSetLigh") + 17);
            },
            kFactory, kDamaged, Disk::kNewAndDamaged },
        { "50 MB",
            [](const std::string& file) {
                std::string bytes = readBytes(file);
                while (bytes.size() < 50'000'000) {
                    bytes += "more" + std::to_string(bytes.size()) + "=1\n";
                }
                writeBytes(file, bytes);
            },
            kFactory, kDamaged, Disk::kNewAndDamaged },
        { "read-only", [](const std::string& file) { fs::permissions(file, fs::perms(0444)); },
            kStored, kNotWritten, Disk::kOld },
        { "of another user, not readable",
            [](const std::string& file) {
                fs::permissions(file, fs::perms(0));
                if (::geteuid() == 0) {
                    EXPECT_EQ(::chown(file.c_str(), 65534, 65534), 0);
                }
            },
            kFactory, kNotWritten, Disk::kOld },
        { "in a folder that cannot be made",
            [](const std::string& file) {
                fs::remove_all(fs::path(file).parent_path());
                writeBytes(fs::path(file).parent_path(), "a file where the folder should be");
            },
            kFactory, kNotWritten, Disk::kNothing },
        { "in a folder that cannot be written",
            [](const std::string& file) {
                fs::permissions(fs::path(file).parent_path(), fs::perms(0555));
            },
            kStored, kNotWritten, Disk::kOld },
        { "a pipe",
            [](const std::string& file) {
                fs::remove(file);
                ASSERT_EQ(::mkfifo(file.c_str(), 0600), 0);
            },
            kFactory, kNotWritten, Disk::kNothing },
        { "values out of range and of the wrong kind",
            [](const std::string& file) {
                replaceIn(file, "ScanDPI=", "ScanDPI=9");
                replaceIn(file, "ScanPaperSize=", "ScanPaperSize=-");
                replaceIn(file, "logicBoxSetComp=", "logicBoxSetComp=abc");
                replaceIn(file, "FileNameHead=", "FileNameHead=../");
            },
            kStored, "FileNameHead of the settings file is not usable", Disk::kNew },
    };
    return table;
}

} // namespace

class SettingsFaults : public WindowTest
{
protected:
    static std::string folder() { return Sandbox::userFolder() + "/Orvascan A300"; }
    static std::string file() { return folder() + "/Orvascan A300.ini"; }
    void expectOnDisk(Disk disk, const std::string& before)
    {
        int besides = 0;
        std::error_code none;
        for (const fs::directory_entry& entry : fs::directory_iterator(folder(), none)) {
            if (entry.path().filename() == "Orvascan A300.ini.damaged-1") {
                EXPECT_EQ(readBytes(entry.path()), before) << "the damaged file is kept as it was";
            } else if (entry.path() != file()) {
                ADD_FAILURE() << entry.path();
            }
            besides += entry.path() != file() ? 1 : 0;
        }
        EXPECT_EQ(besides, disk == Disk::kNewAndDamaged ? 1 : 0);
        if (disk == Disk::kNothing) {
            EXPECT_FALSE(fs::is_regular_file(file()));
        } else if (disk == Disk::kOld) {
            EXPECT_EQ(readBytes(file()), before);
        } else {
            EXPECT_NE(readBytes(file()).find("ScanDeviceName=Orvascan A300\n"), std::string::npos);
            EXPECT_NE(readBytes(file()).find("firstStart=1\n"), std::string::npos);
        }
    }
};

TEST_F(SettingsFaults, EndWithAWorkingWindowALineInTheLogAndNothingLost)
{
    fake.script("filetypes|clear\n");
    choose();
    set("lightSpinBox", kStored);
    ASSERT_EQ(closeWindow(), 0);
    const std::string good = readBytes(file());
    for (const Fault& fault : faults()) {
        SCOPED_TRACE(fault.name);
        fs::permissions(folder(), fs::perms(0755));
        fs::remove_all(folder());
        writeBytes(file(), good);
        fault.make(file());
        const std::string before = fs::is_regular_file(file()) ? readBytes(file()) : std::string();
        const int told = logCount(fault.log);
        {
            const ObeyPermissions permissions;
            QElapsedTimer time;
            time.start();
            choose();
            EXPECT_LT(time.elapsed(), 3000);
            expect({ { "lightSpinBox", fault.brightness }, { "DPIComBo", "200" },
                { "paperTypeComBo", "A4" } });
            EXPECT_TRUE(enabled("scanMainBtn"));
            ASSERT_EQ(closeWindow(), 0);
        }
        EXPECT_EQ(logCount(fault.log), told + 1) << fault.log;
        expectOnDisk(fault.disk, before);
    }
    std::error_code none;
    fs::remove_all(folder(), none);
}

TEST_F(SettingsFaults, AResolutionThatTheDeviceNoLongerOffersGivesItsDefault)
{
    choose();
    select("DPIComBo", "600");
    ASSERT_EQ(closeWindow(), 0);
    fake.script("resolutions|clear\nresolution|100|100|100\nresolution|200|200|200\n");
    choose();
    EXPECT_EQ(text("DPIComBo"), "200");
}
