// The table of settings: complete, in its orders, with its kept oddities.
#include "mainwindow/rules/settings_keys.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>

using namespace rules;

TEST(SettingsKeys, RowsStandAtTheirPlaceAndKeysAreUnique)
{
    std::set<std::string> read;
    std::set<std::string> written;
    int place = 0;
    for (const SettingRow& row : settingRows()) {
        EXPECT_EQ(static_cast<int>(row.id), place++) << row.readKey;
        EXPECT_TRUE(read.insert(row.readKey).second) << row.readKey;
        EXPECT_TRUE(written.insert(row.writeKey).second) << row.writeKey;
    }
    EXPECT_EQ(place, static_cast<int>(Setting::kCount));
}

TEST(SettingsKeys, OnlyTheDateOrderIsReadUnderAnotherLetterCaseThanItIsWritten)
{
    std::map<std::string, std::string> different;
    for (const SettingRow& row : settingRows()) {
        if (std::string(row.readKey) != row.writeKey) {
            different[row.readKey] = row.writeKey;
        }
    }
    const std::map<std::string, std::string> expected { { "FileTimeFormat", "FileTimeformat" },
        { "FileTimeFormatEnable", "FileTimeformatEnable" } };
    EXPECT_EQ(different, expected);
}

TEST(SettingsKeys, EverySettingButTheDropoutIsReadAndRepeatsAreMarked)
{
    std::map<Setting, int> reads;
    for (const ReadStep& step : readOrder()) {
        EXPECT_EQ(step.again, reads[step.id]++ > 0) << settingRow(step.id).readKey;
    }
    std::set<std::string> unread;
    std::set<std::string> twice;
    for (const SettingRow& row : settingRows()) {
        if (reads.count(row.id) == 0) {
            unread.insert(row.readKey);
        } else if (reads[row.id] == 2) {
            twice.insert(row.readKey);
        }
    }
    EXPECT_EQ(unread, (std::set<std::string> { "ColorDropoutComBox", "ColorDropoutchkBox" }));
    EXPECT_EQ(twice,
        (std::set<std::string> { "ScanSource", "ScanColorMode", "FileStartBit", "onspinBoxvalue",
            "logicBoxAutoLevel", "IsTimeSave", "IsCoverSameNameFile" }));
}

TEST(SettingsKeys, AStoredIndexThatTheListDoesNotHaveLeavesTheListAlone)
{
    EXPECT_EQ(storedIndex(2, 3, 1), 2);
    EXPECT_EQ(storedIndex(3, 3, 1), 1);
    EXPECT_EQ(storedIndex(-1, 3, -1), 0);
    EXPECT_EQ(storedIndex(0, 0, -1), -1);
}

TEST(SettingsKeys, ADeviceNameIsOneFolderWhateverItHolds)
{
    EXPECT_EQ(
        deviceFile("/r/", "li", "Orvascan 100", ".ini"), "/r/li/Orvascan 100/Orvascan 100.ini");
    EXPECT_EQ(deviceFile("/r/", "li", "a/../../b", ".conf"), "/r/li/a_.._.._b/a_.._.._b.conf");
}
