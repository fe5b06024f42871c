// Every change is made on a fresh file beside the old one, which is flushed and takes its place:
// QSettings replaces its file too, but does not flush it, does not notice a full disk, and drops
// what it could not parse.
#include "templates/template_store.h"

#include "app/common.h"
#include "log/Log.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QSettings>
#include <QTemporaryDir>
#include <QVariant>

#include <cmath>
#include <cstdio>
#include <functional>
#include <limits>
#include <utility>

namespace {

/// Puts the fields into the current group.
class FieldWriter
{
public:
    explicit FieldWriter(QSettings& settings)
        : m_settings(settings)
    {
    }
    void operator()(const char* key, const QString& value) { put(key, value); }
    void operator()(const char* key, bool value) { put(key, value); }
    void operator()(const char* key, double value) { put(key, value); }
    template <typename Integer>
    void operator()(const char* key, Integer value)
    {
        put(key, static_cast<int>(value));
    }

private:
    void put(const char* key, const QVariant& value)
    {
        m_settings.setValue(QLatin1String(key), value);
    }
    QSettings& m_settings;
};

/// Reads the fields from the current group. People edit these files: a number that the field cannot
/// hold counts as missing.
class FieldReader
{
public:
    explicit FieldReader(QSettings& settings)
        : m_settings(settings)
    {
    }
    void operator()(const char* key, QString& field)
    {
        // An unquoted comma makes a list of the text.
        field = get(key).toStringList().join(QLatin1Char(','));
    }
    void operator()(const char* key, bool& field) { field = get(key).toBool(); }
    void operator()(const char* key, double& field)
    {
        const double value = get(key).toDouble();
        field = std::isfinite(value) ? value : 0.0;
    }
    template <typename Integer>
    void operator()(const char* key, Integer& field)
    {
        // Unsigned fields may stand in the file as the negative number with the same bits.
        using Limits = std::numeric_limits<Integer>;
        const qint64 value = get(key).toInt();
        const qint64 lowest =
            sizeof(Integer) == 2 ? std::numeric_limits<int16_t>::min() : qint64(Limits::min());
        const bool fits = value >= lowest && value <= qint64(Limits::max());
        field = fits ? static_cast<Integer>(value) : Integer(0);
    }

private:
    QVariant get(const char* key) const { return m_settings.value(QLatin1String(key)); }
    QSettings& m_settings;
};

/// The stored fields, in the order in which they are written.
template <typename Io, typename Record>
void forEachField(Io io, Record& record, const char* multiFeedKey)
{
    io("FileType", record.fileType);
    io("AlgorithGAMMA", record.gamma);
    io("Algorithbrightness", record.brightness);
    io("Algorithcomparison", record.contrast);
    io("Algoriththreshold", record.threshold);
    io("Compressor", record.compression);
    io("DefineFileHead", record.useFilePrefix);
    io("FileNumberLength", record.serialLength);
    io("ImageRotAngle", record.rotationIndex);
    io("IsMultipage", record.multiPage);
    io("MultiStreamOut", record.multiStreamOutput);
    io("QueueNameFileStartBit", record.serialStart);
    io("TimeNameFileHead", record.timeNamePrefix);
    io("TimeNameTimeType", record.timeNameType);
    io("autocut", record.autoCrop);
    io(multiFeedKey, record.multiFeedDetection);
    io("autolevel", record.autoLevel);
    io("AutoRotatFont", record.autoTextOrientation);
    io("autobcolor", record.autoBackgroundColor);
    io("coversamename", record.overwriteSameName);
    io("divisionmark", record.separator);
    io("isTimetoSaveFile", record.nameByTime);
    io("savepath", record.savePath);
    io("scancolor", record.colorMode);
    io("scandpi", record.resolution);
    io("scanpaper", record.paperSize);
    io("scanpicformat", record.imageFormat);
    io("scansource", record.scanSource);
    io("scanMerge", record.merge);
    io("scanDenoise", record.denoise);
    io("bRemoveBlank", record.skipBlankPages);
    io("nBlankThresold", record.blankThreshold);
}

// KEPT: the flag is written under one key and read under another, and keys are case-sensitive: it
// always comes back as off.
constexpr char kMultiFeedWritten[] = "MultiFeed";
constexpr char kMultiFeedRead[] = "multifeed";

/// For reading. Texts typed by hand are UTF-8; those of QSettings are escaped and read the same.
void prepareForReading(QSettings& settings)
{
    settings.setIniCodec("UTF-8");
}

using Values = QMap<QString, QStringList>;

Values valuesOf(const QSettings& settings)
{
    Values values;
    const QStringList keys = settings.allKeys();
    for (const QString& key : keys) {
        const QVariant value = settings.value(key);
        // a list of texts comes back as another kind of list when one of them is unusual
        const bool isList = value.type() == QVariant::StringList || value.type() == QVariant::List;
        values.insert(key, isList ? value.toStringList() : QStringList { value.toString() });
    }
    return values;
}

/// Looked at under a name that QSettings has not seen: of one that it has it tells no damage twice.
bool isDamaged(const QString& path)
{
    const QTemporaryDir folder;
    const QString copy = folder.filePath(QStringLiteral("copy.conf"));
    if (!QFile::copy(path, copy)) {
        return false;
    }
    QSettings trial(copy, QSettings::IniFormat);
    prepareForReading(trial);
    return trial.status() == QSettings::FormatError;
}

/// Of a file that was not parsed whole a copy stays, with ".damaged" at its end.
bool keepDamaged(const QString& path)
{
    const QString kept = path + QStringLiteral(".damaged");
    runLog("[%s][%d]%s is damaged, kept as %s", __func__, __LINE__, qUtf8Printable(path),
        qUtf8Printable(kept));
    QFile::remove(kept);
    return QFile::copy(path, kept);
}

/// The old file's content and the edit on top of it go into a new file.
bool writeBeside(const QString& path, const QString& newPath,
    const std::function<void(QSettings&)>& edit, Values& written)
{
    QSettings fresh(newPath, QSettings::IniFormat);
    if (QFile::exists(path)) {
        QSettings old(path, QSettings::IniFormat);
        prepareForReading(old);
        if (old.status() == QSettings::AccessError || (isDamaged(path) && !keepDamaged(path))) {
            return false;
        }
        const QStringList keys = old.allKeys();
        for (const QString& key : keys) {
            // a line without a name: there is none to write it under
            if (!key.isEmpty() && !key.endsWith(QLatin1Char('/'))) {
                fresh.setValue(key, old.value(key));
            }
        }
    }
    edit(fresh);
    fresh.sync();
    written = valuesOf(fresh);
    if (written.isEmpty() && !QFile::exists(newPath)) {
        return QFile(newPath).open(QIODevice::WriteOnly); // QSettings makes no file without keys
    }
    return fresh.status() == QSettings::NoError;
}

/// QSettings does not notice when the disk is full, so the new file is read back, under a name that
/// QSettings has not seen, before it takes the old one's place.
bool rewrite(const QString& path, const std::function<void(QSettings&)>& edit)
{
    if (QFileInfo::exists(path) && !QFileInfo(path).isFile()) {
        return false;
    }
    const QString newPath = path + QStringLiteral(".new");
    const QString checkedPath = path + QStringLiteral(".checked");
    const QStringList leftovers { newPath, newPath + QStringLiteral(".lock"), checkedPath };
    for (const QString& leftover : leftovers) {
        QFile::remove(leftover); // of a run that died here
    }
    Values written;
    bool done = writeBeside(path, newPath, edit, written) && QFile::rename(newPath, checkedPath);
    if (done) {
        const QSettings back(checkedPath, QSettings::IniFormat);
        done = back.status() == QSettings::NoError && valuesOf(back) == written;
    }
    if (done && QFile::exists(path)) {
        QFile::setPermissions(checkedPath, QFile::permissions(path));
    }
    done = done && flushToDisk(checkedPath)
        && std::rename(
               QFile::encodeName(checkedPath).constData(), QFile::encodeName(path).constData())
            == 0;
    if (!done) {
        runLog("[%s][%d]%s could not be written", __func__, __LINE__, qUtf8Printable(path));
        QFile::remove(newPath);
        QFile::remove(checkedPath);
        return false;
    }
    flushToDisk(QFileInfo(path).path());
    return true;
}

} // namespace

