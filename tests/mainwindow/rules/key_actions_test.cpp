// The scanner's buttons by their values.
#include "mainwindow/rules/key_actions.h"

#include <gtest/gtest.h>

#include <map>

using namespace rules;

TEST(Buttons, EveryValueHasItsActionAndTheRestIsIgnored)
{
    const std::map<int, KeyAction> known { { 0, KeyAction::kOpenResult },
        { 1, KeyAction::kStartScan }, { 2, KeyAction::kStartScanAndOpen },
        { 4, KeyAction::kToggleWindow }, { 8, KeyAction::kNoteCancel } };
    for (int value = -500; value <= 500; ++value) {
        const auto row = known.find(value);
        EXPECT_EQ(keyAction(value), row == known.end() ? KeyAction::kIgnore : row->second) << value;
    }
}
