#include "scanlib/base/file_naming.h"

#include "scanlib/base/local_time.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <ctime>
#include <initializer_list>

namespace orva {

namespace {

std::string joined(std::initializer_list<std::string> fields, const std::string& separator)
{
    std::string text;
    for (const std::string& field : fields) {
        text += text.empty() ? field : separator + field;
    }
    return text;
}

std::string digits(int value, int width)
{
    std::array<char, 16> text {};
    std::snprintf(text.data(), text.size(), "%0*d", width, value);
    return text.data();
}

bool fitsIntoName(const std::string& text)
{
    return std::none_of(text.begin(), text.end(), [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return c == '/' || byte < 0x20 || byte == 0x7F;
    });
}

} // namespace

std::string timeStamp(
    std::chrono::system_clock::time_point time, DateOrder order, const std::string& separator)
{
    const auto sinceEpoch = std::chrono::floor<std::chrono::milliseconds>(time.time_since_epoch());
    const auto wholeSeconds = std::chrono::floor<std::chrono::seconds>(sinceEpoch);
    const auto ms = static_cast<int>((sinceEpoch - wholeSeconds).count());
    const std::tm local = localTime(wholeSeconds.count());

    const std::string year = digits(local.tm_year + 1900, 4);
    const std::string month = digits(local.tm_mon + 1, 2);
    const std::string day = digits(local.tm_mday, 2);
    std::string date;
    switch (order) {
    case DateOrder::kMonthDayYear:
        date = joined({ month, day, year }, separator);
        break;
    case DateOrder::kDayMonthYear:
        date = joined({ day, month, year }, separator);
        break;
    case DateOrder::kYearMonthDay:
    case DateOrder::kUnknown:
        date = joined({ year, month, day }, separator);
        break;
    }
    return joined({ date, digits(local.tm_hour, 2), digits(local.tm_min, 2),
                      digits(local.tm_sec, 2), digits(ms, 3) },
        separator);
}

std::string serialAt(const std::string& start, unsigned long long n)
{
    const std::size_t lastOther = start.find_last_not_of("0123456789");
    const std::size_t digitsBegin = lastOther == std::string::npos ? 0 : lastOther + 1;
    const std::string head = start.substr(0, digitsBegin);
    std::string counter = start.substr(digitsBegin);
    if (counter.empty()) {
        const bool alone = n == 0 && !head.empty();
        return alone ? head : head + std::to_string(head.empty() ? n + 1 : n);
    }
    // Added in decimal, so that no start is too long for a machine number.
    for (std::size_t place = counter.size(); n > 0; n /= 10) {
        if (place == 0) {
            counter.insert(counter.begin(), '0');
            place = 1;
        }
        const unsigned long long sum = static_cast<unsigned>(counter[--place] - '0') + n % 10;
        counter[place] = static_cast<char>('0' + sum % 10);
        n += sum / 10 * 10; // carry into the next round's digit
    }
    return head + counter;
}

Status checkNamingRule(const NamingRule& rule)
{
    if (!fitsIntoName(rule.prefix) || !fitsIntoName(rule.separator)
        || !fitsIntoName(rule.serialStart)) {
        return { kBadFileName, "a part of the name cannot stand in a file name" };
    }
    return {};
}

NameSequence::NameSequence(NamingRule rule, unsigned long long given, WallClock clock)
    : m_rule(std::move(rule))
    , m_clock(std::move(clock))
    , m_serials(given)
{
}

std::string NameSequence::nextStamp()
{
    auto time = m_clock();
    std::string stamp = timeStamp(time, m_rule.order, m_rule.separator);
    while (!m_stamps.insert(stamp).second) {
        time = std::max(time, m_latest) + std::chrono::milliseconds(1);
        stamp = timeStamp(time, m_rule.order, m_rule.separator);
    }
    m_latest = std::max(time, m_latest);
    return stamp;
}

std::string NameSequence::next(const std::string& streamTag)
{
    const std::string head = m_rule.prefix.empty() ? "" : m_rule.prefix + m_rule.separator;
    const std::string tagMark = m_rule.separator.empty() ? "_" : m_rule.separator;
    const std::string tail = streamTag.empty() ? "" : tagMark + streamTag;
    return head + (m_rule.timeNamed ? nextStamp() : serialAt(m_rule.serialStart, m_serials++))
        + tail;
}

} // namespace orva
