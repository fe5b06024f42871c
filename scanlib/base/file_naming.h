// How output files are named: prefix, separator, then a time stamp or a serial number. Only the
// names; whether a name is free is for the output store.
#pragma once

#include "scanlib/base/status.h"
#include "sdk/codes.h"

#include <chrono>
#include <functional>
#include <string>
#include <unordered_set>

namespace orva {

struct NamingRule
{
    std::string prefix; ///< UTF-8; may be empty
    std::string separator; ///< UTF-8; stands behind the prefix and between the fields of a stamp
    bool timeNamed = true; ///< time stamp, else serial number
    DateOrder order = DateOrder::kYearMonthDay; ///< kUnknown is taken as year-month-day
    std::string serialStart; ///< "0007", "A12", "A"; see serialAt
};

using WallClock = std::function<std::chrono::system_clock::time_point()>;

/// Local time to the millisecond, 24 hours: yyyyMMddhhmmsszzz, MMddyyyyhhmmsszzz or
/// ddMMyyyyhhmmsszzz, with the separator between each two fields.
std::string timeStamp(
    std::chrono::system_clock::time_point time, DateOrder order, const std::string& separator);

/// Serial of the n-th file of a job, from 0. The digits at the end of the start count up in as many
/// digits, an overflow takes one more (007, 008; A99, A100); a start without digits at its end
/// stands alone first and then has 1, 2, 3 ... behind it; an empty one counts 1, 2, 3 ...
std::string serialAt(const std::string& start, unsigned long long n);

/// kBadFileName when the rule cannot give a file name: "/" or a control character in a part of it.
Status checkNamingRule(const NamingRule& rule);

/// The names of one job, without extension, one after the other; no two are equal: a stamp that
/// comes again (two files in one millisecond, the end of summer time) moves on to the next
/// millisecond.
class NameSequence
{
public:
    /// `given` serials are left out: files of the job that exist already.
    explicit NameSequence(NamingRule rule, unsigned long long given = 0,
        WallClock clock = std::chrono::system_clock::now);

    /// The tag of a stream (empty for none) stands at the end, behind the separator or "_".
    std::string next(const std::string& streamTag);
    /// true when nobody chose the numbers: names that are taken in the folder are passed over.
    bool passesOverTakenNames() const { return !m_rule.timeNamed && m_rule.serialStart.empty(); }

private:
    std::string nextStamp();

    NamingRule m_rule;
    WallClock m_clock;
    unsigned long long m_serials; ///< given so far
    std::unordered_set<std::string> m_stamps; ///< given so far
    std::chrono::system_clock::time_point m_latest; ///< of those
};

} // namespace orva
