// The template file of a user: every template in it, and one added that must not lose the others.
#include "app/common.h"
#include "log/Log.h"
#include "templates/template_store.h"
#include "tests/fuzz/scratch.h"

#include <QVariantList>

#include <cmath>
#include <memory>
#include <vector>

namespace {

constexpr int kMostTemplates = 20; ///< looked at of one file

QVariantList fieldsOf(const TemplateStore& store, const QString& name)
{
    ScanTemplateParam param;
    require(store.ReadTemplatesInfo(&param, name) == TemplateStore::kDone, "it can be read");
    require(std::isfinite(param.gamma), "gamma is a number");
    require(!param.removeHoles && !param.colorDropout, "what only travels is not read");
    return { param.fileType, param.savePath, param.imageFormat, param.compression,
        param.timeNameType, param.timeNamePrefix, param.serialStart, param.separator,
        param.serialLength, param.overwriteSameName, param.nameByTime, param.colorMode,
        param.scanSource, param.paperSize, param.resolution, param.merge, param.denoise,
        param.autoCrop, param.autoLevel, param.multiFeedDetection, param.multiPage,
        param.brightness, param.contrast, param.threshold, param.gamma, param.rotationIndex,
        param.skipBlankPages, param.blankThreshold };
}

QList<QVariantList> fieldsOf(const TemplateStore& store, const QStringList& names)
{
    QList<QVariantList> fields;
    for (const QString& name : names) {
        fields << fieldsOf(store, name);
    }
    return fields;
}

std::vector<std::unique_ptr<TemplateStore>> makeStores()
{
    static const ScratchFolder folder;
    g_strCommonPath = folder.file("");
    require(Log.SetLogFileName("/dev/null") == 0, "the log can be silenced");
    require(std::freopen("/dev/null", "w", stdout) != nullptr, "printed lines can be silenced");
    std::vector<std::unique_ptr<TemplateStore>> stores;
    for (std::size_t i = 0; i < kFileNames; ++i) {
        stores.push_back(std::make_unique<TemplateStore>(QString::number(i)));
        require(stores.back()->checkAccessAuthority(), "the folder can be made");
    }
    return stores;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const auto stores = makeStores();
    static std::size_t inputs = 0;
    TemplateStore& store = *stores[++inputs % kFileNames];
    const std::string file = store.templatePath().toStdString();
    writeInput(file, data, size);

    store.enumAllTemplateName();
    const QStringList names = store.names();
    static const QVariantList empty = fieldsOf(store, QStringLiteral("no such template"));
    const QStringList looked = names.mid(0, kMostTemplates);
    const QList<QVariantList> before = fieldsOf(store, looked);
    const QString added = QStringLiteral("added by the fuzzer");
    const bool saves = size % 4 == 0; // far slower than reading
    if (saves && !names.contains(added)) {
        ScanTemplateParam param;
        param.resolution = QStringLiteral("300");
        store.setCurrentName(added);
        require(store.templateSave(param) == TemplateStore::kDone, "a template can be added");
        const QList<QVariantList> after = fieldsOf(store, looked);
        require(after == before, "the others are as they were");
        require(fieldsOf(store, added).contains(param.resolution), "what was added is there");
        require(store.deleteTemplateItem(added) == TemplateStore::kDone, "it can be deleted");
        store.enumAllTemplateName();
        for (int i = 0; i < looked.size(); ++i) {
            require(store.names().contains(looked.at(i)) || before.at(i) == empty,
                "a template that holds something is still there");
        }
    }
    std::filesystem::remove(file + ".damaged");
    return 0;
}
