// The control rules on a model of the page whose controls fire their slots, as the real ones do,
// when a step changes them. Whatever the operator clicks, in whatever order, the page must end as
// the picture says and keep the stated invariants.
#include "mainwindow/rules/control_rules.h"
#include "mainwindow/rules/source_lists.h"

#include <QStringList>

#include <gtest/gtest.h>

#include <iostream>
#include <map>
#include <random>
#include <set>

using namespace rules;

namespace {

const QStringList kModes { "彩色", "灰度", "黑白", "多流输出" };
const QStringList kDropouts { "无操作", "红色", "绿色", "蓝色" };
const QStringList kFileTypes { "jpg", "bmp", "png", "tif", "pdf", "双层pdf", "ofd", "双层ofd",
    "txt", "rtf", "xls" };
const QStringList kPapers { "A4", "自动" };

class Page
{
public:
    Page()
    {
        // as the window starts: the rules once for what the controls show
        runAutoLevel();
        runColorMode();
        apply(rotAngleDisable(false).steps);
        apply(colorDropoutChanged(kDropouts[0]));
        apply(blankChanged(false));
        apply(pagesOfFileType(kFileTypes[0]));
        apply(paperTypeChanged(kPapers[0]));
    }

    bool on(Control control) const { return enabled.at(control); }
    bool checked(Control control) const { return check.count(control) > 0 && check.at(control); }
    int selected(Control control) const { return index.count(control) > 0 ? index.at(control) : 0; }

    // what the operator can do; a control that is disabled does not react
    void chooseMode(int i)
    {
        if (i != mode) {
            mode = i;
            runColorMode();
        }
    }
    void clickAutoLevel()
    {
        if (on(Control::kAutoLevel)) {
            setCheck(Control::kAutoLevel, !checked(Control::kAutoLevel));
        }
    }
    void clickTextOrientation()
    {
        textOrientation = !textOrientation;
        const RotationRule rule = rotAngleDisable(textOrientation);
        apply(rule.steps);
        rotateFlag = rule.flag;
    }
    void choose(Control control, int i)
    {
        if (on(control)) {
            setIndex(control, i);
        }
    }
    void clickReinforced()
    {
        if (on(Control::kReinforcedDropout)) {
            setCheck(Control::kReinforcedDropout, !checked(Control::kReinforcedDropout));
        }
    }
    void clickBlank()
    {
        blank = !blank;
        apply(blankChanged(blank));
    }
    void chooseFileType(int i)
    {
        fileType = i;
        apply(pagesOfFileType(kFileTypes[i]));
    }
    void clickMultiPage()
    {
        if (on(Control::kMultiPage)) {
            setCheck(Control::kMultiPage, true);
        }
    }
    void choosePaper(int i)
    {
        paper = i;
        apply(paperTypeChanged(kPapers[i]));
    }

    void runAutoLevel()
    {
        const AutoLevelRule rule = autoLevelEnable(checked(Control::kAutoLevel), kModes[mode]);
        apply(rule.steps);
        levelFlag = rule.flag;
    }
    void runColorMode()
    {
        const ColorModeRule rule =
            colorModeChanged(kModes[mode], checked(Control::kAutoLevel), levelFlag);
        apply(rule.before);
        if (rule.negateFlag) {
            levelFlag = -levelFlag;
        }
        apply(enableLogicMethod(checked(Control::kAutoLevel), kModes[mode]));
        apply(rule.after);
    }
    void apply(const ControlSteps& steps)
    {
        for (const ControlStep& step : steps) {
            if (step.change == Change::kEnable) {
                enabled[step.control] = step.value != 0;
            } else if (step.change == Change::kCheck) {
                setCheck(step.control, step.value != 0);
            } else {
                setIndex(step.control, step.value);
            }
        }
    }

    int mode = 0;
    bool textOrientation = false;
    bool blank = false;
    int fileType = 0;
    int paper = 0;
    int levelFlag = 0;
    int rotateFlag = 0;

private:
    void setCheck(Control control, bool value)
    {
        if (checked(control) == value) {
            return;
        }
        check[control] = value;
        if (control == Control::kAutoLevel) {
            runAutoLevel();
        } else if (control == Control::kMultiPage || control == Control::kSinglePage) {
            check[control == Control::kMultiPage ? Control::kSinglePage : Control::kMultiPage] =
                !value;
        }
    }
    void setIndex(Control control, int value)
    {
        if (selected(control) == value) {
            return;
        }
        index[control] = value;
        if (control == Control::kDropout) {
            apply(colorDropoutChanged(kDropouts[value]));
        }
    }

