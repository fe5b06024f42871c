// The parts below the session: a device that does what a script tells, encoder, writer, driver,
// tools.
#include "tests/scanlib/session/fakes.h"

#include <unistd.h>

#include <cstdio>

using namespace orva;

namespace fakes {

namespace {

class InsideDevice
{
public:
    explicit InsideDevice(DeviceScript& script)
        : m_script(script)
    {
        if (m_script.inside.fetch_add(1) != 0) {
            m_script.overlapped = true;
        }
    }
    ~InsideDevice() { --m_script.inside; }

private:
    DeviceScript& m_script;
};

class FakeDevice : public Device
{
public:
    FakeDevice(DeviceScript& script, DeviceIdentity identity)
        : m_script(script)
        , m_identity(std::move(identity))
    {
        const std::vector<PaperSize> flat { { "A4", 0, 0, 210, 297 }, { "自动", 0, 0, 216, 300 } };
        const std::vector<PaperSize> feeder { { "A4", 0, 0, 210, 297 }, { "A5", 0, 0, 148, 210 },
            { "自动", 0, 0, 216, 900 } };
        m_sources = { { "平板", SourceKind::kFlatbed, 216, 300, flat, { 75, 200, 4800 } },
            { "ADF单面", SourceKind::kFeeder, 216, 900, feeder, { 100, 200, 300 } } };
    }

    const DeviceIdentity& identity() const override { return m_identity; }
    Status open() override
    {
        const InsideDevice inside(m_script);
        ++m_script.opens;
        if (m_script.openHangs) {
            std::unique_lock<std::mutex> lock(m_mutex);
            m_cancelled = false;
            m_wake.wait_for(lock, 10s, [this] { return m_cancelled; });
            return { kCancelled, "open" };
        }
        m_identity.serial = "A-after-open";
        return {};
    }
    const std::vector<PaperSource>& sources() const override { return m_sources; }
    Status configure(const AcquireSettings& settings) override
    {
        const InsideDevice inside(m_script);
        m_script.settings = settings;
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_cancelled = false;
        m_side = 0;
        return {};
    }

    Status nextPage(Page& page, bool& endOfFeed, const CancelToken& cancel) override
    {
        const InsideDevice inside(m_script);
        {
            std::unique_lock<std::mutex> lock(m_mutex);
            ++m_script.waits;
            m_wake.wait_for(lock, m_script.perSide, [this] { return m_cancelled; });
            if (m_cancelled || cancel.cancelled()) {
                return { kCancelled, "cancelled" };
            }
        }
        const int sides = m_script.duplex ? 2 * m_script.sheets : m_script.sheets;
        if (m_side >= sides) {
            endOfFeed = true;
            return sides == 0 ? Status(kNoPaper, "empty") : Status();
        }
        ++m_side;
        if (const auto fault = m_script.faultAtSide.find(m_side);
            fault != m_script.faultAtSide.end()) {
            return { fault->second, "scripted" };
        }
        page.allocate(m_script.sidePixels, m_script.sidePixels, PixelFormat::kGray);
        page.pixels[0] = static_cast<std::uint8_t>(m_side);
        page.dpiX = page.dpiY = 200;
        page.sheet = m_script.duplex ? (m_side + 1) / 2 : m_side;
        page.side = m_script.duplex && m_side % 2 == 0 ? Side::kBack : Side::kFront;
        ++m_script.delivered;
        return {};
    }
    void endBatch() override { ++m_script.endBatches; }
    void requestCancel() noexcept override
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_cancelled = true;
        m_wake.notify_all();
    }

