// The settings file: what comes back, and what faults leave on the disk.
#include "mainwindow/backupsetting.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

namespace {

class SettingsFile : public testing::Test
{
protected:
    void write(const QByteArray& bytes)
    {
        QFile f(file);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
        ASSERT_EQ(f.write(bytes), bytes.size());
    }
    QByteArray bytes() const { return bytesOf(file); }
    static QByteArray bytesOf(const QString& path)
    {
        QFile f(path);
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
    }
    QStringList names() const
    {
        return QDir(folder.path()).entryList(QDir::Files | QDir::Hidden, QDir::Name);
    }

    QTemporaryDir folder;
    QString file = folder.filePath("Orvascan 100.ini");
};

} // namespace

TEST_F(SettingsFile, ValuesOfEveryTypeComeBack)
{
    const QByteArray geometry("\x01\xD9\x00\xD0;\"=\xFF", 8);
    {
        backupSetting store(file);
        EXPECT_EQ(store.path(), file);
        store.setValue("mainWindow", "geometry", geometry);
        store.setValue("appValue", "FileSavePath", "/home/李/扫描 文件, a=b;\"c\"\\d");
        store.setValue("appValue", "BlankNum", 55);
        store.setValue("appValue", "gamma", 1.1);
        store.setValue("appValue", "AutoBColor", true);
        store.setValue("appValue", "gone", 1);
        store.remove("appValue", "gone");
    }
    EXPECT_TRUE(bytes().contains("扫描 文件")) << "readable text, no escapes";
    const backupSetting store(file);
    EXPECT_EQ(store.value("mainWindow", "geometry").toByteArray(), geometry);
    EXPECT_EQ(
        store.value("appValue", "FileSavePath").toString(), "/home/李/扫描 文件, a=b;\"c\"\\d");
    EXPECT_EQ(store.value("appValue", "BlankNum").toInt(), 55);
    EXPECT_DOUBLE_EQ(store.value("appValue", "gamma").toDouble(), 1.1);
    EXPECT_TRUE(store.value("appValue", "AutoBColor").toBool());
    EXPECT_FALSE(store.containts("appValue", "gone"));
    EXPECT_FALSE(store.containts("mainWindow", "BlankNum"));
    EXPECT_EQ(store.value("appValue", "autobcolor", 7).toInt(), 7) << "keys are case-sensitive";
}

TEST_F(SettingsFile, AFileWithEscapedChineseIsReadAsWell)
{
    write("[appValue]\nFileSavePath=/data/\\x626b\\x63cf\nfirstStart=1\n");
    const backupSetting store(file);
    EXPECT_EQ(store.value("appValue", "FileSavePath").toString(), "/data/扫描");
    EXPECT_EQ(store.value("appValue", "firstStart").toInt(), 1);
}

TEST_F(SettingsFile, AMissingFileReadsAsEmptyAndItsFolderIsMadeOnWriting)
{
    file = folder.filePath("new user/new device/new device.ini");
    {
        backupSetting store(file);
        EXPECT_FALSE(store.value("appValue", "firstStart", QVariant()).isValid());
        store.setValue("appValue", "firstStart", 1);
        EXPECT_TRUE(store.sync());
    }
    EXPECT_TRUE(bytes().contains("firstStart=1"));
}

TEST_F(SettingsFile, DamagedFilesAreKeptBesideAndANewOneTakesTheirPlace)
{
    const QByteArray sound("[appValue]\nfirstStart=1\n");
    const QByteArray damaged[] = {
        sound + QByteArray(200, '\0'), // blocks that never reached the disk
        sound + "FileNameHead=\xE6\x89\n", // half a character
        sound + "half a line without a value\n",
        QByteArray("\x89PNG\r\n\x1A\n\xFF\xFE\xFD"),
    };
    int n = 0;
    for (const QByteArray& content : damaged) {
        write(content);
        {
            backupSetting store(file);
            EXPECT_EQ(store.damagedCopy(), file + QString(".damaged-%1").arg(++n));
            EXPECT_FALSE(store.value("appValue", "firstStart").isValid());
            store.setValue("appValue", "firstStart", 2);
        }
        EXPECT_EQ(bytesOf(file + QString(".damaged-%1").arg(n)), content) << "nothing is lost";
        const backupSetting again(file);
        EXPECT_TRUE(again.damagedCopy().isEmpty());
        EXPECT_EQ(again.value("appValue", "firstStart").toInt(), 2);
    }
}