    std::map<Control, bool> enabled;
    std::map<Control, bool> check;
    std::map<Control, int> index;
};

ControlState stateOf(const Page& page)
{
    ControlState state;
    state.colorMode = kModes[page.mode];
    state.autoLevel = page.checked(Control::kAutoLevel);
    state.textOrientation = page.textOrientation;
    state.dropout = kDropouts[page.selected(Control::kDropout)];
    state.removeBlank = page.blank;
    state.fileType = kFileTypes[page.fileType];
    state.paper = kPapers[page.paper];
    return state;
}

void expectPicture(const Page& page, const std::string& where)
{
    const ControlView view = controlView(stateOf(page));
    EXPECT_EQ(page.on(Control::kBrightness), view.brightness) << where;
    EXPECT_EQ(page.on(Control::kContrast), view.contrast) << where;
    EXPECT_EQ(page.on(Control::kGamma), view.gamma) << where;
    EXPECT_EQ(page.on(Control::kThreshold), view.threshold) << where;
    EXPECT_EQ(page.on(Control::kToneDefaults), view.toneDefaults) << where;
    EXPECT_EQ(page.on(Control::kAutoLevel), view.autoLevel) << where;
    EXPECT_EQ(page.checked(Control::kAutoLevel), view.autoLevelChecked) << where;
    EXPECT_EQ(page.on(Control::kRotation), view.rotation) << where;
    EXPECT_EQ(page.on(Control::kTextMode), view.textMode) << where;
    EXPECT_EQ(page.on(Control::kDropout), view.dropout) << where;
    EXPECT_EQ(page.on(Control::kReinforcedDropout), view.reinforcedDropout) << where;
    EXPECT_EQ(page.on(Control::kDenoise), view.denoise) << where;
    EXPECT_EQ(page.on(Control::kBlankThreshold), view.blankThreshold) << where;
    EXPECT_EQ(page.on(Control::kMultiPage), view.multiPage) << where;
    EXPECT_EQ(page.on(Control::kAutoCrop), view.autoCrop) << where;
}

/// Stated in words of the operator, without the rules' own tables.
void expectInvariants(const Page& page, const std::string& where)
{
    const bool blackWhite = kModes[page.mode] == "黑白";
    EXPECT_EQ(page.on(Control::kThreshold), blackWhite) << where;
    EXPECT_FALSE(page.on(Control::kBrightness) && page.checked(Control::kAutoLevel)) << where;
    EXPECT_FALSE(page.on(Control::kBrightness) && blackWhite) << where;
    EXPECT_FALSE(page.checked(Control::kAutoLevel) && blackWhite) << where;
    EXPECT_NE(page.on(Control::kRotation), page.on(Control::kTextMode)) << where;
    EXPECT_EQ(page.rotateFlag == 1, page.textOrientation) << where;
    if (page.textOrientation) {
        EXPECT_EQ(page.selected(Control::kRotation), 0) << where << ": no fixed rotation beside it";
    } else {
        EXPECT_EQ(page.selected(Control::kTextMode), 0) << where;
    }
    if (page.selected(Control::kDropout) == 0) {
        EXPECT_FALSE(page.checked(Control::kReinforcedDropout)) << where;
    }
    if (!page.on(Control::kDropout)) {
        EXPECT_EQ(page.selected(Control::kDropout), 0) << where << ": nothing hidden stays on";
    }
    if (!page.on(Control::kDenoise)) {
        EXPECT_EQ(page.selected(Control::kDenoise), 0) << where;
    }
    const QString type = kFileTypes[page.fileType];
    if (type == "jpg" || type == "bmp" || type == "png") {
        EXPECT_FALSE(page.checked(Control::kMultiPage)) << where;
        EXPECT_FALSE(page.on(Control::kMultiPage)) << where;
    } else {
        EXPECT_TRUE(page.on(Control::kMultiPage)) << where;
    }
    EXPECT_TRUE(page.paper == 0 || page.checked(Control::kAutoCrop)) << where;
}

} // namespace

