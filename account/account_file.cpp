// The file is replaced as a whole: written beside, flushed, renamed. At no moment is it empty,
// since an empty file means the default password.
#include "account/account_file.h"

#include "app/common.h"
#include "app/install_paths.h"

#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <utility>

namespace {

/// Far above any digest; what is longer cannot match.
constexpr qint64 kMaxBytes = 64LL * 1024;
/// Every user of the machine scans with the one installation, so the file is everybody's.
constexpr mode_t kSharedMode = 0666;

bool writeAll(int fd, const QByteArray& bytes)
{
    for (qint64 done = 0; done < bytes.size();) {
        const ssize_t count =
            ::write(fd, bytes.constData() + done, static_cast<size_t>(bytes.size() - done));
        if (count < 0 && errno != EINTR) {
            return false;
        }
        done += count < 0 ? 0 : count;
    }
    return ::fsync(fd) == 0;
}

bool replaceFile(const QByteArray& path, const QByteArray& bytes)
{
    struct stat before = {};
    const mode_t mode =
        ::stat(path.constData(), &before) == 0 ? before.st_mode & 07777U : kSharedMode;
    QByteArray beside = path + ".XXXXXX";
    const int fd = ::mkostemp(beside.data(), O_CLOEXEC);
    if (fd < 0) {
        return false;
    }
    bool done = ::fchmod(fd, mode) == 0 && writeAll(fd, bytes);
    done = ::close(fd) == 0 && done && std::rename(beside.constData(), path.constData()) == 0;
    if (!done) {
        ::unlink(beside.constData());
        return false;
    }
    const int folder =
        ::open(QFile::encodeName(QFileInfo(QFile::decodeName(path)).path()).constData(),
            O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder >= 0) {
        ::fsync(folder);
        ::close(folder);
    }
    return true;
}

/// For a folder that takes no new files: new over old, and only then the length.
bool overwriteInPlace(const QByteArray& path, const QByteArray& bytes)
{
    const int fd = ::open(path.constData(), O_WRONLY | O_CLOEXEC);
    if (fd < 0) {
        return false;
    }
    const bool done = writeAll(fd, bytes) && ::ftruncate(fd, bytes.size()) == 0 && ::fsync(fd) == 0;
    return ::close(fd) == 0 && done;
}

} // namespace

QByteArray passwordDigest(const QString& password)
{
    return QCryptographicHash::hash(password.toUtf8(), QCryptographicHash::Md5).toHex();
}

AccountFile::AccountFile()
    : AccountFile(QString::fromUtf8(install_paths::kAccountFile))
{
}

AccountFile::AccountFile(QString path)
    : m_path(std::move(path))
{
}

QByteArray AccountFile::storedDigest()
{
    const QFileInfo info(m_path);
    if (!info.exists() && !info.isSymLink()) {
        // Opening for writing would make it; a missing folder is what can go wrong there.
        createfolder(qUtf8Printable(info.path()));
        m_opened = QFileInfo(info.path()).isWritable();
        if (!m_opened) {
            std::puts("Can't open the file!");
            std::fflush(stdout);
        }
        return {};
    }
    QFile file(m_path);
    m_opened = info.isFile() && file.open(QIODevice::ReadWrite | QIODevice::Text);
    if (!m_opened) {
        std::puts("Can't open the file!");
        std::fflush(stdout);
        // Falling back to the default password would open a locked door to everybody.
        if (!info.isFile() || !file.open(QIODevice::ReadOnly | QIODevice::Text)) {
            return {};
        }
    }
    return file.read(kMaxBytes).replace('\n', QByteArray());
}

bool AccountFile::store(const QByteArray& digest)
{
    if (!m_opened) {
        return false; // a file that could not be read is not replaced
    }
    const QByteArray path = QFile::encodeName(
        QFileInfo(m_path).exists() ? QFileInfo(m_path).canonicalFilePath() : m_path);
    return replaceFile(path, digest) || overwriteInPlace(path, digest);
}

bool AccountFile::verify(const QString& password)
{
    const QByteArray stored = storedDigest();
    if (!stored.isEmpty()) {
        return passwordDigest(password) == stored;
    }
    store(passwordDigest(QString::fromLatin1(kDefaultPassword)));
    return password == QLatin1String(kDefaultPassword);
}

AccountFile::Change AccountFile::change(
    const QString& oldPassword, const QString& newPassword, const QString& confirmation)
{
    if (passwordDigest(oldPassword) != storedDigest()) {
        return Change::kWrongOldPassword;
    }
    if (newPassword != confirmation) {
        return Change::kNewDiffersFromConfirmation;
    }
    return store(passwordDigest(newPassword)) ? Change::kDone : Change::kNotWritten;
}
