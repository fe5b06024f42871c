#include "mainwindow/rules/control_rules.h"

#include "mainwindow/rules/param_codes.h"
#include "mainwindow/rules/settings_keys.h"

namespace rules {

namespace {

bool isNoDropout(const QString& dropout)
{
    return dropout == QString::fromUtf8(kFactoryDropout);
}

bool hasDropoutChoice(const QString& colorMode)
{
    return isBlackWhite(colorMode) || colorMode == QStringLiteral("灰度");
}

bool isAutomaticPaper(const QString& paper)
{
    return paper == QStringLiteral("自动");
}

void enable(ControlSteps& steps, std::initializer_list<Control> controls, bool on)
{
    for (const Control control : controls) {
        steps.push_back({ control, Change::kEnable, on ? 1 : 0 });
    }
}

constexpr std::initializer_list<Control> kManualTones {
    Control::kBrightness,
    Control::kContrast,
    Control::kGamma,
};

void append(ControlSteps& steps, const ControlSteps& more)
{
    steps.insert(steps.end(), more.begin(), more.end());
}

} // namespace

ControlSteps autoLevelDisableLogic()
{
    ControlSteps steps;
    enable(steps,
        { Control::kBrightness, Control::kContrast, Control::kThreshold, Control::kGamma,
            Control::kToneDefaults },
        false);
    return steps;
}

ControlSteps enableLogicMethod(bool autoLevelChecked, const QString& colorMode)
{
    ControlSteps steps;
    enable(steps, kManualTones, !autoLevelChecked);
    enable(steps, { Control::kToneDefaults }, !autoLevelChecked);
    if (!isBlackWhite(colorMode)) {
        enable(steps, { Control::kThreshold }, false);
        return steps;
    }
    steps.push_back({ Control::kAutoLevel, Change::kCheck, 0 });
    enable(steps, { Control::kAutoLevel }, false);
    enable(steps, { Control::kThreshold }, true);
    enable(steps, kManualTones, false);
    return steps;
}

AutoLevelRule autoLevelEnable(bool autoLevelChecked, const QString& colorMode)
{
    if (autoLevelChecked) {
        return { autoLevelDisableLogic(), false, kAutoLevelOn };
    }
    return { enableLogicMethod(false, colorMode), true, kAutoLevelOff };
}

ColorModeRule colorModeChanged(const QString& colorMode, bool autoLevelChecked, int autoLevelFlag)
{
    ColorModeRule rule;
    rule.intoBlackWhite = isBlackWhite(colorMode);
    if (rule.intoBlackWhite) {
        if (autoLevelChecked) {
            // Unchecking runs the box's slot, which sets the flag to "off"; negated it remembers
            // that the levels were on.
            rule.before.push_back({ Control::kAutoLevel, Change::kCheck, 0 });
            rule.negateFlag = true;
        }
    } else {
        enable(rule.before, kManualTones, true);
        enable(rule.before, { Control::kAutoLevel }, true);
        rule.before.push_back(
            { Control::kAutoLevel, Change::kCheck, autoLevelFlag == kAutoLevelOn ? 1 : 0 });
    }
    append(rule.after, filterColor(colorMode));
    append(rule.after, denoiseAvailability(colorMode));
    return rule;
}

ControlSteps filterColor(const QString& colorMode)
{
    ControlSteps steps;
    if (!hasDropoutChoice(colorMode)) {
        steps.push_back({ Control::kDropout, Change::kIndex, 0 });
    }
    enable(steps, { Control::kDropout }, hasDropoutChoice(colorMode));
    return steps;
}

ControlSteps denoiseAvailability(const QString& colorMode)
{
    ControlSteps steps;
    if (holdsBlackWhite(colorMode)) {
        // What cannot be switched off any more must not stay on.
        steps.push_back({ Control::kDenoise, Change::kIndex, 0 });
    }
    enable(steps, { Control::kDenoise }, !holdsBlackWhite(colorMode));
    return steps;
}

RotationRule rotAngleDisable(bool textOrientationChecked)
{
    RotationRule rule;
    if (!textOrientationChecked) {
        enable(rule.steps, { Control::kRotation }, true);
        rule.steps.push_back({ Control::kTextMode, Change::kIndex, 0 });
        enable(rule.steps, { Control::kTextMode }, false);
        return rule;
    }
    rule.flag = 1;
    rule.steps.push_back({ Control::kRotation, Change::kIndex, 0 });
    enable(rule.steps, { Control::kRotation }, false);
    enable(rule.steps, { Control::kTextMode }, true);
    rule.steps.push_back({ Control::kTextMode, Change::kIndex, 0 });
    return rule;
}

ControlSteps colorDropoutChanged(const QString& dropout)
{
    ControlSteps steps;
    if (isNoDropout(dropout)) {
        steps.push_back({ Control::kReinforcedDropout, Change::kCheck, 0 });
    }
    enable(steps, { Control::kReinforcedDropout }, !isNoDropout(dropout));
    return steps;
}

ControlSteps blankChanged(bool removeBlankChecked)
{
    return { { Control::kBlankThreshold, Change::kEnable, removeBlankChecked ? 1 : 0 } };
}

ControlSteps pagesOfFileType(const QString& fileType)
{
    ControlSteps steps;
    const bool several = holdsPages(fileType);
    if (!several) {
        steps.push_back({ Control::kSinglePage, Change::kCheck, 1 });
    }
    enable(steps, { Control::kMultiPage }, several);
    return steps;
}

ControlSteps paperTypeChanged(const QString& paper)
{
    ControlSteps steps;
    if (isAutomaticPaper(paper)) {
        steps.push_back({ Control::kAutoCrop, Change::kCheck, 1 });
    }
    enable(steps, { Control::kAutoCrop }, !isAutomaticPaper(paper));
    return steps;
}

ControlView controlView(const ControlState& state)
{
    const bool blackWhite = isBlackWhite(state.colorMode);
    ControlView view;
    view.autoLevel = !blackWhite;
    view.autoLevelChecked = !blackWhite && state.autoLevel;
    const bool manual = !blackWhite && !state.autoLevel;
    view.brightness = manual;
    view.contrast = manual;
    view.gamma = manual;
    view.threshold = blackWhite;
    view.toneDefaults = !view.autoLevelChecked;
    view.rotation = !state.textOrientation;
    view.textMode = state.textOrientation;
    view.dropout = hasDropoutChoice(state.colorMode);
    view.reinforcedDropout = view.dropout && !isNoDropout(state.dropout);
    view.denoise = !holdsBlackWhite(state.colorMode);
    view.blankThreshold = state.removeBlank;
    view.multiPage = holdsPages(state.fileType);
    view.autoCrop = !isAutomaticPaper(state.paper);
    return view;
}

} // namespace rules
