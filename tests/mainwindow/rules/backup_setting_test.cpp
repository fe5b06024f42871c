// The settings file: what comes back, and what faults leave on the disk.
#include "mainwindow/backupsetting.h"
#include "tests/support/sandbox.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

class SettingsFile : public testing::Test
{
protected:
    void write(const std::string& content) { writeBytes(file.toStdString(), content); }
    std::string bytes() const { return readBytes(file.toStdString()); }
    QStringList names() const
    {
        return QDir(folder.path()).entryList(QDir::Files | QDir::Hidden, QDir::Name);
    }

    QTemporaryDir folder;
    QString file = folder.filePath("Orvascan 100.ini");
};

TEST_F(SettingsFile, ValuesOfEveryTypeComeBack)
{
    const QByteArray geometry("\x01\xD9\x00\xD0;\"=\xFF", 8);
    const QString path = "/home/李/扫描 文件, a=b;\"c\"\\d";
    {
        backupSetting store(file);
        store.setValue("mainWindow", "geometry", geometry);
        store.setValue("appValue", "FileSavePath", path);
        store.setValue("appValue", "gamma", 1.1);
        store.setValue("appValue", "AutoBColor", true);
        store.setValue("appValue", "gone", 1);
        store.remove("appValue", "gone");
    }
    EXPECT_NE(bytes().find("扫描 文件"), std::string::npos) << "readable text, no escapes";
    const backupSetting store(file);
    EXPECT_EQ(store.value("mainWindow", "geometry").toByteArray(), geometry);
    EXPECT_EQ(store.value("appValue", "FileSavePath").toString(), path);
    EXPECT_DOUBLE_EQ(store.value("appValue", "gamma").toDouble(), 1.1);
    EXPECT_TRUE(store.value("appValue", "AutoBColor").toBool());
    EXPECT_FALSE(store.containts("appValue", "gone"));
    EXPECT_EQ(store.value("appValue", "autobcolor", 7).toInt(), 7) << "keys are case-sensitive";

    write("[appValue]\nFileSavePath=/data/\\x626b\\x63cf\n");
    EXPECT_EQ(backupSetting(file).value("appValue", "FileSavePath").toString(), "/data/扫描");
}

TEST_F(SettingsFile, DamagedFilesAreKeptBesideAndANewOneTakesTheirPlace)
{
    const std::string sound("[appValue]\nfirstStart=1\n");
    const std::string damaged[] = {
        sound + std::string(200, '\0'), // blocks that never reached the disk
        sound + "FileNameHead=\xE6\x89\n", // half a character
        sound + "half a line without a value\n",
        "\x89PNG\r\n\x1A\n\xFF\xFE\xFD",
    };
    int n = 0;
    for (const std::string& content : damaged) {
        const QString kept = file + QString(".damaged-%1").arg(++n);
        write(content);
        {
            backupSetting store(file);
            EXPECT_EQ(store.damagedCopy(), kept);
            EXPECT_FALSE(store.value("appValue", "firstStart").isValid());
            store.setValue("appValue", "firstStart", 2);
        }
        EXPECT_EQ(readBytes(kept.toStdString()), content) << "nothing is lost";
        const backupSetting again(file);
        EXPECT_TRUE(again.damagedCopy().isEmpty());
        EXPECT_EQ(again.value("appValue", "firstStart").toInt(), 2);
    }
}

TEST_F(SettingsFile, AFullDiskLeavesTheOldFileAndIsReported)
{
    write("[appValue]\nfirstStart=1\n");
    const std::string before = bytes();
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
    backupSetting store(file);
    EXPECT_TRUE(store.damagedCopy().isEmpty());
    store.setValue("appValue", "firstStart", 1);
    EXPECT_FALSE(store.sync());
    EXPECT_EQ(bytes(), "no settings at all\n");
}
