#include "mainwindow/rules/control_rules.h"

#include "mainwindow/rules/param_codes.h"
#include "mainwindow/rules/settings_keys.h"

#include <algorithm>

namespace rules {

namespace {

using State = const ControlState&;

bool levelsApply(State s)
{
    return !isBlackWhite(s.colorMode);
}

bool tonesByHand(State s)
{
    return levelsApply(s) && !s.autoLevel;
}

bool hasDropoutChoice(State s)
{
    return isBlackWhite(s.colorMode) || s.colorMode == QStringLiteral("灰度");
}

constexpr ControlStep kNothing { Control::kAutoLevel, Change::kNothing, 0 };

constexpr ControlStep unchecked(Control control)
{
    return { control, Change::kCheck, 0 };
}

constexpr ControlStep checked(Control control)
{
    return { control, Change::kCheck, 1 };
}

constexpr ControlStep first(Control control)
{
    return { control, Change::kIndex, 0 };
}

} // namespace

const std::vector<ControlRow>& controlTable()
{
    using C = Control;
    static const std::vector<ControlRow> table {
        { C::kAutoLevel, levelsApply, unchecked(C::kAutoLevel) },
        { C::kBrightness, tonesByHand, kNothing },
        { C::kContrast, tonesByHand, kNothing },
        { C::kGamma, tonesByHand, kNothing },
        { C::kThreshold, [](State s) { return isBlackWhite(s.colorMode); }, kNothing },
        { C::kToneDefaults, [](State s) { return !(s.autoLevel && levelsApply(s)); }, kNothing },
        { C::kRotation, [](State s) { return !s.textOrientation; }, first(C::kRotation) },
        { C::kTextMode, [](State s) { return s.textOrientation; }, first(C::kTextMode) },
        { C::kDropout, hasDropoutChoice, first(C::kDropout) },
        { C::kReinforcedDropout,
            [](State s) { return s.dropout != QString::fromUtf8(kFactoryDropout); },
            unchecked(C::kReinforcedDropout) },
        { C::kDenoise, [](State s) { return !holdsBlackWhite(s.colorMode); }, first(C::kDenoise) },
        { C::kBlankThreshold, [](State s) { return s.removeBlank; }, kNothing },
        { C::kMultiPage, [](State s) { return holdsPages(s.fileType); }, checked(C::kSinglePage) },
        { C::kAutoCrop, [](State s) { return s.paper != QStringLiteral("自动"); },
            checked(C::kAutoCrop) },
    };
    return table;
}

ControlSteps controlSteps(const ControlState& state, Controls controls)
{
    ControlSteps steps;
    for (const ControlRow& row : controlTable()) {
        if (std::find(controls.begin(), controls.end(), row.control) == controls.end()) {
            continue;
        }
        const bool enabled = row.enabled(state);
        if (!enabled && row.whileDisabled.change != Change::kNothing) {
            steps.push_back(row.whileDisabled);
        }
        steps.push_back({ row.control, Change::kEnable, enabled ? 1 : 0 });
    }
    return steps;
}

ControlSteps autoLevelDisableLogic()
{
    ControlSteps steps;
    for (const Control control : kToneControls) {
        if (control != Control::kAutoLevel) {
            steps.push_back({ control, Change::kEnable, 0 });
        }
    }
    return steps;
}

ColorModeRule colorModeChanged(const QString& colorMode, bool autoLevelChecked, int autoLevelFlag)
{
    ColorModeRule rule;
    rule.intoBlackWhite = isBlackWhite(colorMode);
    if (rule.intoBlackWhite) {
        if (autoLevelChecked) {
            // Unchecking runs the box's slot, which sets the flag to "off"; negated it remembers
            // that the levels were on.
            rule.before.push_back(unchecked(Control::kAutoLevel));
            rule.negateFlag = true;
        }
        return rule;
    }
    for (const Control control :
        { Control::kBrightness, Control::kContrast, Control::kGamma, Control::kAutoLevel }) {
        rule.before.push_back({ control, Change::kEnable, 1 });
    }
    rule.before.push_back(
        { Control::kAutoLevel, Change::kCheck, autoLevelFlag == kAutoLevelOn ? 1 : 0 });
    return rule;
}

} // namespace rules