TemplateStore::TemplateStore(QString modelName)
    : m_modelName(std::move(modelName))
{
    m_modelName.replace(QLatin1Char('/'), QLatin1Char('_'));
}

bool TemplateStore::canHold(const QString& name)
{
    return !name.contains(QLatin1Char('/')) && !name.contains(QLatin1Char('\\'));
}

QString TemplateStore::storedName(const QString& name)
{
    const QString general = QStringLiteral("General");
    return name.compare(general, Qt::CaseInsensitive) == 0 ? general : name;
}

QString TemplateStore::GetAppTemplatesPath() const
{
    if (m_modelName.isEmpty()) {
        return {};
    }
    const QString home =
        QString::fromStdString(g_strCommonPath) + getAppOwnUsr() + QLatin1Char('/');
    if (createfolder(qUtf8Printable(home)) != 0) {
        runLog("[func:%s] chHomePath:%s create error", __func__, qUtf8Printable(home));
    }
    QString folder = home + m_modelName + QLatin1Char('/');
    runLog("[func:%s] template file path: %s", __func__, qUtf8Printable(folder));
    return folder;
}

bool TemplateStore::checkAccessAuthority()
{
    m_templatePath.clear();
    const QString folder = GetAppTemplatesPath();
    if (folder.isEmpty()) {
        runLog("[%s][%d]查询访问权限,设备类型不支持\n", __func__, __LINE__);
        return false;
    }
    if (!QDir(folder).exists() && !QDir().mkpath(folder)) {
        runLog("[%s][%d]创建目录%s,失败\n", __func__, __LINE__, qUtf8Printable(folder));
        return false;
    }
    m_templatePath = folder + m_modelName + QStringLiteral(".conf");
    return true;
}

