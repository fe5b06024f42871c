// Session: what the scanner offers and the settings of the next job.
#include "scanlib/base/library_log.h"
#include "scanlib/session/output_settings.h"
#include "scanlib/session/session.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace orva {

namespace {

constexpr std::string_view kDefaultPaper = "A4";
constexpr int kDefaultDpi = 200;
constexpr double kAreaToleranceMm = 0.5; ///< drivers count in steps of their own

template <typename List>
bool isIndexOf(const List& list, int index)
{
    return index >= 0 && static_cast<std::size_t>(index) < list.size();
}

/// The item with the name, else the one with the other name, else the first; nothing in an empty
/// list.
const PaperSize* paperNamed(
    const PaperSource& source, std::string_view name, std::string_view other)
{
    for (const std::string_view wanted : { name, other }) {
        for (const PaperSize& paper : source.papers) {
            if (paper.name == wanted) {
                return &paper;
            }
        }
    }
    return source.papers.empty() ? nullptr : &source.papers.front();
}

int nearestResolution(const PaperSource& source, int wanted)
{
    const auto nearest = std::min_element(source.resolutions.begin(), source.resolutions.end(),
        [&](int a, int b) { return std::abs(a - wanted) < std::abs(b - wanted); });
    return nearest == source.resolutions.end() ? wanted : *nearest;
}

bool hasResolution(const PaperSource& source, int dpi)
{
    const std::vector<int>& list = source.resolutions;
    return std::find(list.begin(), list.end(), dpi) != list.end();
}

/// Brightness, contrast, threshold and ten times gamma by document type, in the order of the list:
/// text with pictures, documents, pictures.
constexpr stFileTypeParam kDocumentTypes[] = {
    { 0, 0, 0, 18, 38, 128, 11 },
    { 1, 0, 0, 10, 50, 150, 10 },
    { 2, 0, 0, 0, 0, 128, 10 },
};

} // namespace

Status Session::ensureOpened()
{
    if (!m_sources.empty()) {
        return {};
    }
    if (Status status = m_device->open(); !status.ok()) {
        libraryLog("open %s: %s", m_identity.name.c_str(), status.detail().c_str());
        return status;
    }
    std::vector<PaperSource> sources = m_device->sources();
    if (sources.empty()) {
        return { kDeviceIo, "the device has no paper source" };
    }
    m_sources = std::move(sources);
    const std::string listedName = m_identity.name;
    m_identity = m_device->identity();
    m_identity.name = listedName;
    const auto feeder = std::find_if(m_sources.begin(), m_sources.end(),
        [](const PaperSource& item) { return item.kind != SourceKind::kFlatbed; });
    m_acquire = {};
    m_acquire.dpiX = m_acquire.dpiY = kDefaultDpi;
    adoptSource(feeder == m_sources.end()
            ? 0
            : static_cast<std::size_t>(std::distance(m_sources.begin(), feeder)));
    return {};
}

/// Paper and resolution are kept where the source has them.
void Session::adoptSource(std::size_t index)
{
    m_acquire.source = index;
    if (const PaperSize* paper = paperNamed(source(), m_acquire.area.name, kDefaultPaper)) {
        m_acquire.area = *paper;
    } else {
        m_acquire.area = { "", 0, 0, source().maxWidthMm, source().maxHeightMm };
    }
    if (!hasResolution(source(), m_acquire.dpiX) || !hasResolution(source(), m_acquire.dpiY)) {
        m_acquire.dpiX = m_acquire.dpiY = nearestResolution(source(), kDefaultDpi);
    }
}

int Session::sourceCount()
{
    return withOpened(Need::kScanner, [&] { return static_cast<int>(m_sources.size()); });
}

int Session::sourceName(int index, std::string& name)
{
    return withOpened(Need::kScanner, [&]() -> int {
        if (!isIndexOf(m_sources, index)) {
            return kIndexOutOfRange;
        }
        name = m_sources[static_cast<std::size_t>(index)].name;
        return kOk;
    });
}

int Session::setSource(int index)
{
    return withOpened(Need::kFreeScanner, [&]() -> int {
        if (!isIndexOf(m_sources, index)) {
            return kIndexOutOfRange;
        }
        adoptSource(static_cast<std::size_t>(index));
        return kOk;
    });
}

int Session::currentSource()
{
    return withOpened(Need::kScanner, [&] { return static_cast<int>(m_acquire.source); });
}

int Session::setColorMode(int mode)
{
    return withOpened(Need::kFreeScanner, [&]() -> int {
        if (mode < static_cast<int>(ColorMode::kColor)
            || mode > static_cast<int>(ColorMode::kMultiStream)) {
            return kValueOutOfRange;
        }
        m_acquire.mode = static_cast<ColorMode>(mode);
        return kOk;
    });
}

