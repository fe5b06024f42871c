// What a device offers, and the lists that follow its source.
#include "mainwindow/rules/device_rules.h"
#include "mainwindow/rules/source_lists.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

using namespace rules;

namespace {

using Names = std::set<std::string>;

Names hiddenNames(bool aSerial, const char* deviceClass, int isHigh)
{
    const HiddenControls h = hiddenControls(aSerial, deviceClass, isHigh);
    Names names;
    for (const auto& [hidden, name] : { std::pair<bool, const char*>(h.multiFeed, "multiFeed"),
             { h.filterColorLabel, "filterLabel" }, { h.colorDropout, "dropout" },
             { h.reinforcedDropout, "reinforced" }, { h.textModeLabel, "textLabel" },
             { h.textMode, "text" }, { h.prefeedButton, "prefeed" }, { h.removeHole, "hole" } }) {
        if (hidden) {
            names.insert(name);
        }
    }
    return names;
}

} // namespace

TEST(Device, ControlsHiddenBySerialClassAndHighness)
{
    EXPECT_EQ(hiddenNames(true, "AvH4", 1), (Names { "hole" }));
    EXPECT_EQ(hiddenNames(true, "AvH4", 0), (Names { "hole", "reinforced", "textLabel", "text" }));
    EXPECT_EQ(hiddenNames(true, "AvF", 1), (Names { "hole", "multiFeed", "prefeed" }));
    const Names withoutA { "hole", "filterLabel", "dropout", "reinforced", "textLabel", "text",
        "prefeed" };
    for (const char* deviceClass : { "AvH4", "AvF", "" }) {
        for (const int isHigh : { 0, 1 }) {
            EXPECT_EQ(hiddenNames(false, deviceClass, isHigh), withoutA) << deviceClass;
        }
    }
    EXPECT_TRUE(appliesPrefeed("AvH4"));
    EXPECT_FALSE(appliesPrefeed("AvH40"));
}

TEST(Device, OptionsAndSerialAreJudgedCaseSensitively)
{
    EXPECT_TRUE(hasDeviceOptions("My Orvascan 100"));
    EXPECT_FALSE(hasDeviceOptions("orvascan 100"));
    EXPECT_TRUE(isASerial("A1"));
    EXPECT_FALSE(isASerial("a1"));
    EXPECT_FALSE(isASerial(""));
}

TEST(Device, WindowPlace)
{
    EXPECT_EQ(windowPosition({ 1920, 1080 }, { 800, 600 }), QPoint(560, 210));
    EXPECT_EQ(windowPosition({ 600, 1080 }, { 500, 600 }), QPoint(0, 0));
    EXPECT_EQ(windowPosition({ 1024, 600 }, { 500, 600 }), QPoint(0, 0));
    EXPECT_EQ(windowPosition({ 1024, 601 }, { 500, 401 }), QPoint(262, 70));
}

TEST(SourceLists, ThePreviousTextIsKeptElseTheUsualOneElseTheFirst)
{
    EXPECT_EQ(paperChoice({ "A3", "A4", "名片" }, "名片").selected, 2);
    EXPECT_EQ(paperChoice({ "A3", "A4" }, "名片").selected, 1);
    EXPECT_EQ(paperChoice({ "Letter", "Legal" }, "名片").selected, 0);
    EXPECT_EQ(paperChoice({}, "A4").selected, -1);
    EXPECT_EQ(resolutionChoice({ "75", "200", "300" }, "300").selected, 2);
    EXPECT_EQ(resolutionChoice({ "75", "200", "300" }, "600").selected, 1);
    EXPECT_EQ(resolutionChoice({ "150", "2000" }, "").selected, 0);
    EXPECT_EQ(defaultPaperChoice({ "A3", "A4" }).selected, 1);
    EXPECT_EQ(defaultResolutionChoice({ "100" }).selected, 0);
}

TEST(SourceLists, AMergeThatTheNewSourceCannotDoGoesBackToNone)
{
    EXPECT_EQ(mergeChoice("ADF双面", "左右合并").selected, 4);
    EXPECT_EQ(mergeChoice("ADF单面", "左右合并").selected, 0);
    EXPECT_EQ(mergeChoice("平板", "左右拆分").selected, 2);
    EXPECT_EQ(mergeChoice("平板", "").items, (QStringList { "无操作", "上下拆分", "左右拆分" }));
}

TEST(SourceLists, TheFirstFeederIsTheDefault)
{
    EXPECT_EQ(defaultSource({ "平板", "ADF单面", "ADF双面" }), 1);
    EXPECT_EQ(defaultSource({ "平板" }), 0);
    EXPECT_EQ(defaultSource({}), -1);
}
