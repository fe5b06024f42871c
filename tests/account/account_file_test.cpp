// The account file: what logs in, what changes the password, and what damage and faults do.
#include "account/account_file.h"
#include "tests/support/sandbox.h"

#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <string>

namespace {

// printf 'text' | md5sum
const std::string kDefaultDigest = "671c486fced6ce0f02bef4a6dc0ed6ca";
const std::string kSecretDigest = "5ebe2294ecd0e0f08eab7690d2a6ee69"; // secret
const QString kSecret = "secret";
const QString kFactory = "572918";

class AccountFileTest : public ::testing::Test
{
protected:
    bool verify(const QString& password) { return AccountFile(path()).verify(password); }
    AccountFile::Change change(const QString& before, const QString& now, const QString& again)
    {
        return AccountFile(path()).change(before, now, again);
    }
    QString path() const { return folder.filePath("user.conf"); }
    std::string bytes() const { return readBytes(path().toStdString()); }
    void write(const std::string& text) { writeBytes(path().toStdString(), text); }

    QTemporaryDir folder;
};

TEST_F(AccountFileTest, TheDefaultPasswordCountsUntilOneIsStored)
{
    EXPECT_FALSE(verify("wrong"));
    EXPECT_EQ(kDefaultDigest, bytes()); // stored all the same
    EXPECT_TRUE(verify(kFactory));
    EXPECT_FALSE(verify(QString()));
    EXPECT_FALSE(verify(QString::fromStdString(kDefaultDigest)));
    struct stat status = {};
    ASSERT_EQ(0, ::stat(path().toStdString().c_str(), &status));
    EXPECT_EQ(0666U, status.st_mode & 0777U); // every user of the machine logs in and changes it

    write("");
    EXPECT_TRUE(verify(kFactory));
    EXPECT_EQ(kDefaultDigest, bytes());
    write("\r\n\n");
    EXPECT_TRUE(verify(kFactory));
}

TEST_F(AccountFileTest, LinesAreJoinedAndTheRestCountsByteForByte)
{
    for (const std::string& good : { kSecretDigest, kSecretDigest + "\n",
             kSecretDigest.substr(0, 10) + "\n" + kSecretDigest.substr(10),
             kSecretDigest.substr(0, 5) + "\r\n\r\n" + kSecretDigest.substr(5) + "\r\n" }) {
        write(good);
        EXPECT_TRUE(verify(kSecret));
        EXPECT_FALSE(verify(kFactory));
        EXPECT_EQ(good, bytes());
    }
    for (const std::string& bad : { kSecretDigest + " ", " " + kSecretDigest, std::string(" "),
             std::string("5EBE2294ECD0E0F08EAB7690D2A6EE69"), std::string(1, '\0'),
             std::string(1024 * 1024, 'x'), kSecretDigest + kSecretDigest }) {
        write(bad);
        EXPECT_FALSE(verify(kSecret));
        EXPECT_FALSE(verify(kFactory));
        EXPECT_EQ(bad, bytes());
    }
}

TEST_F(AccountFileTest, AChangedPasswordIsInForceAndMayBeEmpty)
{
    EXPECT_EQ(AccountFile::Change::kWrongOldPassword, change(kFactory, kSecret, kSecret))
        << "nothing is stored yet";
    write(kDefaultDigest);
    ASSERT_EQ(AccountFile::Change::kDone, change(kFactory, kSecret, kSecret));
    EXPECT_TRUE(verify(kSecret));
    EXPECT_FALSE(verify(kFactory));
    ASSERT_EQ(AccountFile::Change::kDone, change(kSecret, QString(), QString()));
    EXPECT_TRUE(verify(QString()));
}

TEST_F(AccountFileTest, AFileThatCannotBeOpenedIsNotReplaced)
{
    ASSERT_EQ(0, ::mkdir(path().toStdString().c_str(), 0777));
    testing::internal::CaptureStdout();
    EXPECT_TRUE(verify(kFactory));
    EXPECT_FALSE(verify(kSecret));
    EXPECT_EQ(AccountFile::Change::kWrongOldPassword, change(kFactory, kSecret, kSecret));
    const std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_THAT(printed, ::testing::HasSubstr("Can't open the file!"));
    EXPECT_THAT(printed, ::testing::Not(::testing::HasSubstr("572918")));
    ::rmdir(path().toStdString().c_str());
    ASSERT_EQ(0, ::mkfifo(path().toStdString().c_str(), 0666)); // would never deliver an end
    EXPECT_FALSE(verify(kSecret));
}

TEST_F(AccountFileTest, AFullDiskKeepsTheOldPassword)
{
    write(kDefaultDigest);
    struct rlimit limit = {};
    ::getrlimit(RLIMIT_FSIZE, &limit);
    const struct rlimit none = { 0, limit.rlim_max };
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    ::setrlimit(RLIMIT_FSIZE, &none);
    const auto result = change(kFactory, kSecret, kSecret);
    ::setrlimit(RLIMIT_FSIZE, &limit);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(AccountFile::Change::kNotWritten, result);
    EXPECT_EQ(kDefaultDigest, bytes());
    EXPECT_TRUE(verify(kFactory));
    EXPECT_EQ(
        QStringList { "user.conf" }, QDir(folder.path()).entryList(QDir::Files | QDir::Hidden));
}

TEST_F(AccountFileTest, AKilledChangeLeavesTheOldOrTheNewPassword)
{
    write(kDefaultDigest);
    for (int round = 0; round < 10; ++round) {
        const pid_t child = ::fork();
        if (child == 0) {
            for (;;) {
                static_cast<void>(change(kFactory, kSecret, kSecret));
                static_cast<void>(change(kSecret, kFactory, kFactory));
            }
        }
        ASSERT_GT(child, 0);
        ::usleep(static_cast<useconds_t>(5000 + 1700 * round));
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
        EXPECT_TRUE(bytes() == kDefaultDigest || bytes() == kSecretDigest) << bytes();
    }
}

/// Without the rights of the super-user, if the test has them.
class AsNobody
{
public:
    AsNobody()
        : m_before(::geteuid())
    {
        m_changed = m_before == 0 && ::seteuid(65534) == 0;
    }
    ~AsNobody() { EXPECT_TRUE(!m_changed || ::seteuid(m_before) == 0); }
    AsNobody(const AsNobody&) = delete;
    AsNobody& operator=(const AsNobody&) = delete;

private:
    uid_t m_before;
    bool m_changed = false;
};

TEST_F(AccountFileTest, RightsOfFileAndFolderDecideAboutChangingNotAboutThePassword)
{
    const std::string name = path().toStdString();
    write(kSecretDigest);
    ASSERT_EQ(0, ::chmod(name.c_str(), 0444));
    ASSERT_EQ(0, ::chmod(folder.path().toStdString().c_str(), 0555));
    {
        const AsNobody nobody;
        EXPECT_FALSE(
            verify(kFactory)); // a stored password is in force although it cannot be changed
        EXPECT_TRUE(verify(kSecret));
        EXPECT_EQ(AccountFile::Change::kNotWritten, change(kSecret, kFactory, kFactory));
    }
    EXPECT_EQ(kSecretDigest, bytes());
    ASSERT_EQ(0, ::chmod(name.c_str(), 0666));
    {
        const AsNobody nobody; // the file may be written, nothing may be put beside it
        EXPECT_EQ(AccountFile::Change::kDone, change(kSecret, kFactory, kFactory));
    }
    EXPECT_EQ(kDefaultDigest, bytes());
    ASSERT_EQ(0, ::chmod(folder.path().toStdString().c_str(), 0755));
}

} // namespace
