// Which control is enabled, checked or reset by which: automatic levels, colour mode, text
// orientation, dropout, blank pages, denoise, pages a file.
//
// One table says for every state of the page what a control may do; the slots of the window apply
// the rows of their group. What depends on the order of the clicks (the two flags) is beside it.
#pragma once

#include <QString>

#include <initializer_list>
#include <vector>

namespace rules {

/// A control, or a group that is always switched together.
enum class Control
{
    kAutoLevel, ///< autopLevelchkBox
    kBrightness, ///< lightSlider, lightSpinBox
    kContrast, ///< contraSlider, constraSpinBox
    kGamma, ///< gammaSlider, gammaSpinBox
    kThreshold, ///< threholdSlider, threholdSpinBox
    kToneDefaults, ///< argSetDefaultBtn
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
    kNothing,
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
/// Apply in their order: changing a control fires the slots wired to it before the next step.
using ControlSteps = std::vector<ControlStep>;

/// What the page shows, as far as other controls depend on it.
struct ControlState
{
    QString colorMode;
    bool autoLevel = false;
    bool textOrientation = false;
    QString dropout;
    bool removeBlank = false;
    QString fileType;
    QString paper;
};

struct ControlRow
{
    Control control;
    bool (*enabled)(const ControlState&);
    /// What holds while the control is disabled: nothing that cannot be switched off stays on.
    ControlStep whileDisabled;
};

/// The table: one row for every control but kSinglePage, which is always enabled.
[[nodiscard]] const std::vector<ControlRow>& controlTable();
using Controls = std::initializer_list<Control>;
/// The rows of these controls, in the table's order, for a page in this state.
[[nodiscard]] ControlSteps controlSteps(const ControlState& state, Controls controls);

// --- groups of the slots

/// EnableLogicMethod
inline constexpr Controls kToneControls { Control::kAutoLevel, Control::kBrightness,
    Control::kContrast, Control::kGamma, Control::kThreshold, Control::kToneDefaults };
/// RotAngleDisable
inline constexpr Controls kRotationControls { Control::kRotation, Control::kTextMode };
/// setFilterColor: a dropout colour can be chosen in 黑白 and 灰度 only.
inline constexpr Controls kDropoutControls { Control::kDropout };
/// ColorDropoutChanged
inline constexpr Controls kReinforcedControls { Control::kReinforcedDropout };
/// onchangeColorMode, behind the levels
inline constexpr Controls kColorModeControls { Control::kDropout, Control::kDenoise };
/// The blank-page box, which itself is always usable.
inline constexpr Controls kBlankControls { Control::kBlankThreshold };
/// A type that holds one page forces single-page. The settings restore the two buttons before the
/// file type, so that this is applied once more after them.
inline constexpr Controls kPageControls { Control::kMultiPage };
/// onchangePaperType: 自动 finds the sheet by cropping.
inline constexpr Controls kPaperControls { Control::kAutoCrop };

// --- flags

/// Values of the auto-level flag; 0 until it is first set.
inline constexpr int kAutoLevelOn = 1;
inline constexpr int kAutoLevelOff = -1;

/// AutoLevelDisableLogic: the four pairs and the restore button are disabled.
[[nodiscard]] ControlSteps autoLevelDisableLogic();

/// onchangeColorMode: log, apply `before`, multiply the flag by -1 when asked, then apply
/// kToneControls (their state is known only after `before`) and kColorModeControls.
struct ColorModeRule
{
    bool intoBlackWhite = false; ///< selects the log line
    ControlSteps before;
    bool negateFlag = false; ///< after `before`, whose unchecking has set the flag to -1
};
[[nodiscard]] ColorModeRule colorModeChanged(
    const QString& colorMode, bool autoLevelChecked, int autoLevelFlag);

} // namespace rules
