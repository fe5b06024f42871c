#include "scanlib/base/file_naming.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <set>

using namespace orva;

namespace {

std::chrono::system_clock::time_point localTime(
    int year, int month, int day, int hour, int minute, int second, int ms)
{
    std::tm parts {};
    parts.tm_year = year - 1900;
    parts.tm_mon = month - 1;
    parts.tm_mday = day;
    parts.tm_hour = hour;
    parts.tm_min = minute;
    parts.tm_sec = second;
    parts.tm_isdst = -1;
    return std::chrono::system_clock::from_time_t(std::mktime(&parts))
        + std::chrono::milliseconds(ms);
}

} // namespace

TEST(FileNaming, stampHasItsOrderAndItsSeparator)
{
    const auto time = localTime(2024, 3, 5, 7, 8, 9, 10);
    struct Case
    {
        DateOrder order;
        const char* separator;
        const char* expected;
    };
    const Case cases[] = {
        { DateOrder::kYearMonthDay, "", "20240305070809010" },
        { DateOrder::kMonthDayYear, "", "03052024070809010" },
        { DateOrder::kDayMonthYear, "", "05032024070809010" },
        { DateOrder::kYearMonthDay, "_", "2024_03_05_07_08_09_010" },
        { DateOrder::kUnknown, "y", "2024y03y05y07y08y09y010" },
    };
    for (const Case& c : cases) {
        EXPECT_EQ(timeStamp(time, c.order, c.separator), c.expected);
    }
    EXPECT_EQ(timeStamp(localTime(2024, 12, 31, 23, 59, 59, 999), DateOrder::kYearMonthDay, ""),
        "20241231235959999");
}

TEST(FileNaming, serialCountsUpInItsWidth)
{
    struct Case
    {
        const char* start;
        unsigned long long n;
        const char* expected;
    };
    const Case cases[] = { { "007", 0, "007" }, { "007", 1, "008" }, { "007", 93, "100" },
        { "999", 1, "1000" }, { "99", 12345, "12444" }, { "9999999999", 1, "10000000000" },
        { "0", 10, "10" }, { "A12", 1, "A13" }, { "A99", 1, "A100" }, { "5B", 0, "5B" },
        { "5B", 1, "5B1" }, { "", 0, "1" }, { "", 9, "10" } };
    for (const Case& c : cases) {
        EXPECT_EQ(serialAt(c.start, c.n), c.expected) << c.start << " + " << c.n;
    }
}

TEST(FileNaming, prefixBringsItsSeparatorAndAStreamItsTag)
{
    NamingRule rule;
    rule.timeNamed = false;
    rule.serialStart = "08";
    rule.separator = "-";
    NameSequence plain(rule);
    EXPECT_EQ(plain.next(""), "08");
    rule.prefix = "合同";
    NameSequence named(rule);
    EXPECT_EQ(named.next(""), "合同-08");
    EXPECT_EQ(named.next("gray"), "合同-09-gray");
    rule.separator = "";
    NameSequence joined(rule);
    EXPECT_EQ(joined.next("gray"), "合同08_gray");
}

TEST(FileNaming, aNameIsNeverGivenTwiceInOneJob)
{
    NamingRule rule;
    auto clock = localTime(2024, 12, 31, 23, 59, 59, 998);
    NameSequence names(rule, 0, [&] { return clock; });
    EXPECT_EQ(names.next("color"), "20241231235959998_color");
    EXPECT_EQ(names.next("gray"), "20241231235959999_gray");
    EXPECT_EQ(names.next("bw"), "20250101000000000_bw");
    clock -= std::chrono::milliseconds(1); // set back
    EXPECT_EQ(names.next(""), "20241231235959997");
    EXPECT_EQ(names.next(""), "20250101000000001");
    std::set<std::string> seen;
    NameSequence fast(rule);
    for (int i = 0; i < 5000; ++i) {
        EXPECT_TRUE(seen.insert(fast.next("")).second);
    }
}

TEST(FileNaming, partsThatNoFileNameHoldsAreRefused)
{
    const auto ruleWith = [](const char* prefix, const char* separator, const char* serial) {
        NamingRule rule;
        rule.prefix = prefix;
        rule.separator = separator;
        rule.serialStart = serial;
        return checkNamingRule(rule).code();
    };
    EXPECT_EQ(ruleWith("a", "-", "001"), kOk);
    EXPECT_EQ(ruleWith("../a", "-", ""), kBadFileName);
    EXPECT_EQ(ruleWith("a", "/", ""), kBadFileName);
    EXPECT_EQ(ruleWith("a", "\n", ""), kBadFileName);
    EXPECT_EQ(ruleWith("a", "-", "1/2"), kBadFileName);
}
