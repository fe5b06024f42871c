// The window shows an example name and the next serial, the library names the files, each by code
// of its own: over all combinations of the naming controls both must say the same.
#include "mainwindow/rules/file_param.h"
#include "mainwindow/rules/naming_rules.h"
#include "mainwindow/rules/param_codes.h"
#include "scanlib/base/file_naming.h"
#include "scanlib/session/output_settings.h"

#include <gtest/gtest.h>

#include <chrono>
#include <iostream>

using namespace orva;

namespace {

/// What the library takes from the record that the window fills for these controls.
OutputSettings received(const rules::NamingControls& controls, bool multiPage = false)
{
    rules::FileControls file;
    file.folder = "/tmp";
    file.prefix = controls.prefix;
    file.separator = rules::separatorValue(controls.separator);
    file.timeNamed = controls.byTime;
    file.dateOrder = rules::timeNameTypeCode(controls.dateOrder);
    file.serialStart = controls.serialStart;
    file.serialDigits = controls.serialDigits;
    file.fileFormat = rules::fileFormatCode(controls.fileType);
    file.multiPage = multiPage ? 1 : 0;
    FileParam record;
    EXPECT_EQ(rules::fillFileParam(file, false, &record), rules::FileParamFault::kNone);
    std::copy_n("/tmp", 5, record.szFilePath);
    PageTools tools;
    tools.findOutputFormat = [](FileFormat format) {
        static OutputFormat any {};
        any.format = format;
        any.holdsPages = true;
        return &any;
    };
    OutputSettings output;
    EXPECT_TRUE(outputSettingsFrom(record, tools, output).ok());
    return output;
}

std::string extension(FileFormat format)
{
    for (const FormatName& name : kFormatNames) {
        if (name.format == format) {
            return std::string(name.extension);
        }
    }
    return "?";
}

QStringList fileTypes()
{
    QStringList types { "no such type" };
    for (const FormatName& name : kFormatNames) {
        types << QString::fromUtf8(name.text.data(), static_cast<int>(name.text.size()));
    }
    return types;
}

/// Calls the check with every combination.
template <typename Check>
void forAllControls(Check check)
{
    const char* const prefixes[] = { "", "scan", "abcdefghij123456789" };
    const char* const separators[] = { "无", "-", "_", ".", "y", "' '", "年" };
    const char* const orders[] = { "年月日", "月日年", "日月年", "?" };
    const char* const starts[] = { "", "0", "7", "12345", "999", "9999999999", "A", "A99", "5B",
        "Z009", "0000000000" };
    rules::NamingControls controls;
    for (const char* prefix : prefixes) {
        controls.prefix = prefix;
        for (const char* separator : separators) {
            controls.separator = separator;
            for (const QString& type : fileTypes()) {
                controls.fileType = type;
                controls.byTime = true;
                for (const char* order : orders) {
                    controls.dateOrder = order;
                    check(controls);
                }
                controls.byTime = false;
                for (const char* start : starts) {
                    controls.serialStart = start;
                    // Also what typing cannot bring about, but a template can: letters, and a start
                    // beside a count of 0.
                    for (int digits = 0; digits <= 10; ++digits) {
                        controls.serialDigits = digits;
                        check(controls);
                    }
                }
            }
        }
    }
}

} // namespace

TEST(NamingAgreement, theExampleIsTheNameOfTheFirstFile)
{
    // A second of every month, with all widths of milliseconds; one and several streams. Single-
    // and multi-page jobs take the first name alike.
    int checked = 0;
    forAllControls([&](rules::NamingControls controls) {
        const int month = checked % 12 + 1;
        const QDateTime now(QDate(2024, month, 1 + checked % 28),
            QTime(checked % 24, checked % 60, checked % 59, checked * 7 % 1000));
        const auto clock = std::chrono::system_clock::time_point(
            std::chrono::milliseconds(now.toMSecsSinceEpoch()));
        for (const bool severalStreams : { false, true }) {
            controls.severalStreams = severalStreams;
            for (const bool multiPage : { false, true }) {
                const OutputSettings output = received(controls, multiPage);
                EXPECT_TRUE(multiPage || !output.multiPage);
                NameSequence names(output.naming, 0, [clock] { return clock; });
                const std::string stream = severalStreams ? "color" : "";
                EXPECT_EQ(rules::exampleName(controls, now).toStdString(),
                    names.next(stream) + "." + extension(output.format));
                ++checked;
            }
        }
    });
    std::cout << checked << " combinations of the naming controls\n";
    EXPECT_EQ(checked, 3 * 7 * 12 * (4 + 11 * 11) * 2 * 2);
}

TEST(NamingAgreement, theSerialShownAfterAJobIsTheOneThatTheLibraryWouldGiveNext)
{
    const int saved[] = { 1, 2, 9, 10, 99, 12345 };
    forAllControls([&](const rules::NamingControls& controls) {
        if (controls.byTime || controls.serialDigits == 0
            || controls.fileType != QLatin1String("jpg")) {
            return;
        }
        const NamingRule rule = received(controls).naming;
        for (const int files : saved) {
            const rules::SerialAdvance shown =
                rules::advanceSerial(controls.serialStart, controls.serialDigits, files);
            const std::string next = serialAt(rule.serialStart, static_cast<unsigned>(files));
            EXPECT_EQ(shown.exhausted, next.size() > 10) << next;
            if (!shown.exhausted) {
                EXPECT_EQ(shown.text.toStdString(), next);
            }
        }
    });
}
