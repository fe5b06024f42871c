// Names of output files and what the serial-number fields do.
#include "mainwindow/rules/naming_rules.h"

#include <gtest/gtest.h>

using namespace rules;

TEST(TimeStamp, HoursRunTo23AndForeignSeparatorsAreNotReadAsDateParts)
{
    const QDateTime evening(QDate(2024, 12, 31), QTime(23, 59, 58, 999));
    EXPECT_EQ(timeStamp(evening, "无", "年月日"), "20241231235958999");
    EXPECT_EQ(timeStamp(evening, "d'M", "年月日"), "2024d'M12d'M31d'M23d'M59d'M58d'M999");
    EXPECT_EQ(timeStamp(evening, "无", "?"), "20241231235958999");
}

TEST(Serial, AfterAJobTheNextFreeNumberIsShown)
{
    struct Case
    {
        const char* start;
        int digits;
        int files;
        const char* next;
        int shownDigits;
        bool exhausted;
    };
    const Case cases[] = {
        { "7", 3, 1, "008", 3, false },
        { "007", 3, 0, "007", 3, false },
        { "998", 3, 1, "999", 3, false },
        { "999", 3, 1, "1000", 4, false },
        { "095", 3, 1000, "1095", 4, false },
        { "A12", 5, 3, "00A15", 5, false },
        { "A99", 3, 1, "A100", 4, false },
        { "ABC", 3, 2, "ABC2", 4, false },
        { "2147483647", 10, 5, "2147483652", 10, false },
        { "9999999998", 10, 1, "9999999999", 10, false },
        { "9999999999", 10, 1, "9999999999", 10, true },
        { "5", 0, 4, "5", 0, false },
        { "12345", 3, 1, "12346", 5, false },
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.start);
        const SerialAdvance next = advanceSerial(c.start, c.digits, c.files);
        EXPECT_EQ(next.text, c.next);
        EXPECT_EQ(next.digits, c.shownDigits);
        EXPECT_EQ(next.grew, c.shownDigits != c.digits);
        EXPECT_EQ(next.exhausted, c.exhausted);
    }
}

TEST(ExampleName, HandWrittenNames)
{
    const QDateTime time(QDate(2024, 3, 5), QTime(7, 8, 9, 10));
    NamingControls c;
    c.prefix = "doc";
    c.separator = "-";
    c.dateOrder = "日月年";
    c.fileType = "双层pdf";
    EXPECT_EQ(exampleName(c, time), "doc-05-03-2024-07-08-09-010.pdf");
    c.byTime = false;
    c.prefix.clear();
    c.serialStart = "7";
    c.serialDigits = 3;
    c.separator = "_";
    EXPECT_EQ(exampleName(c, time), "007.pdf") << "no separator in front of a lone number";
    c.prefix = "a";
    c.fileType = "gif";
    EXPECT_EQ(exampleName(c, time), "a_007.jpg") << "an unknown type is sent as jpg";
    c.serialDigits = 0;
    EXPECT_EQ(exampleName(c, time), "a_1.jpg") << "no start: the first free number";
    c.severalStreams = true;
    EXPECT_EQ(exampleName(c, time), "a_1_color.jpg");
    c.separator = "无";
    EXPECT_EQ(exampleName(c, time), "a1_color.jpg");
}
