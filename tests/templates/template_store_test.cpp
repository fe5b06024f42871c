// The template file: what comes back, and what damage, faults and odd names do to it.
#include "templates/template_store.h"
#include "tests/support/sandbox.h"

#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <string>
#include <thread>

namespace {

using ::testing::HasSubstr;
using ::testing::Not;

class TemplateStoreTest : public ::testing::Test
{
protected:
    TemplateStoreTest() { EXPECT_TRUE(store.checkAccessAuthority()); }

    int save(const QString& name, const ScanTemplateParam& param)
    {
        store.setCurrentName(name);
        return store.templateSave(param);
    }
    /// A second store, as the next opening of the dialog has it.
    QStringList listed()
    {
        TemplateStore other(QStringLiteral("Model"));
        EXPECT_TRUE(other.checkAccessAuthority());
        other.enumAllTemplateName();
        return other.names();
    }
    ScanTemplateParam read(const QString& name)
    {
        ScanTemplateParam param;
        EXPECT_EQ(0, store.ReadTemplatesInfo(&param, name));
        return param;
    }
    std::string file() const { return store.templatePath().toStdString(); }

    Sandbox sandbox;
    TemplateStore store { QStringLiteral("Model") };
};

ScanTemplateParam filled()
{
    ScanTemplateParam param;
    param.fileType = 2;
    param.savePath = QStringLiteral("/data/扫描 文件/a,b;c=\"d\"");
    param.imageFormat = QStringLiteral("双层pdf");
    param.compression = QStringLiteral("最优品质(100%)");
    param.timeNameType = QStringLiteral("年月日");
    param.timeNamePrefix = QStringLiteral("Inv0");
    param.serialStart = QStringLiteral("007");
    param.separator = QStringLiteral("_");
    param.serialLength = 10;
    param.overwriteSameName = true;
    param.nameByTime = true;
    param.useFilePrefix = true;
    param.colorMode = QStringLiteral("彩色");
    param.dropoutColor = QStringLiteral("红色");
    param.autoRotateMode = QStringLiteral("快速识别");
    param.scanSource = QStringLiteral("ADF双面");
    param.paperSize = QStringLiteral("A4");
    param.resolution = QStringLiteral("300");
    param.merge = QStringLiteral("左右合并");
    param.denoise = QStringLiteral("强化");
    param.autoBackgroundColor = true;
    param.autoCrop = true;
    param.removeHoles = true;
    param.autoLevel = true;
    param.multiStreamOutput = true;
    param.autoTextOrientation = true;
    param.colorDropout = true;
    param.multiFeedDetection = true;
    param.multiPage = true;
    param.brightness = -100;
    setContrastPercent(param, -20);
    param.threshold = 255;
    param.gamma = 1.8;
    param.rotationIndex = 3;
    param.skipBlankPages = true;
    param.blankThreshold = 55;
    return param;
}

// What was read is stored once more: a field that came back wrong makes the second text differ.
TEST_F(TemplateStoreTest, stored_fields_come_back_and_what_only_travels_is_not_stored)
{
    ASSERT_EQ(0, save(QStringLiteral("t"), filled()));
    const std::string text = readBytes(file());
    EXPECT_THAT(text, HasSubstr("AlgorithGAMMA=1.8\n"));
    EXPECT_THAT(text, HasSubstr("\nMultiFeed=true\n"));
    EXPECT_THAT(text, Not(HasSubstr("multifeed")));
    EXPECT_EQ(
        32, std::count(text.begin(), text.end(), '\n') - std::count(text.begin(), text.end(), '['));
    ScanTemplateParam back = read(QStringLiteral("t"));
    EXPECT_FALSE(back.multiFeedDetection); // it is read under another key
    EXPECT_FALSE(back.removeHoles || back.colorDropout);
    EXPECT_TRUE(back.dropoutColor.isEmpty() && back.autoRotateMode.isEmpty());
    EXPECT_EQ(filled().savePath, back.savePath);
    EXPECT_EQ(-20, contrastPercent(back));
    back.multiFeedDetection = true;
    ASSERT_EQ(0, save(QStringLiteral("t"), back));
    EXPECT_EQ(text, readBytes(file()));
}

TEST_F(TemplateStoreTest, saving_again_overwrites_and_leaves_the_others)
{
    ASSERT_EQ(0, save(QStringLiteral("a"), filled()));
    ASSERT_EQ(0, save(QStringLiteral("A"), filled()));
    ScanTemplateParam changed = filled();
    changed.resolution = QStringLiteral("600");
    ASSERT_EQ(0, save(QStringLiteral("a"), changed));
    EXPECT_EQ(QStringLiteral("600"), read(QStringLiteral("a")).resolution);
    EXPECT_EQ(QStringLiteral("300"), read(QStringLiteral("A")).resolution);
    EXPECT_THAT(
        listed(), ::testing::UnorderedElementsAre(QStringLiteral("a"), QStringLiteral("A")));
}

TEST_F(TemplateStoreTest, any_name_that_can_be_typed_round_trips)
{
    const QStringList names { QStringLiteral("彩色合同"), QStringLiteral("😀👨‍👩‍👧"),
        QString(200, QChar(0x4e2d)), QStringLiteral("a=b"), QStringLiteral("[x]"),
        QStringLiteral("]"), QStringLiteral("100%"), QStringLiteral("%41"),
        QStringLiteral("%U4E2D"), QStringLiteral("a;b"), QStringLiteral("#c"),
        QStringLiteral(" lead "), QStringLiteral("   "), QStringLiteral("\"q\""),
        QStringLiteral("@Invalid()"), QStringLiteral("a.b,c"), QStringLiteral("%General"),
        QStringLiteral("general"), QStringLiteral("é\u0301"), QStringLiteral("..") };
    QStringList expected;
    ScanTemplateParam param;
    for (const QString& name : names) {
        param.fileType = expected.size() + 1;
        ASSERT_TRUE(TemplateStore::canHold(name));
        ASSERT_EQ(0, save(name, param)) << name.toStdString();
        expected << TemplateStore::storedName(name);
    }
    QStringList back = listed();
    ASSERT_EQ(names.size(), back.size());
    for (int i = 0; i < expected.size(); ++i) {
        EXPECT_TRUE(back.contains(expected.at(i))) << expected.at(i).toStdString();
        EXPECT_EQ(i + 1, read(expected.at(i)).fileType) << expected.at(i).toStdString();
    }
    for (const QString& name : expected) {
        EXPECT_EQ(0, store.deleteTemplateItem(name));
    }
    EXPECT_TRUE(listed().isEmpty());
    EXPECT_FALSE(TemplateStore::canHold(QStringLiteral("a/b")));
    EXPECT_FALSE(TemplateStore::canHold(QStringLiteral("a\\b")));
}

TEST_F(TemplateStoreTest, a_file_typed_by_hand_reads_as_meant)
{
    writeBytes(file(),
        "[hand]\nscancolor=灰度\nsavepath=/scans/a,b\nFileNumberLength=300\nAlgorithGAMMA=nan\n"
        "Algoriththreshold=many\nAlgorithbrightness=-40000\nautocut=true\nmultifeed=true\n");
    const auto expectAsTyped = [this] {
        const ScanTemplateParam back = read(QStringLiteral("hand"));
        EXPECT_EQ(QStringLiteral("灰度"), back.colorMode);
        EXPECT_EQ(QStringLiteral("/scans/a,b"), back.savePath);
        EXPECT_TRUE(back.autoCrop);
        EXPECT_TRUE(back.multiFeedDetection); // under the key that is read
        EXPECT_TRUE(back.resolution.isEmpty()); // no such key
        EXPECT_EQ(0, back.serialLength);
        EXPECT_EQ(0.0, back.gamma);
        EXPECT_EQ(0, back.threshold);
        EXPECT_EQ(0, back.brightness);
    };
    expectAsTyped();
    ASSERT_EQ(0, save(QStringLiteral("other"), filled()));
    expectAsTyped();
}

TEST_F(TemplateStoreTest, a_damaged_file_keeps_its_good_templates_and_a_copy)
{
    const std::string good = "[good]\nscandpi=300\n";
    const std::string damages[] = { good + "[half", good + "no key here\n[x\ny",
        good + std::string(70000, '['), good + std::string("\0\x01\xff\xfe\n[\0]\n=\n==\n", 14),
        std::string(2000, '\0') + "\n" + good,
        good + "[%Uzzzz%]\n%=%\n\\x=\\xzz\n@=@Variant(\\0\\0\\0\n" };
    for (const std::string& bytes : damages) {
        QFile::remove(store.templatePath() + QStringLiteral(".damaged"));
        writeBytes(file(), bytes);
        store.enumAllTemplateName();
        ScanTemplateParam param;
        EXPECT_EQ(0, store.ReadTemplatesInfo(&param, QStringLiteral("good")));
        const bool readable = store.names().contains(QStringLiteral("good"));
        EXPECT_EQ(readable, param.resolution == QStringLiteral("300"));
        ASSERT_EQ(0, save(QStringLiteral("new"), filled()));
        EXPECT_EQ(QStringLiteral("ADF双面"), read(QStringLiteral("new")).scanSource);
        const std::string kept = file() + ".damaged";
        EXPECT_TRUE(readable ? read(QStringLiteral("good")).resolution == QStringLiteral("300")
                             : readBytes(kept) == bytes);
        if (fileExists(kept)) {
            EXPECT_EQ(bytes, readBytes(kept));
        }
    }
}

TEST_F(TemplateStoreTest, without_a_file_reading_and_deleting_fail_and_nothing_is_listed)
{
    ScanTemplateParam param;
    EXPECT_EQ(-3, store.ReadTemplatesInfo(&param, QStringLiteral("a")));
    EXPECT_EQ(-3, store.deleteTemplateItem(QStringLiteral("a")));
    EXPECT_TRUE(listed().isEmpty());
    EXPECT_THAT(Sandbox::runLog(), HasSubstr("读取模板信息,模板文件" + file() + "访问失败"));
    EXPECT_THAT(Sandbox::runLog(), HasSubstr("删除模块名称a/n"));

    EXPECT_EQ(0, QFile::exists(store.templatePath()));
    EXPECT_EQ(0, ::mkdir(file().c_str(), 0777)); // a folder where the file should be
    EXPECT_EQ(-3, store.ReadTemplatesInfo(&param, QStringLiteral("a")));
    EXPECT_EQ(-3, save(QStringLiteral("a"), param));
    ::rmdir(file().c_str());
    EXPECT_EQ(0, ::mkfifo(file().c_str(), 0666)); // would never deliver an end
    EXPECT_EQ(-3, store.ReadTemplatesInfo(&param, QStringLiteral("a")));
    EXPECT_EQ(-3, save(QStringLiteral("a"), param));
}

TEST_F(TemplateStoreTest, without_a_model_there_is_no_path)
{
    TemplateStore nameless { QString() };
    EXPECT_FALSE(nameless.checkAccessAuthority());
    ScanTemplateParam param;
    EXPECT_EQ(-4, nameless.ReadTemplatesInfo(&param, QStringLiteral("a")));
    EXPECT_THAT(Sandbox::runLog(), HasSubstr("查询访问权限,设备类型不支持"));

    TemplateStore slashed { QStringLiteral("net:scan/er #2") };
    ASSERT_TRUE(slashed.checkAccessAuthority());
    EXPECT_EQ(Sandbox::userFolder() + "/net:scan_er #2/net:scan_er #2.conf",
        slashed.templatePath().toStdString());

    writeBytes(Sandbox::userFolder() + "/taken", "a file");
    TemplateStore blocked { QStringLiteral("taken") };
    EXPECT_FALSE(blocked.checkAccessAuthority());
    EXPECT_THAT(Sandbox::runLog(), HasSubstr("/taken/,失败"));
}

TEST_F(TemplateStoreTest, a_full_disk_leaves_the_old_file)
{
    ASSERT_EQ(0, save(QStringLiteral("old"), filled()));
    const std::string before = readBytes(file());
    struct rlimit limit = {};
    ::getrlimit(RLIMIT_FSIZE, &limit);
    const struct rlimit small = { 512, limit.rlim_max };
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    ::setrlimit(RLIMIT_FSIZE, &small);
    const int saved = save(QStringLiteral("new"), filled());
    const int removed = store.deleteTemplateItem(QStringLiteral("nothing"));
    ::setrlimit(RLIMIT_FSIZE, &limit);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(-3, saved);
    EXPECT_EQ(-3, removed);
    EXPECT_EQ(before, readBytes(file()));
    EXPECT_EQ(0, save(QStringLiteral("new"), filled()));
}

TEST_F(TemplateStoreTest, a_killed_save_leaves_the_old_or_the_new_template)
{
    const auto withNumber = [](int number) {
        ScanTemplateParam param = filled();
        param.savePath = QString::number(number);
        param.denoise = QString::number(number);
        return param;
    };
    ASSERT_EQ(0, save(QStringLiteral("t"), withNumber(0)));
    for (int round = 0; round < 15; ++round) {
        const pid_t child = ::fork();
        if (child == 0) {
            EXPECT_NE(nullptr, std::freopen("/dev/null", "w", stdout));
            for (int i = 1;; ++i) {
                save(QStringLiteral("t"), withNumber(i));
            }
        }
        ASSERT_GT(child, 0);
        std::this_thread::sleep_for(std::chrono::milliseconds(10 + 3 * round));
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
        ASSERT_EQ(QStringList { QStringLiteral("t") }, listed());
        const ScanTemplateParam back = read(QStringLiteral("t"));
        EXPECT_FALSE(back.savePath.isEmpty());
        EXPECT_EQ(back.savePath, back.denoise);
        ASSERT_EQ(0, save(QStringLiteral("t"), withNumber(0)));
    }
}

TEST_F(TemplateStoreTest, ten_megabytes_are_read_and_two_windows_keep_each_others_templates)
{
    ASSERT_EQ(0, save(QStringLiteral("mine"), filled()));
    const std::string mine = readBytes(file());
    writeBytes(file(), mine + "\n[big]\nscandpi=" + std::string(10 * 1024 * 1024, '3') + "\n");
    EXPECT_EQ(10 * 1024 * 1024, read(QStringLiteral("big")).resolution.size());
    EXPECT_EQ(0, store.deleteTemplateItem(QStringLiteral("big")));
    EXPECT_EQ(QStringLiteral("300"), read(QStringLiteral("mine")).resolution);

    // a second window, open on the same file since before
    TemplateStore other(QStringLiteral("Model"));
    ASSERT_TRUE(other.checkAccessAuthority());
    other.enumAllTemplateName();
    ASSERT_EQ(0, save(QStringLiteral("new"), filled()));
    other.setCurrentName(QStringLiteral("theirs"));
    ASSERT_EQ(0, other.templateSave(filled()));
    EXPECT_EQ(3, listed().size());
}

TEST_F(TemplateStoreTest, five_hundred_templates_are_listed_at_once)
{
    ASSERT_EQ(0, save(QStringLiteral("t"), filled()));
    const std::string one = readBytes(file());
    const std::string keys = one.substr(one.find('\n'));
    qint64 best = 1000;
    for (int round = 0; round < 5; ++round) {
        std::string all;
        for (int i = 0; i < 500; ++i) {
            all += "[round" + std::to_string(round) + "-" + std::to_string(i) + "]" + keys + "\n";
        }
        writeBytes(file(), all);
        QElapsedTimer timer;
        timer.start();
        store.enumAllTemplateName();
        best = std::min(best, timer.elapsed());
        EXPECT_EQ(500, store.names().size());
    }
    RecordProperty("best_ms", std::to_string(best));
    EXPECT_LE(best, 100);
}

} // namespace
