// The settings file of one device: a thin wrapper over QSettings in INI format that never leaves
// half a file behind and never reads a damaged one. It knows no keys (rules/settings_keys.h does).
#pragma once

#include <QSettings>
#include <QString>
#include <QVariant>

#include <memory>

/// Lives for one read or one write; one thread. Texts are stored as UTF-8; files with Qt's escapes
/// (\x4e2d) are read as well. The file is replaced as a whole by sync() and the destructor: a crash
/// or a full disk leaves the old one (written beside it, read back, flushed, renamed).
class backupSetting
{
public:
    /// Opens the file. A damaged one (over kMaxBytes, not UTF-8, a NUL byte, no line break at its
    /// end, not INI) is renamed to "<file>.damaged-<n>", which is logged, and the store is empty. A
    /// missing file is an empty store; so is one that cannot be read. What may not be written, or
    /// is no plain file, is not replaced either.
    explicit backupSetting(const QString& fileName);
    /// A native store by organisation and application name; none of the checks above.
    backupSetting(QSettings::Format format, QSettings::Scope scope, const QString& organization,
        const QString& application = QString(), QObject* parent = nullptr);
    /// Flushes.
    ~backupSetting();
    backupSetting(const backupSetting&) = delete;
    backupSetting& operator=(const backupSetting&) = delete;

    [[nodiscard]] QString path() const;
    void setValue(const QString& group, const QString& key, const QVariant& value);
    [[nodiscard]] QVariant value(
        const QString& group, const QString& key, const QVariant& defaultValue = QVariant()) const;
    /// The name is the interface's own.
    [[nodiscard]] bool containts(const QString& group, const QString& key) const;
    void remove(const QString& group, const QString& key);
    /// Flushes; false, and a line in the run log, when the file could not be
    /// written; the store then writes nothing any more.
    bool sync();

    /// Where a damaged file was put; empty when the file was sound or missing.
    [[nodiscard]] QString damagedCopy() const { return m_damagedCopy; }

    /// Larger files are taken for damaged, so that reading stays quick. A real one has about 2 KB.
    static constexpr qint64 kMaxBytes = 1024LL * 1024;

private:
    void stage();
    bool commit();

    std::unique_ptr<QSettings> m_settings; ///< on the file, or on the staging file once changed
    QString m_fileName;
    bool m_isFile = true; ///< false for a native store
    bool m_refused = false; ///< nothing is written (any more): see the constructor and sync()
    bool m_staged = false;
    QString m_damagedCopy;
};
