// What the chosen device means for the window: about texts, options, hidden controls, place on the
// screen.
#pragma once

#include <QPoint>
#include <QSize>
#include <QString>

#include <string>

namespace rules {

inline constexpr char kApplicationName[] = "Velmar数字化安全采集系统";
/// Run-log line for a device without the maker's options.
inline constexpr char kNoDeviceOptions[] = "未发现Orvascan字符串，不是Velmar设备，禁用设备选项";

/// The device name holds "Orvascan" (case-sensitive): the maker's options are there.
[[nodiscard]] bool hasDeviceOptions(const QString& deviceName);
/// The first character of the serial number is "A".
[[nodiscard]] bool isASerial(const std::string& serialNumber);

struct AboutTexts
{
    QString windowTitle; ///< user, application and device
    QString appName; ///< appNameLabel
    QString device; ///< currentDeviceLabel
    QString serialNumber; ///< currentDeviceSNLabel
    QString versions; ///< currentDeviceVersionLabel: driver and firmware
};
/// version1 is the driver's, version2 the firmware's.
[[nodiscard]] AboutTexts aboutTexts(const QString& user, const QString& device,
    const QString& serialNumber, const QString& version1, const QString& version2);

/// true hides the control; a false one is left as it is.
struct HiddenControls
{
    bool multiFeed = false; ///< MultiFeedChkBox
    bool filterColorLabel = false; ///< label_filterColor
    bool colorDropout = false; ///< ColorDropoutComBox
    bool reinforcedDropout = false; ///< ColorDropoutchkBox
    bool textModeLabel = false; ///< label_35
    bool textMode = false; ///< autoRotateModComBox
    bool prefeedButton = false; ///< button_setPrefeed
    bool removeHole = false; ///< RemoveHoleChkBox
};
/// deviceClass: text of GetScannerClass; isHigh: value of GetDevInfo. The pre-feed button is hidden
/// for every class but AvH4 too, which only is decided after the others.
[[nodiscard]] HiddenControls hiddenControls(
    bool aSerial, const std::string& deviceClass, int isHigh);
/// The pre-feed setting read from the device is applied to it at once: class AvH4.
[[nodiscard]] bool appliesPrefeed(const std::string& deviceClass);

/// Upper left corner of the main window: (0, 0) on a screen of at most 600 pixels either way, else
/// centred with 60 pixels left for a panel.
[[nodiscard]] QPoint windowPosition(const QSize& screen, const QSize& window);

} // namespace rules
