// The options of an open scanner, copied from the driver's descriptors and read again whenever the
// driver says so. SANE thread only.
#pragma once

#include "scanlib/device/sane_host/sane_api.h"
#include "scanlib/device/sane_host/sane_words.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orva {

struct SaneOption
{
    SANE_Int index = 0;
    std::string name;
    SANE_Value_Type type = SANE_TYPE_INT;
    SANE_Unit unit = SANE_UNIT_NONE;
    SANE_Int size = 0;
    SANE_Int capabilities = 0;
    std::vector<std::string> texts; ///< allowed values
    std::vector<double> numbers; ///< allowed values
    bool hasRange = false;
    double min = 0;
    double max = 0;
    double step = 0; ///< 0: any

    bool active() const { return SANE_OPTION_IS_ACTIVE(capabilities); }
    bool settable() const { return active() && SANE_OPTION_IS_SETTABLE(capabilities); }
    bool readable() const { return active() && (capabilities & SANE_CAP_SOFT_DETECT) != 0; }
    /// The allowed value next to the one wanted.
    double nearest(double value) const;
};

class SaneOptions
{
public:
    SaneOptions(const SaneApi& api, SANE_Handle handle);

    Status reload();
    /// nullptr when there is none, or it is inactive.
    const SaneOption* find(std::string_view name) const;
    const SaneOption* findAny(const Words& names) const;
    const SaneOption* findSettable(std::string_view name) const;

    /// Booleans and numbers; empty when it cannot be read.
    std::optional<double> number(const SaneOption& option) const;
    std::optional<std::string> text(const SaneOption& option) const;

    // These take the name: setting one option may replace all descriptors.
    /// The nearest allowed value is set. kNotSupported when there is no such option to set.
    Status setNumber(const std::string& name, double value);
    Status setText(const std::string& name, const std::string& value);
    Status press(const std::string& name);

private:
    Status set(const SaneOption& option, void* value);

    const SaneApi& m_api;
    SANE_Handle m_handle;
    std::vector<SaneOption> m_options;
};

/// The first word of the list that the option allows; empty when none is.
std::string allowedWord(const SaneOption& option, const Words& words);

} // namespace orva
