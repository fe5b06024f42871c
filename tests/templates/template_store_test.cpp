// The template file: what comes back, and what damage, faults and odd names do to it.
#include "templates/template_store.h"
#include "tests/support/sandbox.h"

#include <QElapsedTimer>
#include <QFile>

#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
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
        TemplateStore other("Model");
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
    TemplateStore store { "Model" };
};

ScanTemplateParam filled()
{
    ScanTemplateParam param;
    param.fileType = 2;
    param.savePath = "/data/扫描 文件/a,b;c=\"d\"";
    param.imageFormat = "双层pdf";
    param.compression = "最优品质(100%)";
    param.timeNameType = "年月日";
    param.timeNamePrefix = "Inv0";
    param.serialStart = "007";
    param.separator = "_";
    param.serialLength = 10;
    param.overwriteSameName = param.nameByTime = param.useFilePrefix = true;
    param.colorMode = "彩色";
    param.dropoutColor = "红色";
    param.autoRotateMode = "快速识别";
    param.scanSource = "ADF双面";
    param.paperSize = "A4";
    param.resolution = "300";
    param.merge = "左右合并";
    param.denoise = "强化";
    param.autoBackgroundColor = param.autoCrop = param.removeHoles = param.autoLevel = true;
    param.multiStreamOutput = param.autoTextOrientation = param.colorDropout = true;
    param.multiFeedDetection = param.multiPage = param.skipBlankPages = true;
    param.brightness = -100;
    setContrastPercent(param, -20);
    param.threshold = 255;
    param.gamma = 1.8;
    param.rotationIndex = 3;
    param.blankThreshold = 55;
    return param;
}

} // namespace

// What was read is stored once more: a field that came back wrong makes the second text differ.
TEST_F(TemplateStoreTest, StoredFieldsComeBackAndWhatOnlyTravelsIsNotStored)
{
    ASSERT_EQ(0, save("t", filled()));
    const std::string text = readBytes(file());
    EXPECT_THAT(text, HasSubstr("AlgorithGAMMA=1.8\n"));
    EXPECT_THAT(text, HasSubstr("\nMultiFeed=true\n"));
    EXPECT_THAT(text, Not(HasSubstr("multifeed")));
    EXPECT_EQ(32, std::count(text.begin(), text.end(), '=') - 1) << "one stands in the path";
    ScanTemplateParam back = read("t");
    EXPECT_FALSE(back.multiFeedDetection) << "it is read under another key";
    EXPECT_FALSE(back.removeHoles || back.colorDropout);
    EXPECT_TRUE(back.dropoutColor.isEmpty() && back.autoRotateMode.isEmpty());
    EXPECT_EQ(filled().savePath, back.savePath);
    EXPECT_EQ(-20, contrastPercent(back));
    back.multiFeedDetection = true;
    ASSERT_EQ(0, save("t", back));
    EXPECT_EQ(text, readBytes(file()));
}

TEST_F(TemplateStoreTest, AnyNameThatCanBeTypedRoundTripsAndLeavesTheOthers)
{
    const QStringList names { "彩色合同", "😀👨‍👩‍👧", QString(200, QChar(0x4e2d)),
        "a=b", "[x]", "]", "100%", "%41", "%U4E2D", "a;b", "#c", " lead ", "   ", "\"q\"",
        "@Invalid()", "a.b,c", "%General", "general", "é\u0301", "..", "a", "A" };
    QStringList expected;
    ScanTemplateParam param;
    for (const QString& name : names) {
        param.fileType = expected.size() + 1;
        ASSERT_TRUE(TemplateStore::canHold(name));
        ASSERT_EQ(0, save(name, param)) << name.toStdString();
        expected << TemplateStore::storedName(name);
    }
    const QStringList back = listed();
    ASSERT_EQ(names.size(), back.size());
    for (int i = 0; i < expected.size(); ++i) {
        EXPECT_TRUE(back.contains(expected.at(i))) << expected.at(i).toStdString();
        EXPECT_EQ(i + 1, read(expected.at(i)).fileType) << expected.at(i).toStdString();
    }
    for (const QString& name : expected) {
        EXPECT_EQ(0, store.deleteTemplateItem(name));
    }
    EXPECT_TRUE(listed().isEmpty());
    EXPECT_FALSE(TemplateStore::canHold("a/b") || TemplateStore::canHold("a\\b"));
}

TEST_F(TemplateStoreTest, AFileTypedByHandReadsAsMeant)
{
    writeBytes(file(),
        "[hand]\nscancolor=灰度\nsavepath=/scans/a,b\nFileNumberLength=300\nAlgorithGAMMA=nan\n"
        "Algoriththreshold=many\nAlgorithbrightness=-40000\nautocut=true\nmultifeed=true\n");
    for (const int round : { 1, 2 }) {
        const ScanTemplateParam back = read("hand");
        EXPECT_EQ("灰度", back.colorMode);
        EXPECT_EQ("/scans/a,b", back.savePath);
        EXPECT_TRUE(back.autoCrop && back.multiFeedDetection) << "under the key that is read";
        EXPECT_TRUE(back.resolution.isEmpty()) << "no such key";
        EXPECT_EQ(0, back.serialLength + back.threshold + back.brightness);
        EXPECT_EQ(0.0, back.gamma);
        ASSERT_EQ(0, save("other" + QString::number(round), filled())); // writes it once more
    }
}

