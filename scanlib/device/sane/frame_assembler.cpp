#include "scanlib/device/sane/frame_assembler.h"

#include "scanlib/base/library_log.h"

#include <algorithm>
#include <cstring>
#include <string>

namespace orva {

namespace {

/// A3 at 1200 dpi has 278 million.
constexpr std::uint64_t kMaxPixels = 300'000'000;
constexpr int kMaxSide = 100'000;

int channelOf(FrameFormat format)
{
    return format == FrameFormat::kGreen ? 1 : format == FrameFormat::kBlue ? 2 : 0;
}

std::uint64_t neededBytesPerLine(const FrameShape& p)
{
    const std::uint64_t samples =
        static_cast<std::uint64_t>(p.pixelsPerLine) * (p.format == FrameFormat::kRgb ? 3U : 1U);
    return (samples * static_cast<std::uint64_t>(p.depth) + 7) / 8;
}

} // namespace

Status FrameAssembler::begin(const FrameShape& parameters)
{
    const FrameShape& p = parameters;
    const bool known = p.format >= FrameFormat::kGray && p.format <= FrameFormat::kBlue;
    const bool depthKnown = p.depth == 8 || p.depth == 16 || p.depth == 1;
    if (!known || !depthKnown || p.pixelsPerLine <= 0 || p.bytesPerLine <= 0 || p.lines == 0
        || p.lines < -1) {
        return { kDeviceIo, "frame that cannot be understood" };
    }
    if (p.pixelsPerLine > kMaxSide || p.lines > kMaxSide
        || static_cast<std::uint64_t>(p.pixelsPerLine)
                * static_cast<std::uint64_t>(std::max(1, p.lines))
            > kMaxPixels) {
        return { kPageTooLarge, "frame larger than any scanner's" };
    }
    if (static_cast<std::uint64_t>(p.bytesPerLine) < neededBytesPerLine(p)
        || p.bytesPerLine > 16 * kMaxSide) {
        return { kDeviceIo, "line shorter than its pixels" };
    }
    if (m_page.height > 0 && (p.pixelsPerLine != m_page.width || !isPass(p.format))) {
        return { kDeviceIo, "passes of different kind" };
    }
    m_parameters = p;
    const std::uint64_t lines = p.lines > 0
        ? static_cast<std::uint64_t>(p.lines)
        : std::min<std::uint64_t>(
            kMaxSide, kMaxPixels / static_cast<std::uint64_t>(p.pixelsPerLine));
    m_limit = static_cast<std::size_t>(lines * static_cast<std::uint64_t>(p.bytesPerLine));
    m_raw.clear();
    if (p.lines > 0) {
        m_raw.reserve(m_limit);
    }
    return {};
}

Status FrameAssembler::add(const std::uint8_t* data, std::size_t size)
{
    const std::size_t room = m_limit - m_raw.size();
    if (size > room && m_parameters.lines < 0) {
        return { kPageTooLarge, "a page that does not end" };
    }
    // some drivers round the last buffer up; what goes past the promised lines is not picture
    m_raw.insert(m_raw.end(), data, data + std::min(size, room));
    return {};
}

Status FrameAssembler::end()
{
    const auto lineBytes = static_cast<std::size_t>(m_parameters.bytesPerLine);
    const int received = static_cast<int>(m_raw.size() / lineBytes);
    if (received == 0) {
        return { kDeviceIo, "no data where a page was promised" };
    }
    if (m_parameters.lines > 0 && received < m_parameters.lines) {
        // drivers that round the height differ by a line or two; more is a broken transfer
        const int tolerated = std::max(2, m_parameters.lines / 100);
        const std::string text = std::to_string(received) + " of "
            + std::to_string(m_parameters.lines) + " lines received";
        if (m_parameters.lines - received > tolerated) {
            return { kDeviceIo, text };
        }
        libraryLog("sane: %s", text.c_str());
    }
    return finishFrame(received);
}

Status FrameAssembler::finishFrame(int lines)
{
    const FrameShape& p = m_parameters;
    const bool pass = isPass(p.format);
    const int channel = channelOf(p.format);
    if (m_page.height == 0) {
        const PixelFormat format = pass || p.format == FrameFormat::kRgb ? PixelFormat::kRgb
            : p.depth == 1                                               ? PixelFormat::kBlackWhite
                                                                         : PixelFormat::kGray;
        const bool asItCame = !pass && p.depth != 16
            && (p.depth == 8 || format == PixelFormat::kBlackWhite)
            && static_cast<std::size_t>(p.bytesPerLine) == bytesPerLine(p.pixelsPerLine, format);
        if (asItCame) {
            m_page.width = p.pixelsPerLine;
            m_page.height = lines;
            m_page.format = format;
            m_page.pixels = std::move(m_raw);
            m_page.pixels.resize(m_page.stride() * static_cast<std::size_t>(lines));
            m_raw = {};
            m_wantsFrame = false;
            return {};
        }
        m_page.allocate(p.pixelsPerLine, lines, format);
    }
    for (int y = 0; y < std::min(lines, m_page.height); ++y) {
        convertLine(
            m_raw.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(p.bytesPerLine),
            y, channel);
    }
    if (pass) {
        // rows that one of the passes is short of would have a false colour
        m_page.height = std::min(m_page.height, lines);
        m_page.pixels.resize(m_page.stride() * static_cast<std::size_t>(m_page.height));
    }
    m_wantsFrame = m_passes.wantsMoreAfter(p.format);
    return {};
}

void FrameAssembler::convertLine(const std::uint8_t* from, int y, int channel)
{
    const FrameShape& p = m_parameters;
    std::uint8_t* to = m_page.row(y);
    if (m_page.format == PixelFormat::kBlackWhite) {
        std::memcpy(to, from, m_page.stride());
        return;
    }
    const bool pass = isPass(p.format);
    const int samples = p.pixelsPerLine * (p.format == FrameFormat::kRgb ? 3 : 1);
    const int step = pass ? 3 : 1;
    to += pass ? channel : 0;
    for (int i = 0; i < samples; ++i, to += step) {
        if (p.depth == 8) {
            *to = from[i];
        } else if (p.depth == 16) { // in the byte order of this machine
            std::uint16_t value = 0;
            std::memcpy(&value, from + 2 * static_cast<std::ptrdiff_t>(i), sizeof value);
            *to = static_cast<std::uint8_t>(value >> 8);
        } else { // in colour a set bit is full intensity
            *to = ((from[i / 8] >> (7 - i % 8)) & 1) != 0 ? 255 : 0;
        }
    }
}

void FrameAssembler::finish(Page& page)
{
    page.width = m_page.width;
    page.height = m_page.height;
    page.format = m_page.format;
    page.pixels = std::move(m_page.pixels);
    *this = FrameAssembler();
}

} // namespace orva
