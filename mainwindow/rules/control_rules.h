// Which control is enabled, checked or reset by which: automatic levels, colour mode, text
// orientation, dropout, blank pages, denoise, pages a file.
//
// A rule gives steps; the slot applies them in their order. The order matters, because changing a
// control fires the slots wired to it in the middle of a rule. controlView() is the picture that
// the rules lead to, whatever the order of the operator's clicks.
#pragma once

#include <QString>

#include <vector>

namespace rules {

/// A control, or a group that is always switched together.
enum class Control
{
    kBrightness, ///< lightSlider, lightSpinBox
    kContrast, ///< contraSlider, constraSpinBox
    kGamma, ///< gammaSlider, gammaSpinBox
    kThreshold, ///< threholdSlider, threholdSpinBox
    kToneDefaults, ///< argSetDefaultBtn
    kAutoLevel, ///< autopLevelchkBox
    kRotation, ///< rotAngleComBox
    kTextMode, ///< autoRotateModComBox
    kDropout, ///< ColorDropoutComBox
    kReinforcedDropout, ///< ColorDropoutchkBox
    kDenoise, ///< DenoiseComBo
    kBlankThreshold, ///< BlankSlider, label_Blank
    kSinglePage, ///< singlepage_radio
    kMultiPage, ///< multipage_radio
    kAutoCrop, ///< autoCropChkBox
};

enum class Change
{
    kEnable, ///< setEnabled(value != 0)
    kCheck, ///< setChecked(value != 0)
    kIndex, ///< setCurrentIndex(value)
};

struct ControlStep
{
    Control control;
    Change change;
    int value;
};
using ControlSteps = std::vector<ControlStep>;

/// Values of the auto-level flag; 0 until it is first set.
inline constexpr int kAutoLevelOn = 1;
inline constexpr int kAutoLevelOff = -1;

// --- automatic levels

/// AutoLevelDisableLogic: the four pairs and the restore button are disabled.
[[nodiscard]] ControlSteps autoLevelDisableLogic();
/// EnableLogicMethod. In 黑白 it unchecks the automatic-levels box, whose slot runs before the next
/// step.
[[nodiscard]] ControlSteps enableLogicMethod(bool autoLevelChecked, const QString& colorMode);
/// AutoLevelEnable, slot of the box: apply the steps, then take the flag.
struct AutoLevelRule
{
    ControlSteps steps;
    bool logDisabled = false; ///< before the steps: "info:AutoLevelDisable"
    int flag = 0;
};
[[nodiscard]] AutoLevelRule autoLevelEnable(bool autoLevelChecked, const QString& colorMode);

// --- colour mode

/// onchangeColorMode: log, apply `before`, multiply the flag by -1 when asked, then call
/// EnableLogicMethod (its state is known only after `before`), then apply `after`.
struct ColorModeRule
{
    bool intoBlackWhite = false; ///< selects the log line
    ControlSteps before;
    bool negateFlag = false; ///< after `before`, whose unchecking has set the flag to -1
    ControlSteps after; ///< dropout and denoise availability
};
[[nodiscard]] ColorModeRule colorModeChanged(
    const QString& colorMode, bool autoLevelChecked, int autoLevelFlag);
/// setFilterColor: a dropout colour can be chosen in 黑白 and 灰度 only; otherwise 无操作,
/// disabled.
[[nodiscard]] ControlSteps filterColor(const QString& colorMode);
/// Disabled at 不去噪 where the colour mode holds 黑白.
[[nodiscard]] ControlSteps denoiseAvailability(const QString& colorMode);

// --- the other rules

/// RotAngleDisable, slot of the text-orientation box; take the flag after the steps.
struct RotationRule
{
    ControlSteps steps;
    int flag = 0; ///< auto-rotate flag
};
[[nodiscard]] RotationRule rotAngleDisable(bool textOrientationChecked);
/// ColorDropoutChanged: 无操作 unchecks and disables the reinforcement, any other text enables it.
[[nodiscard]] ControlSteps colorDropoutChanged(const QString& dropout);
/// The blank-page box: slider and label follow it; the box itself is always usable.
[[nodiscard]] ControlSteps blankChanged(bool removeBlankChecked);
/// A type that holds one page forces single-page and disables the choice; the others give it back.
/// Apply on a change of the file type and once after the settings have been read; the page buttons'
/// own slot does not force anything, since the settings restore them before the file type.
[[nodiscard]] ControlSteps pagesOfFileType(const QString& fileType);
/// onchangePaperType: 自动 finds the sheet by cropping, which is checked and cannot be switched
/// off.
[[nodiscard]] ControlSteps paperTypeChanged(const QString& paper);

// --- the picture

/// What the operator has chosen.
struct ControlState
{
    QString colorMode;
    bool autoLevel = false; ///< asked for; 黑白 overrides it
    bool textOrientation = false;
    QString dropout;
    bool removeBlank = false;
    QString fileType;
    QString paper;
};
/// Enabled controls, and the check boxes that the rules decide.
struct ControlView
{
    bool brightness = false, contrast = false, gamma = false, threshold = false;
    bool toneDefaults = false;
    bool autoLevel = false, autoLevelChecked = false;
    bool rotation = false, textMode = false;
    bool dropout = false, reinforcedDropout = false;
    bool denoise = false;
    bool blankThreshold = false;
    bool multiPage = false;
    bool autoCrop = false;
};
[[nodiscard]] ControlView controlView(const ControlState& state);

} // namespace rules
