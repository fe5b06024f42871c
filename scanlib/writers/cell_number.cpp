#include "scanlib/writers/cell_number.h"

#include <charconv>
#include <string_view>

namespace orva {

namespace {

constexpr std::size_t kMaxDigits = 15; // all of them survive in a double
constexpr std::size_t kMaxDecimals = 6;
constexpr std::size_t kGroup = 3;

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

/// Takes the digits in front off; commas only between groups of three. false when they stand
/// elsewhere.
bool takeWhole(std::string_view& rest, std::string& digits, bool& grouped)
{
    std::size_t inGroup = 0;
    for (; !rest.empty() && (isDigit(rest.front()) || rest.front() == ','); rest.remove_prefix(1)) {
        if (isDigit(rest.front())) {
            digits += rest.front();
            ++inGroup;
            continue;
        }
        const bool fits = grouped ? inGroup == kGroup : inGroup >= 1 && inGroup <= kGroup;
        if (!fits) {
            return false;
        }
        grouped = true;
        inGroup = 0;
    }
    return !digits.empty() && (!grouped || inGroup == kGroup)
        && (digits.size() == 1 || digits.front() != '0');
}

} // namespace

std::optional<CellNumber> cellNumberOf(const std::string& text)
{
    std::string_view rest = text;
    const bool negative = !rest.empty() && rest.front() == '-';
    rest.remove_prefix(negative ? 1 : 0);
    std::string digits;
    bool grouped = false;
    if (!takeWhole(rest, digits, grouped)) {
        return {};
    }
    std::size_t decimals = 0;
    std::size_t digitCount = digits.size();
    if (!rest.empty() && rest.front() == '.') {
        digits += '.';
        for (rest.remove_prefix(1); !rest.empty() && isDigit(rest.front()); rest.remove_prefix(1)) {
            digits += rest.front();
            ++decimals;
        }
        digitCount += decimals;
        if (decimals == 0) {
            return {};
        }
    }
    const bool percent = rest == "%";
    if ((!percent && !rest.empty()) || digitCount > kMaxDigits || decimals > kMaxDecimals) {
        return {};
    }
    CellNumber number;
    std::from_chars(digits.data(), digits.data() + digits.size(), number.value);
    if (negative && number.value == 0) {
        return {}; // the sign would go
    }
    number.value *= (negative ? -1 : 1) * (percent ? 0.01 : 1);
    number.format = grouped ? "#,##0" : "0";
    number.format += (decimals > 0 ? "." : "") + std::string(decimals, '0') + (percent ? "%" : "");
    return number;
}

} // namespace orva
