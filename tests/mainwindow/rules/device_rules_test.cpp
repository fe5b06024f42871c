// What a device offers, the lists that follow its source, and where its files lie.
#include "mainwindow/rules/device_rules.h"
#include "mainwindow/rules/settings_keys.h"
#include "mainwindow/rules/source_lists.h"

#include <gtest/gtest.h>

using namespace rules;

TEST(Device, NamesClassesAndSerialsAreJudgedCaseSensitively)
{
    EXPECT_TRUE(hasDeviceOptions("My Orvascan 100"));
    EXPECT_FALSE(hasDeviceOptions("orvascan 100"));
    EXPECT_TRUE(isASerial("A1"));
    EXPECT_FALSE(isASerial("a1") || isASerial(""));
    EXPECT_TRUE(appliesPrefeed("AvH4"));
    EXPECT_FALSE(appliesPrefeed("AvH40"));
    const HiddenControls low = hiddenControls(true, "AvH4", 0);
    EXPECT_TRUE(low.reinforcedDropout && low.textMode && low.textModeLabel);
    EXPECT_FALSE(low.colorDropout || low.filterColorLabel || low.multiFeed || low.prefeedButton);
    EXPECT_EQ(deviceFile("/r/", "li", "a/../../b", ".conf"), "/r/li/a_.._.._b/a_.._.._b.conf");
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
    EXPECT_EQ(resolutionChoice({ "75", "200", "300" }, "600").selected, 1);
    EXPECT_EQ(resolutionChoice({ "150", "2000" }, "").selected, 0);
    EXPECT_EQ(mergeChoice("ADF双面", "左右合并").selected, 4);
    EXPECT_EQ(mergeChoice("ADF单面", "左右合并").selected, 0);
    EXPECT_EQ(mergeChoice("平板", "左右拆分").selected, 2);
    EXPECT_EQ(defaultSource({ "平板", "ADF单面", "ADF双面" }), 1);
    EXPECT_EQ(defaultSource({ "平板" }), 0);
    EXPECT_EQ(defaultSource({}), -1);
}
