#include "sdk/COrva_SDK.h"
#include "sdk/device_info_json.h"
#include "tests/fake_sdk/fake_sdk_control.h"

#include <gmock/gmock.h>

#include <memory>
#include <stdexcept>
#include <string>

namespace {

constexpr int kMissing = -605;

struct FreeTree
{
    void operator()(cJSON* tree) const { cJSON_Delete(tree); }
};
using Tree = std::unique_ptr<cJSON, FreeTree>;

Tree parse(const std::string& text)
{
    Tree tree(cJSON_Parse(text.c_str()));
    EXPECT_TRUE(tree) << text;
    return tree;
}

Tree sleepTree(const std::string& members)
{
    return parse("{\"InSleep\":{" + members + "}}");
}
Tree prefeedTree(const std::string& members)
{
    return parse("{\"Prefeed\":{" + members + "}}");
}

stSleep_AutoOff marked()
{
    stSleep_AutoOff times;
    times.nMax = times.nMin = times.nStep = times.chUnit = times.value = -7;
    return times;
}

const std::string kTimes = R"("nEnable":1,"nMix":2,"nMax":60,"nStep":5,"chUnit":109,"value":15)";

// The whole way: text in the library, records in the application.
struct DeviceInfo
{
    int read(const std::string& json, const char* command = "json")
    {
        fake.script(command + ("|" + json) + "\n");
        return sdk.GetDevInfo(sleep, autoOff, prefeed, isHigh);
    }
    DeviceInfo() { EXPECT_EQ(sdk.LoadDll(fake.file().c_str()), 0); }
    ~DeviceInfo() { sdk.UnInit(); }
    DeviceInfo(const DeviceInfo&) = delete;
    DeviceInfo& operator=(const DeviceInfo&) = delete;

    FakeSdk fake;
    COrva_SDK sdk;
    stSleep_AutoOff sleep = marked();
    stSleep_AutoOff autoOff = marked();
    structPrefeed prefeed;
    int isHigh = -7;
};

} // namespace

TEST(DeviceTimes, readsNumbersAndStringsAlike)
{
    for (const std::string& members :
        { kTimes,
            std::string(
                R"("nEnable":"1","nMix":"2","nMax":" 60 min","nStep":"5","chUnit":"109","value":"15")") }) {
        stSleep_AutoOff times = marked();
        EXPECT_EQ(COrva_SDK().GetDevInfoEx(sleepTree(members).get(), "InSleep", times), 0);
        EXPECT_TRUE(times.nEnable);
        EXPECT_EQ(times.nMin, 2) << "its key is nMix";
        EXPECT_EQ(times.nMax, 60);
        EXPECT_EQ(times.nStep, 5);
        EXPECT_EQ(times.chUnit, stSleep_AutoOff::kUnitMinutes);
        EXPECT_EQ(times.value, 15);
    }
    // Any number but 0 is true; what is no number is 0; what no int holds stays within int.
    stSleep_AutoOff odd = marked();
    const Tree tree = sleepTree(
        R"("nEnable":"-3","nMix":"abc","nMax":"99999999999999999999","nStep":-1e300,"chUnit":"0x6d","value":"")");
    EXPECT_EQ(COrva_SDK().GetDevInfoEx(tree.get(), "InSleep", odd), 0);
    EXPECT_TRUE(odd.nEnable);
    EXPECT_EQ(odd.nMin, 0);
    EXPECT_EQ(odd.nMax, 2147483647);
    EXPECT_EQ(odd.nStep, -2147483647 - 1);
    EXPECT_EQ(odd.chUnit, 0) << "base 10";
    EXPECT_EQ(odd.value, 0);
}

// Members before the missing one are set.
TEST(DeviceTimes, stopsAtTheFirstMissingMember)
{
    stSleep_AutoOff times = marked();
    const Tree tree = sleepTree(R"("value":15,"nStep":5,"nMix":2,"nEnable":1)");
    EXPECT_EQ(COrva_SDK().GetDevInfoEx(tree.get(), "InSleep", times), kMissing);
    EXPECT_TRUE(times.nEnable);
    EXPECT_EQ(times.nMin, 2);
    EXPECT_EQ(times.nMax, -7);
    EXPECT_EQ(times.nStep, -7) << "nMax comes before it";
    EXPECT_EQ(COrva_SDK().GetDevInfoEx(tree.get(), "AutoOff", times), kMissing);
    EXPECT_EQ(
        COrva_SDK().GetDevInfoEx(parse(R"({"InSleep":5})").get(), "InSleep", times), kMissing);
    EXPECT_EQ(COrva_SDK().GetDevInfoEx(nullptr, "InSleep", times), -604);
}

