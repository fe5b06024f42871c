// Result of a library operation: a code of sdk/result_codes.h and, for the library's log, what
// happened.
#pragma once

#include "sdk/result_codes.h"

#include <string>
#include <utility>

namespace orva {

class [[nodiscard]] Status
{
public:
    Status() = default;
    Status(ResultCode code, std::string detail)
        : m_code(code)
        , m_detail(std::move(detail))
    {
    }

    bool ok() const { return m_code == kOk; }
    ResultCode code() const { return m_code; }
    /// For the log, in English; empty when ok.
    const std::string& detail() const { return m_detail; }

private:
    ResultCode m_code = kOk;
    std::string m_detail;
};

} // namespace orva