TEST(ControlRules, EveryStateLooksAsThePictureSays)
{
    int states = 0;
    std::set<QString> mergeLists;
    for (int mode = 0; mode < kModes.size(); ++mode) {
        for (const bool level : { false, true }) {
            for (const bool orientation : { false, true }) {
                for (int dropout = 0; dropout < kDropouts.size(); ++dropout) {
                    for (const char* source : { "平板", "ADF单面", "ADF双面" }) {
                        for (int type = 0; type < kFileTypes.size(); ++type) {
                            Page page;
                            if (level) {
                                page.clickAutoLevel();
                            }
                            page.choose(Control::kDenoise, 2);
                            page.chooseMode(mode);
                            page.choose(Control::kDropout, dropout);
                            page.clickReinforced();
                            page.choose(Control::kRotation, 3);
                            if (orientation) {
                                page.clickTextOrientation();
                            }
                            page.chooseFileType(type);
                            page.clickMultiPage();
                            const std::string where = kModes[mode].toStdString() + " "
                                + (level ? "levels " : "") + kDropouts[dropout].toStdString() + " "
                                + kFileTypes[type].toStdString();
                            expectPicture(page, where);
                            expectInvariants(page, where);
                            const QStringList merge = mergeChoice(source, "").items;
                            EXPECT_EQ(merge.contains("上下合并"), source == std::string("ADF双面"));
                            EXPECT_TRUE(merge.contains("左右拆分"));
                            ++states;
                        }
                    }
                }
            }
        }
    }
    std::cout << states << " states of the parameter page\n";
    EXPECT_EQ(states, 4 * 2 * 2 * 4 * 3 * 11);
}

TEST(ControlRules, NoOrderOfClicksLeadsOutOfThePicture)
{
    std::mt19937 random(20240305);
    const auto upTo = [&random](int n) {
        return static_cast<int>(std::uniform_int_distribution<int>(0, n - 1)(random));
    };
    for (int walk = 0; walk < 200; ++walk) {
        Page page;
        for (int click = 0; click < 40; ++click) {
            switch (upTo(11)) {
            case 0:
            case 1:
                page.chooseMode(upTo(kModes.size()));
                break;
            case 2:
                page.clickAutoLevel();
                break;
            case 3:
                page.clickTextOrientation();
                break;
            case 4:
                page.choose(Control::kDropout, upTo(kDropouts.size()));
                break;
            case 5:
                page.clickReinforced();
                break;
            case 6:
                page.clickBlank();
                break;
            case 7:
                page.chooseFileType(upTo(kFileTypes.size()));
                break;
            case 8:
                page.clickMultiPage();
                break;
            case 9:
                page.choosePaper(upTo(2));
                break;
            default:
                page.choose(upTo(2) == 0 ? Control::kRotation : Control::kDenoise, upTo(3));
                break;
            }
            const std::string where =
                "walk " + std::to_string(walk) + " click " + std::to_string(click);
            expectPicture(page, where);
            expectInvariants(page, where);
            if (HasFailure()) {
                return;
            }
        }
    }
}

TEST(ControlRules, BlackWhiteRemembersWhetherTheLevelsWereAutomatic)
{
    for (const bool automatic : { true, false }) {
        Page page;
        page.clickAutoLevel();
        if (!automatic) {
            page.clickAutoLevel();
        }
        page.chooseMode(2);
        EXPECT_FALSE(page.checked(Control::kAutoLevel));
        EXPECT_EQ(page.levelFlag, automatic ? kAutoLevelOn : kAutoLevelOff);
        page.chooseMode(0);
        EXPECT_EQ(page.checked(Control::kAutoLevel), automatic);
        EXPECT_EQ(page.on(Control::kBrightness), !automatic);
        page.chooseMode(1);
        EXPECT_EQ(page.checked(Control::kAutoLevel), automatic) << "between two other modes";
    }
}

TEST(ControlRules, AColourAfterNoDropoutDoesNotCheckTheReinforcementAgain)
{
    Page page;
    page.chooseMode(1);
    page.choose(Control::kDropout, 1);
    page.clickReinforced();
    EXPECT_TRUE(page.checked(Control::kReinforcedDropout));
    page.choose(Control::kDropout, 2);
    EXPECT_TRUE(page.checked(Control::kReinforcedDropout)) << "another colour keeps it";
    page.choose(Control::kDropout, 0);
    page.choose(Control::kDropout, 2);
    EXPECT_TRUE(page.on(Control::kReinforcedDropout));
    EXPECT_FALSE(page.checked(Control::kReinforcedDropout));
}

TEST(ControlRules, ABoxCheckedBehindTheRulesIsPutRightInBlackWhite)
{
    Page page;
    page.chooseMode(2);
    page.apply({ { Control::kAutoLevel, Change::kCheck, 1 } }); // a settings file says so
    page.apply(enableLogicMethod(page.checked(Control::kAutoLevel), kModes[2]));
    EXPECT_FALSE(page.checked(Control::kAutoLevel));
    EXPECT_TRUE(page.on(Control::kThreshold));
    EXPECT_FALSE(page.on(Control::kBrightness));
}
