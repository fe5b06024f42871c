#include "mainwindow/backupsetting.h"

#include "app/common.h"
#include "log/Log.h"

#include <QFile>
#include <QFileInfo>
#include <QTextCodec>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>

namespace {

/// Damaged files that are kept beside each other; the last place is then used again.
constexpr int kDamagedKept = 99;

/// Text in UTF-8 without a NUL byte, every line ended: a file that was cut off ends in the middle
/// of one.
bool isPlainText(const QByteArray& bytes)
{
    QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
    QTextCodec::codecForName("UTF-8")->toUnicode(bytes.constData(), bytes.size(), &state);
    return state.invalidChars == 0 && state.remainingChars == 0 && !bytes.contains('\0')
        && (bytes.isEmpty() || bytes.endsWith('\n'));
}

/// A file that can be opened and is no settings file. One that cannot be opened reads as empty.
bool isDamaged(const QString& fileName)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        return false;
    }
    if (file.size() > backupSetting::kMaxBytes || !isPlainText(file.readAll())) {
        return true;
    }
    file.close();
    QSettings trial(fileName, QSettings::IniFormat);
    trial.setIniCodec("UTF-8");
    static_cast<void>(trial.allKeys());
    return trial.status() == QSettings::FormatError;
}

/// Something stands there that must not be replaced: a file that may not be written, or no file at
/// all. Opening a pipe would wait for ever.
bool isProtected(const QString& fileName)
{
    const QByteArray path = QFile::encodeName(fileName);
    return ::access(path.constData(), F_OK) == 0
        && (!QFileInfo(fileName).isFile()
            || ::faccessat(AT_FDCWD, path.constData(), W_OK, AT_EACCESS) != 0);
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

std::unique_ptr<QSettings> openIni(const QString& fileName)
{
    auto settings = std::make_unique<QSettings>(fileName, QSettings::IniFormat);
    settings->setIniCodec("UTF-8");
    return settings;
}

bool isList(const QVariant& value)
{
    return value.userType() == QMetaType::QStringList
        || value.userType() == QMetaType::QVariantList;
}

/// What was read back is what was meant: numbers and flags come back as text, and a list of texts
/// as another kind of list when one of them is unusual.
bool sameValue(const QVariant& meant, const QVariant& read)
{
    if (meant.userType() == QMetaType::QByteArray) {
        return meant.toByteArray() == read.toByteArray();
    }
    if (isList(meant)) {
        return isList(read) && meant.toStringList() == read.toStringList();
    }
    return meant == read || meant.toString() == read.toString();
}

bool sameContent(const QSettings& meant, const QSettings& read)
{
    const QStringList keys = meant.allKeys();
    if (read.status() != QSettings::NoError || read.allKeys().size() != keys.size()) {
        return false;
    }
    for (const QString& key : keys) {
        if (!read.contains(key) || !sameValue(meant.value(key), read.value(key))) {
            return false;
        }
    }
    return true;
}

bool isWholeText(const QString& text)
{
    const QByteArray bytes = text.toUtf8();
    return QString::fromUtf8(bytes.constData(), bytes.size()) == text;
}

/// An entry that somebody else has put into the file and that could not be written back as it was
/// read (half a character, a value without meaning, no name) would stop every save.
bool canBeKept(const QString& key, const QVariant& value)
{
    const QStringList texts =
        isList(value) ? value.toStringList() : QStringList { value.toString() };
    return value.isValid() && !key.endsWith(QLatin1Char('/')) && isWholeText(key)
        && std::all_of(texts.begin(), texts.end(), isWholeText);
}

bool renamed(const QString& from, const QString& to)
{
    return std::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) == 0;
}

QString stagingName(const QString& fileName)
{
    return fileName + QStringLiteral(".new");
}

/// For a store that is not kept.
QString nowhere()
{
    return QStringLiteral("/dev/null/unused.ini");
}

QString checkName(const QString& fileName)
{
    return fileName + QStringLiteral(".check");
}

} // namespace

backupSetting::backupSetting(const QString& fileName)
    : m_fileName(fileName)
{
    QString source = fileName;
    if (QFileInfo::exists(fileName) && !QFileInfo(fileName).isFile()) {
        source = nowhere();
    } else if (isDamaged(fileName)) {
        m_damagedCopy = putAside(fileName);
        if (m_damagedCopy.isEmpty()) {
            // It must not be read, and it cannot be replaced either: an empty store that is not
            // kept.
            runLog("[func:%s]settings file %s is damaged and cannot be renamed; not used",
                "backupSetting", fileName.toUtf8().constData());
            source = nowhere();
            m_refused = true;
        } else {
            runLog("[func:%s]settings file %s is damaged; kept as %s", "backupSetting",
                fileName.toUtf8().constData(), m_damagedCopy.toUtf8().constData());
        }
    }
    m_refused = m_refused || isProtected(fileName);
    m_settings = openIni(source);
}

backupSetting::backupSetting(QSettings::Format format, QSettings::Scope scope,
    const QString& organization, const QString& application, QObject* parent)
    : m_settings(std::make_unique<QSettings>(format, scope, organization, application, parent))
    , m_fileName(m_settings->fileName())
    , m_isFile(false)
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
    stage();
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
    stage();
    m_settings->beginGroup(group);
    m_settings->remove(key);
    m_settings->endGroup();
}

/// Before the first change: goes over to a staging file with the same content, so that QSettings
/// never writes the real one. It takes a write cut short by a full disk for a success.
void backupSetting::stage()
{
    if (!m_isFile || m_staged) {
        return;
    }
    m_staged = true;
    if (!m_refused) {
        QFile::remove(stagingName(m_fileName)); // left by a crash
    }
    auto staging = openIni(m_refused ? nowhere() : stagingName(m_fileName));
    for (const QString& key : m_settings->allKeys()) {
        const QVariant value = m_settings->value(key);
        if (canBeKept(key, value)) {
            staging->setValue(key, value);
        }
    }
    m_settings = std::move(staging);
}

/// Writes the staging file, reads it back under another name (a store of the same name would answer
/// from memory), flushes it and puts it into the place of the real one.
bool backupSetting::commit()
{
    if (m_refused) {
        return false;
    }
    m_settings->sync();
    if (m_settings->status() != QSettings::NoError) {
        return false;
    }
    const QString check = checkName(m_fileName);
    bool whole = renamed(stagingName(m_fileName), check);
    if (whole) {
        whole = sameContent(*m_settings, *openIni(check)) && flushToDisk(check)
            && renamed(check, m_fileName);
        QFile::remove(check);
    }
    return whole;
}

bool backupSetting::sync()
{
    if (m_isFile && !m_staged) {
        return true;
    }
    bool written = false;
    if (m_isFile) {
        written = commit();
        QFile::remove(stagingName(m_fileName));
        if (written) {
            // The folder is not flushed: after a loss of power the old file, whole, does as well.
            m_settings = openIni(m_fileName);
            m_staged = false;
        } else {
            // the staging file is gone: a second try would hold later changes only
            m_refused = true;
        }
    } else {
        m_settings->sync();
        written = m_settings->status() == QSettings::NoError;
    }
    if (!written) {
        runLog("[func:%s]settings file %s cannot be written", "backupSetting",
            m_fileName.toUtf8().constData());
    }
    return written;
}
