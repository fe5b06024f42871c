// The one-line file that holds the digest of the administrator's password. No widgets. Nothing here
// prints or logs a password or a digest.
#pragma once

#include <QByteArray>
#include <QString>

/// Password in force while no digest is stored.
inline constexpr char kDefaultPassword[] = "572918";

/// Lower-case hexadecimal MD5 digest of the password's UTF-8 bytes.
[[nodiscard]] QByteArray passwordDigest(const QString& password);

/// Any thread; one object a use.
class AccountFile
{
public:
    /// The installed account file.
    AccountFile();
    explicit AccountFile(QString path);

    /// Login. With a stored digest the password's digest must equal it, byte for byte. Without one
    /// the default password counts, and its digest is stored whatever was entered.
    [[nodiscard]] bool verify(const QString& password);

    enum class Change
    {
        kDone,
        kWrongOldPassword,
        kNewDiffersFromConfirmation,
        kNotWritten
    };
    /// The file is changed only for kDone.
    [[nodiscard]] Change change(
        const QString& oldPassword, const QString& newPassword, const QString& confirmation);

    /// All lines of the file, joined. Prints "Can't open the file!" when it cannot be opened for
    /// reading and writing; a file that may only be read counts all the same.
    [[nodiscard]] QByteArray storedDigest();

private:
    bool store(const QByteArray& digest);

    QString m_path;
    bool m_opened = false; ///< by the last storedDigest, or there was no file
};
