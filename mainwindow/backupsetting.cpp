#include "mainwindow/backupsetting.h"

#include "log/Log.h"

#include <QFile>
#include <QFileInfo>
#include <QTextCodec>

namespace {

constexpr qint64 kChunkBytes = 64 * 1024;
/// Damaged files that are kept beside each other; the last place is then used again.
constexpr int kDamagedKept = 99;

/// Text in UTF-8 without a NUL byte. Reads in chunks: the file may be large.
bool isPlainText(QFile& file)
{
    QTextCodec* utf8 = QTextCodec::codecForName("UTF-8");
    QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
    while (!file.atEnd()) {
        const QByteArray chunk = file.read(kChunkBytes);
        if (chunk.isEmpty() || chunk.contains('\0')) {
            return false;
        }
        utf8->toUnicode(chunk.constData(), chunk.size(), &state);
        if (state.invalidChars > 0) {
            return false;
        }
    }
    return state.remainingChars == 0;
}

/// A file that can be opened and is no settings file. One that cannot be opened reads as empty.
bool isDamaged(const QString& fileName)
{
    QFile file(fileName);
    if (!QFileInfo(fileName).isFile() || !file.open(QIODevice::ReadOnly)) {
        return false;
    }
    if (file.size() > backupSetting::kMaxBytes || !isPlainText(file)) {
        return true;
    }
    file.close();
    QSettings trial(fileName, QSettings::IniFormat);
    trial.setIniCodec("UTF-8");
    static_cast<void>(trial.allKeys());
    return trial.status() == QSettings::FormatError;
}

/// Renames the file to the first free "<file>.damaged-<n>". Empty when it cannot be renamed.
QString putAside(const QString& fileName)
{
    for (int n = 1; n <= kDamagedKept; ++n) {
        const QString target = fileName + QStringLiteral(".damaged-%1").arg(n);
        if (n == kDamagedKept) {
            QFile::remove(target);
        }
        if (!QFile::exists(target)) {
            return QFile::rename(fileName, target) ? target : QString();
        }
    }
    return {};
}

} // namespace

backupSetting::backupSetting(const QString& fileName)
    : m_fileName(fileName)
{
    QString source = fileName;
    if (isDamaged(fileName)) {
        m_damagedCopy = putAside(fileName);
        if (m_damagedCopy.isEmpty()) {
            // It must not be read, and it cannot be replaced either: an empty store that is not
            // kept.
            runLog("[func:%s]settings file %s is damaged and cannot be renamed; not used",
                "backupSetting", fileName.toUtf8().constData());
            source = QStringLiteral("/dev/null/unused.ini");
        } else {
            runLog("[func:%s]settings file %s is damaged; kept as %s", "backupSetting",
                fileName.toUtf8().constData(), m_damagedCopy.toUtf8().constData());
        }
    }
    m_settings = std::make_unique<QSettings>(source, QSettings::IniFormat);
    m_settings->setIniCodec("UTF-8");
}

backupSetting::backupSetting(QSettings::Format format, QSettings::Scope scope,
    const QString& organization, const QString& application, QObject* parent)
    : m_settings(std::make_unique<QSettings>(format, scope, organization, application, parent))
    , m_fileName(m_settings->fileName())
{
}

backupSetting::~backupSetting()
{
    sync();
}

QString backupSetting::path() const
{
    return m_fileName;
}

void backupSetting::setValue(const QString& group, const QString& key, const QVariant& value)
{
    m_settings->beginGroup(group);
    m_settings->setValue(key, value);
    m_settings->endGroup();
}

QVariant backupSetting::value(
    const QString& group, const QString& key, const QVariant& defaultValue) const
{
    m_settings->beginGroup(group);
    QVariant result = m_settings->value(key, defaultValue);
    m_settings->endGroup();
    return result;
}

bool backupSetting::containts(const QString& group, const QString& key) const
{
    m_settings->beginGroup(group);
    const bool result = m_settings->contains(key);
    m_settings->endGroup();
    return result;
}

void backupSetting::remove(const QString& group, const QString& key)
{
    m_settings->beginGroup(group);
    m_settings->remove(key);
    m_settings->endGroup();
}

bool backupSetting::sync()
{
    // QSettings writes a file beside the old one, flushes it to disk and renames it.
    m_settings->sync();
    if (m_settings->status() == QSettings::NoError) {
        return true;
    }
    runLog("[func:%s]settings file %s cannot be written", "backupSetting",
        m_fileName.toUtf8().constData());
    return false;
}
