#include "scanlib/device/sane/host_messages.h"

namespace orva {

namespace {

void put(WireWriter& to, const PaperSize& paper)
{
    to.put(paper.name).put(paper.leftMm).put(paper.topMm).put(paper.widthMm).put(paper.heightMm);
}

PaperSize getPaper(WireReader& from)
{
    PaperSize paper;
    paper.name = from.text();
    for (double* value : { &paper.leftMm, &paper.topMm, &paper.widthMm, &paper.heightMm }) {
        *value = from.get<double>();
    }
    return paper;
}

void put(WireWriter& to, const TimingCapability& time)
{
    to.put(time.enabled).put(time.min).put(time.max).put(time.step).put(time.unit).put(time.value);
}

TimingCapability getTime(WireReader& from)
{
    TimingCapability time;
    time.enabled = from.flag();
    for (int* value : { &time.min, &time.max, &time.step }) {
        *value = from.get<int>();
    }
    time.unit = from.get<char>();
    time.value = from.get<int>();
    return time;
}

/// A list whose length is in front; ends early when the message does.
template <typename Item, typename Read>
std::vector<Item> getList(WireReader& from, Read read)
{
    std::vector<Item> items;
    for (auto count = from.get<std::uint32_t>(); count > 0 && from.ok(); --count) {
        items.push_back(read(from));
    }
    return items;
}

std::uint32_t sizeOf(std::size_t count)
{
    return static_cast<std::uint32_t>(count);
}

} // namespace

void put(WireWriter& to, const Status& status)
{
    constexpr std::size_t kLongest = 1000;
    to.put(status.code()).put(std::string_view(status.detail()).substr(0, kLongest));
}

Status getStatus(WireReader& from)
{
    const auto code = from.get<ResultCode>();
    const std::string detail = from.text();
    return { from.ok() ? code : kDeviceIo, detail };
}

void put(WireWriter& to, const OpenRequest& request)
{
    to.put(request.key).put(request.type).put(sizeOf(request.overrides.size()));
    for (const auto& [key, value] : request.overrides) {
        to.put(key).put(value);
    }
}

OpenRequest getOpenRequest(WireReader& from)
{
    OpenRequest request;
    request.key = from.text();
    request.type = from.text();
    request.overrides = getList<std::pair<std::string, std::string>>(from, [](WireReader& reader) {
        std::string key = reader.text();
        return std::pair(std::move(key), reader.text());
    });
    return request;
}

void put(WireWriter& to, const std::vector<FoundDevice>& devices)
{
    constexpr std::size_t kRoom = kWireMostBytes - 4096;
    WireWriter list;
    std::uint32_t count = 0;
    for (const FoundDevice& device : devices) {
        WireWriter one;
        one.put(device.key).put(device.vendor).put(device.model).put(device.type);
        if (list.size() + one.size() > kRoom) {
            break;
        }
        list.put(device.key).put(device.vendor).put(device.model).put(device.type);
        ++count;
    }
    to.put(count);
    for (const std::uint8_t byte : list.take()) {
        to.put(byte);
    }
}

std::vector<FoundDevice> getFoundDevices(WireReader& from)
{
    return getList<FoundDevice>(from, [](WireReader& reader) {
        FoundDevice device;
        for (std::string* text : { &device.key, &device.vendor, &device.model, &device.type }) {
            *text = reader.text();
        }
        return device;
    });
}

void put(WireWriter& to, const std::vector<PaperSource>& sources)
{
    to.put(sizeOf(sources.size()));
    for (const PaperSource& source : sources) {
        to.put(source.name).put(source.kind).put(source.maxWidthMm).put(source.maxHeightMm);
        to.put(source.dropsColor).put(sizeOf(source.papers.size()));
        for (const PaperSize& paper : source.papers) {
            put(to, paper);
        }
        to.put(sizeOf(source.resolutions.size()));
        for (const int dpi : source.resolutions) {
            to.put(dpi);
        }
    }
}

std::vector<PaperSource> getSources(WireReader& from)
{
    return getList<PaperSource>(from, [](WireReader& reader) {
        PaperSource source;
        source.name = reader.text();
        source.kind = reader.get<SourceKind>();
        source.maxWidthMm = reader.get<double>();
        source.maxHeightMm = reader.get<double>();
        source.dropsColor = reader.flag();
        source.papers = getList<PaperSize>(reader, getPaper);
        source.resolutions = getList<int>(reader, [](WireReader& one) { return one.get<int>(); });
        return source;
    });
}

void put(WireWriter& to, const AcquireSettings& settings)
{
    to.put(static_cast<std::uint64_t>(settings.source));
    put(to, settings.area);
    to.put(settings.dpiX).put(settings.dpiY).put(settings.mode);
    to.put(settings.detectDoubleFeed).put(settings.dropout);
}

AcquireSettings getSettings(WireReader& from)
{
    AcquireSettings settings;
    settings.source = static_cast<std::size_t>(from.get<std::uint64_t>());
    settings.area = getPaper(from);
    settings.dpiX = from.get<int>();
    settings.dpiY = from.get<int>();
    settings.mode = from.get<ColorMode>();
    settings.detectDoubleFeed = from.flag();
    settings.dropout = from.get<ColorDropout>();
    return settings;
}

void put(WireWriter& to, const DeviceTiming& timing)
{
    put(to, timing.sleep);
    put(to, timing.autoOff);
}

DeviceTiming getTiming(WireReader& from)
{
    DeviceTiming timing;
    timing.sleep = getTime(from);
    timing.autoOff = getTime(from);
    return timing;
}

void put(WireWriter& to, const FrameShape& shape)
{
    to.put(shape.format).put(shape.bytesPerLine).put(shape.pixelsPerLine);
    to.put(shape.lines).put(shape.depth);
}

FrameShape getFrameShape(WireReader& from)
{
    FrameShape shape;
    shape.format = from.get<FrameFormat>();
    for (int* value : { &shape.bytesPerLine, &shape.pixelsPerLine, &shape.lines, &shape.depth }) {
        *value = from.get<int>();
    }
    return shape;
}

void put(WireWriter& to, const SideReport& report)
{
    to.put(report.endOfFeed).put(report.makeGray).put(report.dpiX).put(report.dpiY);
    to.put(report.sheet).put(report.side);
}

SideReport getSideReport(WireReader& from)
{
    SideReport report;
    report.endOfFeed = from.flag();
    report.makeGray = from.flag();
    report.dpiX = from.get<double>();
    report.dpiY = from.get<double>();
    report.sheet = from.get<int>();
    report.side = from.get<Side>();
    return report;
}

} // namespace orva
