// The settings file of a device: every key that the window reads, and a change that must not lose
// the others.
#include "log/Log.h"
#include "mainwindow/backupsetting.h"
#include "mainwindow/rules/settings_keys.h"
#include "tests/fuzz/scratch.h"

#include <QVariantList>

namespace {

QVariantList readAll(const backupSetting& settings)
{
    QVariantList values;
    for (const rules::ReadStep& step : rules::readOrder()) {
        const rules::SettingRow& row = rules::settingRow(step.id);
        QVariant value = settings.value(row.group, row.readKey);
        const QByteArray bytes = value.toString().toUtf8();
        if (QString::fromUtf8(bytes.constData(), bytes.size()) != value.toString()) {
            value = QVariant(); // half a character: not written back
        }
        values << value.toString() << value.toByteArray() << value.toInt() << value.toBool();
        const int index = rules::storedIndex(value.toInt(), 8, 0);
        require(index >= 0 && index < 8, "an index of the list");
    }
    return values;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const ScratchFolder folder;
    static const int silent = Log.SetLogFileName("/dev/null");
    require(silent == 0, "the log can be silenced");
    static std::size_t inputs = 0;
    const std::string file = folder.file(std::to_string(++inputs % kFileNames) + ".ini");
    writeInput(file, data, size);

    const QString path = QString::fromStdString(file);
    QVariantList before;
    {
        backupSetting settings(path);
        before = readAll(settings);
        std::filesystem::remove(settings.damagedCopy().toStdString());
        settings.setValue("fuzz", "added", 1);
        require(settings.sync(), "the file can be written");
    }
    const backupSetting again(path);
    require(again.damagedCopy().isEmpty(), "what was written is sound");
    require(again.value("fuzz", "added").toInt() == 1, "what was written is there");
    require(readAll(again) == before, "nothing else has changed");
    return 0;
}
