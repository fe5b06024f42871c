#include "mainwindow/rules/device_rules.h"

namespace rules {

namespace {

constexpr int kSmallScreen = 600; // pixels
constexpr int kPanelHeight = 60; // pixels
constexpr char kClassWithPrefeed[] = "AvH4";
constexpr char kClassWithoutMultiFeed[] = "AvF";

} // namespace

bool hasDeviceOptions(const QString& deviceName)
{
    return deviceName.contains(QLatin1String("Orvascan"));
}

bool isASerial(const std::string& serialNumber)
{
    return !serialNumber.empty() && serialNumber.front() == 'A';
}

AboutTexts aboutTexts(const QString& user, const QString& device, const QString& serialNumber,
    const QString& version1, const QString& version2)
{
    const QString application = QString::fromUtf8(kApplicationName);
    AboutTexts texts;
    texts.windowTitle = application + QStringLiteral(" - ") + device + QStringLiteral(" - ") + user;
    texts.appName = QStringLiteral("应用软件名称：") + application;
    texts.device = QStringLiteral("当前设备:") + device;
    texts.serialNumber = QStringLiteral("设备序列号:") + serialNumber;
    texts.versions = QStringLiteral("设备驱动固件版本：驱动(") + version1 + QStringLiteral(")固件(")
        + version2 + QLatin1Char(')');
    return texts;
}

HiddenControls hiddenControls(bool aSerial, const std::string& deviceClass, int isHigh)
{
    HiddenControls hidden;
    hidden.removeHole = true;
    if (aSerial) {
        hidden.multiFeed = deviceClass == kClassWithoutMultiFeed;
    } else {
        hidden.filterColorLabel = true;
        hidden.colorDropout = true;
        hidden.reinforcedDropout = true;
        hidden.textModeLabel = true;
        hidden.textMode = true;
        hidden.prefeedButton = true;
    }
    if (isHigh == 0) {
        hidden.reinforcedDropout = true;
        hidden.textModeLabel = true;
        hidden.textMode = true;
    }
    if (!appliesPrefeed(deviceClass)) {
        hidden.prefeedButton = true;
    }
    return hidden;
}

bool appliesPrefeed(const std::string& deviceClass)
{
    return deviceClass == kClassWithPrefeed;
}

QPoint windowPosition(const QSize& screen, const QSize& window)
{
    if (screen.width() <= kSmallScreen || screen.height() <= kSmallScreen) {
        return { 0, 0 };
    }
    return { (screen.width() - window.width()) / 2,
        (screen.height() - window.height() - kPanelHeight) / 2 };
}

} // namespace rules