TEST_F(SettingsFile, AFullDiskLeavesTheOldFileAndIsReported)
{
    {
        backupSetting store(file);
        store.setValue("appValue", "firstStart", 1);
    }
    const QByteArray before = bytes();
    rlimit old {};
    getrlimit(RLIMIT_FSIZE, &old);
    const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit small = old;
    small.rlim_cur = 4096;
    setrlimit(RLIMIT_FSIZE, &small);
    bool written = true;
    {
        backupSetting store(file);
        store.setValue("appValue", "firstStart", 2);
        store.setValue("appValue", "FileSavePath", QString(100000, 'x'));
        written = store.sync();
    }
    setrlimit(RLIMIT_FSIZE, &old);
    std::signal(SIGXFSZ, oldHandler);
    EXPECT_FALSE(written);
    EXPECT_EQ(bytes(), before);
    EXPECT_EQ(names(), QStringList { "Orvascan 100.ini" }) << "nothing is left beside it";
}

TEST_F(SettingsFile, SeveralFlushesOfOneStoreKeepWhatWasThere)
{
    write("[appValue]\nfirstStart=1\nLogLevel=1\n");
    {
        backupSetting store(file);
        store.setValue("appValue", "BlankNum", 5);
        EXPECT_TRUE(store.sync());
        EXPECT_EQ(store.value("appValue", "BlankNum").toInt(), 5);
        store.setValue("appValue", "BlankNum", 6);
        store.remove("appValue", "LogLevel");
    }
    EXPECT_EQ(bytes(), "[appValue]\nBlankNum=6\nfirstStart=1\n");
    EXPECT_EQ(names(), QStringList { "Orvascan 100.ini" });
}

TEST_F(SettingsFile, ACrashWhileWritingLeavesTheOldOrTheNewFileWhole)
{
    const auto save = [this](int round) {
        backupSetting store(file);
        for (int key = 0; key < 300; ++key) {
            store.setValue("appValue", QString("key%1").arg(key), round);
        }
        store.sync();
    };
    save(0);
    int torn = 0;
    for (int round = 1; round <= 40; ++round) {
        const pid_t child = fork();
        if (child == 0) {
            for (int again = 0;; ++again) {
                save(round * 1000 + again);
            }
        }
        ASSERT_GT(child, 0);
        usleep(static_cast<useconds_t>(2000 + round * 700));
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        const backupSetting store(file);
        const QVariant first = store.value("appValue", "key0");
        for (int key = 0; key < 300; ++key) {
            torn += store.value("appValue", QString("key%1").arg(key)) == first ? 0 : 1;
        }
        EXPECT_TRUE(first.isValid());
        EXPECT_TRUE(store.damagedCopy().isEmpty());
    }
    EXPECT_EQ(torn, 0);
}

TEST_F(SettingsFile, ADamagedFileThatCannotBeRenamedIsNotUsed)
{
    // a folder entry in every place that a damaged file could go to
    write("no settings at all\n");
    for (int n = 1; n <= 99; ++n) {
        ASSERT_TRUE(QDir(folder.path()).mkpath(file + QString(".damaged-%1/x").arg(n)));
    }
    const QByteArray before = bytes();
    {
        backupSetting store(file);
        EXPECT_TRUE(store.damagedCopy().isEmpty());
        EXPECT_EQ(store.path(), file);
        store.setValue("appValue", "firstStart", 1);
        EXPECT_FALSE(store.sync());
    }
    EXPECT_EQ(bytes(), before);
}