TEST_F(TemplateStoreTest, ADamagedFileKeepsItsGoodTemplatesAndACopy)
{
    const std::string good = "[good]\nscandpi=300\n";
    const std::string damages[] = { good + "[half", good + "no key here\n[x\ny",
        good + std::string(70000, '['), good + std::string("\0\x01\xff\xfe\n[\0]\n=\n==\n", 14),
        std::string(2000, '\0') + "\n" + good,
        good + "[%Uzzzz%]\n%=%\n\\x=\\xzz\n@=@Variant(\\0\\0\\0\n" };
    int kept = 0;
    for (const std::string& bytes : damages) {
        const std::string copy = file() + ".damaged";
        QFile::remove(QString::fromStdString(copy));
        writeBytes(file(), bytes);
        store.enumAllTemplateName();
        const bool readable = store.names().contains("good");
        EXPECT_EQ(readable, read("good").resolution == "300");
        ASSERT_EQ(0, save("new", filled()));
        EXPECT_EQ("ADF双面", read("new").scanSource);
        EXPECT_TRUE(fileExists(copy) || read("good").resolution == "300");
        if (fileExists(copy)) {
            ++kept;
            EXPECT_EQ(bytes, readBytes(copy));
        }
    }
    EXPECT_GE(kept, 2);
}

TEST_F(TemplateStoreTest, WithoutAFileReadingAndDeletingFail)
{
    ScanTemplateParam param;
    EXPECT_EQ(-3, store.ReadTemplatesInfo(&param, "a"));
    EXPECT_EQ(-3, store.deleteTemplateItem("a"));
    EXPECT_TRUE(listed().isEmpty());
    EXPECT_THAT(Sandbox::runLog(), HasSubstr("读取模板信息,模板文件" + file() + "访问失败"));
    EXPECT_THAT(Sandbox::runLog(), HasSubstr("删除模块名称a/n"));
    const auto expectRefused = [&] {
        EXPECT_EQ(-3, store.ReadTemplatesInfo(&param, "a"));
        EXPECT_EQ(-3, save("a", param));
    };
    EXPECT_EQ(0, ::mkdir(file().c_str(), 0777)); // a folder where the file should be
    expectRefused();
    ::rmdir(file().c_str());
    EXPECT_EQ(0, ::mkfifo(file().c_str(), 0666)); // would never deliver an end
    expectRefused();

    TemplateStore nameless { QString() };
    EXPECT_FALSE(nameless.checkAccessAuthority());
    EXPECT_EQ(-4, nameless.ReadTemplatesInfo(&param, "a"));
    EXPECT_THAT(Sandbox::runLog(), HasSubstr("查询访问权限,设备类型不支持"));
    TemplateStore slashed { "net:scan/er #2" };
    ASSERT_TRUE(slashed.checkAccessAuthority());
    EXPECT_EQ(Sandbox::userFolder() + "/net:scan_er #2/net:scan_er #2.conf",
        slashed.templatePath().toStdString());
}

TEST_F(TemplateStoreTest, AFullDiskLeavesTheOldFile)
{
    ASSERT_EQ(0, save("old", filled()));
    const std::string before = readBytes(file());
    rlimit limit = {};
    ::getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit small = { 512, limit.rlim_max };
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    ::setrlimit(RLIMIT_FSIZE, &small);
    const int saved = save("new", filled());
    const int removed = store.deleteTemplateItem("nothing");
    ::setrlimit(RLIMIT_FSIZE, &limit);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(-3, saved);
    EXPECT_EQ(-3, removed);
    EXPECT_EQ(before, readBytes(file()));
    EXPECT_EQ(0, save("new", filled()));
}

TEST_F(TemplateStoreTest, AKilledSaveLeavesTheOldOrTheNewTemplate)
{
    const auto withNumber = [](int number) {
        ScanTemplateParam param = filled();
        param.savePath = param.denoise = QString::number(number);
        return param;
    };
    ASSERT_EQ(0, save("t", withNumber(0)));
    for (int round = 0; round < 15; ++round) {
        const pid_t child = ::fork();
        if (child == 0) {
            EXPECT_NE(nullptr, std::freopen("/dev/null", "w", stdout));
            for (int i = 1;; ++i) {
                save("t", withNumber(i));
            }
        }
        ASSERT_GT(child, 0);
        std::this_thread::sleep_for(std::chrono::milliseconds(10 + 3 * round));
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
        ASSERT_EQ(QStringList { "t" }, listed());
        const ScanTemplateParam back = read("t");
        EXPECT_FALSE(back.savePath.isEmpty());
        EXPECT_EQ(back.savePath, back.denoise);
        ASSERT_EQ(0, save("t", withNumber(0)));
    }
}

TEST_F(TemplateStoreTest, TenMegabytesAreReadAndTwoWindowsKeepEachOthersTemplates)
{
    ASSERT_EQ(0, save("mine", filled()));
    const std::string mine = readBytes(file());
    writeBytes(file(), mine + "\n[big]\nscandpi=" + std::string(10 * 1024 * 1024, '3') + "\n");
    EXPECT_EQ(10 * 1024 * 1024, read("big").resolution.size());
    EXPECT_EQ(0, store.deleteTemplateItem("big"));
    EXPECT_EQ("300", read("mine").resolution);

    TemplateStore other("Model"); // a second window, open on the same file since before
    ASSERT_TRUE(other.checkAccessAuthority());
    other.enumAllTemplateName();
    ASSERT_EQ(0, save("new", filled()));
    other.setCurrentName("theirs");
    ASSERT_EQ(0, other.templateSave(filled()));
    EXPECT_EQ(3, listed().size());
}

TEST_F(TemplateStoreTest, FiveHundredTemplatesAreListedAtOnce)
{
    ASSERT_EQ(0, save("t", filled()));
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