int TemplateStore::templateSave(const _tagtemplateParam& record)
{
    runLog("[%s][%d]界面信息保存开始", __func__, __LINE__);
    bool written = false;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        runLog(
            "[%s][%d]界面信息保存路径名:%s\n", __func__, __LINE__, qUtf8Printable(m_templatePath));
        std::printf("templateSaveAndExtract::templateSave() m_templatePath=%s\n",
            qUtf8Printable(m_templatePath));
        std::fflush(stdout);
        written = !m_templatePath.isEmpty() && !m_currentName.isEmpty()
            && rewrite(m_templatePath, [&](QSettings& settings) {
                   settings.beginGroup(m_currentName);
                   forEachField(FieldWriter(settings), record, kMultiFeedWritten);
                   settings.endGroup();
               });
    }
    runLog("[%s][%d]界面信息保存结束", __func__, __LINE__);
    return written ? kDone : kNotAccessible;
}

bool TemplateStore::isAccessible() const
{
    QFile file(m_templatePath);
    return QFileInfo(file).isFile() && file.open(QIODevice::ReadOnly | QIODevice::Text);
}

int TemplateStore::ReadTemplatesInfo(_tagtemplateParam* record, const QString& name) const
{
    runLog("[%s][%d]读取模板信息保存开始", __func__, __LINE__);
    if (m_templatePath.isEmpty()) {
        return kNoPath;
    }
    if (!isAccessible()) {
        runLog("[%s][%d]读取模板信息,模板文件%s访问失败", __func__, __LINE__,
            qUtf8Printable(m_templatePath));
        return kNotAccessible;
    }
    QSettings settings(m_templatePath, QSettings::IniFormat);
    prepareForReading(settings);
    settings.beginGroup(name);
    forEachField(FieldReader(settings), *record, kMultiFeedRead);
    settings.endGroup();
    return kDone;
}

void TemplateStore::enumAllTemplateName()
{
    runLog("[%s][%d]枚举所有模块名称", __func__, __LINE__);
    m_names.clear();
    if (!isAccessible()) {
        runLog("[%s][%d]读取模板信息,模板文件%s访问失败", __func__, __LINE__,
            qUtf8Printable(m_templatePath));
        return;
    }
    QSettings settings(m_templatePath, QSettings::IniFormat);
    prepareForReading(settings);
    m_names = settings.childGroups();
    m_names.removeAll(QString()); // no group has this name; a damaged file can have it
}

int TemplateStore::deleteTemplateItem(const QString& name)
{
    // KEPT: the line ends with a slash and "n".
    runLog("[%s][%d]删除模块名称%s/n", __func__, __LINE__, qUtf8Printable(name));
    if (!isAccessible()) {
        runLog("[%s][%d]读取模板信息,模板文件%s访问失败", __func__, __LINE__,
            qUtf8Printable(m_templatePath));
        return kNotAccessible;
    }
    const bool removed = !name.isEmpty()
        && rewrite(m_templatePath, [&](QSettings& settings) { settings.remove(name); });
    return removed ? kDone : kNotAccessible;
}
