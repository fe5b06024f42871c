// What one scan template holds, and what travels between the main window and the template dialog.
// Keys and file format are the store's business (template_store.h).
#pragma once

#include <QMetaType>
#include <QString>

#include <cstdint>

/// The combo-box fields hold the visible text of the selection, not an index. Fields marked
/// (travels only) are neither written to the template file nor read from it.
struct _tagtemplateParam
{
    int32_t fileType = 0; ///< index of comboBox_doc
    QString savePath; ///< filePathEdit
    QString imageFormat; ///< fileTypeCombo
    QString compression; ///< imageCompressCombo
    QString timeNameType; ///< timeNametypeCombo
    QString timeNamePrefix; ///< fileNamePreEdit
    QString serialStart; ///< nameNoSerialEdit
    QString separator; ///< seperateCombo
    uint8_t serialLength = 0; ///< nameNoLenSpinBox, digits
    bool overwriteSameName = false; ///< sameNameCoverRadio
    bool nameByTime = false; ///< timeNameRadio
    bool useFilePrefix = false; ///< the prefix is not empty
    QString colorMode; ///< colorModeComBo
    QString dropoutColor; ///< ColorDropoutComBox (travels only)
    QString autoRotateMode; ///< autoRotateModComBox (travels only)
    QString scanSource; ///< scanSourceComBo
    QString paperSize; ///< paperTypeComBo
    QString resolution; ///< DPIComBo
    QString merge; ///< MergeComBo
    QString denoise; ///< DenoiseComBo
    bool autoBackgroundColor = false; ///< autoBColorChkBox
    bool autoCrop = false; ///< autoCropChkBox
    bool removeHoles = false; ///< RemoveHoleChkBox (travels only)
    bool autoLevel = false; ///< autopLevelchkBox
    bool multiStreamOutput = false; ///< the colour mode is 多流输出
    bool autoTextOrientation = false; ///< autoRotatChkBox
    bool colorDropout = false; ///< ColorDropoutchkBox (travels only)
    bool multiFeedDetection = false; ///< MultiFeedChkBox
    bool multiPage = false; ///< multipage_radio
    int16_t brightness = 0; ///< lightSpinBox
    uint16_t contrast = 0; ///< constraSpinBox, -100...100 in two's complement: see contrastPercent
    uint16_t threshold = 0; ///< threholdSpinBox, 0...255
    double gamma = 0.0; ///< gammaSpinBox, 0.1...5.0
    uint16_t rotationIndex = 0; ///< index of rotAngleComBox
    bool skipBlankPages = false; ///< checkBox_blank
    int32_t blankThreshold = 0; ///< BlankSlider
};

/// The name that signal signatures use.
using ScanTemplateParam = _tagtemplateParam;
Q_DECLARE_METATYPE(ScanTemplateParam)

// KEPT: the contrast field is unsigned although the control goes below zero. Both sides go through
// these two, so that -20 comes back as -20.
[[nodiscard]] inline int contrastPercent(const ScanTemplateParam& param)
{
    return static_cast<int16_t>(param.contrast);
}
inline void setContrastPercent(ScanTemplateParam& param, int percent)
{
    param.contrast = static_cast<uint16_t>(percent);
}
