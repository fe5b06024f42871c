// Names of output files and what the serial-number fields do.
#include "mainwindow/rules/naming_rules.h"
#include "sdk/codes.h"

#include <QRegularExpression>

#include <gtest/gtest.h>

#include <climits>
#include <iostream>
#include <vector>

using namespace rules;

namespace {

const QDateTime kTime(QDate(2024, 3, 5), QTime(7, 8, 9, 10));

struct SerialCase
{
    const char* start;
    int digits;
    int files;
    const char* next;
    bool grew;
    bool exhausted;
};

} // namespace

TEST(TimeStamp, NineForms)
{
    const char* const expected[3][3] = {
        { "20240305070809010", "03052024070809010", "05032024070809010" },
        { "2024_03_05_07_08_09_010", "03_05_2024_07_08_09_010", "05_03_2024_07_08_09_010" },
        { "2024-03-05-07-08-09-010", "03-05-2024-07-08-09-010", "05-03-2024-07-08-09-010" },
    };
    const char* const separators[] = { "无", "_", "-" };
    const char* const orders[] = { "年月日", "月日年", "日月年" };
    for (int s = 0; s < 3; ++s) {
        for (int o = 0; o < 3; ++o) {
            EXPECT_EQ(timeStamp(kTime, separators[s], orders[o]), expected[s][o]);
        }
    }
}

TEST(TimeStamp, HoursRunTo23AndForeignSeparatorsAreNotReadAsDateParts)
{
    const QDateTime evening(QDate(2024, 12, 31), QTime(23, 59, 58, 999));
    EXPECT_EQ(timeStamp(evening, "无", "年月日"), "20241231235958999");
    EXPECT_EQ(timeStamp(evening, "d'M", "年月日"), "2024d'M12d'M31d'M23d'M59d'M58d'M999");
    EXPECT_EQ(timeStamp(evening, "无", "?"), "20241231235958999");
}

TEST(Serial, PaddedToTheDigitCountAndNeverCut)
{
    EXPECT_EQ(paddedSerial("7", 3), "007");
    EXPECT_EQ(paddedSerial("12345", 3), "12345");
    EXPECT_EQ(paddedSerial("", 2), "00");
    EXPECT_EQ(defStartBit("12", 0), "");
    EXPECT_EQ(defStartBit("12", 5), "00012");
}

TEST(Serial, AfterAJobTheNextFreeNumberIsShown)
{
    const std::vector<SerialCase> cases {
        { "7", 3, 1, "008", false, false },
        { "007", 3, 0, "007", false, false },
        { "998", 3, 1, "999", false, false },
        { "999", 3, 1, "1000", true, false },
        { "095", 3, 1000, "1095", true, false },
        { "A12", 3, 1, "A13", false, false },
        { "A12", 5, 3, "00A15", false, false },
        { "A99", 3, 1, "A100", true, false },
        { "ABC", 3, 2, "ABC2", true, false },
        { "2147483647", 10, 5, "2147483652", false, false },
        { "9999999998", 10, 1, "9999999999", false, false },
        { "9999999999", 10, 1, "9999999999", true, true },
        { "5", 0, 4, "5", false, false },
    };
    for (const SerialCase& c : cases) {
        const SerialAdvance next = advanceSerial(c.start, c.digits, c.files);
        EXPECT_EQ(next.text, c.next) << c.start << " digits " << c.digits;
        EXPECT_EQ(next.grew, c.grew) << c.start;
        EXPECT_EQ(next.exhausted, c.exhausted) << c.start;
    }
}

TEST(Serial, FilesOfOneJobAndOfTheNextNeverShareANumber)
{
    // Independent of addition on texts: compared with plain integers.
    for (int start = 0; start <= 1100; start += 7) {
        for (int digits = 1; digits <= 5; ++digits) {
            for (const int n : { 0, 1, 9, 10, 99, 990 }) {
                const QString text = paddedSerial(QString::number(start), digits);
                const QString at = serialAt(text, n);
                EXPECT_EQ(at.toLongLong(), start + n);
                EXPECT_GE(at.size(), digits);
                EXPECT_EQ(
                    advanceSerial(QString::number(start), digits, n).text.toLongLong(), start + n);
            }
        }
    }
    EXPECT_EQ(serialAt("", 0), "1");
    EXPECT_EQ(serialAt("ABC", 0), "ABC");
    EXPECT_EQ(serialAt("ABC", 1), "ABC1");
}

