// The texts of the summary labels on the preview page.
#pragma once

#include <QString>

namespace rules {

struct SummaryControls
{
    bool timeNamed = true;
    bool coverSameName = true;
    QString separator;
    QString prefix;
    QString colorMode;
    QString source;
    QString paper;
    QString resolution;
    QString rotation;
    bool autoCrop = false;
    bool autoLevel = false;
    int brightness = 0; ///< slider
    int contrast = 0; ///< slider
    int threshold = 0; ///< slider
    double gamma = 1.0; ///< spin box
};

/// One member a label, named as the label is.
struct PreviewSummary
{
    QString fileNameVL;
    QString fileSameCoverVL;
    QString fileSepareteVL;
    QString filePreSwitchVL;
    QString scanColorModeVL;
    QString scanSourceVL;
    QString scanPaperSizeVL;
    QString scanDPISizeVL;
    QString autoCropVL;
    QString autoLevelVL;
    QString rotAngleVL;
    QString constraVL;
    QString threholdValueVL;
    QString brightValueVL;
    QString gammaValueVL;
};

[[nodiscard]] PreviewSummary previewSummary(const SummaryControls& controls);

} // namespace rules
