#include "mainwindow/rules/settings_keys.h"

namespace rules {

namespace {

constexpr SettingRow number(Setting id, const char* key, SettingType type, double value)
{
    return { id, kValueGroup, key, key, type, FactoryKind::kNumber, value, nullptr };
}

constexpr SettingRow entry(Setting id, const char* key, const char* text)
{
    return { id, kValueGroup, key, key, SettingType::kInt, FactoryKind::kEntry, 0, text };
}

constexpr SettingRow plain(Setting id, const char* key, SettingType type)
{
    return { id, kValueGroup, key, key, type, FactoryKind::kNone, 0, nullptr };
}

constexpr SettingRow window(Setting id, const char* key)
{
    return { id, kWindowGroup, key, key, SettingType::kBytes, FactoryKind::kNone, 0, nullptr };
}

} // namespace

const std::vector<SettingRow>& settingRows()
{
    using S = Setting;
    using T = SettingType;
    static const std::vector<SettingRow> rows {
        window(S::kGeometry, "geometry"),
        window(S::kState, "state"),
        plain(S::kFirstStart, "firstStart", T::kInt),
        plain(S::kScanDeviceName, "ScanDeviceName", T::kText),
        number(S::kFileType, "FileType", T::kInt, 0),
        plain(S::kFileSavePath, "FileSavePath", T::kText),
        { S::kScanSource, kValueGroup, "ScanSource", "ScanSource", T::kInt,
            FactoryKind::kSourceDefault, 0, nullptr },
        entry(S::kScanColorMode, "ScanColorMode", kFactoryColorMode),
        entry(S::kScanPaperSize, "ScanPaperSize", kFactoryPaper),
        entry(S::kScanDpi, "ScanDPI", kFactoryResolution),
        number(S::kImageMerge, "ImageMergeCombo", T::kInt, 0),
        number(S::kImageDenoise, "ImageDenoiseCombo", T::kInt, 0),
        entry(S::kImageRotAngle, "ImageRotAngle", kFactoryRotation),
        number(S::kAutoBColor, "AutoBColor", T::kBool, 0),
        number(S::kAutoRotate, "autoRotatChkBox", T::kBool, 0),
        number(S::kAutoRotateMode, "autoRotateModComBox", T::kInt, 0),
        entry(S::kColorDropout, "ColorDropoutComBox", kFactoryDropout),
        number(S::kReinforcedDropout, "ColorDropoutchkBox", T::kBool, 0),
        number(S::kRemoveHole, "RemoveHoleChkBox", T::kBool, 0),
        number(S::kIsMultiPage, "IsMultiPage", T::kInt, 0),
        number(S::kFileFormat, "FileFormat", T::kInt, 0),
        plain(S::kFileCompressSize, "FileCompressSize", T::kInt),
        number(S::kIsTimeSave, "IsTimeSave", T::kBool, 1),
        number(S::kIsCoverSameNameFile, "IsCoverSameNameFile", T::kBool, 1),
        plain(S::kFileNameHead, "FileNameHead", T::kText),
        plain(S::kFileStartBit, "FileStartBit", T::kText),
        plain(S::kFileRefreshState, "FileRefreshState", T::kBool),
        plain(S::kFileDefBit, "FileDefBit", T::kInt),
        plain(S::kIsDefineFileCut, "IsDefineFileCut", T::kInt),
        // KEPT: read with "F", written with "f". Keys are case-sensitive, so a stored date order
        // never comes back and the list starts at its first entry, disabled.
        { S::kFileTimeFormat, kValueGroup, "FileTimeFormat", "FileTimeformat", T::kInt,
            FactoryKind::kNone, 0, nullptr },
        { S::kFileTimeFormatEnable, kValueGroup, "FileTimeFormatEnable", "FileTimeformatEnable",
            T::kBool, FactoryKind::kNone, 0, nullptr },
        plain(S::kSpinBoxEnable, "onspinBoxEnable", T::kBool),
        plain(S::kSpinBoxValue, "onspinBoxvalue", T::kInt),
        plain(S::kSendStartBit, "onSendStartBit", T::kBool),
        number(S::kAutoCrop, "autoCropChkBox", T::kBool, 1),
        number(S::kMultiFeed, "MultiFeedChkBox", T::kBool, 0),
        { S::kAutoLevel, kValueGroup, "logicBoxAutoLevel", "logicBoxAutoLevel", T::kBool,
            FactoryKind::kUnlessBlackWhite, 0, nullptr },
        number(S::kBrightness, "logicBoxSetLigh", T::kInt, 18),
        number(S::kContrast, "logicBoxSetComp", T::kInt, 38),
        number(S::kThreshold, "logicBoxSetyuzhi", T::kInt, 128),
        number(S::kGammaSlider, "logicBoxSethSliderGAMMA", T::kInt, 11),
        number(S::kGamma, "logicBoxSetdoublespinBox_gamma", T::kDouble, 1.1),
        number(S::kBlankCheck, "BlankCheck", T::kBool, 0),
        number(S::kBlankNum, "BlankNum", T::kInt, kFactoryBlankThreshold),
        plain(S::kLogLevel, "LogLevel", T::kInt),
        plain(S::kLogSavePath, "LogSavePath", T::kText),
    };
    return rows;
}

const SettingRow& settingRow(Setting id)
{
    return settingRows()[static_cast<std::size_t>(id)];
}

const std::vector<ReadStep>& readOrder()
{
    using S = Setting;
    // Read again: the source, whose lists the colour mode and paper may have changed, and with it
    // the colour mode; the serial start, for the log; the digit count, into its member; the
    // automatic levels, which setting gamma must not undo; the two naming choices, to set their
    // buttons.
    static const std::vector<ReadStep> order {
        { S::kGeometry, false },
        { S::kState, false },
        { S::kFirstStart, false },
        { S::kScanDeviceName, false },
        { S::kFileType, false },
        { S::kFileSavePath, false },
        { S::kScanSource, false },
        { S::kScanColorMode, false },
        { S::kScanPaperSize, false },
        { S::kScanDpi, false },
        { S::kScanSource, true },
        { S::kScanColorMode, true },
        { S::kImageMerge, false },
        { S::kImageDenoise, false },
        { S::kImageRotAngle, false },
        { S::kAutoBColor, false },
        { S::kAutoRotate, false },
        { S::kAutoRotateMode, false },
        { S::kIsMultiPage, false },
        { S::kFileFormat, false },
        { S::kFileCompressSize, false },
        { S::kIsTimeSave, false },
        { S::kIsCoverSameNameFile, false },
        { S::kFileNameHead, false },
        { S::kFileStartBit, false },
        { S::kFileStartBit, true },
        { S::kFileRefreshState, false },
        { S::kFileDefBit, false },
        { S::kIsDefineFileCut, false },
        { S::kFileTimeFormat, false },
        { S::kFileTimeFormatEnable, false },
        { S::kSpinBoxEnable, false },
        { S::kSpinBoxValue, false },
        { S::kSpinBoxValue, true },
        { S::kSendStartBit, false },
        { S::kAutoCrop, false },
        { S::kRemoveHole, false },
        { S::kMultiFeed, false },
        { S::kAutoLevel, false },
        { S::kBrightness, false },
        { S::kContrast, false },
        { S::kThreshold, false },
        { S::kGammaSlider, false },
        { S::kGamma, false },
        { S::kAutoLevel, true },
        { S::kBlankCheck, false },
        { S::kBlankNum, false },
        { S::kIsTimeSave, true },
        { S::kIsCoverSameNameFile, true },
        { S::kLogLevel, false },
        { S::kLogSavePath, false },
    };
    return order;
}

const std::vector<Setting>& writeOrder()
{
    using S = Setting;
    static const std::vector<Setting> order {
        S::kGeometry,
        S::kState,
        S::kFirstStart,
        S::kFileType,
        S::kScanDeviceName,
        S::kScanColorMode,
        S::kScanPaperSize,
        S::kScanDpi,
        S::kScanSource,
        S::kFileSavePath,
        S::kIsTimeSave,
        S::kIsCoverSameNameFile,
        S::kImageMerge,
        S::kImageDenoise,
        S::kImageRotAngle,
        S::kAutoBColor,
        S::kAutoRotate,
        S::kAutoRotateMode,
        S::kColorDropout,
        S::kReinforcedDropout,
        S::kRemoveHole,
        S::kIsDefineFileCut,
        S::kFileNameHead,
        S::kFileStartBit,
        S::kFileRefreshState,
        S::kFileDefBit,
        S::kFileTimeFormat,
        S::kFileTimeFormatEnable,
        S::kIsMultiPage,
        S::kFileFormat,
        S::kFileCompressSize,
        S::kSpinBoxEnable,
        S::kSpinBoxValue,
        S::kSendStartBit,
        S::kAutoCrop,
        S::kMultiFeed,
        S::kAutoLevel,
        S::kBrightness,
        S::kContrast,
        S::kThreshold,
        S::kGammaSlider,
        S::kGamma,
        S::kLogLevel,
        S::kBlankCheck,
        S::kBlankNum,
        S::kLogSavePath,
    };
    return order;
}

int storedIndex(int stored, int itemCount, int shown)
{
    for (const int index : { stored, shown, 0 }) {
        if (index >= 0 && index < itemCount) {
            return index;
        }
    }
    return -1;
}

namespace {

/// The device's name as one component of a path.
QString pathName(const QString& device)
{
    QString name = device;
    name.replace(QLatin1Char('/'), QLatin1Char('_'));
    return name;
}

} // namespace

QString deviceFolder(const QString& root, const QString& user, const QString& device)
{
    return root + user + QLatin1Char('/') + pathName(device) + QLatin1Char('/');
}

QString deviceFile(
    const QString& root, const QString& user, const QString& device, const QString& suffix)
{
    return deviceFolder(root, user, device) + pathName(device) + suffix;
}

} // namespace rules
