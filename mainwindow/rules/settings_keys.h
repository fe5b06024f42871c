// The settings of a device as one table: group, keys, type, factory value, and the two orders in
// which the window reads and writes them. Which control holds a setting is the window's matter.
#pragma once

#include <QString>

#include <cstddef>
#include <vector>

namespace rules {

enum class Setting
{
    kGeometry,
    kState,
    kFirstStart,
    kScanDeviceName,
    kFileType, ///< document type
    kFileSavePath,
    kScanSource,
    kScanColorMode,
    kScanPaperSize,
    kScanDpi,
    kImageMerge,
    kImageDenoise,
    kImageRotAngle,
    kAutoBColor,
    kAutoRotate,
    kAutoRotateMode,
    kColorDropout,
    kReinforcedDropout,
    kRemoveHole,
    kIsMultiPage,
    kFileFormat,
    kFileCompressSize,
    kIsTimeSave,
    kIsCoverSameNameFile,
    kFileNameHead,
    kFileStartBit,
    kFileRefreshState,
    kFileDefBit,
    kIsDefineFileCut, ///< separator
    kFileTimeFormat,
    kFileTimeFormatEnable,
    kSpinBoxEnable,
    kSpinBoxValue, ///< serial digit count
    kSendStartBit,
    kAutoCrop,
    kMultiFeed,
    kAutoLevel,
    kBrightness,
    kContrast,
    kThreshold,
    kGammaSlider,
    kGamma,
    kBlankCheck,
    kBlankNum,
    kLogLevel,
    kLogSavePath,
    kCount,
};

enum class SettingType
{
    kBytes,
    kInt,
    kBool,
    kText,
    kDouble
};

/// What restoring the defaults gives a setting.
enum class FactoryKind
{
    kNone, ///< nothing sets it
    kNumber, ///< `number`; 0 and 1 for a bool
    kEntry, ///< the item with the text `entry`
    kSourceDefault, ///< defaultSource() of source_lists.h
    kUnlessBlackWhite, ///< true when the colour mode is not 黑白
};

struct SettingRow
{
    Setting id;
    const char* group;
    const char* readKey;
    const char* writeKey;
    SettingType type;
    FactoryKind factory;
    double number;
    const char* entry;
};

inline constexpr char kWindowGroup[] = "mainWindow";
inline constexpr char kValueGroup[] = "appValue";

// Factory values that rules and slots name.
inline constexpr int kFactoryBlankThreshold = 55;
inline constexpr char kFactoryPaper[] = "A4";
inline constexpr char kFactoryResolution[] = "200";
inline constexpr char kFactoryColorMode[] = "彩色";
inline constexpr char kFactoryRotation[] = "不旋转";
inline constexpr char kFactoryDropout[] = "无操作";

/// All rows, in the order of the enum.
[[nodiscard]] const std::vector<SettingRow>& settingRows();
[[nodiscard]] const SettingRow& settingRow(Setting id);

/// One read. `again`: the setting was read before in this run; what the second read is for is told
/// at the table.
struct ReadStep
{
    Setting id;
    bool again;
};
/// kGeometry and kState, kFirstStart and kScanDeviceName first (each of these two can end the
/// reading), then the controls. A missing key reads as 0, false or empty.
[[nodiscard]] const std::vector<ReadStep>& readOrder();
/// Every setting once.
[[nodiscard]] const std::vector<Setting>& writeOrder();

/// A stored index for a list of that many items: itself when the list has it, else what the list
/// shows (the device's or the form's own choice), else 0, else -1.
[[nodiscard]] int storedIndex(int stored, int itemCount, int shown);

/// Per-device file: root + user + "/" + device + "/" + device + suffix (".ini" settings, ".conf"
/// templates). A "/" in the device name becomes "_". The root ends in a slash.
[[nodiscard]] QString deviceFile(
    const QString& root, const QString& user, const QString& device, const QString& suffix);
/// Folder of that file, with a slash at the end.
[[nodiscard]] QString deviceFolder(const QString& root, const QString& user, const QString& device);

} // namespace rules
