#include "tests/scanlib/device/script_fixture.h"

namespace device_tests {

using namespace std::chrono_literals;

SaneScript::SaneScript()
{
    m_parts.launcher = m_script.launcher();
    m_parts.groups = [] { return std::vector<orva::BackendGroup> { { "script", "" } }; };
    orva::SaneLimits& limits = m_parts.limits;
    limits.start = limits.read = limits.poll = limits.endBatch = 300ms;
    limits.open = limits.configure = limits.stop = 500ms;
    limits.hung = 700ms;
    limits.cancel = 400ms;
    limits.search = 1000ms;
    limits.searchPause = 0ms;
    addChoice("source", { "Flatbed", "ADF Front", "ADF Back", "ADF Duplex" });
    addChoice("mode", { "Lineart", "Halftone", "Gray", "Color" });
    m_script.addOption({ "resolution", SANE_TYPE_INT, SANE_UNIT_DPI, true, {}, {}, 50, 600 });
    for (const char* edge : { "tl-x", "br-x" }) {
        m_script.addOption({ edge, SANE_TYPE_FIXED, SANE_UNIT_MM, true, {}, {}, 0, 216 });
    }
    for (const char* edge : { "tl-y", "br-y" }) {
        m_script.addOption({ edge, SANE_TYPE_FIXED, SANE_UNIT_MM, true, {}, {}, 0, 356 });
    }
}

SaneScript::~SaneScript()
{
    m_script.releaseSilence();
    m_device.reset();
    m_driver.reset();
}

void SaneScript::makeDriver()
{
    m_driver = orva::makeSaneDriver(m_parts);
}

void SaneScript::open()
{
    makeDriver();
    const auto found = m_driver->enumerate(1s);
    ASSERT_FALSE(found.empty());
    m_device = m_driver->create(found.front());
    ASSERT_EQ(m_device->open().code(), orva::kOk);
}

std::size_t SaneScript::source(orva::SourceKind kind) const
{
    for (std::size_t i = 0; i < m_device->sources().size(); ++i) {
        if (m_device->sources()[i].kind == kind) {
            return i;
        }
    }
    ADD_FAILURE() << "no such source";
    return 0;
}

orva::Status SaneScript::configure(
    orva::SourceKind kind, orva::ColorMode mode, bool doubleFeed, orva::ColorDropout dropout)
{
    orva::AcquireSettings settings;
    settings.source = source(kind);
    settings.area = { "A5", 10, 20, 148, 210 };
    settings.dpiX = settings.dpiY = 300;
    settings.mode = mode;
    settings.detectDoubleFeed = doubleFeed;
    settings.dropout = dropout;
    return m_device->configure(settings);
}

std::vector<int> SaneScript::runJob()
{
    std::vector<int> seen;
    for (;;) {
        orva::Page page;
        bool end = false;
        const orva::Status status = m_device->nextPage(page, end, m_token);
        if (!status.ok() || end) {
            seen.push_back(status.ok() ? 1000 : status.code());
            break;
        }
        m_origins.push_back(
            std::to_string(page.sheet) + (page.side == orva::Side::kBack ? "b" : "f"));
        seen.push_back(page.pixels.at(0));
    }
    m_device->endBatch();
    return seen;
}

} // namespace device_tests