int Session::colorMode()
{
    return withOpened(Need::kScanner, [&] { return static_cast<int>(m_acquire.mode); });
}

int Session::paperCount()
{
    return withOpened(Need::kScanner, [&] { return static_cast<int>(source().papers.size()); });
}

int Session::paperName(int index, std::string& name)
{
    PaperSize paper;
    const int code = paperSize(index, paper);
    name = paper.name;
    return code;
}

int Session::paperSize(int index, PaperSize& paper)
{
    return withOpened(Need::kScanner, [&]() -> int {
        if (!isIndexOf(source().papers, index)) {
            return kIndexOutOfRange;
        }
        paper = source().papers[static_cast<std::size_t>(index)];
        return kOk;
    });
}

int Session::paperSizeMax(double& widthMm, double& heightMm)
{
    return withOpened(Need::kScanner, [&] {
        widthMm = source().maxWidthMm;
        heightMm = source().maxHeightMm;
        return kOk;
    });
}

int Session::setPaperSize(const PaperSize& area, int index)
{
    return withOpened(Need::kFreeScanner, [&]() -> int {
        // -1 stands for an area of the caller's own.
        if (index != -1 && !isIndexOf(source().papers, index)) {
            return kIndexOutOfRange;
        }
        // Written so that a value that is no number fails, too.
        const bool fits = area.leftMm >= 0 && area.topMm >= 0 && area.widthMm > 0
            && area.heightMm > 0
            && area.leftMm + area.widthMm <= source().maxWidthMm + kAreaToleranceMm
            && area.topMm + area.heightMm <= source().maxHeightMm + kAreaToleranceMm;
        if (!fits) {
            return kValueOutOfRange;
        }
        m_acquire.area = area;
        m_acquire.area.name =
            index == -1 ? "" : source().papers[static_cast<std::size_t>(index)].name;
        return kOk;
    });
}

int Session::currentPaperSize(PaperSize& area)
{
    return withOpened(Need::kScanner, [&] {
        area = m_acquire.area;
        return kOk;
    });
}

int Session::resolutionCount()
{
    return withOpened(
        Need::kScanner, [&] { return static_cast<int>(source().resolutions.size()); });
}

int Session::resolutionName(int index, std::string& name)
{
    int dpi = 0;
    const int code = resolution(index, dpi, dpi);
    name = std::to_string(dpi);
    return code;
}

int Session::resolution(int index, int& x, int& y)
{
    return withOpened(Need::kScanner, [&]() -> int {
        if (!isIndexOf(source().resolutions, index)) {
            return kIndexOutOfRange;
        }
        x = y = source().resolutions[static_cast<std::size_t>(index)];
        return kOk;
    });
}

int Session::setResolution(int x, int y)
{
    return withOpened(Need::kFreeScanner, [&]() -> int {
        if (!hasResolution(source(), x) || !hasResolution(source(), y)) {
            return kValueOutOfRange;
        }
        m_acquire.dpiX = x;
        m_acquire.dpiY = y;
        return kOk;
    });
}

int Session::currentResolution(int& x, int& y)
{
    return withOpened(Need::kScanner, [&] {
        x = m_acquire.dpiX;
        y = m_acquire.dpiY;
        return kOk;
    });
}

int Session::setJpegQuality(int index)
{
    return with(Need::kNoJob, [&]() -> int {
        if (!isIndexOf(kJpegQualities, index)) {
            return kValueOutOfRange;
        }
        m_encode.jpegQuality = kJpegQualities[static_cast<std::size_t>(index)];
        return kOk;
    });
}

int Session::setImageParam(const ImageParam& param)
{
    return with(Need::kNoJob, [&] {
        m_imageParam = param;
        m_hasImageParam = true;
        return kOk;
    });
}

int Session::setFileParam(const FileParam& param)
{
    return with(Need::kNoJob, [&]() -> int {
        // After a refusal the next job is refused as well: files of an earlier folder or format
        // would not be what was asked for.
        m_outputStatus = outputSettingsFrom(param, m_parts.tools, m_output);
        m_documentType = static_cast<DocumentType>(param.nDocType); // others count as mixed
        const OutputFormat* const format = m_parts.tools.findOutputFormat(m_output.format);
        if (m_outputStatus.ok() && format != nullptr && format->needsText && m_recognition) {
            m_recognition->warmUp(); // while the operator reaches for the scan button
        }
        return m_outputStatus.code();
    });
}

int Session::documentTypes(std::vector<stFileTypeParam>& rows) const
{
    rows.assign(std::begin(kDocumentTypes), std::end(kDocumentTypes));
    return kOk;
}

} // namespace orva