TEST(DevicePrefeed, readsNumbersAndStringsAndStopsAtTheFirstMissingMember)
{
    structPrefeed prefeed;
    EXPECT_EQ(
        COrva_SDK().GetPrefeedEx(
            prefeedTree(R"("nCap":"1","nEnable":0,"value":"2.5s")").get(), "Prefeed", prefeed),
        0);
    EXPECT_TRUE(prefeed.nCap);
    EXPECT_FALSE(prefeed.nEnable);
    EXPECT_EQ(prefeed.value, 2.5F);
    for (const char* members :
        { R"("nEnable":1,"value":1)", R"("nCap":1,"value":1)", R"("nCap":1,"nEnable":1)" }) {
        EXPECT_EQ(
            COrva_SDK().GetPrefeedEx(prefeedTree(members).get(), "Prefeed", prefeed), kMissing)
            << members;
    }
}

TEST(DevicePrefeed, malformedTimeThrowsTheConversionsException)
{
    const auto messageOf = [](const std::string& value, auto kind) {
        structPrefeed prefeed;
        const Tree tree = prefeedTree(R"("nCap":1,"nEnable":1,"value":")" + value + "\"");
        try {
            static_cast<void>(COrva_SDK().GetPrefeedEx(tree.get(), "Prefeed", prefeed));
        } catch (const decltype(kind)& error) {
            return std::string(error.what());
        }
        return std::string("nothing thrown");
    };
    for (const char* value : { "", "fast", ".", "-" }) {
        EXPECT_EQ(messageOf(value, std::invalid_argument("")), "stof") << value;
    }
    for (const char* value : { "1e60", "-1e60", "1e-60" }) {
        EXPECT_EQ(messageOf(value, std::out_of_range("")), "stof") << value;
    }
}

TEST(DeviceInfoText, oneRecordIsEnough)
{
    DeviceInfo info;
    EXPECT_EQ(info.read(R"({"Prefeed":{"nCap":1,"nEnable":1,"value":1}})"), 0);
    EXPECT_EQ(info.read("{\"AutoOff\":{" + kTimes + "}}"), 0);
    EXPECT_EQ(info.read(R"({"IsHigh":1})"), kMissing);
    EXPECT_EQ(info.isHigh, 1) << "read all the same";
    EXPECT_EQ(info.sleep.nMax, -7) << "missing records stay";
}

TEST(DeviceInfoText, textThatIsNoneLeavesTheRecords)
{
    DeviceInfo info;
    // Longer than the buffer: cut at 1023 bytes, it is no JSON any more.
    const std::string whole = "{\"InSleep\":{" + kTimes + "},\"pad\":\"";
    const std::string tooLong = whole + std::string(1024 - whole.size() - 2, 'x') + "\"}";
    ASSERT_EQ(tooLong.size(), 1024U);
    const std::string nested = std::string(1023, '[');
    for (const std::string& text : { std::string("nonsense"), std::string(), std::string("{"),
             std::string("{\"InSleep\""), tooLong, nested, std::string("[1,2]") }) {
        EXPECT_EQ(info.read(text), kMissing) << text.substr(0, 40);
        EXPECT_EQ(info.sleep.nMax, -7);
    }
    // 1023 bytes fit; all 1024 without an end are not read beyond.
    const std::string fits = whole + std::string(1023 - whole.size() - 2, 'x') + "\"}";
    EXPECT_EQ(info.read(fits), 0);
    EXPECT_EQ(info.sleep.nMax, 60);
    EXPECT_EQ(info.read(tooLong, "json-unterminated"), 0);

    info.fake.script("result|GetDevInfo|-24\n");
    EXPECT_EQ(info.read("{}"), kMissing) << "the library's own failure";
}

TEST(DeviceInfoText, malformedPrefeedThrowsAndChangesNothing)
{
    DeviceInfo info;
    EXPECT_THROW(info.read("{\"InSleep\":{" + kTimes + "},\"AutoOff\":{" + kTimes
                     + R"(},"Prefeed":{"nCap":1,"nEnable":1,"value":"soon"},"IsHigh":1})"),
        std::invalid_argument);
    EXPECT_EQ(info.sleep.nMax, -7);
    EXPECT_EQ(info.autoOff.nMax, -7);
    EXPECT_FALSE(info.prefeed.nCap);
    EXPECT_EQ(info.isHigh, -7);
}
