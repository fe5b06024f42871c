#include "mainwindow/rules/naming_rules.h"

#include "mainwindow/rules/param_codes.h"
#include "sdk/codes.h"

#include <QByteArray>
#include <QRegularExpression>

#include <cmath>
#include <limits>

namespace rules {

namespace {

bool isDecimal(QChar c)
{
    return c >= QLatin1Char('0') && c <= QLatin1Char('9');
}

/// Adds n to a decimal text of any length, keeping its width; an overflow grows it by a digit.
QString addedTo(QString digits, qint64 n)
{
    qint64 carry = n;
    for (int i = digits.size() - 1; i >= 0 && carry > 0; --i) {
        const qint64 sum = digits.at(i).unicode() - u'0' + carry % 10;
        digits[i] = QChar(static_cast<ushort>(u'0' + sum % 10));
        carry = carry / 10 + sum / 10;
    }
    return carry > 0 ? QString::number(carry) + digits : digits;
}

/// A text that a date format takes as it stands. Digits, signs and Chinese are so anyway.
QString literal(const QString& text)
{
    QString quoted = text;
    quoted.replace(QLatin1Char('\''), QLatin1String("''"));
    return text.isEmpty() ? text : QLatin1Char('\'') + quoted + QLatin1Char('\'');
}

} // namespace

bool isPrefix(const QString& text)
{
    static const QRegularExpression pattern(
        QRegularExpression::anchoredPattern(QLatin1String(kPrefixPattern)));
    return text.size() <= kPrefixMaxLength && pattern.match(text).hasMatch();
}

bool isSerialStart(const QString& text)
{
    static const QRegularExpression pattern(
        QRegularExpression::anchoredPattern(QLatin1String(kSerialPattern)));
    return text.isEmpty() || (text.size() <= kSerialMaxLength && pattern.match(text).hasMatch());
}

QString separatorValue(const QString& separatorText)
{
    return separatorText == QString::fromUtf8(kSeparatorTexts[0]) ? QString() : separatorText;
}

QString timeStampFormat(const QString& separatorText, const QString& dateOrder)
{
    const QString value = separatorValue(separatorText);
    const bool plain =
        value.isEmpty() || value == QLatin1String("-") || value == QLatin1String("_");
    const QString separator = plain ? value : literal(value);

    QStringList date { "yyyy", "MM", "dd" };
    const int order = timeNameTypeCode(dateOrder);
    if (order == static_cast<int>(orva::DateOrder::kMonthDayYear)) {
        date = QStringList { "MM", "dd", "yyyy" };
    } else if (order == static_cast<int>(orva::DateOrder::kDayMonthYear)) {
        date = QStringList { "dd", "MM", "yyyy" };
    }
    return (date + QStringList { "hh", "mm", "ss", "zzz" }).join(separator);
}

QString timeStamp(const QDateTime& time, const QString& separatorText, const QString& dateOrder)
{
    return time.toString(timeStampFormat(separatorText, dateOrder));
}

QString paddedSerial(const QString& text, int digits)
{
    return text.rightJustified(digits, QLatin1Char('0'));
}

QString defStartBit(const QString& text, int digits)
{
    return digits == 0 ? QString() : paddedSerial(text, digits);
}

QString serialAt(const QString& paddedStart, qint64 n)
{
    if (paddedStart.isEmpty()) {
        return QString::number(n + 1);
    }
    int firstDigit = paddedStart.size();
    while (firstDigit > 0 && isDecimal(paddedStart.at(firstDigit - 1))) {
        --firstDigit;
    }
    if (firstDigit == paddedStart.size()) {
        return n == 0 ? paddedStart : paddedStart + QString::number(n);
    }
    return paddedStart.left(firstDigit) + addedTo(paddedStart.mid(firstDigit), n);
}

SerialAdvance advanceSerial(const QString& startText, int digits, int savedFiles)
{
    SerialAdvance advance;
    advance.digits = digits;
    if (savedFiles <= 0 || digits == 0) {
        advance.text = startText;
        return advance;
    }
    const QString start = paddedSerial(startText, digits);
    const QString next = serialAt(start, savedFiles);
    advance.exhausted = next.size() > kSerialMaxLength;
    advance.text = advance.exhausted ? startText : next;
    advance.grew = !advance.exhausted && next.size() > digits;
    advance.digits = advance.grew ? static_cast<int>(next.size()) : digits;
    return advance;
}

SerialFieldChange serialDigitsChanged(int digits, const QString& text)
{
    SerialFieldChange change;
    if (digits == 0) {
        return change;
    }
    change.text = text.left(digits);
    change.integerValidator = true;
    change.top = serialValidatorTop(digits);
    change.refreshExample = true;
    return change;
}

int serialValidatorTop(int digits)
{
    const double top = std::pow(10.0, digits);
    constexpr int kLargest = std::numeric_limits<int>::max();
    return top >= static_cast<double>(kLargest) ? kLargest : static_cast<int>(top);
}

QString extensionOf(const QString& fileTypeText)
{
    const auto code = static_cast<orva::FileFormat>(fileFormatCode(fileTypeText));
    for (const orva::FormatName& name : orva::kFormatNames) {
        if (name.format == code) {
            return QString::fromUtf8(
                name.extension.data(), static_cast<int>(name.extension.size()));
        }
    }
    return {};
}

namespace {

/// Each side gives a file for every stream.
QString streamTail(const NamingControls& controls)
{
    if (!controls.severalStreams) {
        return {};
    }
    const QString separator = separatorValue(controls.separator);
    const std::string_view tag = orva::kStreamTags.front();
    return (separator.isEmpty() ? QStringLiteral("_") : separator)
        + QLatin1String(tag.data(), static_cast<int>(tag.size()));
}

} // namespace

QString exampleName(const NamingControls& controls, const QDateTime& now)
{
    const QString head = controls.prefix.isEmpty()
        ? QString()
        : controls.prefix + separatorValue(controls.separator);
    const QString number = controls.byTime
        ? timeStamp(now, controls.separator, controls.dateOrder)
        : serialAt(defStartBit(controls.serialStart, controls.serialDigits), 0);
    return head + number + streamTail(controls) + QLatin1Char('.') + extensionOf(controls.fileType);
}

} // namespace rules