    Status hasPaper(bool& result) override
    {
        const InsideDevice inside(m_script);
        result = m_script.paper;
        return {};
    }
    Status pressedButton(int& value) override
    {
        const InsideDevice inside(m_script);
        value = m_script.button;
        return {};
    }
    Status timing(DeviceTiming& result) override
    {
        result = m_script.timing;
        return {};
    }
    Status setTimes(int /*sleep*/, int /*autoOff*/) override { return {}; }
    Status setPrefeed(bool /*enable*/, float /*seconds*/) override { return {}; }

private:
    DeviceScript& m_script;
    DeviceIdentity m_identity;
    std::vector<PaperSource> m_sources;
    std::mutex m_mutex;
    std::condition_variable m_wake;
    bool m_cancelled = false;
    int m_side = 0;
};

PageScript* g_script = nullptr; // formats are made by plain functions

class FakeEncoder : public PageEncoder
{
public:
    Status encode(
        const Page& page, const EncodeOptions& /*options*/, EncodedPage& out) const override
    {
        out.number = page.number;
        out.sheet = page.sheet;
        out.side = page.side;
        out.stream = page.stream;
        const std::string text = "page " + std::to_string(page.number) + "\n";
        out.bytes.assign(text.begin(), text.end());
        if (g_script->duringEncode) {
            g_script->duringEncode(page.number);
        }
        ++g_script->encoded;
        return {};
    }
};

class FakeWriter : public DocumentWriter
{
public:
    ~FakeWriter() override
    {
        if (m_file != nullptr) {
            std::fclose(m_file);
        }
    }
    Status begin(const std::filesystem::path& path, const DocumentInfo& /*info*/) override
    {
        m_file = std::fopen(path.c_str(), "wb");
        return m_file != nullptr ? Status() : fileFailure(errno, path);
    }
    Status addPage(const EncodedPage& page) override
    {
        if (page.number == g_script->failWriterAtPage) {
            return { kDiskFull, "scripted" };
        }
        const std::string text = contentOf(page.file);
        ++m_pages;
        return text.empty() ? Status(kFileWrite, "the payload is not there") : put(text);
    }
    Status finish() override
    {
        Status status = put("end " + std::to_string(m_pages) + "\n");
        std::fclose(m_file);
        m_file = nullptr;
        return status;
    }

private:
    Status put(const std::string& text)
    {
        const bool written = std::fwrite(text.data(), 1, text.size(), m_file) == text.size()
            && std::fflush(m_file) == 0;
        return written ? Status() : fileFailure(errno, "output");
    }

    std::FILE* m_file = nullptr;
    int m_pages = 0;
};

std::unique_ptr<PageEncoder> makeFakeEncoder()
{
    return std::make_unique<FakeEncoder>();
}

std::unique_ptr<DocumentWriter> makeFakeWriter()
{
    return std::make_unique<FakeWriter>();
}

const OutputFormat kFormats[] = { { FileFormat::kJpg, false, false, makeFakeEncoder,
                                      makeFakeWriter },
    { FileFormat::kPdf, true, false, makeFakeEncoder, makeFakeWriter } };

} // namespace

FakeDriver::FakeDriver(DeviceScript& script, std::vector<DeviceIdentity> devices)
    : list(std::move(devices))
    , m_script(script)
{
    if (list.empty()) {
        DeviceIdentity only;
        only.key = "fake:0";
        only.name = "Fake 1";
        list.push_back(only);
    }
}

std::vector<DeviceIdentity> FakeDriver::enumerate(std::chrono::milliseconds /*limit*/)
{
    return list;
}

std::unique_ptr<Device> FakeDriver::create(const DeviceIdentity& identity)
{
    return std::make_unique<FakeDevice>(m_script, identity);
}

PageTools fakeTools(PageScript& script)
{
    g_script = &script;
    PageTools tools;
    tools.imageSettings = [](const ImageParam&, ColorMode mode) {
        ImageSettings settings;
        settings.mode = mode;
        return settings;
    };
    tools.needsWholeSheet = [&](const ImageSettings&) { return script.wholeSheets; };
    tools.runOperations = [&](PageGroup& group, const ImageSettings&) -> Status {
        ++script.groups;
        if (group.front().number == script.failOperationsAt) {
            return { kDamagedPage, "scripted" };
        }
        if (group.front().number == script.blankSide) {
            group.clear();
        }
        return {};
    };
    tools.findOutputFormat = [](FileFormat wanted) -> const OutputFormat* {
        for (const OutputFormat& format : kFormats) {
            if (format.format == wanted) {
                return &format;
            }
        }
        return nullptr;
    };
    return tools;
}

} // namespace fakes
