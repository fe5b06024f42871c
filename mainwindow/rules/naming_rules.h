// How output files are named: the parts of a name, the example of the settings page, the serial
// number fields. The scanner library names the files by the same rule in its own code:
//
//   name   prefix [+ separator, when the prefix is not empty] + (stamp | serial)
//          [+ (separator | "_") + stream, in 多流输出] + "." + extension
//   stamp  local date and time of the file in one of nine forms (timeStampFormat)
//   serial the start text padded with "0" on the left to the digit count, then counted up by one a
//          file: the trailing digits count and keep their width, letters in front stay (A12, A13;
//          007, 008), an overflow grows by one digit (999, 1000); a start without trailing digits
//          stands as it is for the first file and gets 1, 2, 3 ... behind it; an empty start (digit
//          count 0) counts 1, 2, 3 ... and passes over names that are taken in the folder
//   stream color, gray, bw: one file each, the first one is the example
//
// "Add a number": a name that is taken in the folder gets "_2", "_3" ... in front of the extension.
// "Overwrite" replaces files of earlier jobs. Within one job no name is given twice in either mode:
// a stamp moves on to the next millisecond.
//
// Plain functions, any thread.
#pragma once

#include <QDateTime>
#include <QString>

namespace rules {

/// Longest texts that the file record holds, in characters (letters and digits).
inline constexpr int kPrefixMaxLength = 19;
inline constexpr int kSerialMaxLength = 10;
/// Patterns of the two validators; the fields hold no more than the lengths above.
inline constexpr char kPrefixPattern[] = "[a-zA-Z0-9]*";
inline constexpr char kSerialPattern[] = "[a-zA-Z0-9]+$";
/// What the two fields would let an operator type; an empty text passes too.
[[nodiscard]] bool isPrefix(const QString& text);
[[nodiscard]] bool isSerialStart(const QString& text);
/// Items of the separator list and of the date order list, in the order shown.
inline constexpr const char* kSeparatorTexts[] = { "无", "-", "_" };
inline constexpr const char* kDateOrderTexts[] = { "年月日", "日月年", "月日年" };

/// 无 gives an empty text, "-" and "_" themselves, any other text itself.
[[nodiscard]] QString separatorValue(const QString& separatorText);

/// Format for QDateTime::toString by separator and date order. An unknown separator joins the parts
/// (quoted, so that its letters are not read as date parts), an unknown order reads as 年月日.
[[nodiscard]] QString timeStampFormat(const QString& separatorText, const QString& dateOrder);
[[nodiscard]] QString timeStamp(
    const QDateTime& time, const QString& separatorText, const QString& dateOrder);

/// The text with "0" in front until it has that many characters; a longer text stays as it is.
[[nodiscard]] QString paddedSerial(const QString& text, int digits);
/// The serial start that names are made of: empty when the digit count is 0, else padded.
[[nodiscard]] QString defStartBit(const QString& text, int digits);
/// The serial of the n-th file (from 0) of a job with this padded start; see the rule above. The
/// example and the library agree on it; an empty start gives n + 1.
[[nodiscard]] QString serialAt(const QString& paddedStart, qint64 n);

/// The start text to show after a job.
struct SerialAdvance
{
    QString text; ///< padded; unchanged when nothing was saved or the digit count is 0
    int digits = 0; ///< digit count to show; grown with the text, or the next start would be cut
    bool grew = false; ///< the digit count has grown: tell the operator and the run log
    /// Longer than kSerialMaxLength: the text is unchanged, so that names come again. Tell the
    /// operator, and let same names get a number.
    bool exhausted = false;
};
/// The next free number after a job that started at this text and saved that many files. Call it
/// for every job named by serial number, failed ones too: their files exist.
[[nodiscard]] SerialAdvance advanceSerial(const QString& startText, int digits, int savedFiles);

/// What a change of the digit count does to the serial start.
struct SerialFieldChange
{
    QString text; ///< to put into the field when it differs from the present text
    bool integerValidator = false; ///< install QIntValidator(0, top)
    int top = 0;
    bool refreshExample = false;
};
/// digits 0 clears the field; any other cuts the text to its first `digits` characters, asks for
/// the integer validator and refreshes the example name.
[[nodiscard]] SerialFieldChange serialDigitsChanged(int digits, const QString& text);
/// 10 to the power digits, in floating point; the largest int from 10 digits on.
[[nodiscard]] int serialValidatorTop(int digits);

/// Extension without the dot for a text of the file type list: 双层pdf gives pdf, 双层ofd ofd, an
/// unknown text jpg, which is also the format that it is sent as.
[[nodiscard]] QString extensionOf(const QString& fileTypeText);

struct NamingControls
{
    QString prefix;
    QString separator; ///< text of the list
    bool byTime = true;
    QString dateOrder;
    QString serialStart; ///< text of the field
    int serialDigits = 0;
    QString fileType; ///< text of the list
    bool severalStreams = false; ///< 多流输出
};
/// The name that the first file of a job started at `now` would get in an empty folder.
[[nodiscard]] QString exampleName(const NamingControls& controls, const QDateTime& now);

} // namespace rules
