// A device of the SANE driver on a script, with short limits: what the tests of its topics share.
#pragma once

#include "tests/scanlib/device/scripted_sane.h"

#include <gtest/gtest.h>

namespace device_tests {

class SaneScript : public testing::Test
{
protected:
    SaneScript();
    ~SaneScript() override;

    void makeDriver();
    void open();
    std::size_t source(orva::SourceKind kind) const;
    orva::Status configure(orva::SourceKind kind = orva::SourceKind::kFeeder,
        orva::ColorMode mode = orva::ColorMode::kGray, bool doubleFeed = false,
        orva::ColorDropout dropout = orva::ColorDropout::kNone);
    /// First pixel of each page, then the code that ended the job, 1000 for the end of feed.
    std::vector<int> runJob();
    void addSensor(const char* name)
    {
        m_script.addOption({ name, SANE_TYPE_BOOL, SANE_UNIT_NONE, false });
    }
    void addChoice(const char* name, const std::vector<std::string>& texts)
    {
        m_script.addOption({ name, SANE_TYPE_STRING, SANE_UNIT_NONE, true, texts });
    }

    ScriptedSane m_script;
    orva::SaneParts m_parts;
    std::unique_ptr<orva::Driver> m_driver;
    std::unique_ptr<orva::Device> m_device;
    orva::CancelToken m_token;
    std::vector<std::string> m_origins; ///< sheet and side of the pages of runJob
};

} // namespace device_tests
