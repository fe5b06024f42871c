#include "mainwindow/rules/preview_summary.h"

namespace rules {

namespace {

QString onOff(bool on)
{
    return on ? QStringLiteral(" 开") : QStringLiteral(" 关");
}

void addTones(const SummaryControls& controls, PreviewSummary& summary)
{
    const QString contrast = QStringLiteral("对比度数值:");
    const QString threshold = QStringLiteral("阈值数值:");
    const QString brightness = QStringLiteral("亮度数值:");
    const QString gamma = QStringLiteral("GAMMA数值:");
    if (controls.autoLevel) {
        const QString automatic = QStringLiteral("自动");
        // KEPT: with automatic levels the threshold label has the caption of the contrast, and the
        // brightness label that of the threshold.
        summary.constraVL = contrast + automatic;
        summary.threholdValueVL = contrast + automatic;
        summary.brightValueVL = threshold + automatic;
        summary.gammaValueVL = gamma + automatic;
        return;
    }
    summary.constraVL = contrast + QString::number(controls.contrast);
    summary.threholdValueVL = threshold + QString::number(controls.threshold);
    summary.brightValueVL = brightness + QString::number(controls.brightness);
    summary.gammaValueVL = gamma + QString::number(controls.gamma);
}

} // namespace

PreviewSummary previewSummary(const SummaryControls& controls)
{
    PreviewSummary summary;
    summary.fileNameVL = QStringLiteral("文件命名方式:")
        + (controls.timeNamed ? QStringLiteral("时间") : QStringLiteral("顺序"));
    summary.fileSameCoverVL = QStringLiteral("文件同名覆盖:")
        + (controls.coverSameName ? QStringLiteral("是") : QStringLiteral("否"));
    summary.fileSepareteVL = QStringLiteral("文件名分隔符:") + controls.separator;
    summary.filePreSwitchVL = QStringLiteral("文件命名前缀:") + controls.prefix;
    summary.scanColorModeVL = QStringLiteral("扫描颜色模式:") + controls.colorMode;
    summary.scanSourceVL = QStringLiteral("扫描源模式:") + controls.source;
    summary.scanPaperSizeVL = QStringLiteral("扫描纸张类型:") + controls.paper;
    summary.scanDPISizeVL = QStringLiteral("扫描DPI类型:") + controls.resolution;
    summary.autoCropVL = QStringLiteral("自动裁切:") + onOff(controls.autoCrop);
    summary.autoLevelVL = QStringLiteral("自动色阶:") + onOff(controls.autoLevel);
    summary.rotAngleVL = QStringLiteral("旋转角度:") + controls.rotation;
    addTones(controls, summary);
    return summary;
}

} // namespace rules