TEST(SerialField, ChangingTheDigitCountCutsClearsAndBounds)
{
    SerialFieldChange change = serialDigitsChanged(3, "12345");
    EXPECT_EQ(change.text, "123");
    EXPECT_TRUE(change.integerValidator);
    EXPECT_TRUE(change.refreshExample);
    EXPECT_EQ(change.top, 1000);
    change = serialDigitsChanged(0, "12");
    EXPECT_EQ(change.text, "");
    EXPECT_FALSE(change.integerValidator);
    EXPECT_EQ(serialValidatorTop(1), 10);
    EXPECT_EQ(serialValidatorTop(9), 1000000000);
    EXPECT_EQ(serialValidatorTop(10), INT_MAX);
}

TEST(SerialField, PatternsTakeLettersAndDigitsOnly)
{
    const QRegularExpression prefix(QString("^(?:%1)$").arg(kPrefixPattern));
    EXPECT_TRUE(prefix.match(QString(kPrefixMaxLength, 'a')).hasMatch());
    EXPECT_TRUE(prefix.match("").hasMatch());
    EXPECT_FALSE(prefix.match(QString(kPrefixMaxLength + 1, 'a')).hasMatch());
    EXPECT_FALSE(prefix.match("扫描").hasMatch());
    EXPECT_FALSE(prefix.match("a/b").hasMatch());
}

TEST(ExampleName, HandWrittenNames)
{
    NamingControls c;
    c.prefix = "doc";
    c.separator = "-";
    c.dateOrder = "日月年";
    c.fileType = "双层pdf";
    EXPECT_EQ(exampleName(c, kTime), "doc-05-03-2024-07-08-09-010.pdf");
    c.prefix.clear();
    c.separator = "无";
    c.fileType = "双层ofd";
    EXPECT_EQ(exampleName(c, kTime), "05032024070809010.ofd");
    c.byTime = false;
    c.serialStart = "7";
    c.serialDigits = 3;
    c.separator = "_";
    EXPECT_EQ(exampleName(c, kTime), "007.ofd") << "no separator in front of a lone number";
    c.prefix = "a";
    c.fileType = "gif";
    EXPECT_EQ(exampleName(c, kTime), "a_007.jpg") << "an unknown type is sent as jpg";
    c.serialDigits = 0;
    EXPECT_EQ(exampleName(c, kTime), "a_1.jpg") << "no start: the first free number";
}

TEST(ExampleName, EveryCombinationIsASafeNameOfTheRightParts)
{
    int combinations = 0;
    for (const orva::FormatName& format : orva::kFormatNames) {
        for (const char* separator : kSeparatorTexts) {
            for (const char* order : kDateOrderTexts) {
                for (const char* prefix : { "", "a", "Scan2024" }) {
                    for (int digits = -1; digits <= kSerialMaxLength; ++digits) {
                        NamingControls c;
                        c.prefix = prefix;
                        c.separator = separator;
                        c.byTime = digits < 0;
                        c.dateOrder = order;
                        c.serialStart = "1";
                        c.serialDigits = digits;
                        c.fileType = QString::fromUtf8(
                            format.text.data(), static_cast<int>(format.text.size()));
                        const QString sign =
                            QByteArray(separator) == "无" ? "" : QString(separator);
                        const QString number = digits < 0
                            ? QStringList(
                                { "\\d+", "\\d+", "\\d+", "\\d+", "\\d+", "\\d+", "\\d{3}" })
                                  .join(sign)
                            : QString("0{%1}1").arg(qMax(digits - 1, 0));
                        const QString extension = QString::fromUtf8(format.extension.data());
                        const QRegularExpression expected("^" + QString(prefix)
                            + (c.prefix.isEmpty() ? "" : sign) + number + "\\." + extension + "$");
                        const QString name = exampleName(c, kTime);
                        EXPECT_TRUE(expected.match(name).hasMatch())
                            << name.toStdString() << " against "
                            << expected.pattern().toStdString();
                        ++combinations;
                    }
                }
            }
        }
    }
    std::cout << combinations << " combinations of naming controls\n";
    EXPECT_EQ(combinations, 11 * 3 * 3 * 3 * 12);
}
