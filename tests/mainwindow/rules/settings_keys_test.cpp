// The table of settings: complete, in its orders, with its kept oddities.
#include "mainwindow/rules/settings_keys.h"

#include <gtest/gtest.h>

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
